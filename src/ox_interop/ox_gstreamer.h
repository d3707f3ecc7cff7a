// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// GStreamer: frames on mapped buffers, buffers that hold a frame, and caps. Link
/// gstreamer-video-1.0.
///
///     GstVideoFrame mapped;
///     if (gst_video_frame_map(&mapped, &info, buffer, GST_MAP_READ)) {
///         ox::Frame const frame = ox::interop::frameOf(mapped);   // until it is unmapped
///         ...
///         gst_video_frame_unmap(&mapped);
///     }

#pragma once

#include <climits>
#include <memory>
#include <string>

#include <gst/video/video.h>

#include "ox_interop/ox_planes.h"

namespace ox {
namespace interop {

/// The formats of equal samples, the preferred one first where there are several.
inline FormatPair<GstVideoFormat> const (&gstFormats())[17] {
    static FormatPair<GstVideoFormat> const pairs[] = {
        {FRAME_GRAY8, GST_VIDEO_FORMAT_GRAY8, {0, 0, 0}},
        {FRAME_RGB24, GST_VIDEO_FORMAT_RGB, {0, 0, 0}},
        {FRAME_RGB_PLANAR, GST_VIDEO_FORMAT_RGBP, {0, 1, 2}},
        {FRAME_BGR24, GST_VIDEO_FORMAT_BGR, {0, 0, 0}},
        {FRAME_BGR_PLANAR, GST_VIDEO_FORMAT_BGRP, {0, 1, 2}},
        {FRAME_BGR_PLANAR, GST_VIDEO_FORMAT_GBR, {1, 0, 2}},
        {FRAME_I420, GST_VIDEO_FORMAT_I420, {0, 1, 2}},
        {FRAME_YV12, GST_VIDEO_FORMAT_YV12, {0, 1, 2}},
        {FRAME_NV12, GST_VIDEO_FORMAT_NV12, {0, 1, 0}},
        {FRAME_NV21, GST_VIDEO_FORMAT_NV21, {0, 1, 0}},
        {FRAME_YV16, GST_VIDEO_FORMAT_Y42B, {0, 2, 1}},
        {FRAME_YUYV, GST_VIDEO_FORMAT_YUY2, {0, 0, 0}},
        {FRAME_UYVY, GST_VIDEO_FORMAT_UYVY, {0, 0, 0}},
        {FRAME_NV16, GST_VIDEO_FORMAT_NV16, {0, 1, 0}},
        {FRAME_YUV444, GST_VIDEO_FORMAT_v308, {0, 0, 0}},
        {FRAME_YUV444_PLANAR, GST_VIDEO_FORMAT_Y444, {0, 1, 2}},
#if G_BYTE_ORDER == G_LITTLE_ENDIAN
        {FRAME_C1_16U, GST_VIDEO_FORMAT_GRAY16_LE, {0, 0, 0}},
#else
        {FRAME_C1_16U, GST_VIDEO_FORMAT_GRAY16_BE, {0, 0, 0}},
#endif
    };
    return pairs;
}

/// `GST_VIDEO_FORMAT_UNKNOWN` if there is none.
inline GstVideoFormat videoFormatOf(FrameFormat format) {
    auto const* const pair = findFormat(gstFormats(), format);
    return pair == nullptr ? GST_VIDEO_FORMAT_UNKNOWN : pair->foreign;
}

/// `FRAME_FORMAT_NONE` if there is none.
inline FrameFormat frameFormatOf(GstVideoFormat format) {
    auto const* const pair = findForeign(gstFormats(), format);
    return pair == nullptr ? FRAME_FORMAT_NONE : pair->format;
}

/// A frame on mapped memory, with the strides and offsets of the buffer's video meta. It may be
/// written if the buffer was mapped for that.
/// @throws Exception `StatusNotSupported` for a format without a counterpart; what `Frame::wrap`
///         throws
inline Frame frameOf(GstVideoFrame const& mapped) {
    auto const* const pair = findForeign(gstFormats(), GST_VIDEO_FRAME_FORMAT(&mapped));
    if (pair == nullptr) {
        refuse(StatusNotSupported, "frameOf", "the video frame's format has no counterpart");
    }
    return wrapPlanes(
        *pair, {GST_VIDEO_FRAME_WIDTH(&mapped), GST_VIDEO_FRAME_HEIGHT(&mapped)},
        [&](int i) { return GST_VIDEO_FRAME_PLANE_DATA(&mapped, i); },
        [&](int i) { return GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, i); });
}

/// Caps for `gst_caps_from_string`, such as "video/x-raw, format=(string)NV12, width=(int)640,
/// height=(int)480". The frame rate and the colorimetry are the caller's to add.
/// @throws Exception `StatusNotSupported` for a format without a counterpart
inline std::string capsOf(FrameFormat format, Size size) {
    GstVideoFormat const foreign = videoFormatOf(format);
    if (foreign == GST_VIDEO_FORMAT_UNKNOWN) {
        refuse(StatusNotSupported, "capsOf", "the frame's format has no counterpart");
    }
    return std::string("video/x-raw, format=(string)") + gst_video_format_to_string(foreign) +
           ", width=(int)" + std::to_string(size.width) + ", height=(int)" +
           std::to_string(size.height);
}

/// A buffer on the pixels of a frame, of which it holds a handle, with a video meta. Memory that
/// the frame wraps still has to outlive it.
/// @return the caller's reference
/// @throws Exception `StatusNotSupported` for a format without a counterpart, or strides of 2^31
/// and
///         more
inline GstBuffer* bufferOf(Frame const& frame) {
    auto const* const pair = findFormat(gstFormats(), frame.format());
    if (pair == nullptr) {
        refuse(StatusNotSupported, "bufferOf", "the frame's format has no counterpart");
    }
    FrameLayout const& layout = frame.layout();
    int planes[3]{};  // of the frame, by the numbers of the foreign ones
    for (int i = 0; i < layout.planeCount; ++i) {
        if (layout.plane[i].stride > INT_MAX) {
            refuse(StatusNotSupported, "bufferOf", "a stride is too large");
        }
        planes[pair->order[i]] = i;
    }
    gsize offsets[GST_VIDEO_MAX_PLANES]{};
    gint strides[GST_VIDEO_MAX_PLANES]{};
    gsize bytes = 0;
    std::unique_ptr<GstBuffer, void (*)(GstBuffer*)> buffer(gst_buffer_new(), gst_buffer_unref);
    for (int k = 0; k < layout.planeCount; ++k) {
        FramePlane const& plane = layout.plane[planes[k]];
        gsize const span = planeSpan(plane);
        std::unique_ptr<Frame> handle(new Frame(frame));
        auto const drop = [](gpointer held) { delete static_cast<Frame*>(held); };
        gst_buffer_append_memory(
            buffer.get(),
            gst_memory_new_wrapped(static_cast<GstMemoryFlags>(0), frame.planeData(planes[k]), span,
                                   0, span, handle.release(), drop));
        offsets[k] = bytes;
        strides[k] = static_cast<gint>(plane.stride);
        bytes += span;
    }
    gst_buffer_add_video_meta_full(buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, pair->foreign,
                                   static_cast<guint>(frame.width()),
                                   static_cast<guint>(frame.height()),
                                   static_cast<guint>(layout.planeCount), offsets, strides);
    return buffer.release();
}

/// How negotiated caps mean their YUV. What isn't specified is taken for BT.601 and the limited
/// range.
/// @throws Exception `StatusNotSupported` for a matrix that no recipe has
inline ColourMeaning colourOf(GstVideoInfo const& info) {
    TensorRange const range = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255
                                  ? TENSOR_RANGE_FULL
                                  : TENSOR_RANGE_LIMITED;
    switch (info.colorimetry.matrix) {
        case GST_VIDEO_COLOR_MATRIX_UNKNOWN:
        case GST_VIDEO_COLOR_MATRIX_RGB:
        case GST_VIDEO_COLOR_MATRIX_BT601:
            return {TENSOR_MATRIX_BT601, range};
        case GST_VIDEO_COLOR_MATRIX_BT709:
            return {TENSOR_MATRIX_BT709, range};
        case GST_VIDEO_COLOR_MATRIX_BT2020:
            return {TENSOR_MATRIX_BT2020, range};
        default:
            refuse(StatusNotSupported, "colourOf", "no recipe has the caps' matrix");
    }
}

}  // namespace interop
}  // namespace ox
