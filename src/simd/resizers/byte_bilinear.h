/// @file
/// Bilinear resizing of bytes, with weights of 4 bits in both directions.

#pragma once

#include "simd/resizers/resizer.h"
#include "simd/resizers/routines.h"
#include "vector/aligned_array.h"

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
    void fillUnreadTables(std::int32_t const* index);

    BytePairProgram program;  ///< how any number of channels becomes pairs, for this processor
};

}  // namespace Simd::Neon
