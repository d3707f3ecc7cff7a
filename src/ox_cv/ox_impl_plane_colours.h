/// @file
/// Conversions of the vector backend: whole planes, by kernels.

#pragma once

#include "ox_core/ox_frame.h"

namespace ox::impl {

/// Converts the pixels of `src` to `dst`, a frame of the same size and of another format.
/// @param scratch receives what lies between two steps
/// @return false for a pair that there is no route for; nothing is done then
bool convertColours(Frame const& src, Frame& dst, Frame& scratch);

/// The same for packed BGR, whatever the format of `src` says, to `FRAME_YUV444_PLANAR`.
/// @param dst receives the planes in storage of its own
void convertBgrToYuv444(Frame const& src, Frame& dst);

}  // namespace ox::impl
