/// @file
/// Area resizing of bytes: each pixel becomes the mean of the source rectangle that it covers, with
/// 22 bits of fraction.

#pragma once

#include "simd/resizers/resizer.h"
#include "simd/resizers/routines.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One to four channels; any other number is left unwritten. Tables are built by the constructor.
class ResizerByteArea : public Resizer {
  public:
    using Resizer::Resizer;

  protected:
    /// Builds the tables for a source of this size, with weights that add up to `range`.
    void buildTables(std::uint64_t width, std::uint64_t height, std::int32_t range);

    AlignedArray<std::int32_t> ax;   ///< share of each boundary's column that is right of it
    AlignedArray<std::int32_t> ix;   ///< source column at each boundary
    AlignedArray<std::int32_t> ay;   ///< share of each boundary's row that is below it
    AlignedArray<std::int32_t> iy;   ///< source row at each boundary
    AlignedArray<std::uint32_t> by;  ///< the weighted sum of the source rows of a row
};

/// For each of the dst + 1 boundaries of cells along an axis: the source sample that the boundary
/// falls into, and the part of that sample behind the boundary. A whole sample is range / scale;
/// parts have 31 bits at most. Without cells nothing is written.
void fillArea(std::uint64_t src, std::uint64_t dst, std::int32_t range, std::int32_t* alpha,
              std::int32_t* index);

class ResizerByteArea1x1 : public ResizerByteArea {
  public:
    explicit ResizerByteArea1x1(ResizerParam const& param);
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;
};

/// Sums 2x2 blocks first; the last column and row of odd sides count twice.
class ResizerByteArea2x2 : public ResizerByteArea {
  public:
    explicit ResizerByteArea2x2(ResizerParam const& param);
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;
};

}  // namespace Simd::Base

namespace Simd::Neon {

/// Weights of rows wrap at 16 bits. Results of three and four channels saturate, where the scalar
/// class keeps the low byte. Both are on purpose. The classes differ only where a side grows tens
/// of thousands of times: there a cell's weights add up to a little more than the range.
class ResizerByteArea1x1 : public Base::ResizerByteArea1x1 {
  public:
    using Base::ResizerByteArea1x1::ResizerByteArea1x1;
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  private:
    /// How a run works. `Columns` averages the bytes of a row by `columns`. `Pixels` copies them by
    /// `pixels`; it serves where each cell lies in one pixel, as in a picture of twice the size.
    enum class Way { Unknown, Plain, Columns, Pixels };

    Way chooseWay();

    ByteAreaProgram columns;
    ox::vector::PixelProgram pixels;
    Way way = Way::Unknown;
};

}  // namespace Simd::Neon
