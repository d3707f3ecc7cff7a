// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Area resizing of bytes: each pixel becomes the mean of the source rectangle that it covers, with
/// 22 bits of fraction.

#pragma once

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"
#include "vector/gather.h"

namespace Simd {

/// log2 of what the weights of a cell's columns, and those of its rows, add up to (about).
constexpr int byteAreaBits = 11;
constexpr std::int32_t byteAreaRange = 1 << byteAreaBits;
constexpr int byteAreaShift = 2 * byteAreaBits;
constexpr std::int32_t byteAreaRounding = 1 << (byteAreaShift - 1);

/// The cells that a row is averaged in.
struct ByteAreaColumns {
    std::int32_t const* ax;  ///< share of each boundary's column that is right of it
    std::int32_t const* ix;  ///< source column at each boundary
    std::uint64_t width;     ///< cells
    std::uint64_t channels;  ///< 1 to 4
    std::uint64_t rowBytes;  ///< of the source
};

/// The source rows of a destination row.
struct ByteAreaRows {
    std::uint8_t const* first;
    std::size_t stride;
    std::uint64_t more;   ///< rows behind the first
    std::int32_t weight;  ///< of the first row
    std::int32_t inner;   ///< of the rows between the first and the last
    std::int32_t outer;   ///< of the last row, if there are more
};

/// Of AVX3_DL, windows of bytes; of others, sums of rows. Those have `entryLanes` and
/// `singleSteps`, these `weights`, `taps` and `rowBytes`.
struct ByteAreaProgram {
    AlignedArray<std::int32_t> offsets;  ///< of each register: its steps' number, their windows;
                                         ///< or of each cell: its first sum, in bytes
    AlignedArray<std::uint8_t> tables;   ///< of each step: places in its window, their weights
    AlignedArray<std::int32_t> weights;  ///< of each load of a cell
    std::uint64_t blocks = 0;            ///< that are stored
    std::uint64_t entries = 0;           ///< of the result
    std::uint64_t channels = 0;
    std::uint64_t rowBytes = 0;    ///< of the source
    std::size_t taps = 0;          ///< columns of the widest cell
    std::uint64_t entryLanes = 1;  ///< of an entry in a register
    bool singleSteps = false;      ///< whether each register has one step
};

/// @return false if the instruction set has no program for such columns
using CompileByteArea = bool(ByteAreaColumns const& columns, ByteAreaProgram& program);
/// Sums modulo 2^32, rounded to their upper 10 bits. Results of three and four channels are clamped
/// to bytes; of one and two channels the low byte is kept.
/// @param by room for the sums of a source row's bytes
using AverageByteArea = void(ByteAreaProgram const& program, ByteAreaRows const& rows,
                             std::uint32_t* by, std::uint8_t* dst);

}  // namespace Simd

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
