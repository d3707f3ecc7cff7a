// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What refusals say, where several tests ask for it.
#pragma once

#include "ox_core/ox_frame_format.h"

namespace ox::test {

constexpr char windowSizeOutOfRange[] = "Parameter 'window_size' is out of range.";
constexpr char rowOutsideWindow[] =
    "Assertion failed: 0 <= row_index_in_window && row_index_in_window < _window_size";
constexpr char unsupportedPair[] =
    "Failure in ImplFormatConverter::get_context(...) : unsupported format.";

// What the pipeline doesn't convert gray to.
constexpr FrameFormat refusedFromGray = FRAME_BGR_32F_PLANAR;

}  // namespace ox::test
