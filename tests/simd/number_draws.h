// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Floats and ranges that kernels of floats might get wrong.
#pragma once

#include <cmath>
#include <iterator>
#include <limits>

#include "simd/float_bits.h"
#include "support/random.h"

namespace ox::test {

struct Range {
    float lower;
    float upper;
};

inline constexpr float infinity = std::numeric_limits<float>::infinity();
inline constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
inline constexpr float signallingNaN = std::numeric_limits<float>::signaling_NaN();
inline constexpr float largest = std::numeric_limits<float>::max();
inline constexpr float smallest = std::numeric_limits<float>::denorm_min();
inline constexpr float smallestNormal = std::numeric_limits<float>::min();

inline constexpr float specialNumbers[]{
    signallingNaN,  -signallingNaN,  0.0F,      -0.0F,    1.0F,  -1.0F,  254.99F,
    255.0F,         255.5F,          infinity,  -1e9F,    3e9F,  5e9F,   notANumber,
    -notANumber,    -infinity,       largest,   -largest, 1e-3F, 300.0F, smallest,
    smallestNormal, -smallestNormal, -smallest,
};

// Equal, exchanged, infinite, tiny and huge ones among them.
inline constexpr Range ranges[]{
    {0.0F, 255.0F},
    {0.0F, 1.0F},
    {-1.0F, 1.0F},
    {-0.5F, 0.25F},
    {10.0F, 11.0F},
    {-300.0F, -200.0F},
    {0.0F, -0.0F},
    {3.0F, 3.0F},
    {255.0F, 0.0F},
    {1.0F, -1.0F},
    {notANumber, 1.0F},
    {0.0F, notANumber},
    {notANumber, notANumber},
    {-infinity, 1.0F},
    {0.0F, infinity},
    {-infinity, infinity},
    {infinity, -infinity},
    {infinity, infinity},
    {0.0F, smallest},
    {-smallest, smallest},
    {0.0F, 1000 * smallest},
    {smallestNormal, 2 * smallestNormal},
    {smallest, -smallest},
    {0.0F, largest},
    {-largest, largest},
    {largest, -largest},
    {1e30F, 2e30F},
    {16777216.0F, 16777218.0F},
    {1.0F, 1.0000001F},
};

inline Range drawRange(Random& random) {
    switch (random.between(0, 3)) {
        case 0:
            return ranges[0];
        case 1:
            return {random.real(-100.0F, 100.0F), random.real(-100.0F, 100.0F)};
        default:
            return ranges[random.between(0, static_cast<int>(std::size(ranges)) - 1)];
    }
}

inline float drawSpecial(Random& random) {
    return specialNumbers[random.between(0, static_cast<int>(std::size(specialNumbers)) - 1)];
}

inline float drawBits(Random& random) {
    return floatOf(static_cast<std::uint32_t>(random.next() >> 32));
}

// Mostly inside of a range and a little beside it.
inline float drawAround(Range range, Random& random) {
    float const length = range.upper - range.lower;
    switch (random.between(0, 7)) {
        case 0:
            return drawSpecial(random);
        case 1:
            return drawBits(random);
        case 2:
            return random.between(0, 1) == 0 ? range.lower : range.upper;
        case 3:  // whole steps
            return range.lower + length * static_cast<float>(random.between(-2, 257)) / 255.0F;
        default:
            return range.lower + length * random.real(-0.25F, 1.25F);
    }
}

// Any bits, or bits close to where the half changes.
inline float drawForHalf(Random& random) {
    std::uint32_t const bits = bitsOf(drawBits(random));
    if (random.between(0, 2) == 0) {
        return floatOf(bits);
    }
    // The exponents from that of half of the smallest half on to those of infinity, and of NaNs.
    int const drawn = random.between(102, 145);
    std::uint32_t const exponent = drawn == 145 ? 255 : static_cast<std::uint32_t>(drawn);
    std::uint32_t number = (bits & 0x807FFFFF) | exponent << 23;
    if (random.between(0, 1) == 0) {
        auto const beside = static_cast<std::uint32_t>(random.between(-1, 1));
        number = (number & ~std::uint32_t{0xFFF}) + beside;
    }
    return floatOf(number);
}

}  // namespace ox::test
