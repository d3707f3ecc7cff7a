/// @file
/// Which way the vector backend converts a pair of formats; no pixel is touched here.

#pragma once

#include <cstdint>
#include <limits>

#include "ox_core/ox_frame_layout.h"

namespace ox::impl {

enum class ColorRoute {
    Unsupported,
    TwoSteps,        ///< through another format
    CopyLuma,        ///< plane 0 alone
    ExpandGray,      ///< one channel to three
    SwapRedBlue,     ///< packed, the outer channels exchanged
    SplitPixels,     ///< three interleaved channels to planes
    MergePixels,     ///< and back
    SplitChroma,     ///< luma copied, pairs of chroma to planes
    MergeChroma,     ///< and back
    ExchangeChroma,  ///< luma copied, pairs of chroma exchanged
    BgrToGray,
    BgrToI420,
    BgrToNv12,
    BgrToYuv444,  ///< to planes
    I420ToPacked,
    SemiPlanarToPacked,  ///< 4:2:0 with pairs of chroma
    Yuv444ToBgr,         ///< from planes
    BytesToFloats,       ///< packed to packed, or planes to planes
    FloatsToBytes,
};

struct ColorRouteRecord {
    FrameFormat src = FRAME_FORMAT_NONE;
    FrameFormat dst = FRAME_FORMAT_NONE;
    ColorRoute route = ColorRoute::Unsupported;
    FrameFormat through = FRAME_FORMAT_NONE;  ///< of `TwoSteps`, both of which are direct
};

/// The record of a pair of different formats. Pairs without one are refused, on purpose also where
/// the reverse or a neighbour is there.
ColorRouteRecord colorRoute(FrameFormat src, FrameFormat dst);

/// 4:2:0 sources of the vector backend are converted with even sides only, whatever the
/// destination.
constexpr bool needsEvenSides(FrameFormat src) {
    return src == FRAME_I420 || src == FRAME_NV12 || src == FRAME_NV21;
}

/// `NV12toBGR_neon` takes strides of 32 bits.
constexpr std::int64_t maxDirectStride = std::numeric_limits<int>::max();

/// Whether the planes of a source are such that `NV12toBGR_neon`, which steps over both by one
/// stride, can convert it.
inline bool hasDirectStrides(FrameLayout const& src) {
    return src.format == FRAME_NV12 && src.plane[0].stride == src.plane[1].stride &&
           src.plane[0].stride <= maxDirectStride;
}

}  // namespace ox::impl
