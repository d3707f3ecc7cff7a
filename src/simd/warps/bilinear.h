// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The affine warp of bytes that blends four source pixels, with weights of 5 bits.

#pragma once

#include "simd/warps/columns.h"
#include "simd/warps/row_ranges.h"
#include "simd/warps/warp_affine.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One to four channels. Towards its edge, the source fades into the border over one pixel.
class WarpAffineByteBilinear : public WarpAffine {
  public:
    /// Gathers the samples of `count` columns of a row, from their offsets in the upper and the
    /// lower source rows.
    using Row = void(WarpTaps const& taps, std::size_t count, std::uint8_t const* upper,
                     std::uint8_t const* lower);

    explicit WarpAffineByteBilinear(WarpAffineParam const& param);
    void Run(std::uint8_t const* src, std::uint8_t* dst) override;

  protected:
    /// @param limit for each row, the most that its entries may be; null for none
    virtual void BuildRowRanges(WarpPolygon const& polygon, std::int32_t const* limit,
                                std::int32_t* beg, std::int32_t* end);
    void Init();

    AlignedArray<std::int32_t> range;
    std::int32_t* innerBeg = nullptr;  ///< first column of each row with all four pixels inside
    std::int32_t* innerEnd = nullptr;
    std::int32_t* outerBeg = nullptr;  ///< first column of each row with any pixel inside
    std::int32_t* outerEnd = nullptr;
    Row* run;
};

}  // namespace Simd::Base
