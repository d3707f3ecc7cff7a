/// @file
/// Runs of YUV pixels on their way from one layout to another.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "rows/colour/layouts.h"

namespace ox::rows {

constexpr bool sharesChroma(YuvLayout layout) {
    return layout != YuvLayout::FullPlanes && layout != YuvLayout::PackedYuv;
}

/// The samples at a pixel of a row; the pixel is even where pixels share chroma. What has no
/// address gets none.
template <class Byte>
YuvSamples<Byte> samplesAt(YuvLayout layout, YuvSamples<Byte> row, std::size_t pixel) {
    constexpr std::array<std::size_t, yuvLayouts> halves_of_luma{2, 2, 2, 4, 4, 2, 6};
    constexpr std::array<std::size_t, yuvLayouts> halves_of_chroma{1, 2, 2, 4, 4, 2, 6};
    std::size_t const luma = pixel * halves_of_luma[static_cast<std::size_t>(layout)] / 2;
    std::size_t const chroma = pixel * halves_of_chroma[static_cast<std::size_t>(layout)] / 2;
    auto const at = [](Byte* first, std::size_t offset) {
        return first != nullptr ? first + offset : nullptr;
    };
    return {at(row.y, luma), at(row.u, chroma), at(row.v, chroma)};
}

/// A few pixels whose samples follow one another, in the row itself or in memory of its own.
struct YuvRun {
    static constexpr std::size_t mostPixels = 1024;
    using Room = std::array<std::uint8_t, mostPixels>;

    std::uint8_t const* y;
    std::uint8_t const* u;
    std::uint8_t const* v;
    std::array<Room, 4> room;
};

/// @param pixels at most `YuvRun::mostPixels`, even where pixels share chroma, as below
/// @param chroma false takes Y alone
void gatherRun(YuvLayout layout, YuvSamples<std::uint8_t const> src, std::size_t pixels,
               bool chroma, YuvRun& run);

/// @param chroma false leaves U and V as they are; only for layouts with a plane of Y
void scatterRun(YuvLayout layout, YuvRun const& run, std::size_t pixels, bool chroma,
                YuvSamples<std::uint8_t> dst);

/// Copies pixels between layouts that share chroma alike and have a plane of Y, as planes: in one
/// go, however many they are. Samples without a destination are left out.
/// @param pixels even
/// @return false if the layouts aren't such; nothing is done then
bool copyPlanes(YuvLayout from, YuvLayout to, YuvSamples<std::uint8_t const> src,
                std::size_t pixels, YuvSamples<std::uint8_t> dst);

/// The truncated means of two samples each.
void averageRows(std::uint8_t const* a, std::uint8_t const* b, std::size_t count,
                 std::uint8_t* dst);

/// The truncated means of two neighbours each, or of two by two.
/// @param lower null for one row
void averagePairs(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t count,
                  std::uint8_t* dst);

/// Each sample twice.
void repeatSamples(std::uint8_t const* src, std::size_t count, std::uint8_t* dst);

}  // namespace ox::rows
