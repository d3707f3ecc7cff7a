// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The ways from format to format, of one or more conversions.

#pragma once

#include <vector>

#include "ox_core/ox_frame_format.h"
#include "ox_cv/ox_cv_backend.h"

namespace oxcv {

/// All formats with pixels, by number.
std::vector<ox::FrameFormat> const& allFormats();

/// Whether a backend converts frames of a size in one step. Formats that are equal count.
using Converts = bool (*)(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size);

/// The pipeline's conversions, which take every size.
bool convertsInPipeline(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size);

/// Whether a backend scales frames of a format.
using Scales = bool (*)(ox::FrameFormat format, ox::ResizeMethod method);

/// The formats to convert frames of a size to, one after the other: none if the formats are equal,
/// one if the backend converts in one step, else two, through `FRAME_BGR24` if possible. Between
/// `FRAME_RGB_PLANAR` and floats, which are B, G, R, it may take three.
/// @throws Failure with the library's own words if that isn't enough
std::vector<ox::FrameFormat> findRoute(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size,
                                       Converts converts);

}  // namespace oxcv
