// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_geometry.h"

#include <algorithm>

namespace ox {

namespace {

struct Span {
    std::int32_t start;
    std::int32_t extent;
};

/// The part of [start, start + extent) that lies in [0, limit).
Span clip(std::int32_t start, std::int32_t extent, std::int32_t limit) {
    auto const first = std::max<std::int64_t>(start, 0);
    auto const last = std::min<std::int64_t>(std::int64_t{start} + extent, limit);
    return {static_cast<std::int32_t>(first),
            static_cast<std::int32_t>(std::max<std::int64_t>(last - first, 0))};
}

}  // namespace

void Rect::crop(Size const& size) {
    Span const columns = clip(x, width, size.width);
    Span const rows = clip(y, height, size.height);
    Rect const clipped{columns.start, rows.start, columns.extent, rows.extent};
    *this = clipped.empty() ? Rect{} : clipped;
}

}  // namespace ox
