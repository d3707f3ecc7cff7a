// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Nearest sample: copies of whole pixels, of any size in bytes.

#pragma once

#include <cstring>

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"
#include "vector/gather.h"

namespace Simd::Base {

/// The source index of each destination index of an axis, by the rule of
/// `ResizerMethodNearestInteger`; all other methods take the rule of `ResizerMethodNearest`.
void fillNearest(ResizerMethod method, std::uint64_t src, std::uint64_t dst, std::int32_t* index);

/// Calls copy(source row, destination row) for each row of a plane that differs from the one above
/// it, and copies the others from there. Rows may overlap.
/// @param iy source row of each of the `rows`
template <class CopyRow>
void copyNearestRows(std::int32_t const* iy, std::uint64_t rows, std::uint8_t const* src,
                     std::size_t srcStride, std::uint8_t* dst, std::size_t dstStride,
                     std::size_t rowBytes, CopyRow copy) {
    for (std::uint64_t row = 0; row < rows; ++row, dst += dstStride) {
        if (row > 0 && iy[row] == iy[row - 1]) {
            std::memmove(dst, dst - dstStride, rowBytes);
        } else {
            copy(src + static_cast<std::uint64_t>(iy[row]) * srcStride, dst);
        }
    }
}

/// The first run builds the tables. Pixels are copied by vector routines where these are eligible.
class ResizerNearest : public Resizer {
  public:
    explicit ResizerNearest(ResizerParam const& param);
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;

  protected:
    std::uint64_t pixelSize = 0;    ///< bytes of a pixel; 0 until the tables are built
    AlignedArray<std::int32_t> ix;  ///< byte offset of each column's source pixel
    AlignedArray<std::int32_t> iy;  ///< source row of each row

  private:
    void buildTables();

    ox::vector::PixelProgram program;
    bool hasProgram = false;
};

}  // namespace Simd::Base
