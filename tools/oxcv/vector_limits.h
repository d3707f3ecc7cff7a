// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the vector backend doesn't do. Each function gives the reason, for people to read, or
/// nothing if the backend does the step; no pixel is looked at.

#pragma once

#include <string_view>

#include "ox_core/ox_frame_layout.h"
#include "ox_core/ox_geometry.h"
#include "ox_cv/ox_cv_backend.h"

namespace oxcv {

/// Formats of several floats a pixel. In the tool they are B, G, R; the vector backend takes the
/// other format's order.
constexpr bool isColourOfFloats(ox::FrameFormat format) {
    return format == ox::FRAME_BGR_32F || format == ox::FRAME_BGR_32F_PLANAR;
}

/// @param size of the frames
std::string_view whyNotConverted(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size);

std::string_view whyNotScaled(ox::FrameFormat format, ox::ResizeMethod method);

/// @param layout of the frames to warp
std::string_view whyNotWarped(ox::FrameLayout const& layout);

}  // namespace oxcv
