// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Puts frames on memory that somebody else owns: a driver's rows with gaps, planes that lie apart,
/// a part of a picture. No pixel is copied.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

#include "ox_cv/ox_cv.h"

namespace {

// [nv12]
/// One buffer: rows of luma, perhaps rows that the driver adds, then rows of chroma pairs.
ox::Frame wrapNv12(unsigned char* buffer, ox::Size size, std::int64_t stride, int aligned_height) {
    ox::FrameLayout layout(ox::FRAME_NV12, size, 1);
    layout.plane[0].stride = layout.plane[1].stride = stride;
    unsigned char* planes[]{buffer, buffer + stride * aligned_height};
    return ox::Frame::wrap(layout, planes);
}
// [nv12]

// [i420]
/// Three planes, each where the driver has put it, with a stride of its own.
ox::Frame wrapI420(unsigned char* const (&planes)[3], std::int64_t const (&strides)[3],
                   ox::Size size) {
    ox::FrameLayout layout(ox::FRAME_I420, size, 1);
    for (int i = 0; i < 3; ++i) {
        layout.plane[i].stride = strides[i];
    }
    return ox::Frame::wrap(layout, planes);
}
// [i420]

}  // namespace

int main() try {
    // 1080 rows, for which the driver keeps 1088.
    std::vector<unsigned char> buffer(std::size_t{2048} * 1088 * 3 / 2, 128);
    ox::Frame camera = wrapNv12(buffer.data(), {1920, 1080}, 2048, 1088);
    std::printf("chroma begins at byte %td\n", camera.planeData(1) - buffer.data());

    std::vector<unsigned char> luma(std::size_t{64} * 48, 16);
    std::vector<unsigned char> blue(std::size_t{32} * 24, 200);
    std::vector<unsigned char> red(std::size_t{32} * 24, 100);
    ox::Frame const planar =
        wrapI420({luma.data(), blue.data(), red.data()}, {64, 32, 32}, {64, 48});
    std::printf("first samples %d,%d,%d\n", *planar.planeData(0), *planar.planeData(1),
                *planar.planeData(2));

    // [pixels]
    // Row y of plane i, whatever the strides are:
    ox::FramePlane const& plane = camera.layout().plane[0];
    unsigned char* const row = camera.planeData(0) + 100 * plane.stride;
    row[200] = 255;  // pixel (200, 100), in the driver's memory
    // [pixels]

    // [region]
    ox::Frame const part = ox::getRegion(camera, {200, 100, 640, 480});  // the same pixels
    std::printf("first pixel of the part %d\n", *part.planeData(0));
    // [region]
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "wrap_camera_memory: %s\n", error.what());
    return 1;
}
