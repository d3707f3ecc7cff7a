// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Area scaling of one direction: integer weights, truncation.

#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "rows/blend/columns.h"
#include "rows/taps/axis.h"

namespace ox::rows {

/// An entry of a table of weights, one for each cell. A cell is the source interval that a
/// destination element covers.
struct AreaWeight {
    std::uint16_t index;   ///< first source sample that the cell touches
    std::uint16_t weight;  ///< of that sample in the cell
};

/// A table of weights: an entry for each cell, and one more at the end.
struct AreaAxis {
    AreaWeight const* weights;
    std::uint16_t full_weight;
    int shift;
};

/// The source elements of a cell. The first and the last one have weights of their own; all between
/// them have the full weight.
struct AreaCut {
    std::int64_t first;
    std::int64_t last;  ///< exclusive end of the middle part, and the element of `rest`
    std::uint16_t first_weight;
    std::uint16_t rest;  ///< weight of element `last`; 0: it isn't read
};

/// What is left of a sample's full weight for the next cell; wraps in 16 bits.
inline std::uint16_t restWeight(std::uint16_t full_weight, std::uint16_t weight) {
    return static_cast<std::uint16_t>(full_weight - weight);
}

/// Up-scaling blends two neighbours.
struct AreaUp {
    static constexpr bool hasMiddle = false;
    static AreaCut cut(std::uint16_t full_weight, AreaWeight entry, AreaWeight /*following*/) {
        return {entry.index, entry.index + 1, entry.weight, restWeight(full_weight, entry.weight)};
    }
};

/// Down-scaling sums up to the following cell's first element.
struct AreaDown {
    static constexpr bool hasMiddle = true;
    static AreaCut cut(std::uint16_t full_weight, AreaWeight entry, AreaWeight following) {
        return {entry.index, following.index, entry.weight,
                restWeight(full_weight, following.weight)};
    }
};

/// The last source element that cell `i` reads.
template <class Direction>
std::int64_t lastElement(AreaAxis const& axis, std::int64_t i) {
    AreaCut const cut = Direction::cut(axis.full_weight, axis.weights[i], axis.weights[i + 1]);
    return cut.rest != 0 ? std::max(cut.first, cut.last) : std::max(cut.first, cut.last - 1);
}

/// A weight below one, in the units of blending, which are 2^-16.
constexpr std::uint16_t blendWeight(std::uint16_t weight, int shift) {
    return static_cast<std::uint16_t>(weight << (16 - shift));
}

/// Whether a weight fits a tap's signed word.
constexpr bool isTapWeight(std::int64_t weight) {
    return weight <= 0x7fff;
}

/// Whether any weighted sum of bytes is a byte again, for weights that add up to `weight_sum`.
constexpr bool staysByte(std::int64_t weight_sum, int shift) {
    constexpr std::int64_t largest = 255;
    return (largest * weight_sum) >> shift <= largest;
}

/// A row of whole elements. Reads behind the row's end yield its last element.
struct WholeRow {
    std::int64_t cells;       ///< destination elements
    std::int64_t last_pixel;  ///< of the source
    std::int64_t last_entry;  ///< of the table
};

/// The taps of a row that is scaled down.
/// @param axis receives them
/// @return false if a weight isn't a word, or a cell ends before it starts
/// @throws std::bad_alloc
bool describeAreaTaps(AreaAxis const& area, WholeRow const& row, TapAxis& axis);

/// The pairs of pixels of a row that is scaled up.
/// @return false if the two weights of a pair don't sum to one
/// @throws std::bad_alloc
bool describeAreaBlend(AreaAxis const& area, WholeRow const& row, std::vector<PixelPair>& pixels);

}  // namespace ox::rows
