// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What failures look like, and how a program goes on after them.

#include <cstdio>
#include <cstring>
#include <exception>

#include "ox_cv/ox_cv.h"

namespace {

ox::Frame newFrame(ox::FrameFormat format, ox::Size size) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    std::memset(frame.planeData(0), 128, frame.layout().plane[0].planeBytes);
    return frame;
}

// [fallback]
/// By vector code; by the pipeline where vector code has no such conversion.
void convert(ox::ICvBackend& vectors, ox::ICvBackend& pipeline, ox::Frame const& src,
             ox::Frame& dst) {
    ox::Rect const whole{0, 0, src.width(), src.height()};
    try {
        vectors.colorCvt(src, dst, whole);
    } catch (ox::Exception const& error) {
        if (error.status != ox::StatusNotSupported) {
            throw;
        }
        pipeline.colorCvt(src, dst, whole);
    }
}
// [fallback]

}  // namespace

int main() {
    ox::Frame const yuyv = newFrame(ox::FRAME_YUYV, {64, 48});
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {64, 48});
    ox::CvBackendSimd vectors;
    ox::CvBackendBase pipeline;
    // [catch]
    try {
        vectors.colorCvt(yuyv, bgr, ox::Rect{});
    } catch (ox::Exception const& error) {
        std::printf("status %u: %s\n", error.status, error.what());
    }
    // [catch]
    try {
        convert(vectors, pipeline, yuyv, bgr);
        std::printf("converted by the pipeline, %d\n", *bgr.planeData(0));
        ox::Frame other = newFrame(ox::FRAME_BGR24, {32, 48});
        convert(vectors, pipeline, yuyv, other);
    } catch (std::exception const& error) {  // ox::Exception is one
        std::printf("%s\n", error.what());
    }
    return 0;
}
