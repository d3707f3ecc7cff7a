// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Where a picture goes in a tensor, and what is read of it.

#pragma once

#include "ox_core/ox_frame_format.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_scaler.h"

namespace ox::impl {

/// What is read of a frame for a region of it that has pixels.
Rect readRegion(FrameFormat format, Rect region);

/// @param read of a frame of that format
/// @return what is read of it in the end, and where that goes
PictureMapping fitPicture(TensorRecipe const& recipe, FrameFormat format, Rect read);

/// The scaling of a picture from one size to another.
ScaleMethod scaleMethodOf(TensorRecipe const& recipe, PictureMapping const& mapping);

}  // namespace ox::impl
