// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The rows of a picture, scaled and converted, on their way into a tensor.

#pragma once

#include <array>
#include <cstdint>

#include "ox_core/ox_buffer.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_impl_format_converter.h"
#include "ox_cv/ox_row_window.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "rows/tensor/formulas.h"

namespace ox::impl {

/// Whether frames of that format can be read.
bool isTensorSource(FrameFormat format);

/// How a picture is scaled.
struct TensorScaling {
    Size size;  ///< afterwards
    ScaleMethod method;
    IKernel* kernel;  ///< takes the place of `method` unless it is null
    ScalerPrecision precision;
};

/// Rows of bytes, as `FrameToTensor` defines them.
class TensorSource {
  public:
    /// Arms the source on a picture.
    /// @param frame whose pixels must outlive the rows; the object needn't
    /// @param gray whether the rows are of `FRAME_GRAY8`; else they are of three channels
    /// @param matrix for the colours of YUV formats; null is the library's
    /// @throws Exception what the scalers throw
    void reuse(Frame const& frame, TensorScaling const& scaling, bool gray,
               rows::YuvMatrix const* matrix);

    /// Whether rows of three channels are R,G,B instead of B,G,R.
    bool isRedFirst() const { return _red_first; }
    std::int32_t width() const { return _width; }

    /// The current row; it is valid until the next call.
    std::uint8_t const* row();
    void next() { _window.next(); }

  private:
    void armScaled(FrameFormat unpacked, TensorScaling const& scaling);
    template <class Source>
    void armScaler(Source& source, TensorScaling const& scaling);
    void planSteps(FrameFormat format, bool gray);
    void addStep(FrameFormat src, FrameFormat dst);

    Frame _picture;  ///< on the source's memory, without a share in it
    FormatConverter _unpacker;
    Frame _single_row;  ///< a picture of one row, unpacked
    Scaler _scaler;
    ScalerConvolutional _filter;
    RowWindow _window;
    std::int32_t _width = 0;
    bool _red_first = false;
    std::array<ImplFormatConverter, 2> _steps;  ///< from the window's rows on
    std::size_t _step_count = 0;
    rows::YuvMatrix const* _matrix = nullptr;  ///< takes the place of the first step
    std::array<Buffer, 2> _rows;               ///< that the steps write
};

}  // namespace ox::impl
