// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the properties of `oxconvertscale` say.

#pragma once

#include <gst/video/video.h>

#include "ox_core/ox_geometry.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace oxgst {

enum class Filter { None, Box, Triangle, Mitchell, CatmullRom, Lanczos3 };

/// Pixels that are left out along each edge of the source.
struct Crop {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool any() const { return left != 0 || top != 0 || right != 0 || bottom != 0; }
};

struct Settings {
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;  ///< unknown: what is negotiated
    int width = 0;                                     ///< 0: what is negotiated
    int height = 0;
    Crop crop;
    ox::TensorMethod method = ox::TENSOR_METHOD_AUTOMATIC;
    Filter filter = Filter::None;
};

/// What is read of a source. Sides below 1 mean that nothing is left.
inline ox::Rect regionOf(Crop const& crop, GstVideoInfo const& source) {
    return {crop.left, crop.top, GST_VIDEO_INFO_WIDTH(&source) - crop.left - crop.right,
            GST_VIDEO_INFO_HEIGHT(&source) - crop.top - crop.bottom};
}

}  // namespace oxgst
