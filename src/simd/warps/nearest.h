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
    /// Copies `count` pixels of a row from their offsets in the source.
    using Row = void(std::uint8_t const* src, std::uint32_t const* offsets, std::size_t count,
                     std::uint8_t* dst);

    explicit WarpAffineNearest(WarpAffineParam const& param);
    void Run(std::uint8_t const* src, std::uint8_t* dst) override;

  protected:
    /// @param polygon the centres of the source's outermost pixels
    virtual void BuildRowRanges(WarpPolygon const& polygon);
    void Init();
    void fillRow(std::uint64_t y, std::uint8_t const* src, std::uint8_t* row,
                 std::uint8_t* slice) const;

    AlignedArray<std::int32_t> beg;  ///< first covered column of each row
    AlignedArray<std::int32_t> end;  ///< the column behind the last one
    Row* run;
};

}  // namespace Simd::Base
