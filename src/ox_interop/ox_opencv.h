// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// OpenCV: frames on the memory of `cv::Mat`s, and mats on the planes of a frame. Link opencv_core.
///
///     cv::Mat const picture = cv::imread("photo.jpg");               // B,G,R
///     ox::Frame const frame = ox::interop::frameOf(picture);         // while `picture` lives
///     cv::Mat const luma = ox::interop::matOf(camera, 0);            // while `camera` lives
///
/// A mat doesn't say what its channels are. Three bytes are taken for B,G,R, as OpenCV has them, if
/// no format is given.

#pragma once

#include <initializer_list>

#include <opencv2/core/mat.hpp>

#include "ox_interop/ox_planes.h"

namespace ox {
namespace interop {

/// The mat's type for a plane; -1 for a frame of another depth. 32-bit words are `CV_32S`, which
/// has a sign.
inline int matTypeOf(FrameFormat format, FramePlane const& plane) {
    int const channels = plane.channels;
    switch (plane.bits) {
        case 8:
            return CV_8UC(channels);
        case 16:
            return CV_16UC(channels);
        case 32:
            return format == FRAME_C1_32U ? CV_32SC(channels) : CV_32FC(channels);
        default:
            return -1;
    }
}

/// What a mat of that type holds if nobody says more; `FRAME_FORMAT_NONE` if nothing does.
inline FrameFormat frameFormatOf(int mat_type) {
    switch (mat_type) {
        case CV_8UC1:
            return FRAME_GRAY8;
        case CV_8UC2:
            return FRAME_C2_8U;
        case CV_8UC3:
            return FRAME_BGR24;
        case CV_8UC4:
            return FRAME_C4_8U;
        case CV_16UC1:
            return FRAME_C1_16U;
        case CV_32SC1:
            return FRAME_C1_32U;
        case CV_32FC1:
            return FRAME_GRAY_32F;
        case CV_32FC3:
            return FRAME_BGR_32F;
        default:
            return FRAME_FORMAT_NONE;
    }
}

/// A frame on mats, one for each plane: one for packed formats, and luma and chroma apart for
/// `FRAME_NV12` and its like, as `cv::cvtColorTwoPlane` takes them (chroma `CV_8UC2`).
/// @throws Exception `StatusInvalidParameter` for another count of planes than the format's, or a
///         mat that isn't a plane of it by type and size
inline Frame frameOf(std::initializer_list<cv::Mat> mats, FrameFormat format) {
    cv::Mat const* const mat = mats.begin();
    Size const size = mats.size() == 0 ? Size{} : Size{mat->cols, mat->rows};
    FrameLayout layout(format, size, 1);
    if (mats.size() == 0 || static_cast<int>(mats.size()) != layout.planeCount) {
        refuse(StatusInvalidParameter, "frameOf", "the format has another count of planes");
    }
    unsigned char* planes[4]{};
    for (int i = 0; i < layout.planeCount; ++i) {
        FramePlane& plane = layout.plane[i];
        if (mat[i].dims > 2 || mat[i].type() != matTypeOf(format, plane) ||
            mat[i].cols != plane.width || mat[i].rows != plane.height) {
            refuse(StatusInvalidParameter, "frameOf", "a mat isn't a plane of the format");
        }
        planes[i] = mat[i].data;
        plane.stride = static_cast<std::int64_t>(mat[i].step[0]);
    }
    return Frame::wrap(layout, planes);
}

/// A frame on a mat of a packed format, such as `FRAME_RGB24` or `FRAME_YUYV` (`CV_8UC2`).
/// @throws Exception as above
inline Frame frameOf(cv::Mat const& mat, FrameFormat format) {
    return frameOf(std::initializer_list<cv::Mat>{mat}, format);
}

/// A frame of the format that `frameFormatOf` names.
/// @throws Exception `StatusInvalidParameter` for a type without one; as above
inline Frame frameOf(cv::Mat const& mat) {
    return frameOf(std::initializer_list<cv::Mat>{mat}, frameFormatOf(mat.type()));
}

/// A frame on a picture of 4:2:0 in one mat of one channel, half as high again as the picture, as
/// `cv::cvtColor` takes it for `COLOR_YUV2BGR_NV12` and its like.
/// @param format `FRAME_NV12`, `FRAME_NV21`, `FRAME_I420` or `FRAME_YV12`
/// @throws Exception `StatusInvalidParameter` for another format or type, for odd sides, and for
///         rows of `FRAME_I420` and `FRAME_YV12` that don't follow one another
inline Frame frameOfStacked(cv::Mat const& mat, FrameFormat format) {
    bool const has_pairs = format == FRAME_NV12 || format == FRAME_NV21;
    bool const is_taken = has_pairs || format == FRAME_I420 || format == FRAME_YV12;
    int const height = mat.rows / 3 * 2;
    if (!is_taken || mat.dims > 2 || mat.type() != CV_8UC1 || mat.rows % 3 != 0 ||
        mat.cols % 2 != 0 || (!has_pairs && !mat.isContinuous())) {
        refuse(StatusInvalidParameter, "frameOfStacked", "the mat isn't such a picture");
    }
    FrameLayout layout(format, {mat.cols, height}, 1);
    unsigned char* planes[4]{mat.data};
    layout.plane[0].stride = static_cast<std::int64_t>(mat.step[0]);
    for (int i = 1; i < layout.planeCount; ++i) {
        FramePlane const& before = layout.plane[i - 1];
        planes[i] = planes[i - 1] + before.stride * before.height;
        if (has_pairs) {
            layout.plane[i].stride = before.stride;
        }
    }
    return Frame::wrap(layout, planes);
}

/// A mat on a plane of a frame, which has to outlive it, or memory that it shares. The mat holds no
/// handle. Chroma of `FRAME_NV12` is a mat of two channels, of half the size.
/// @throws Exception `StatusOutOfRange` for a plane that the frame doesn't have
inline cv::Mat matOf(Frame const& frame, int plane = 0) {
    if (plane < 0 || plane >= frame.layout().planeCount) {
        refuse(StatusOutOfRange, "matOf", "the frame has no such plane");
    }
    FramePlane const& p = frame.layout().plane[plane];
    return cv::Mat(p.height, p.width, matTypeOf(frame.format(), p), frame.planeData(plane),
                   static_cast<std::size_t>(p.stride));
}

/// A mat on a whole frame of 4:2:0, for `cv::cvtColor`: the opposite of `frameOfStacked`. Of frames
/// that own their memory, `FRAME_NV12` and `FRAME_NV21` suit for every even size, the others for
/// widths that are multiples of 128 (or if made with alignment 1).
/// @throws Exception `StatusInvalidParameter` unless the planes lie as such a mat has them
inline cv::Mat stackedMatOf(Frame const& frame) {
    cv::Mat all(frame.height() / 2 * 3, frame.width(), CV_8UC1, frame.planeData(0),
                static_cast<std::size_t>(frame.layout().plane[0].stride));
    Frame const same = frameOfStacked(all, frame.format());
    for (int i = 0; i < same.layout().planeCount; ++i) {
        if (same.planeData(i) != frame.planeData(i) || same.size() != frame.size() ||
            same.layout().plane[i].stride != frame.layout().plane[i].stride) {
            refuse(StatusInvalidParameter, "stackedMatOf", "the planes don't lie in one mat");
        }
    }
    return all;
}

}  // namespace interop
}  // namespace ox
