// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What happens to each frame between reading and writing.

#pragma once

#include <memory>
#include <optional>

#include "affine.h"
#include "arithmetic.h"
#include "backends.h"
#include "conversion.h"
#include "filter.h"
#include "letterbox.h"
#include "ox_core/ox_frame.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_packed_422_resizer.h"
#include "parse.h"

namespace oxcv {

/// The steps asked for, in the order in which they are done.
struct Steps {
    std::optional<ox::Rect> roi;
    std::optional<SizeRequest> size;
    ox::ResizeMethod method = ox::ResizeBilinear;
    std::shared_ptr<ox::IKernel> kernel;  ///< scales in place of the method, if there is one
    ox::ScalerPrecision precision = ox::OX_SCALER_FIXED_POINT_16S;  ///< of the kernel's weights
    ox::TensorFit fit = ox::TENSOR_FIT_STRETCH;
    BarColour bars{};            ///< of a letterbox
    std::optional<Matrix> warp;  ///< from source to destination pixels
    bool invert = false;         ///< the other way round
    std::optional<double> rotate;
    ox::ResizeMethod warp_method = ox::ResizeBilinear;
    std::optional<ox::FrameFormat> format;
    std::optional<Channels> mul;
    std::optional<Channels> add;
};

/// Each step is one call of the library. The frames between the steps are kept, so that a stream
/// takes no more memory than its first frame.
class StepRunner {
  public:
    /// @param stored_as the format in which the output stores frames of a format
    /// @throws UsageError for a step that the backend never does
    StepRunner(Steps const& steps, Backend& backend, ox::FrameFormat (*stored_as)(ox::FrameFormat));

    /// `frame` may be changed; the result stays valid until the next call, and as long as `frame`.
    /// All frames have one format and size.
    /// @throws ox::Exception, Failure
    ox::Frame run(ox::Frame& frame);

  private:
    ox::FrameFormat targetOf(ox::FrameFormat source) const;
    ox::Frame resized(ox::Frame const& frame, ox::FrameFormat target);
    ox::Frame fitted(ox::Frame const& frame, ox::Size size, ox::FrameFormat target);
    ox::Frame scaled(ox::Frame const& frame, ox::Size size);
    void scale(ox::Frame const& frame, ox::Size size);
    void chooseScaler(ox::Frame const& frame, ox::Size size);
    void reduce(ox::Frame const& frame, ox::Size size);
    ox::Frame warped(ox::Frame const& frame, ox::FrameFormat target);
    void arithmetic(ox::Frame& frame);

    Steps _steps;
    Backend& _backend;
    ox::FrameFormat (*_stored_as)(ox::FrameFormat);
    ox::ICvBackend* _scaler = nullptr;  ///< settled by the first frame, as `_warper`
    ox::ICvBackend* _warper = nullptr;
    ox::Frame _resized;
    ox::Frame _warped;
    Conversion _before_reduction;
    ox::Packed422Resizer _packed_scaler;
    Reduction _reduction;
    Conversion _before_bars;
    Letterbox _letterbox;
    Conversion _before_warp;
    Conversion _conversion;
    Conversion _output_conversion;
};

}  // namespace oxcv
