// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Bilinear resizing of bytes, with weights of 4 bits in both directions.

#pragma once

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"
#include "vector/gather.h"

namespace Simd {

/// log2 of what the two weights of a byte bilinear pair add up to. A sum over both directions has
/// twice as many fractional bits.
constexpr int byteBilinearBits = 4;
constexpr std::int32_t byteBilinearRange = 1 << byteBilinearBits;
constexpr int byteBilinearShift = 2 * byteBilinearBits;
constexpr std::int32_t byteBilinearRounding = 1 << (byteBilinearShift - 1);

/// An axis of a bilinear resizer of bytes.
struct ByteAxis {
    std::uint64_t src;  ///< samples
    std::uint64_t dst;
    bool exact;  ///< whether weights are rounded from the exact fraction or from a float sum
};

/// Fills in, for each destination index, the first sample and the weight of the second. Vector
/// routines take axes of at least `leastVectorSamples` indices and of at most `mostVectorSamples`
/// indices and samples.
using FillByteSamples = void(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight);
constexpr std::uint64_t leastVectorSamples = 16;
/// Up to this many samples, the centres of pixels are exact floats.
constexpr std::uint64_t mostVectorSamples = std::uint64_t{1} << 23;

/// The columns of a bilinear row of bytes.
struct BytePairs {
    std::int32_t const*
        index;  ///< first source pixel of each pixel, -1 for none; with 64 bytes of room
    std::uint8_t const* alpha;  ///< the two weights of each entry, with 64 bytes of room
    std::uint64_t width;        ///< pixels of the result
    std::uint64_t channels;
    std::uint64_t rowBytes;  ///< of the source
};

/// Where the weights of an entry are in `BytePairs::alpha`: in long rows, past 2^31 bytes.
constexpr std::uint64_t pairOfEntry(std::uint64_t entry) {
    return 2 * entry;
}

struct BytePairProgram {
    AlignedArray<std::int32_t> offsets;  ///< of each step: its window, its first entry; without
                                         ///< vector code, of each entry: its two samples
    AlignedArray<std::uint8_t> tables;   ///< of each step: the places of its pairs, their weights
    AlignedArray<std::uint8_t> scratch;  ///< a window for a row that is shorter
    std::uint64_t steps = 0;
    std::uint64_t rowBytes = 0;  ///< of the source
    std::uint64_t doubled = 0;   ///< channels of a row that becomes twice as long, which needs no
                                 ///< tables; or 0
};

using CompileBytePairs = void(BytePairs const& pairs, BytePairProgram& program);
/// The weighted sum of two bytes, for each entry of the program. `row` has 64 bytes of room behind
/// its end.
using BlendBytePairs = void(BytePairProgram& program, std::uint8_t const* src, std::uint16_t* row);
/// (top * (range - weight) + bottom * weight + rounding) >> shift, for at least 16 entries.
using BlendByteRows = void(std::uint16_t const* top, std::uint16_t const* bottom,
                           std::int32_t weight, std::size_t count, std::uint8_t* dst);

}  // namespace Simd

namespace Simd::Base {

/// The plain routine: one index after the other, for axes of any length.
FillByteSamples fillByteSamples;

/// As `fillBilinear` of bilinear.h, but weights are integers from 0 to 16.
void fillByteBilinear(std::uint64_t src, std::uint64_t dst, std::uint64_t channels,
                      std::int32_t* index, std::int32_t* weight);

/// Any number of channels. The tables of columns are built at the first run.
class ResizerByteBilinear : public Resizer {
  public:
    explicit ResizerByteBilinear(ResizerParam const& param);
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  protected:
    AlignedArray<std::int32_t> ax;     ///< weight of each entry's second sample
    AlignedArray<std::int32_t> ix;     ///< offset of each entry's first sample in a row
    AlignedArray<std::int32_t> ay;     ///< weight of each row's second source row
    AlignedArray<std::int32_t> iy;     ///< first source row of each row
    AlignedArray<std::int32_t> bx[2];  ///< two rows after the horizontal pass, times 16
};

}  // namespace Simd::Base

namespace Simd::Neon {

/// Sixteen bytes of a source row that become up to eight pairs of samples.
struct GatherBlock {
    std::int32_t src;          ///< offset in the source row
    std::int32_t dst;          ///< offset in the row of pairs
    std::uint8_t shuffle[16];  ///< place of each byte of the pairs in those of the source
};

/// Whether a row is gathered in blocks of sixteen bytes, and not column by column. That is a row of
/// one channel that doesn't shrink too much, and whose offsets of pairs fit 32 bits.
bool gathersBlocks(ResizerParam const& param);

/// For rows of at least 16 pixels, of one to four channels; any other number is left unwritten. The
/// weights of columns are rounded in double precision. So now and then a weight differs from the
/// scalar class's, on purpose.
class ResizerByteBilinear : public Base::ResizerByteBilinear {
  public:
    using Base::ResizerByteBilinear::ResizerByteBilinear;
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  protected:
    AlignedArray<std::uint8_t> alphaX;    ///< the weights of both samples of each entry, in pairs
    AlignedArray<std::uint16_t> rows[2];  ///< two rows after the horizontal pass, times 16

    // No run reads these. Without `gather`, `ix` has the first source pixel of each column.
    std::uint64_t blocks = 0;          ///< blocks of `gather`; 0 if columns are taken one by one
    AlignedArray<GatherBlock> gather;  ///< how a row of one channel becomes pairs of samples

  private:
    void buildTables();
    bool compileCopies(std::int32_t const* index, std::int32_t const* weight);
    void fillUnreadTables(std::int32_t const* index);

    BytePairProgram program;  ///< how any number of channels becomes pairs, for this processor
    ox::vector::PixelProgram pixels;  ///< how pixels are copied, if `copies`
    bool copies = false;              ///< whether no second sample has a weight, as at a third of
                                      ///< the size
};

}  // namespace Simd::Neon
