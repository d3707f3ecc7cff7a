// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Resizing of whole planes by the kernel layer's classes: every element by itself, from positions
// in the source, with no table and no row kept.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace model {

enum class ResizeClass {
    None,
    Nearest,
    ByteBilinear,
    ShortBilinear,
    FloatBilinear,
    ByteBicubic,
    ByteArea2x2,
    ByteArea1x1,
    VectorByteBilinear,
    VectorShortBilinear,
    VectorFloatBilinear,
    VectorByteArea1x1,
};

struct Resize {
    int type = 0;  // of the elements: 0 for bytes, 1 for 16 bits, 2 for floats
    int method = 0;
    std::uint64_t src_w = 0;
    std::uint64_t src_h = 0;
    std::uint64_t dst_w = 0;
    std::uint64_t dst_h = 0;
    std::uint64_t channels = 1;
};

ResizeClass scalarChoice(Resize const& request);
ResizeClass vectorChoice(Resize const& request);

// Positions of destination index `i` along an axis of `d` samples, in a source of `s` samples.

// The first of two samples, and how much of the second there is.
template <class Weight>
struct Position {
    std::int64_t index = 0;
    Weight weight{};
};

struct CubicPosition {
    std::int64_t index = 0;  // of the second tap
    std::array<std::int32_t, 4> weights{};
};

std::int64_t nearestPosition(int method, std::uint64_t s, std::uint64_t d, std::uint64_t i);
Position<int> bytePosition(std::uint64_t s, std::uint64_t d, std::uint64_t i);
Position<int> vectorBytePosition(std::uint64_t s, std::uint64_t d, std::uint64_t i);
Position<float> floatPosition(int method, std::uint64_t s, std::uint64_t d, std::uint64_t i);
CubicPosition cubicPosition(std::uint64_t s, std::uint64_t d, std::uint64_t i);
// Of a cell's left boundary; `i` may be `d`. The weight is the part of the sample behind it.
Position<std::int32_t> areaPosition(std::uint64_t s, std::uint64_t d, int range, std::uint64_t i);

// Whether the class writes planes of so many channels.
bool writesChannels(ResizeClass resizer, std::uint64_t channels);

// The elements that a class gives for a plane without gaps.
std::vector<std::uint8_t> resized(ResizeClass resizer, Resize const& request,
                                  std::vector<std::uint8_t> const& src);
std::vector<std::uint16_t> resized(ResizeClass resizer, Resize const& request,
                                   std::vector<std::uint16_t> const& src);
std::vector<float> resized(ResizeClass resizer, Resize const& request,
                           std::vector<float> const& src);

}  // namespace model
