// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Which way the vector backend converts a pair of formats, and the conversion by it.

#pragma once

#include "ox_core/ox_frame.h"

namespace ox::impl {

enum class ColourRoute {
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

struct ColourRouteRecord {
    FrameFormat src = FRAME_FORMAT_NONE;
    FrameFormat dst = FRAME_FORMAT_NONE;
    ColourRoute route = ColourRoute::Unsupported;
    FrameFormat through = FRAME_FORMAT_NONE;  ///< of `TwoSteps`; each step is a direct route
};

/// The record of a pair of different formats. Pairs without a record are refused, on purpose also
/// where the reverse pair or a similar one has a record.
ColourRouteRecord colourRoute(FrameFormat src, FrameFormat dst);

/// Converts the pixels of `src` to `dst`, a frame of the same size and of another format.
/// @param scratch receives the picture between two steps
/// @return false for a pair that there is no route for; nothing is done then
bool convertColours(Frame const& src, Frame& dst, Frame& scratch);

/// Converts `src`, taken for packed BGR whatever its format says, to `FRAME_YUV444_PLANAR`.
/// @param dst receives the planes in storage of its own
void convertBgrToYuv444(Frame const& src, Frame& dst);

}  // namespace ox::impl
