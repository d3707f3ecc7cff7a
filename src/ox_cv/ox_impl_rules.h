// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What operations demand of frames, and which formats each takes. No pixel is touched: backends
/// and scalers decide by these rules, and a caller can ask them beforehand.

#pragma once

#include <limits>

#include "ox_core/ox_frame.h"
#include "ox_core/ox_impl_format_facts.h"
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

/// Formats whose rows `ScalerAreaY` sums as one channel: only the first `width` bytes of a row are
/// written, on purpose.
constexpr bool hasShortAreaRows(FrameFormat format) {
    return format == FRAME_UYVY || format == FRAME_C2_8U || format == FRAME_C4_8U;
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

/// Columns that `NV12toBGR_neon` converts at a time; the last width mod 8 columns stay unwritten.
constexpr int directColumns = 8;

/// `NV12toBGR_neon` takes strides of 32 bits.
constexpr std::int64_t maxDirectStride = std::numeric_limits<int>::max();

/// Whether `convertNv12Directly` takes two frames: the formats are `FRAME_NV12` and `FRAME_BGR24`,
/// and the strides fit.
bool goesDirectly(Frame const& src, Frame const& dst);

/// Whether luma and chroma have equal strides: `NV12toBGR_neon` steps over both by luma's.
inline bool hasDirectStrides(FrameLayout const& src) {
    return src.plane[0].stride == src.plane[1].stride && src.plane[0].stride <= maxDirectStride;
}

/// Whether `NV12toBGR_neon`, stepping over chroma by luma's stride, reads nothing but chroma rows.
bool readsInsideChroma(Frame const& src);

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
