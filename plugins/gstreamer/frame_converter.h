// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames cropped, scaled and converted in one pass, by the library's public classes.

#pragma once

#include <memory>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_interop/ox_planes.h"

namespace oxgst {

/// How frames are converted. Regions are read as `FrameToTensor` reads them.
struct Conversion {
    ox::Rect region;
    ox::TensorMethod method = ox::TENSOR_METHOD_AUTOMATIC;
    std::shared_ptr<ox::IKernel> kernel;  ///< takes the place of the method unless it is null
    ox::interop::ColourMeaning colour{};  ///< of the source's YUV
};

/// Two ways, both rows at a time:
/// - to gray and to colours: `FrameToTensor`, whose tensor is the destination's bytes, with the
///   matrix and the range of the source;
/// - to YUV, and of `FRAME_C1_16U` to itself: `FormatConverter` to a format that can be scaled,
///   `Scaler` or `ScalerConvolutional`, `FormatConverter` to the destination's format.
///
/// In packed 4:2:2 of an odd width, the Y behind a row's last one repeats it.
///
/// A kernel counts only where the size changes. No byte depends on frames before. From the second
/// frame of a kind on nothing is allocated. Serves one thread at a time.
class FrameConverter {
  public:
    /// @throws ox::Exception as the classes named above do
    void run(Conversion const& conversion, ox::Frame& src, ox::Frame& dst);

  private:
    struct Chain;
    void toColour(Conversion const& conversion, ox::Frame const& src, ox::Frame& dst);
    void toRows(Conversion const& conversion, ox::Frame const& src, ox::Frame& dst);
    void scale(Chain& chain, Conversion const& conversion, ox::Size from, ox::Size to);

    ox::FrameToTensor _to_tensor;
    ox::Frame _planes;  ///< colour planes, where the destination's aren't evenly spaced
    ox::FormatConverter _converters[4];
    ox::Scaler _scaler;
    ox::ScalerConvolutional _filter;
    ox::Frame _unpacked;  ///< a single row
};

}  // namespace oxgst
