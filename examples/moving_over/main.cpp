// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The calls that docs/moving-over.md names beside those of OpenCV and libyuv.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <vector>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"

namespace {

ox::Frame newFrame(ox::FrameFormat format, ox::Size size) {
    // [frame]
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    // [frame]
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        std::memset(frame.planeData(i), 128, frame.layout().plane[i].planeBytes);
    }
    return frame;
}

void require(bool holds) {
    if (!holds) {
        throw std::logic_error("a call does something else");
    }
}

void frames() {
    std::vector<unsigned char> data(std::size_t{64} * 16, 5);
    unsigned char* planes[]{data.data()};
    ox::FrameLayout layout(ox::FRAME_BGR24, {16, 16}, 1);
    layout.plane[0].stride = 64;
    ox::Frame frame = ox::Frame::wrap(layout, planes);
    ox::Frame part = ox::getRegion(frame, {4, 4, 8, 8});
    ox::Frame copy;
    part.copyTo(copy);
    frame.setZero();
    require(*part.planeData(0) == 0 && *copy.planeData(0) == 5);
}

void sizes() {
    ox::CvBackendSimd backend;
    ox::Frame const src = newFrame(ox::FRAME_NV12, {64, 48});
    ox::Frame dst = newFrame(ox::FRAME_NV12, {32, 24});
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeNearestNeighbour);
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeBilinear);
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea);
    dst.setZero();
    backend.resize(src, dst, ox::emptyRoi(), ox::emptyRoi());
    require(*dst.planeData(0) == 128);
    ox::Rect const region{16, 8, 40, 40};
    backend.resize(src, dst, region, ox::emptyRoi());
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {32, 24});
    backend.convert(src, bgr, region);

    ox::Lanczos3Kernel lanczos;
    ox::ScalerConvolutional scaler;
    scaler.reuse(lanczos, src, {32, 24}, ox::OX_SCALER_FIXED_POINT_16S);
    ox::produceFrame(scaler, dst);
    require(dst.width() == 32);
}

void colours() {
    ox::Size const size{64, 48};
    ox::Rect const whole{0, 0, 64, 48};
    ox::Frame nv12 = newFrame(ox::FRAME_NV12, size);
    ox::Frame i420 = newFrame(ox::FRAME_I420, size);
    ox::Frame const yuyv = newFrame(ox::FRAME_YUYV, size);
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, size);
    ox::Frame rgb = newFrame(ox::FRAME_RGB24, size);
    ox::Frame gray = newFrame(ox::FRAME_GRAY8, size);
    ox::Frame planar = newFrame(ox::FRAME_BGR_PLANAR, size);
    ox::CvBackendSimd backend;
    ox::CvBackendBase pipeline;
    backend.colorCvt(nv12, bgr, whole);
    backend.colorCvt(nv12, rgb, whole);
    backend.colorCvt(nv12, gray, whole);
    backend.colorCvt(nv12, i420, whole);
    backend.colorCvt(i420, bgr, whole);
    backend.colorCvt(i420, nv12, whole);
    pipeline.colorCvt(yuyv, bgr, whole);
    pipeline.colorCvt(yuyv, nv12, whole);
    pipeline.colorCvt(yuyv, i420, whole);
    backend.colorCvt(bgr, rgb, whole);
    backend.colorCvt(rgb, bgr, whole);
    backend.colorCvt(bgr, gray, whole);
    backend.colorCvt(gray, bgr, whole);
    backend.colorCvt(bgr, i420, whole);
    backend.colorCvt(bgr, nv12, whole);
    backend.colorCvt(bgr, planar, whole);
    backend.colorCvt(planar, bgr, whole);
    require(*bgr.planeData(0) != 0);
}

void warps() {
    ox::CvBackendSimd backend;
    ox::Frame const src = newFrame(ox::FRAME_BGR24, {64, 48});
    ox::Frame dst = newFrame(ox::FRAME_BGR24, {32, 24});
    float const from[2][2]{{10, 10}, {30, 10}};
    float const to[2][2]{{5, 5}, {15, 5}};
    float matrix[2][3];
    ox::fitSimilarity(from, to, 2, matrix);
    backend.setIntProperty(ox::PropertyWarpMethod, ox::ResizeBilinear);
    backend.warpAffine(src, dst, matrix, ox::emptyRoi(), false);
    float inverse[2][3];
    ox::invertAffineTransform(matrix[0], inverse[0]);
    backend.warpAffine(src, dst, inverse, ox::emptyRoi(), true);
    require(*dst.planeData(0) == 128);
}

/// The blob of a network: what `cv::dnn::blobFromImage(picture, 1 / 255.0, {224, 224}, {104, 117,
/// 123}, true, true)` makes, but for the arithmetic of the resize.
void blob() {
    ox::Frame const picture = newFrame(ox::FRAME_BGR24, {640, 480});
    // [blob]
    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 224;
    recipe.fit = ox::TENSOR_FIT_CROP;       // crop = true; false is TENSOR_FIT_STRETCH
    recipe.colour = ox::TENSOR_COLOUR_RGB;  // swapRB = true
    float const mean[]{104, 117, 123};      // in the order of the output
    std::copy_n(mean, 3, recipe.mean);
    std::fill_n(recipe.scale, 3, 1.0F / 255.0F);

    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    to_tensor.run(picture, ox::Rect{}, input, 0);
    // [blob]
    auto const* const numbers = reinterpret_cast<float const*>(input.data());
    require(numbers[0] == (128.0F - 104.0F) * (1.0F / 255.0F));
}

}  // namespace

int main() try {
    frames();
    sizes();
    colours();
    warps();
    blob();
    std::puts("all as told");
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "moving_over: %s\n", error.what());
    return 1;
}
