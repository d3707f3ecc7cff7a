/// @file
/// The formats in which steps are done, where a picture's own would spoil it.

#pragma once

#include "ox_core/ox_frame_format.h"

namespace oxcv {

/// The library's backends scale rows of packed 4:2:2 as if all their bytes were of one kind, which
/// mixes luma and chroma; `FRAME_NV16` holds the same samples. `ox::Packed422Resizer` goes through
/// it.
ox::FrameFormat formatToScaleIn(ox::FrameFormat format);

/// Filters take packed pixels rather than planes of colours, and no red-first ones; `FRAME_BGR24`
/// holds the same samples. Packed 4:2:2 as above.
ox::FrameFormat formatToFilterIn(ox::FrameFormat format);

/// A warp moves each plane by the same matrix in the plane's own coordinates, so that subsampled
/// chroma would move too far, and fills what the picture leaves free with zeros, which are black in
/// gray and RGB formats and green in YUV. YUV pictures are therefore warped as `FRAME_BGR24`, or
/// in the format that they are to be converted to, if that can be warped as it is.
/// @param target the format behind the warp
ox::FrameFormat formatToWarpIn(ox::FrameFormat format, ox::FrameFormat target);

}  // namespace oxcv
