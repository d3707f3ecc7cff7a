// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames from one format to another.

#pragma once

#include <string>
#include <vector>

#include "backends.h"
#include "ox_core/ox_frame.h"

namespace oxcv {

/// The name of a conversion for messages.
std::string conversionName(ox::FrameFormat src, ox::FrameFormat dst);

/// Brings frames to one format, in as many steps as it takes.
class Conversion {
  public:
    explicit Conversion(Backend& backend) : _backend(backend) {}

    /// The frame itself if it has the format, else one that stays valid until the next call.
    ox::Frame run(ox::Frame const& frame, ox::FrameFormat format);

  private:
    struct Leg {
        ox::FrameFormat format;
        ox::ICvBackend* operations;
        ox::Frame frame;
    };

    void plan(ox::FrameFormat from, ox::FrameFormat to, ox::Size size);

    Backend& _backend;
    ox::FrameFormat _from = ox::FRAME_FORMAT_NONE;
    ox::FrameFormat _to = ox::FRAME_FORMAT_NONE;
    ox::Size _size;
    std::vector<Leg> _legs;
};

}  // namespace oxcv
