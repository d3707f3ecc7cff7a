// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames for benchmarks, and what each library takes them as.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "ox_core/ox_frame.h"

namespace ox::benchmarks {

using Picture = std::shared_ptr<Frame>;

/// A frame without gaps between its rows. Byte formats are random, float formats random from -20 to
/// 280.
Picture randomPicture(FrameFormat format, Size size);
Picture blankPicture(FrameFormat format, Size size);

/// Bytes of all pixels.
std::size_t pixelBytes(Frame const& frame);

/// A memcpy that reads and writes that many bytes together, of memory taken at its first run.
std::function<void()> copyOf(std::size_t bytes);

bool equalPixels(Frame const& a, Frame const& b);

}  // namespace ox::benchmarks
