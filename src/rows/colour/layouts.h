/// @file
/// How the samples of a row of YUV pixels lie.

#pragma once

#include <array>
#include <cstddef>

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

/// Bytes from sample to sample, and the pixels that share a chroma sample.
struct YuvSteps {
    std::size_t luma;
    std::size_t chroma;
    std::size_t pixels;
};

constexpr YuvSteps stepsOf(YuvLayout layout) {
    constexpr std::array<YuvSteps, yuvLayouts> table{
        {{1, 1, 2}, {1, 2, 2}, {1, 2, 2}, {2, 4, 2}, {2, 4, 2}, {1, 1, 1}, {3, 3, 1}}};
    return table[indexOf(layout)];
}

constexpr bool sharesChroma(YuvLayout layout) {
    return stepsOf(layout).pixels == 2;
}

/// Where the first samples of a row are; null for those that there are none of.
template <class Byte>
struct YuvSamples {
    Byte* y = nullptr;
    Byte* u = nullptr;
    Byte* v = nullptr;
};

/// The samples at a pixel of a row; the pixel is even where pixels share chroma.
template <class Byte>
constexpr YuvSamples<Byte> samplesAt(YuvLayout layout, YuvSamples<Byte> row, std::size_t pixel) {
    YuvSteps const steps = stepsOf(layout);
    auto const at = [](Byte* first, std::size_t offset) {
        return first != nullptr ? first + offset : nullptr;
    };
    std::size_t const chroma = pixel / steps.pixels * steps.chroma;
    return {at(row.y, pixel * steps.luma), at(row.u, chroma), at(row.v, chroma)};
}

}  // namespace ox::rows
