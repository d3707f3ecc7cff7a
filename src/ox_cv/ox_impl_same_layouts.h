// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// When layouts count as the same.

#pragma once

#include <algorithm>

#include "ox_core/ox_frame_layout.h"

namespace ox::impl {

/// Whether each plane satisfies same(plane of a, plane of b).
template <class Same>
bool samePlanes(FrameLayout const& a, FrameLayout const& b, Same same) {
    return a.format == b.format && a.planeCount == b.planeCount &&
           std::equal(a.plane, a.plane + a.planeCount, b.plane, same);
}

/// Whether the rows of two layouts are alike.
inline bool sameRows(FrameLayout const& a, FrameLayout const& b) {
    return samePlanes(a, b, [](FramePlane const& p, FramePlane const& q) {
        return p.width == q.width && p.rowBytes == q.rowBytes;
    });
}

/// Whether format, size and rows are equal. Rows are compared because a caller's own producer may
/// yield longer ones.
inline bool sameGeometry(FrameLayout const& a, FrameLayout const& b) {
    return a.size == b.size && samePlanes(a, b, [](FramePlane const& p, FramePlane const& q) {
               return p.height == q.height && p.rowBytes == q.rowBytes;
           });
}

}  // namespace ox::impl
