/// @file
/// What happens to each frame between reading and writing.

#pragma once

#include <optional>
#include <vector>

#include "backends.h"
#include "ox_core/ox_frame.h"
#include "parse.h"

namespace oxcv {

/// In the order in which they are done.
struct Steps {
    std::optional<ox::Rect> roi;
    std::optional<SizeRequest> size;
    ox::ResizeMethod method = ox::ResizeBilinear;
    std::optional<ox::FrameFormat> format;
    std::optional<float> mul;
    std::optional<float> add;
};

/// Brings frames to one format, in as many steps as it takes.
class Conversion {
  public:
    explicit Conversion(Backend const& backend) : _backend(backend) {}

    /// The frame itself if it has the format, else one that stays valid until the next call.
    ox::Frame run(ox::Frame const& frame, ox::FrameFormat format);

  private:
    Backend const& _backend;
    ox::FrameFormat _from = ox::FRAME_FORMAT_NONE;
    ox::FrameFormat _to = ox::FRAME_FORMAT_NONE;
    ox::Size _size;
    std::vector<ox::FrameFormat> _route;
    std::vector<ox::Frame> _frames;  ///< one per step of the route
};

/// Each step is one call of the library. The frames between the steps are kept, so that a stream
/// takes no more memory than its first frame.
class Pipeline {
  public:
    /// @param stored_as the format in which the output stores frames of a format
    Pipeline(Steps const& steps, Backend const& backend,
             ox::FrameFormat (*stored_as)(ox::FrameFormat));

    /// `frame` may be changed; the result stays valid until the next call, and as long as `frame`.
    /// @throws ox::Exception, Failure
    ox::Frame run(ox::Frame& frame);

  private:
    ox::Frame resized(ox::Frame const& frame);

    Steps _steps;
    Backend const& _backend;
    ox::FrameFormat (*_stored_as)(ox::FrameFormat);
    ox::Frame _resized;
    Conversion _conversion;
    Conversion _output_conversion;
};

}  // namespace oxcv
