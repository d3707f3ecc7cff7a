// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Arithmetic with a number for each channel.

#pragma once

#include <array>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_backend.h"

namespace oxcv {

/// In the frame's order of channels; frames of one channel take the first.
using Channels = std::array<float, 3>;

/// Multiplies each channel of a frame of floats by a number.
/// @throws ox::Exception for other frames, as `operations` does
void multiply(ox::ICvBackend& operations, ox::Frame& frame, Channels const& factors);
/// Adds a number to each.
/// @throws ox::Exception as above
void add(ox::ICvBackend& operations, ox::Frame& frame, Channels const& summands);

}  // namespace oxcv
