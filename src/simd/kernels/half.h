// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Single precision to half precision (IEEE 754 binary16) and back, on bit patterns.

#pragma once

#include <bit>
#include <cstdint>

namespace Simd {

inline constexpr std::uint32_t magnitudeMask = 0x7fffffff;
inline constexpr std::uint32_t infinityBits = 0x7f800000;
inline constexpr std::uint32_t smallestNormalHalf = 0x38800000;  ///< 2^-14
inline constexpr std::uint32_t halfSign = 0x8000;

/// Exponents of halves start 112 below those of floats; after the shift by 13 that is this much.
inline constexpr std::uint32_t exponentGap = 0x1c000;
/// Infinity and NaN as halves lie twice the gap below.
inline constexpr std::uint32_t infinityWithGap = 0x23c00;

/// Truncates towards zero, but a number above 65504, the largest half, becomes infinite. NaNs keep
/// the upper ten bits of their payload and aren't quieted.
inline std::uint16_t truncateToHalf(std::uint32_t bits) {
    constexpr std::uint32_t above_largest = 0x477fe001;
    constexpr std::uint32_t smallest_kept_nan = 0x7f802000;
    std::uint32_t s = bits & magnitudeMask;
    if (s < smallestNormalHalf) {
        // 2^37 leaves the multiples of 2^-24 in the bits above the shift below.
        s = static_cast<std::uint32_t>(std::bit_cast<float>(s) * std::bit_cast<float>(0x52000000U));
    } else if (s >= above_largest && s < infinityBits) {
        s = infinityBits;
    } else if (s > infinityBits && s < smallest_kept_nan) {
        s = smallest_kept_nan;
    }
    std::uint32_t h = s >> 13;
    if (h >= infinityWithGap) {
        h -= exponentGap;
    }
    if (h >= 0x400) {
        h -= exponentGap;
    }
    return static_cast<std::uint16_t>(h | (bits >> 16 & halfSign));
}

/// Rounds to nearest, ties to even, with subnormal halves; quiets NaNs.
inline std::uint16_t roundToHalf(std::uint32_t bits) {
    constexpr std::uint32_t overflow = 0x477ff000;  // 65520
    std::uint32_t const s = bits & magnitudeMask;
    std::uint32_t h = 0;
    if (s > infinityBits) {
        h = 0x7e00 | (s >> 13 & 0x3ff);
    } else if (s >= overflow) {
        h = 0x7c00;
    } else if (s >= smallestNormalHalf) {
        h = ((s + 0xfff + (s >> 13 & 1)) >> 13) - exponentGap;
    } else {
        // In [0.5, 1) the last bit of a float is 2^-24, so that the sum rounds where it should.
        float const sum = std::bit_cast<float>(s) + 0.5F;
        h = std::bit_cast<std::uint32_t>(sum) - std::bit_cast<std::uint32_t>(0.5F);
    }
    return static_cast<std::uint16_t>(h | (bits >> 16 & halfSign));
}

/// Exact, also for subnormals, which are multiplied by 2^-24. NaNs keep all their bits.
inline std::uint32_t widenHalf(std::uint16_t half) {
    std::uint32_t h = half & 0x7fffU;
    if (h > 0x3ff) {
        h += exponentGap;
    }
    if (h >= infinityWithGap) {
        h += exponentGap;
    }
    std::uint32_t const magnitude =
        h < 0x400 ? std::bit_cast<std::uint32_t>(static_cast<float>(h) * 5.9604645e-8F) : h << 13;
    return magnitude | static_cast<std::uint32_t>(half >> 15) << 31;
}

/// As `widenHalf`, but quiets NaNs.
inline std::uint32_t widenAndQuietHalf(std::uint16_t half) {
    bool const nan = (half & 0x7fffU) > 0x7c00;
    return widenHalf(half) | (nan ? 0x00400000U : 0U);
}

}  // namespace Simd
