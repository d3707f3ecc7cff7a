// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Turns and scales a face so that its five points lie where a recognition network expects them.
///
/// The points are what a face detector gives: both eyes, the tip of the nose, both corners of the
/// mouth. Here they are a face of twice the size, turned by 90 degrees.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_cv.h"

namespace {

constexpr int count = 5;

// [align]
/// Where networks for 112x112 expect the points.
constexpr float expected[count][2]{
    {38.2946F, 51.6963F}, {73.5318F, 51.5014F}, {56.0252F, 71.7366F},
    {41.5493F, 92.3655F}, {70.7299F, 92.2041F},
};

ox::Frame alignedFace(ox::Frame const& picture, float const (*found)[2]) {
    float matrix[2][3];
    ox::fitSimilarity(found, expected, count, matrix);
    ox::Frame face;
    face.reuse(picture.format(), {112, 112}, ox::DeviceContext::cpuContext(), 0);
    face.setZero();
    ox::CvBackendSimd backend;
    backend.warpAffine(picture, face, matrix, ox::emptyRoi(), false);
    return face;
}
// [align]

unsigned char* pixelAt(ox::Frame const& frame, std::int64_t x, std::int64_t y) {
    return frame.planeData(0) + y * frame.layout().plane[0].stride + 3 * x;
}

}  // namespace

int main() {
    try {
        ox::Frame picture;
        picture.reuse(ox::FRAME_BGR24, {640, 480}, ox::DeviceContext::cpuContext(), 0);
        picture.setZero();
        float found[count][2];
        for (int i = 0; i < count; ++i) {  // (x, y) to (300 - 2 y, 100 + 2 x)
            found[i][0] = 300.0F - 2.0F * expected[i][1];
            found[i][1] = 100.0F + 2.0F * expected[i][0];
        }
        std::int64_t const x = std::lround(found[2][0]);
        std::int64_t const y = std::lround(found[2][1]);
        for (std::int64_t row = y - 2; row <= y + 2; ++row) {  // a white nose
            std::memset(pixelAt(picture, x - 2, row), 255, 15);
        }
        ox::Frame const face = alignedFace(picture, found);
        std::printf("nose %d, beside it %d\n", *pixelAt(face, 56, 72), *pixelAt(face, 64, 72));
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
