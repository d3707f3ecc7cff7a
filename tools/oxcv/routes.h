/// @file
/// Which conversions and scalers the library has, found out by trying them.

#pragma once

#include <vector>

#include "ox_core/ox_frame_format.h"
#include "ox_cv/ox_cv_backend.h"

namespace oxcv {

/// All formats with pixels, by number.
std::vector<ox::FrameFormat> const& allFormats();

/// True if the library converts in one step, or the formats are equal.
bool convertsDirectly(ox::FrameFormat src, ox::FrameFormat dst);

/// True if the library's scaler of that method takes the format.
bool scales(ox::FrameFormat format, ox::ResizeMethod method);

/// The formats to convert to, one after the other: none if the formats are equal, one if the
/// library converts directly, else two, through `FRAME_BGR24` if that will do.
/// @throws Failure with the library's own words if two steps aren't enough
std::vector<ox::FrameFormat> findRoute(ox::FrameFormat src, ox::FrameFormat dst);

}  // namespace oxcv
