// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The arithmetic of colour, one pixel at a time, and its constants. Sums have 8 fractional bits.

#pragma once

#include <algorithm>
#include <cstdint>

#include "vector/split.h"

namespace ox::rows {

inline constexpr int fractionBits = 8;

/// Y of black, and U and V of gray.
inline constexpr int lumaZero = 16;
inline constexpr int chromaZero = 128;

/// How a sample is computed from a B,G,R pixel: the weights of the channels, and the sample that
/// black gets.
struct BgrFormula {
    vector::ChannelWeights weights;
    int zero;
};

/// Weights of 256 in all without an offset: not the luma below, on purpose.
inline constexpr BgrFormula grayOfBgr{{28, 152, 76}, 0};
inline constexpr BgrFormula lumaOfBgr{{25, 129, 65}, lumaZero};
/// The terms of U and V are always positive, so that they can be shifted.
inline constexpr BgrFormula uOfBgr{{112, -74, -38}, chromaZero};
inline constexpr BgrFormula vOfBgr{{-18, -94, 112}, chromaZero};

/// A pixel's term. The sample is the whole part of one term, or of the mean of several.
constexpr int termOf(BgrFormula formula, std::uint8_t const* bgr) {
    vector::ChannelWeights const weights = formula.weights;
    return weights.b * bgr[0] + weights.g * bgr[1] + weights.r * bgr[2] +
           (formula.zero << fractionBits);
}

/// The factors of U and V in a channel. They are neither the inverse of the formulas above nor the
/// factors of `NV12toBGR_neon`, on purpose.
struct ChromaFactors {
    int u;
    int v;
};

inline constexpr int lumaFactor = 297;  ///< the same for each channel
inline constexpr ChromaFactors blueFactors{516, 0};
inline constexpr ChromaFactors greenFactors{-100, -207};
inline constexpr ChromaFactors redFactors{0, 408};

/// A channel: the whole part of its sum, clamped to a byte.
constexpr std::uint8_t channelOf(ChromaFactors factors, int y, int u, int v) {
    int const sum =
        lumaFactor * (y - lumaZero) + factors.u * (u - chromaZero) + factors.v * (v - chromaZero);
    return static_cast<std::uint8_t>(std::clamp(sum, 0, (256 << fractionBits) - 1) >> fractionBits);
}

/// The low byte of `value` truncated to an unsigned integer. The truncation saturates at 32 bits,
/// not at 255, on purpose. Negative numbers and NaN give 0.
constexpr std::uint8_t lowByteOf(float value) {
    if (!(value > 0.0F)) {
        return 0;
    }
    constexpr float limit = 4294967296.0F;
    return static_cast<std::uint8_t>(value < limit ? static_cast<std::uint32_t>(value) : ~0U);
}

/// Chroma of gray pictures: not `chromaZero`, so that they come out greenish, on purpose.
inline constexpr std::uint8_t chromaOfGray = 0;

}  // namespace ox::rows
