// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Which columns of each destination row a warped source rectangle covers.

#pragma once

#include <array>
#include <cstdint>

namespace Simd::Base {

struct WarpPoint {
    float x;
    float y;
};

/// The corners of a warped rectangle, in the order top left, top right, bottom right, bottom left
/// of the source.
using WarpPolygon = std::array<WarpPoint, 4>;

/// @param mat source to destination, row by row
WarpPolygon warpRectangle(float const* mat, WarpPoint top_left, WarpPoint bottom_right);

// Tables have an entry for each of `height` rows. Row y has the columns from beg[y] up to before
// end[y]; both are from 0 to `width`.

/// The pixels that are nearest to a point of the polygon. Rows without such have `width` and 0.
void buildNearestRanges(WarpPolygon const& polygon, std::uint64_t width, std::uint64_t height,
                        std::int32_t* beg, std::int32_t* end);

/// The pixels whose own position is in the polygon. Rows without such have `width` twice.
/// @param bounds scratch of 2 * height
/// @param limit for each row, the most that its entries may be; null for none
void buildBilinearRanges(WarpPolygon const& polygon, std::uint64_t width, std::uint64_t height,
                         float* bounds, std::int32_t const* limit, std::int32_t* beg,
                         std::int32_t* end);

}  // namespace Simd::Base
