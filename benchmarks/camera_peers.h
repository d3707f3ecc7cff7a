// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Camera frames made into tensors by chains of other libraries.

#pragma once

#include <vector>

#include "operation.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "pictures.h"

namespace ox::benchmarks {

/// A picture for a network, and where it goes.
struct CameraTask {
    Picture src;  ///< `FRAME_NV12`, `FRAME_I420`, `FRAME_YUYV` or `FRAME_BGR24`
    TensorRecipe recipe;
    PictureMapping mapping;  ///< even numbers
};

/// What each other library does fastest for the task, with the same filter. The steps that a
/// library lacks are OpenCV's.
std::vector<Contestant> cameraPeers(CameraTask const& task);

}  // namespace ox::benchmarks
