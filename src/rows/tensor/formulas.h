// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The arithmetic of tensors, one pixel at a time, and its constants.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "rows/colour/formulas.h"

namespace ox::rows {

/// A byte with a channel's mean and scale applied; each operation is rounded once.
inline float normalised(std::uint8_t byte, float mean, float scale) {
    float const difference = static_cast<float>(byte) - mean;
    return difference * scale;
}

/// A number as a byte: rounded to nearest, ties to even, then moved and clamped.
/// @param lowest, highest of the bytes
inline int quantised(float number, float quant_scale, float zero_point, float lowest,
                     float highest) {
    float const moved = std::nearbyint(number / quant_scale) + zero_point;
    return static_cast<int>(std::clamp(moved, lowest, highest));
}

/// The bits of a number as IEEE 754 binary16: rounded to nearest, ties to even. Halves end at
/// 65504; what would be rounded to 65536 becomes infinite.
/// @param number any but a NaN
inline std::uint16_t halfBitsOf(float number) {
    constexpr int fraction_bits = 10;
    constexpr int least_exponent = -14;  // of halves that aren't subnormal
    constexpr unsigned infinity = 0x7c00;
    float const magnitude = std::fabs(number);
    unsigned bits = infinity;
    if (magnitude < 65520.0F) {
        int const exponent =
            magnitude > 0.0F ? std::max(std::ilogb(magnitude), least_exponent) : least_exponent;
        // A fraction that is rounded up to the next power of two carries into the exponent.
        float const fraction = std::nearbyint(std::ldexp(magnitude, fraction_bits - exponent));
        bits = (static_cast<unsigned>(exponent - least_exponent) << fraction_bits) +
               static_cast<unsigned>(fraction);
    }
    return static_cast<std::uint16_t>(bits | (std::signbit(number) ? 0x8000U : 0U));
}

/// How YUV pixels become B,G,R by one of the standards, with 14 fractional bits.
struct YuvMatrix {
    int luma_zero;  ///< Y of black
    int luma;       ///< the same for each channel
    ChromaFactors blue;
    ChromaFactors green;
    ChromaFactors red;
};

inline constexpr int matrixBits = 14;

// The factors of U in blue and of V in red are 2 (1 - Kb) and 2 (1 - Kr); green has what is left of
// Y. With the limited range, Y is stretched by 255 / 219 and chroma by 255 / 224.
inline constexpr YuvMatrix bt601Limited{16, 19077, {33050, 0}, {-6419, -13320}, {0, 26149}};
inline constexpr YuvMatrix bt601Full{0, 16384, {29032, 0}, {-5638, -11700}, {0, 22970}};
inline constexpr YuvMatrix bt709Limited{16, 19077, {34610, 0}, {-3494, -8731}, {0, 29372}};
inline constexpr YuvMatrix bt709Full{0, 16384, {30402, 0}, {-3069, -7670}, {0, 25802}};
inline constexpr YuvMatrix bt2020Limited{16, 19077, {35091, 0}, {-3069, -10657}, {0, 27503}};
inline constexpr YuvMatrix bt2020Full{0, 16384, {30825, 0}, {-2696, -9361}, {0, 24160}};

/// A channel: its sum rounded to nearest and clamped to a byte.
constexpr std::uint8_t channelOf(YuvMatrix const& matrix, ChromaFactors factors, int y, int u,
                                 int v) {
    int const sum = matrix.luma * (y - matrix.luma_zero) + factors.u * (u - chromaZero) +
                    factors.v * (v - chromaZero) + (1 << (matrixBits - 1));
    return static_cast<std::uint8_t>(std::clamp(sum >> matrixBits, 0, 255));
}

}  // namespace ox::rows
