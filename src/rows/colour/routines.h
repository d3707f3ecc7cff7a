// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The routines that convert rows from one pixel format to another. All take rows of any width, 0
/// included. A last pixel of an odd width has a chroma sample of its own.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "rows/colour/layouts.h"

namespace ox::rows {

using YuvToBgr = void(YuvSamples<std::uint8_t const> src, std::size_t width, std::uint8_t* bgr);

/// Rows of packed B,G,R.
struct BgrRows {
    std::uint8_t const* upper;
    std::uint8_t const* lower;  ///< averaged with the upper one for shared chroma; may be null
};

/// Chroma is averaged over the pixels that share it. Samples without an address aren't written.
using BgrToYuv = void(BgrRows src, std::size_t width, YuvSamples<std::uint8_t> dst);

/// Converts `count` samples, pixels or floats. Floats needn't be aligned.
using ConvertRow = void(std::uint8_t const* src, std::size_t count, std::uint8_t* dst);

/// Channel c of each pixel goes to planes[c], if that isn't null.
using SplitRow = void(std::uint8_t const* row, std::size_t pixels, std::uint8_t* const* planes);

/// The other way round.
using MergeRow = void(std::uint8_t const* const* planes, std::size_t pixels, std::uint8_t* row);

/// No entry is ever null. A plain routine stays where there is no vector routine.
struct ColourRoutines {
    std::array<YuvToBgr*, yuvLayouts> yuv_to_bgr;
    std::array<BgrToYuv*, yuvLayouts> bgr_to_yuv;
    std::array<ConvertRow*, yuvLayouts> luma;  ///< Y alone, from the first one's address
    ConvertRow* bgr_to_gray;
    ConvertRow* gray_to_bgr;    ///< each sample as three
    ConvertRow* swap_red_blue;  ///< the first and the third of three channels change places
    ConvertRow* bytes_to_floats;
    ConvertRow* floats_to_low_bytes;
    SplitRow* split_two;
    SplitRow* split_three;
    MergeRow* merge_two;
    MergeRow* merge_three;
};

/// The loops that define the bytes; vector routines hand short rows and last pixels to them.
extern ColourRoutines const plainColour;

// Each enters the vector routines of one source, for the instruction set in use, if it has any.
void takeBgrToYuvRoutines(ColourRoutines& routines);
void takeChannelRoutines(ColourRoutines& routines);
void takeYuvToBgrRoutines(ColourRoutines& routines);

}  // namespace ox::rows
