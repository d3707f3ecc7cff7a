// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How the samples of a row of YUV pixels lie.

#pragma once

#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace ox::rows {

enum class YuvLayout {
    HalfPlanes,  ///< a chroma sample for two pixels; three planes
    PairsUv,     ///< the same, with chroma as pairs
    PairsVu,
    PackedYuyv,  ///< two pixels in four bytes
    PackedUyvy,
    FullPlanes,  ///< a chroma sample for each pixel
    PackedYuv,   ///< three bytes a pixel
};
constexpr std::size_t yuvLayouts = 7;

constexpr std::size_t indexOf(YuvLayout layout) {
    return static_cast<std::size_t>(layout);
}

/// A table of what choose(layout) gives for each, whose argument is a constant.
template <class Choose>
constexpr auto byLayout(Choose choose) {
    return [&]<std::size_t... index>(std::index_sequence<index...>) {
        return std::array{
            choose(std::integral_constant<YuvLayout, static_cast<YuvLayout>(index)>())...};
    }
    (std::make_index_sequence<yuvLayouts>());
}

/// Bytes from sample to sample, and the pixels that share a chroma sample.
struct YuvSteps {
    std::size_t luma;
    std::size_t chroma;
    std::size_t pixels;
};

inline constexpr std::array<YuvSteps, yuvLayouts> yuvSteps{
    {{1, 1, 2}, {1, 2, 2}, {1, 2, 2}, {2, 4, 2}, {2, 4, 2}, {1, 1, 1}, {3, 3, 1}}};

constexpr YuvSteps const& stepsOf(YuvLayout layout) {
    return yuvSteps[indexOf(layout)];
}

constexpr bool sharesChroma(YuvLayout layout) {
    return stepsOf(layout).pixels == 2;
}

/// The chroma samples of so many pixels, even where pixels share chroma.
constexpr std::size_t chromaCount(YuvLayout layout, std::size_t pixels) {
    return sharesChroma(layout) ? pixels / 2 : pixels;
}

/// The first Y, U and V sample of a row; null for samples that the row doesn't have.
template <class Byte>
struct YuvSamples {
    Byte* y = nullptr;
    Byte* u = nullptr;
    Byte* v = nullptr;
};

/// The samples at a pixel of a row; the pixel is even where pixels share chroma.
template <class Byte>
constexpr YuvSamples<Byte> samplesAt(YuvLayout layout, YuvSamples<Byte> row, std::size_t pixel) {
    YuvSteps const& steps = stepsOf(layout);
    auto const at = [](Byte* first, std::size_t offset) {
        return first != nullptr ? first + offset : nullptr;
    };
    std::size_t const chroma = chromaCount(layout, pixel) * steps.chroma;
    return {at(row.y, pixel * steps.luma), at(row.u, chroma), at(row.v, chroma)};
}

}  // namespace ox::rows
