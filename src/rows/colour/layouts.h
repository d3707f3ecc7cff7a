/// @file
/// Rows of YUV samples, to and from packed B,G,R.

#pragma once

#include <cstddef>
#include <cstdint>

namespace ox::rows {

/// How the samples of a row lie.
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

/// Where the first samples of a row are.
template <class Byte>
struct YuvSamples {
    Byte* y;
    Byte* u;
    Byte* v;
};

/// The layout of samples that lie so. Addresses are compared only where they are of one plane.
/// @param luma_step, chroma_step bytes between samples
/// @param pixels that share a chroma sample
template <class Byte>
YuvLayout yuvLayoutOf(YuvSamples<Byte> row, int luma_step, int chroma_step, int pixels) {
    if (pixels == 1) {
        return luma_step == 1 ? YuvLayout::FullPlanes : YuvLayout::PackedYuv;
    }
    if (luma_step == 2) {
        return row.y < row.u ? YuvLayout::PackedYuyv : YuvLayout::PackedUyvy;
    }
    if (chroma_step == 2) {
        return row.u < row.v ? YuvLayout::PairsUv : YuvLayout::PairsVu;
    }
    return YuvLayout::HalfPlanes;
}

/// A row of `width` pixels, at least `Routines::least_pixels`, and even where pixels share chroma.
using YuvToBgr = void(YuvSamples<std::uint8_t const> src, std::size_t width, std::uint8_t* bgr);

/// Y of a row of four bytes for two pixels.
/// @param row its first byte
/// @param pixels at least `Routines::least_pixels`
using PackedLuma = void(std::uint8_t const* row, std::size_t pixels, std::uint8_t* luma);

/// Rows of packed B,G,R.
struct BgrRows {
    std::uint8_t const* upper;
    std::uint8_t const* lower;  ///< averaged with the upper one for chroma; may be null
};

/// As `YuvToBgr`. Chroma is averaged over the pixels that share it, in the two rows if there are
/// two; without an address for U and V it isn't made.
using BgrToYuv = void(BgrRows src, std::size_t width, YuvSamples<std::uint8_t> dst);
using BgrToGray = void(std::uint8_t const* bgr, std::size_t width, std::uint8_t* gray);

}  // namespace ox::rows
