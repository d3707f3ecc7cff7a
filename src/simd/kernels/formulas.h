// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The arithmetic of colour, one pixel at a time, and its constants. All routines go by these.

#pragma once

#include <algorithm>
#include <cstdint>

#include "vector/split.h"

namespace Simd {

struct Bgr {
    int b;
    int g;
    int r;
};

using ox::vector::ChannelWeights;

/// (b * B + g * G + r * R + half) >> shift
constexpr int weigh(ChannelWeights weights, Bgr pixel, int shift) {
    int const sum = weights.b * pixel.b + weights.g * pixel.g + weights.r * pixel.r;
    return (sum + (1 << (shift - 1))) >> shift;
}

/// ITU-R BT.601 luma, full range, with 14 fractional bits.
inline constexpr int toYuvBits = 14;
inline constexpr ChannelWeights grayWeights{1868, 9617, 4899};

/// ITU-R BT.601, limited range, with 14 fractional bits.
inline constexpr ChannelWeights lumaWeights{1606, 8258, 4211};
inline constexpr ChannelWeights uWeights{7193, -4768, -2425};
inline constexpr ChannelWeights vWeights{-1163, -6029, 7193};
inline constexpr int lumaOffset = 16;
inline constexpr int chromaOffset = 128;

/// The inverse, with 13 fractional bits.
inline constexpr int toBgrBits = 13;
inline constexpr int lumaScale = 9535;
inline constexpr int blueFromU = 16531;
inline constexpr int greenFromU = -3203;
inline constexpr int greenFromV = -6660;
inline constexpr int redFromV = 13074;

constexpr std::uint8_t grayOf(Bgr pixel) {
    return static_cast<std::uint8_t>(weigh(grayWeights, pixel, toYuvBits));
}

constexpr std::uint8_t lumaOf(Bgr pixel) {
    return static_cast<std::uint8_t>(weigh(lumaWeights, pixel, toYuvBits) + lumaOffset);
}

constexpr std::uint8_t uOf(Bgr pixel) {
    return static_cast<std::uint8_t>(weigh(uWeights, pixel, toYuvBits) + chromaOffset);
}

constexpr std::uint8_t vOf(Bgr pixel) {
    return static_cast<std::uint8_t>(weigh(vWeights, pixel, toYuvBits) + chromaOffset);
}

/// What chroma adds to each of the three channels.
constexpr Bgr chromaTerms(std::uint8_t u_byte, std::uint8_t v_byte) {
    int const u = u_byte - chromaOffset;
    int const v = v_byte - chromaOffset;
    return {blueFromU * u, greenFromU * u + greenFromV * v, redFromV * v};
}

/// A second inverse, with 8 fractional bits; luma below its offset counts as the offset. That it
/// differs from the first inverse is on purpose.
inline constexpr int directBits = 8;
inline constexpr int directLumaScale = 298;
inline constexpr int directBlueFromU = 516;
inline constexpr int directGreenFromU = -100;
inline constexpr int directGreenFromV = -208;
inline constexpr int directRedFromV = 409;

/// One channel from luma and from what chroma adds to it.
constexpr std::uint8_t channelOf(std::uint8_t y, int chroma_term) {
    int const sum = lumaScale * (y - lumaOffset) + chroma_term + (1 << (toBgrBits - 1));
    return static_cast<std::uint8_t>(std::clamp(sum >> toBgrBits, 0, 255));
}

constexpr Bgr directChromaTerms(std::uint8_t u_byte, std::uint8_t v_byte) {
    int const u = u_byte - chromaOffset;
    int const v = v_byte - chromaOffset;
    return {directBlueFromU * u, directGreenFromU * u + directGreenFromV * v, directRedFromV * v};
}

constexpr std::uint8_t directChannelOf(std::uint8_t y, int chroma_term) {
    int const luma = directLumaScale * std::max(y - lumaOffset, 0);
    int const sum = luma + chroma_term + (1 << (directBits - 1));
    return static_cast<std::uint8_t>(std::clamp(sum >> directBits, 0, 255));
}

}  // namespace Simd
