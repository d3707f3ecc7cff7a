/// @file
/// Coordinate and weight tables of the streaming scalers, in 32-bit arithmetic that wraps.

#pragma once

#include <cstdint>
#include <vector>

#include "rows/area/axis.h"
#include "rows/coordinates.h"

namespace ox::impl {

using rows::AreaWeight;
using rows::coordinateBits;
using rows::coordinateMask;
using rows::coordinateOne;

/// `value` in 16.16, in 32 bits: sides of 32768 and more wrap.
constexpr std::int32_t toCoordinate(std::int32_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << coordinateBits);
}

/// The step per destination sample, truncated.
constexpr std::int32_t coordinateStep(std::int32_t src, std::int32_t dst) {
    return toCoordinate(src) / dst;
}

/// Source sample under the centre of each destination sample: (i + 1/2) src / dst.
/// @throws Exception `StatusCapacityExceeded` if memory is exhausted, as all three
void buildNearestTable(std::int32_t src, std::int32_t dst, std::vector<std::uint16_t>& table);

/// 16.16 source coordinate of each destination sample: (i + 1/2) src / dst - 1/2, at least 0.
void buildBilinearTable(std::int32_t src, std::int32_t dst, std::vector<std::int32_t>& table);

/// For each destination cell: its first source sample, and the part of that sample inside the cell,
/// with `shift` fractional bits. One entry per destination sample, and one more.
/// @return the full weight: that of a source sample that lies wholly in a cell
std::uint16_t buildAreaTable(std::int32_t src, std::int32_t dst, int shift,
                             std::vector<AreaWeight>& weights);

}  // namespace ox::impl
