// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where a half begins on the line of floats.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "simd/float_bits.h"

namespace ox::test {

enum class Rounding { Truncating, ToNearest };

// The value of a finite half without sign, and of the one that would follow the largest.
inline double valueOfHalf(std::uint32_t half) {
    int const exponent = static_cast<int>(half >> 10);
    double const units = half & 1023;
    return exponent == 0 ? std::ldexp(units, -24) : std::ldexp(units + 1024, exponent - 25);
}

// The pattern of the smallest float above 0 that becomes the half, by the half from 1 to 0x7C00,
// which is infinity.
inline std::uint32_t firstFloatOf(std::uint32_t half, Rounding rounding) {
    constexpr std::uint32_t infinite = 0x7C00;
    auto const pattern = [](double value) { return bitsOf(static_cast<float>(value)); };
    if (rounding == Rounding::Truncating) {
        // All that is above the largest half.
        return half == infinite ? pattern(65504) + 1 : pattern(valueOfHalf(half));
    }
    // A tie goes to the even neighbour.
    double const tie = (valueOfHalf(half - 1) + valueOfHalf(half)) / 2;
    return pattern(tie) + half % 2;
}

// Of the halves from 1 on, in ascending order, and at the end the first NaN.
inline std::vector<std::uint32_t> halfSteps(Rounding rounding) {
    std::vector<std::uint32_t> steps;
    for (std::uint32_t half = 1; half <= 0x7C00; ++half) {
        steps.push_back(firstFloatOf(half, rounding));
    }
    steps.push_back(0x7F800001);
    return steps;
}

}  // namespace ox::test
