// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The affine warp of bytes that blends four source pixels, with weights of 5 bits.

#pragma once

#include "simd/warps/row_ranges.h"
#include "simd/warps/warp_affine.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One to four channels. Towards its edge, the source fades into the border over one pixel.
class WarpAffineByteBilinear : public WarpAffine {
  public:
    explicit WarpAffineByteBilinear(WarpAffineParam const& param);
    void Run(std::uint8_t const* src, std::uint8_t* dst) override;

  protected:
    /// Fills rows `first` up to before `last`; `slice` is a thread's part of the scratch.
    using Rows = void(WarpAffineParam const& param, std::uint64_t first, std::uint64_t last,
                      std::int32_t const* innerBeg, std::int32_t const* innerEnd,
                      std::int32_t const* outerBeg, std::int32_t const* outerEnd,
                      std::uint8_t const* src, std::uint8_t* dst, std::uint8_t* slice);

    /// @param limit for each row, the most that its entries may be; null for none
    virtual void BuildRowRanges(WarpPolygon const& polygon, std::int32_t const* limit,
                                std::int32_t* beg, std::int32_t* end);
    void Init();

    AlignedArray<std::int32_t> range;
    std::int32_t* innerBeg = nullptr;  ///< first column of each row with all four pixels inside
    std::int32_t* innerEnd = nullptr;
    std::int32_t* outerBeg = nullptr;  ///< first column of each row with any pixel inside
    std::int32_t* outerEnd = nullptr;
    Rows* run;
};

}  // namespace Simd::Base
