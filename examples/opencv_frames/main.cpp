// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Mats and frames on each other's memory: the library scales a part of a `cv::Mat` into another
/// one, and OpenCV looks at a plane of a frame. No pixel is copied between the two.

#include <cstdio>
#include <exception>
#include <opencv2/core.hpp>

#include "ox_cv/ox_cv.h"
#include "ox_interop/ox_opencv.h"

int main() try {
    cv::Mat picture(480, 640, CV_8UC3, cv::Scalar(0, 0, 255));  // red, as OpenCV has it: B,G,R
    picture(cv::Rect(0, 0, 320, 480)).setTo(cv::Scalar(255, 0, 0));

    cv::Mat small(120, 160, CV_8UC3);
    // [convert]
    ox::Frame const source = ox::interop::frameOf(picture);
    ox::Frame target = ox::interop::frameOf(small);
    ox::CvBackendSimd backend;
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea);
    backend.convert(source, target, {160, 0, 320, 240});  // into `small`
    // [convert]
    cv::Vec3b const left = small.at<cv::Vec3b>(60, 20);
    cv::Vec3b const right = small.at<cv::Vec3b>(60, 140);
    std::printf("left %d,%d,%d, right %d,%d,%d\n", left[0], left[1], left[2], right[0], right[1],
                right[2]);

    ox::Frame camera;
    camera.reuse(ox::FRAME_NV12, target.size(), ox::DeviceContext(), 0);
    backend.colorCvt(target, camera, ox::Rect{});
    // [plane]
    cv::Scalar const luma = cv::mean(ox::interop::matOf(camera, 0));
    cv::Scalar const chroma = cv::mean(ox::interop::matOf(camera, 1));  // two channels
    // [plane]
    std::printf("luma %.0f, chroma %.0f,%.0f\n", luma[0], chroma[0], chroma[1]);
} catch (std::exception const& error) {
    std::fprintf(stderr, "opencv_frames: %s\n", error.what());
    return 1;
}
