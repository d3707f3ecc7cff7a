// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Bicubic resizing of bytes, in integers with a scale of 128 a direction.

#pragma once

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One to four channels; any other number is left unwritten. Tables are built at the first run.
class ResizerByteBicubic : public Resizer {
  public:
    explicit ResizerByteBicubic(ResizerParam const& param);
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  protected:
    AlignedArray<std::int32_t> ix;     ///< offset of each column's second tap in a row
    AlignedArray<std::int32_t> iy;     ///< source row of each row's second tap
    AlignedArray<std::int32_t> ax;     ///< four weights of each column
    AlignedArray<std::int32_t> ay;     ///< four weights of each row
    AlignedArray<std::int32_t> bx[4];  ///< ring of filtered rows, if rows are buffered
    std::uint64_t xn = 0;              ///< first column with a left neighbour
    std::uint64_t xt = 0;              ///< first column whose last tap repeats
    std::uint64_t sxl = 0;             ///< offset of the last second tap of a row
};

}  // namespace Simd::Base
