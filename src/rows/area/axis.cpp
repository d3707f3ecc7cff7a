// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/area/axis.h"

#include <algorithm>
#include <limits>

namespace ox::rows {

namespace {

/// The elements of cell `i`.
template <class Direction>
AreaCut cutOf(AreaAxis const& area, WholeRow const& row, std::int64_t i) {
    return Direction::cut(area.full_weight, area.weights[std::min(i, row.last_entry)],
                          area.weights[std::min(i + 1, row.last_entry)]);
}

/// Calls add(tap, weight) for the elements of a cell, counted from its first one.
template <class Add>
void forEachTap(AreaCut const& cut, std::uint16_t full_weight, std::int64_t last_pixel, Add add) {
    std::int64_t const first = std::min(cut.first, last_pixel);
    auto const tapOf = [&](std::int64_t pixel) {
        return static_cast<std::size_t>(std::min(pixel, last_pixel) - first);
    };
    add(tapOf(cut.first), cut.first_weight);
    for (std::int64_t k = cut.first + 1; k < cut.last; ++k) {
        add(tapOf(k), full_weight);
    }
    if (cut.rest != 0) {
        add(tapOf(cut.last), cut.rest);
    }
}

/// Places the first tap of each cell, and counts the taps of the widest cell.
/// @return false where a cell ends before it starts
bool placeStarts(AreaAxis const& area, WholeRow const& row, TapAxis& axis) {
    for (std::int64_t i = 0; i < row.cells; ++i) {
        AreaCut const cut = cutOf<AreaDown>(area, row, i);
        if (cut.last < cut.first) {
            return false;
        }
        axis.starts.push_back({static_cast<std::uint16_t>(std::min(cut.first, row.last_pixel)),
                               static_cast<std::uint16_t>(i)});
        std::int64_t sum = 0;
        forEachTap(cut, area.full_weight, row.last_pixel,
                   [&](std::size_t tap, std::uint16_t weight) {
                       axis.taps = std::max(axis.taps, tap + 1);
                       sum += weight;
                   });
        axis.keeps_low_bytes = axis.keeps_low_bytes || !staysByte(sum, area.shift);
    }
    return true;
}

}  // namespace

bool describeAreaTaps(AreaAxis const& area, WholeRow const& row, TapAxis& axis) {
    axis = {};
    axis.shift = area.shift;
    axis.starts.reserve(static_cast<std::size_t>(row.cells));
    if (row.cells > std::numeric_limits<std::uint16_t>::max() || !placeStarts(area, row, axis)) {
        return false;
    }
    axis.weights.assign(static_cast<std::size_t>(row.cells) * axis.taps, 0);
    bool are_words = true;
    for (std::int64_t i = 0; i < row.cells; ++i) {
        std::int16_t* const weights = axis.weightRow(static_cast<std::size_t>(i));
        forEachTap(cutOf<AreaDown>(area, row, i), area.full_weight, row.last_pixel,
                   [&](std::size_t tap, std::uint16_t weight) {
                       int const total = weights[tap] + weight;
                       are_words = are_words && isTapWeight(total);
                       weights[tap] = static_cast<std::int16_t>(total);
                   });
    }
    return are_words;
}

bool describeAreaBlend(AreaAxis const& area, WholeRow const& row, std::vector<PixelPair>& pixels) {
    pixels.clear();
    pixels.reserve(static_cast<std::size_t>(row.cells));
    for (std::int64_t i = 0; i < row.cells; ++i) {
        AreaCut const cut = cutOf<AreaUp>(area, row, i);
        if (cut.first_weight + cut.rest != 1 << area.shift) {
            return false;
        }
        auto const left = static_cast<std::int32_t>(std::min(cut.first, row.last_pixel));
        auto const right = static_cast<std::int32_t>(std::min(cut.last, row.last_pixel));
        if (cut.first_weight == 0) {  // the weight of `right` is one
            pixels.push_back({right, right, 0});
        } else {
            pixels.push_back(
                {left, cut.rest != 0 ? right : left, blendWeight(cut.rest, area.shift)});
        }
    }
    return true;
}

}  // namespace ox::rows
