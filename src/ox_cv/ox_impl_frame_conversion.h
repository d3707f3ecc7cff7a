/// @file
/// Format conversion of a frame into another, without the detour of a stream of rows.

#pragma once

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_impl_format_converter.h"

namespace ox::impl {

/// Writes what the rows of `src`, converted one by one, make of `dst`.
/// @param conversion armed with the formats and the width of the frames, whose sizes are equal
void convertFrame(ImplFormatConverter const& conversion, Frame const& src, Frame& dst);

}  // namespace ox::impl
