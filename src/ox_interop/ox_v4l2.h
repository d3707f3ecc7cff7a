// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// V4L2: frames on the buffers of a camera or codec, as `v4l2_format` describes them. Nothing is
/// linked; <linux/videodev2.h> is enough.
///
///     v4l2_format format{};
///     format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
///     ioctl(camera, VIDIOC_G_FMT, &format);
///     void* planes[]{mapped};                                     // by mmap
///     ox::Frame const frame = ox::interop::frameOf(format, planes);   // while it is mapped

#pragma once

#include <linux/videodev2.h>

#include "ox_interop/ox_planes.h"

namespace ox {
namespace interop {

/// The formats of equal samples. Fourccs that end in M have a buffer for each plane; drivers with
/// several planes a buffer also use the others.
inline FormatPair<std::uint32_t> const (&v4l2Formats())[22] {
    static FormatPair<std::uint32_t> const pairs[] = {
        {FRAME_GRAY8, V4L2_PIX_FMT_GREY, {0, 0, 0}},
        {FRAME_RGB24, V4L2_PIX_FMT_RGB24, {0, 0, 0}},
        {FRAME_BGR24, V4L2_PIX_FMT_BGR24, {0, 0, 0}},
        {FRAME_I420, V4L2_PIX_FMT_YUV420, {0, 1, 2}},
        {FRAME_I420, V4L2_PIX_FMT_YUV420M, {0, 1, 2}},
        {FRAME_YV12, V4L2_PIX_FMT_YVU420, {0, 1, 2}},
        {FRAME_YV12, V4L2_PIX_FMT_YVU420M, {0, 1, 2}},
        {FRAME_NV12, V4L2_PIX_FMT_NV12, {0, 1, 0}},
        {FRAME_NV12, V4L2_PIX_FMT_NV12M, {0, 1, 0}},
        {FRAME_NV21, V4L2_PIX_FMT_NV21, {0, 1, 0}},
        {FRAME_NV21, V4L2_PIX_FMT_NV21M, {0, 1, 0}},
        {FRAME_YV16, V4L2_PIX_FMT_YUV422P, {0, 2, 1}},
        {FRAME_YV16, V4L2_PIX_FMT_YUV422M, {0, 2, 1}},
        {FRAME_YV16, V4L2_PIX_FMT_YVU422M, {0, 1, 2}},
        {FRAME_YUYV, V4L2_PIX_FMT_YUYV, {0, 0, 0}},
        {FRAME_UYVY, V4L2_PIX_FMT_UYVY, {0, 0, 0}},
        {FRAME_NV16, V4L2_PIX_FMT_NV16, {0, 1, 0}},
        {FRAME_NV16, V4L2_PIX_FMT_NV16M, {0, 1, 0}},
        {FRAME_YUV444, V4L2_PIX_FMT_YUV24, {0, 0, 0}},
        {FRAME_YUV444_PLANAR, V4L2_PIX_FMT_YUV444M, {0, 1, 2}},
        {FRAME_YUV444_PLANAR, V4L2_PIX_FMT_YVU444M, {0, 2, 1}},
        {FRAME_C1_16U, V4L2_PIX_FMT_Y16, {0, 0, 0}},
    };
    return pairs;
}

/// The fourcc of a format, the one of a single buffer where there is one; 0 if there is none.
inline std::uint32_t v4l2FormatOf(FrameFormat format) {
    auto const* const pair = findFormat(v4l2Formats(), format);
    return pair == nullptr ? 0 : pair->foreign;
}

/// `FRAME_FORMAT_NONE` if there is none, as for compressed and tiled formats.
inline FrameFormat frameFormatOfV4l2(std::uint32_t fourcc) {
    auto const* const pair = findForeign(v4l2Formats(), fourcc);
    return pair == nullptr ? FRAME_FORMAT_NONE : pair->format;
}

/// What both kinds of `v4l2_format` say.
struct V4l2Picture {
    Size size;
    std::uint32_t fourcc;
    int buffer_count;  ///< memory planes, as V4L2 calls them
    std::uint32_t strides[3];
    std::uint32_t bytes[3];  ///< of each buffer
    std::uint32_t colour_space;
    std::uint32_t encoding;
    std::uint32_t quantization;
};

/// @throws Exception `StatusInvalidParameter` for a type that isn't video, or for no planes or more
///         than three
inline V4l2Picture pictureOf(v4l2_format const& format) {
    V4l2Picture picture{};
    switch (format.type) {
        case V4L2_BUF_TYPE_VIDEO_CAPTURE:
        case V4L2_BUF_TYPE_VIDEO_OUTPUT: {
            v4l2_pix_format const& pix = format.fmt.pix;
            picture.size = {static_cast<int>(pix.width), static_cast<int>(pix.height)};
            picture.fourcc = pix.pixelformat;
            picture.buffer_count = 1;
            picture.strides[0] = pix.bytesperline;
            picture.bytes[0] = pix.sizeimage;
            picture.colour_space = pix.colorspace;
            picture.encoding = pix.ycbcr_enc;
            picture.quantization = pix.quantization;
            return picture;
        }
        case V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE:
        case V4L2_BUF_TYPE_VIDEO_OUTPUT_MPLANE: {
            v4l2_pix_format_mplane const& pix = format.fmt.pix_mp;
            if (pix.num_planes < 1 || pix.num_planes > 3) {
                break;
            }
            picture.size = {static_cast<int>(pix.width), static_cast<int>(pix.height)};
            picture.fourcc = pix.pixelformat;
            picture.buffer_count = pix.num_planes;
            for (int i = 0; i < picture.buffer_count; ++i) {
                picture.strides[i] = pix.plane_fmt[i].bytesperline;
                picture.bytes[i] = pix.plane_fmt[i].sizeimage;
            }
            picture.colour_space = pix.colorspace;
            picture.encoding = pix.ycbcr_enc;
            picture.quantization = pix.quantization;
            return picture;
        }
        default:
            break;
    }
    refuse(StatusInvalidParameter, "pictureOf", "the v4l2_format isn't one of video");
}

/// Bytes from row to row of a plane that lies behind the first one in its buffer: V4L2 states the
/// first one's alone. Planes of a half width have half of it, unless two samples stand in a pixel.
inline std::int64_t strideBehind(std::int64_t first, FramePlane const& luma,
                                 FramePlane const& plane) {
    return plane.channels == luma.channels && plane.width < luma.width ? first / 2 : first;
}

/// A frame on the buffers of a device. Planes that share a buffer follow one another as V4L2
/// defines it: after `height` rows of `bytesperline`, which 0 makes the row's bytes. Drivers that
/// align the height of luma say so in `v4l2_format.height`, or not at all.
/// @param buffers the address of each memory plane, `num_planes` of them, or one
/// @throws Exception `StatusInvalidParameter` for a type that isn't video, another count of buffers
///         than the format's, and a `sizeimage` other than 0 that the planes don't fit in;
///         `StatusNotSupported` for a format without a counterpart; what `Frame::wrap` throws
inline Frame frameOf(v4l2_format const& format, void* const* buffers) {
    V4l2Picture const picture = pictureOf(format);
    auto const* const pair = findForeign(v4l2Formats(), picture.fourcc);
    if (pair == nullptr) {
        refuse(StatusNotSupported, "frameOf", "the fourcc has no counterpart");
    }
    FrameLayout layout(pair->format, picture.size, 1);
    if (buffers == nullptr) {
        refuse(StatusNullPointer, "frameOf", "buffers is null");
    }
    if (picture.buffer_count != 1 && picture.buffer_count != layout.planeCount) {
        refuse(StatusInvalidParameter, "frameOf", "the format has another count of buffers");
    }
    bool const has_one = picture.buffer_count == 1;
    unsigned char* planes[4]{};
    std::uint64_t offset = 0;  // in the buffer
    for (int k = 0; k < layout.planeCount; ++k) {
        int const i = pair->order[1] == 2 && k != 0 ? 3 - k : k;
        FramePlane& plane = layout.plane[i];
        int const buffer = has_one ? 0 : k;
        std::int64_t const stated = picture.strides[buffer];
        if (stated != 0) {
            plane.stride = has_one && k > 0 ? strideBehind(stated, layout.plane[0], plane) : stated;
        }
        std::uint64_t const end = offset + planeSpan(plane);
        if (picture.bytes[buffer] != 0 && end > picture.bytes[buffer]) {
            refuse(StatusInvalidParameter, "frameOf", "the planes are larger than sizeimage");
        }
        auto* const start = static_cast<unsigned char*>(buffers[buffer]);
        planes[i] = start == nullptr ? nullptr : start + offset;
        offset = has_one ? offset + static_cast<std::uint64_t>(plane.stride) *
                                        static_cast<std::uint64_t>(plane.height)
                         : 0;
    }
    return Frame::wrap(layout, planes);
}

/// How a device means its YUV, with V4L2's rules for what it leaves open: BT.601 and the limited
/// range for most cameras, the full range for JPEG.
/// @throws Exception `StatusNotSupported` for a matrix that no recipe has; what `pictureOf` throws
inline ColourMeaning colourOf(v4l2_format const& format) {
    V4l2Picture const picture = pictureOf(format);
    std::uint32_t encoding = picture.encoding;
    if (encoding == V4L2_YCBCR_ENC_DEFAULT) {
        encoding = V4L2_MAP_YCBCR_ENC_DEFAULT(picture.colour_space);
    }
    std::uint32_t quantization = picture.quantization;
    if (quantization == V4L2_QUANTIZATION_DEFAULT) {
        quantization = V4L2_MAP_QUANTIZATION_DEFAULT(false, picture.colour_space, encoding);
    }
    TensorRange const range =
        quantization == V4L2_QUANTIZATION_FULL_RANGE ? TENSOR_RANGE_FULL : TENSOR_RANGE_LIMITED;
    switch (encoding) {
        case V4L2_YCBCR_ENC_601:
        case V4L2_YCBCR_ENC_XV601:
            return {TENSOR_MATRIX_BT601, range};
        case V4L2_YCBCR_ENC_709:
        case V4L2_YCBCR_ENC_XV709:
            return {TENSOR_MATRIX_BT709, range};
        case V4L2_YCBCR_ENC_BT2020:
            return {TENSOR_MATRIX_BT2020, range};
        default:
            refuse(StatusNotSupported, "colourOf", "no recipe has the device's matrix");
    }
}

}  // namespace interop
}  // namespace ox
