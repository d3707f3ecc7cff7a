// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Pictures between bars.

#pragma once

#include <array>
#include <cstdint>

#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"

namespace oxcv {

/// Red, green, blue; gray takes the first.
using BarColour = std::array<std::uint8_t, 3>;

/// Puts one picture after another into the same frame of bars.
class Letterbox {
  public:
    /// @param inner where the picture goes, which has its size
    /// @return valid until the next call
    /// @throws Failure for a format other than gray and those of 8-bit red, green and blue
    ox::Frame const& surround(ox::Frame const& picture, ox::Size size, ox::Rect inner,
                              BarColour const& bars);

  private:
    ox::Frame _result;
};

}  // namespace oxcv
