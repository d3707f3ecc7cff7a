/// @file
/// What both backends demand of frames, and which operations each takes. No pixel is touched: the
/// backends decide by these rules, and a caller can ask them beforehand.

#pragma once

#include "ox_core/ox_frame.h"
#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_cv_backend.h"

namespace ox::impl {

/// Throws unless both frames are on the CPU.
inline void requireCpu(Place here, Frame const& src, Frame const& dst) {
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
}

/// A second handle on `frame`, narrowed to `roi` unless that is empty.
inline Frame selectRegion(Frame frame, Rect roi) {
    return roi.empty() ? frame : getRegion(frame, roi);
}

/// Whether a new `FormatConverter` takes that pair of formats, in frames of two rows and more.
/// Equal formats count.
bool pipelineConverts(FrameFormat src, FrameFormat dst);

/// Whether `Scaler` yields pictures of that format and another size.
bool pipelineScales(FrameFormat format, ResizeMethod method);

/// Whether the vector backend converts that pair, of frames whose sides suit `needsEvenSides`.
/// Equal formats count.
bool vectorConverts(FrameFormat src, FrameFormat dst);

/// 4:2:0 sources of the vector backend are converted with even sides only, whatever the
/// destination.
constexpr bool needsEvenSides(FrameFormat src) {
    return src == FRAME_I420 || src == FRAME_NV12 || src == FRAME_NV21;
}

/// Whether there are resizers for channels of that depth; those of 32 bits are taken for floats.
constexpr bool hasResizers(int bits) {
    return bits == 8 || bits == 32;
}

constexpr bool hasAreaResizer(int bits) {
    return bits == 8;
}

/// Whether a plane isn't too large to be warped.
bool canWarp(FramePlane const& src);

}  // namespace ox::impl
