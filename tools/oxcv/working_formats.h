// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The formats in which steps are done, where the picture's own format would spoil the result.

#pragma once

#include "ox_core/ox_frame_format.h"

namespace oxcv {

/// The library's backends scale rows of packed 4:2:2 as if all their bytes were of one kind, which
/// mixes luma and chroma. So these are scaled as `FRAME_NV16`, which holds the same samples, by
/// `ox::Packed422Resizer`.
ox::FrameFormat formatToScaleIn(ox::FrameFormat format);

/// Filters take neither planes of colours nor pixels with red first: these are filtered as
/// `FRAME_BGR24`, which holds the same samples. Packed 4:2:2 as above.
ox::FrameFormat formatToFilterIn(ox::FrameFormat format);

/// A warp moves each plane by the same matrix in the plane's own coordinates, so subsampled chroma
/// would move too far. It fills pixels that the picture doesn't cover with zeros, which are black
/// in gray and RGB formats and green in YUV. So YUV pictures are warped as `FRAME_BGR24`, or in the
/// format that they are converted to, if that can be warped as it is. Bars around a picture are
/// drawn in the same formats, since they may begin between two pixels that share chroma.
/// @param target the format that the warped picture is converted to
ox::FrameFormat formatToWarpIn(ox::FrameFormat format, ox::FrameFormat target);

}  // namespace oxcv
