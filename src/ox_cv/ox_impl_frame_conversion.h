/// @file
/// Format conversion of a frame into another, without the detour of a stream of rows.

#pragma once

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_impl_format_converter.h"

namespace ox::impl {

/// Converts `src` into `dst`, with the bytes that a conversion row by row gives.
/// @param conversion armed with the formats and the width of the frames, whose sizes are equal
void convertFrame(ImplFormatConverter const& conversion, Frame const& src, Frame& dst);

}  // namespace ox::impl
