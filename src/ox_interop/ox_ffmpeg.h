// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// FFmpeg: frames on the memory of an `AVFrame`, and `AVFrame`s that hold a frame. Link libavutil.
///
///     ox::Frame const frame = ox::interop::frameOf(*decoded);      // while `decoded` lives
///     ox::interop::ColourMeaning const colour = ox::interop::colourOf(*decoded);
///     recipe.matrix = colour.matrix;
///     recipe.range = colour.range;

#pragma once

#include <climits>
#include <memory>

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include "ox_interop/ox_planes.h"

namespace ox {
namespace interop {

/// The formats of equal samples, the preferred one first where there are several.
/// `AV_PIX_FMT_GBRPF32` goes from 0 to 1, but the library's float formats from 0 to 255:
/// `ICvBackend::mul` leads from one to the other. The formats `YUVJ` are those without J, with the
/// full range.
inline FormatPair<AVPixelFormat> const (&avFormats())[20] {
    static FormatPair<AVPixelFormat> const pairs[] = {
        {FRAME_GRAY8, AV_PIX_FMT_GRAY8, {0, 0, 0}},
        {FRAME_RGB24, AV_PIX_FMT_RGB24, {0, 0, 0}},
        {FRAME_BGR24, AV_PIX_FMT_BGR24, {0, 0, 0}},
        {FRAME_BGR_PLANAR, AV_PIX_FMT_GBRP, {1, 0, 2}},
        {FRAME_RGB_PLANAR, AV_PIX_FMT_GBRP, {2, 0, 1}},
        {FRAME_I420, AV_PIX_FMT_YUV420P, {0, 1, 2}},
        {FRAME_I420, AV_PIX_FMT_YUVJ420P, {0, 1, 2}},
        {FRAME_YV12, AV_PIX_FMT_YUV420P, {0, 2, 1}},
        {FRAME_NV12, AV_PIX_FMT_NV12, {0, 1, 0}},
        {FRAME_NV21, AV_PIX_FMT_NV21, {0, 1, 0}},
        {FRAME_YV16, AV_PIX_FMT_YUV422P, {0, 2, 1}},
        {FRAME_YV16, AV_PIX_FMT_YUVJ422P, {0, 2, 1}},
        {FRAME_YUYV, AV_PIX_FMT_YUYV422, {0, 0, 0}},
        {FRAME_UYVY, AV_PIX_FMT_UYVY422, {0, 0, 0}},
        {FRAME_NV16, AV_PIX_FMT_NV16, {0, 1, 0}},
        {FRAME_YUV444_PLANAR, AV_PIX_FMT_YUV444P, {0, 1, 2}},
        {FRAME_YUV444_PLANAR, AV_PIX_FMT_YUVJ444P, {0, 1, 2}},
        {FRAME_C1_16U, AV_PIX_FMT_GRAY16, {0, 0, 0}},
        {FRAME_GRAY_32F, AV_PIX_FMT_GRAYF32, {0, 0, 0}},
        {FRAME_BGR_32F_PLANAR, AV_PIX_FMT_GBRPF32, {1, 0, 2}},
    };
    return pairs;
}

/// `AV_PIX_FMT_NONE` if there is none.
inline AVPixelFormat pixelFormatOf(FrameFormat format) {
    auto const* const pair = findFormat(avFormats(), format);
    return pair == nullptr ? AV_PIX_FMT_NONE : pair->foreign;
}

/// `FRAME_FORMAT_NONE` if there is none, as for frames in a device's memory.
inline FrameFormat frameFormatOf(AVPixelFormat format) {
    auto const* const pair = findForeign(avFormats(), format);
    return pair == nullptr ? FRAME_FORMAT_NONE : pair->format;
}

/// A frame on the pixels of an `AVFrame`, which has to outlive it (`av_frame_clone` keeps them
/// alive). Its cropping fields aren't looked at; `getRegion` does the same.
/// @throws Exception `StatusNotSupported` for a format without a counterpart; what `Frame::wrap`
///         throws, `StatusInvalidParameter` for negative line sizes among that
inline Frame frameOf(AVFrame const& frame) {
    auto const* const pair = findForeign(avFormats(), static_cast<AVPixelFormat>(frame.format));
    if (pair == nullptr) {
        refuse(StatusNotSupported, "frameOf", "the AVFrame's format has no counterpart");
    }
    return wrapPlanes(
        *pair, {frame.width, frame.height}, [&](int i) { return frame.data[i]; },
        [&](int i) { return frame.linesize[i]; });
}

/// Makes an `AVFrame` show the pixels of a frame, of which it holds a handle for each plane. Memory
/// that the frame wraps still has to outlive it. Fields other than format, size, data and buffers
/// are as `av_frame_unref` leaves them. FFmpeg takes the pixels for writable, as it knows nothing
/// of other handles.
/// @throws Exception `StatusNotSupported` for a format without a counterpart, or strides of 2^31
/// and
///         more; `StatusCapacityExceeded`; `to` is then as `av_frame_unref` leaves it
inline void showFrame(Frame const& frame, AVFrame& to) {
    av_frame_unref(&to);
    auto const* const pair = findFormat(avFormats(), frame.format());
    if (pair == nullptr) {
        refuse(StatusNotSupported, "showFrame", "the frame's format has no counterpart");
    }
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        int const foreign = pair->order[i];
        if (plane.stride > INT_MAX) {
            av_frame_unref(&to);
            refuse(StatusNotSupported, "showFrame", "a stride is too large");
        }
        std::unique_ptr<Frame> handle(new Frame(frame));
        auto const drop = [](void* held, std::uint8_t*) { delete static_cast<Frame*>(held); };
        to.buf[foreign] =
            av_buffer_create(frame.planeData(i), planeSpan(plane), drop, handle.get(), 0);
        if (to.buf[foreign] == nullptr) {
            av_frame_unref(&to);
            refuse(StatusCapacityExceeded, "showFrame", "memory is exhausted");
        }
        static_cast<void>(handle.release());  // it is the buffer's now
        to.data[foreign] = frame.planeData(i);
        to.linesize[foreign] = static_cast<int>(plane.stride);
    }
    to.format = pair->foreign;
    to.width = frame.width();
    to.height = frame.height();
}

/// How an `AVFrame` means its YUV. What isn't specified is taken for BT.601 and the limited range;
/// mind that players guess BT.709 from 720 rows on.
/// @throws Exception `StatusNotSupported` for a matrix that no recipe has
inline ColourMeaning colourOf(AVFrame const& frame) {
    bool const has_full_range =
        frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P ||
        frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUVJ444P;
    TensorRange const range = has_full_range ? TENSOR_RANGE_FULL : TENSOR_RANGE_LIMITED;
    switch (frame.colorspace) {
        case AVCOL_SPC_UNSPECIFIED:
        case AVCOL_SPC_RGB:
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return {TENSOR_MATRIX_BT601, range};
        case AVCOL_SPC_BT709:
            return {TENSOR_MATRIX_BT709, range};
        case AVCOL_SPC_BT2020_NCL:
            return {TENSOR_MATRIX_BT2020, range};
        default:
            refuse(StatusNotSupported, "colourOf", "no recipe has the AVFrame's matrix");
    }
}

}  // namespace interop
}  // namespace ox
