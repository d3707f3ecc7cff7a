/// @file
/// Bilinear resizing of bytes, with weights of 4 bits in both directions.

#pragma once

#include "simd/resizers/resizer.h"
#include "simd/resizers/routines.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One by one, for axes of any length.
FillByteSamples fillByteSamples;

/// For each destination index along an axis: the index of the first source sample and the weight of
/// the second, 0 to 16. `index` counts samples, or `channels` elements a sample, and then both are
/// repeated for each channel. At the far end the first sample is the last but one, with weight 16;
/// it is -1 if the axis has one sample.
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

/// Whether a row is gathered in blocks of sixteen bytes, and not column by column: one of one
/// channel that doesn't shrink too much, if the offsets of its pairs fit a block's 32 bits.
bool gathersBlocks(ResizerParam const& param);

/// One to four channels (any other number is left unwritten), rows of at least 16 pixels. The
/// weights of columns are rounded in double, so that now and then one differs from the scalar
/// class's, on purpose.
class ResizerByteBilinear : public Base::ResizerByteBilinear {
  public:
    using Base::ResizerByteBilinear::ResizerByteBilinear;
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  protected:
    AlignedArray<std::uint8_t> alphaX;    ///< the weights of both samples of each entry, in pairs
    AlignedArray<std::uint16_t> rows[2];  ///< two rows after the horizontal pass, times 16

    // Not read by runs. Without `gather`, `ix` has a column's first source pixel each.
    std::uint64_t blocks = 0;          ///< blocks of `gather`; 0 if columns are taken one by one
    AlignedArray<GatherBlock> gather;  ///< how a row of one channel becomes pairs of samples

  private:
    void buildTables();
    void fillUnreadTables(std::int32_t const* index);

    BytePairProgram program;  ///< how any number of channels becomes pairs, for this processor
};

}  // namespace Simd::Neon
