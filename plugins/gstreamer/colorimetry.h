// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the bytes of a result mean, in the words of caps.
///
/// Samples of YUV go to YUV and gray as they are, so their colorimetry stays. Colours are made of
/// YUV by its own matrix and range, and YUV of colours always by BT.601 with the limited range.

#pragma once

#include <string>

#include <gst/video/video.h>

namespace oxgst {

/// @param in the source's caps
/// @param format of the result
GstVideoColorimetry colorimetryOf(GstVideoInfo const& in, GstVideoFormatInfo const* format);

/// Why the bytes wouldn't be what the caps say of them; empty if they are.
std::string whyNotMeant(GstVideoInfo const& in, GstVideoInfo const& out);

}  // namespace oxgst
