// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The affine warp to the nearest source pixel.

#pragma once

#include "simd/warps/row_ranges.h"
#include "simd/warps/warp_affine.h"
#include "vector/aligned_array.h"

namespace Simd::Base {

/// One to four channels.
class WarpAffineNearest : public WarpAffine {
  public:
    explicit WarpAffineNearest(WarpAffineParam const& param);
    void Run(std::uint8_t const* src, std::uint8_t* dst) override;

  protected:
    /// Fills rows `first` up to before `last`; `slice` is a thread's part of the scratch.
    using Rows = void(WarpAffineParam const& param, std::uint64_t first, std::uint64_t last,
                      std::int32_t const* beg, std::int32_t const* end, std::uint8_t const* src,
                      std::uint8_t* dst, std::uint8_t* slice);

    /// @param polygon the centres of the source's outermost pixels
    virtual void BuildRowRanges(WarpPolygon const& polygon);
    void Init();

    AlignedArray<std::int32_t> beg;  ///< first covered column of each row
    AlignedArray<std::int32_t> end;  ///< the column behind the last one
    Rows* run;
};

}  // namespace Simd::Base
