// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Shows what docs/surprises.md tells, each thing beside what to do instead.

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "ox_cv/ox_cv.h"

namespace {

ox::Frame newFrame(ox::FrameFormat format, ox::Size size, int value) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        std::memset(frame.planeData(i), value, frame.layout().plane[i].planeBytes);
    }
    return frame;
}

int sampleOf(ox::Frame const& frame, int plane, int byte, int row) {
    return frame.planeData(plane)[row * frame.layout().plane[plane].stride + byte];
}

void require(bool holds, char const* what) {
    if (!holds) {
        throw std::logic_error(std::string("not as told: ") + what);
    }
}

template <class Work>
void requireRefused(Work work, ox::Status status, char const* what) {
    try {
        work();
    } catch (ox::Exception const& error) {
        require(error.status == status, what);
        return;
    }
    require(false, what);
}

void coloursOfNv12() {
    ox::Frame const camera = newFrame(ox::FRAME_NV12, {20, 10}, 128);
    ox::CvBackendSimd vectors;
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {20, 10}, 7);
    vectors.colorCvt(camera, bgr, ox::emptyRoi());
    require(sampleOf(bgr, 0, 47, 0) != 7 && sampleOf(bgr, 0, 48, 0) == 7, "unwritten columns");
    // [whole]
    vectors.colorCvt(camera, bgr, {0, 0, camera.width(), camera.height()});
    // [whole]
    require(sampleOf(bgr, 0, 59, 9) != 7, "the whole frame as a region");
}

void whiteOfBackends() {
    ox::Frame const white = newFrame(ox::FRAME_BGR24, {16, 16}, 255);
    ox::Frame nv12 = newFrame(ox::FRAME_NV12, {16, 16}, 0);
    ox::Rect const whole{0, 0, 16, 16};
    ox::CvBackendBase().colorCvt(white, nv12, whole);
    require(sampleOf(nv12, 0, 0, 0) == 234, "the pipeline's white luma");
    ox::CvBackendSimd().colorCvt(white, nv12, whole);
    require(sampleOf(nv12, 0, 0, 0) == 235, "the vector backend's white luma");
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {16, 16}, 0);
    ox::CvBackendBase().colorCvt(nv12, bgr, whole);
    require(sampleOf(bgr, 0, 0, 0) == 254, "the pipeline's white");
    ox::CvBackendSimd().colorCvt(nv12, bgr, whole);
    require(sampleOf(bgr, 0, 0, 0) == 255, "the vector backend's white");
}

void packedPairs() {
    ox::Frame yuyv = newFrame(ox::FRAME_YUYV, {32, 4}, 128);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 64; x += 4) {
            yuyv.planeData(0)[y * yuyv.layout().plane[0].stride + x + 1] = 200;  // U
        }
    }
    ox::Frame half = newFrame(ox::FRAME_YUYV, {16, 2}, 0);
    ox::CvBackendSimd backend;
    backend.resize(yuyv, half, ox::emptyRoi(), ox::emptyRoi());
    require(sampleOf(half, 0, 1, 0) != 200, "U and V are mixed");
    // [packed]
    ox::Packed422Resizer resizer;  // kept over the frames of a stream
    resizer.resize(backend, yuyv, half);
    // [packed]
    require(sampleOf(half, 0, 1, 0) == 200 && sampleOf(half, 0, 3, 0) == 128, "U as it was");
}

void orderOfFloats() {
    ox::Frame rgb = newFrame(ox::FRAME_RGB24, {16, 16}, 0);
    rgb.planeData(0)[0] = 200;  // red
    ox::Frame floats = newFrame(ox::FRAME_BGR_32F_PLANAR, {16, 16}, 0);
    ox::CvBackendSimd backend;
    backend.colorCvt(rgb, floats, ox::emptyRoi());
    require(*reinterpret_cast<float*>(floats.planeData(0)) == 200.0F, "red first, from RGB24");
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {16, 16}, 0);
    backend.colorCvt(rgb, bgr, ox::emptyRoi());
    backend.colorCvt(bgr, floats, ox::emptyRoi());
    require(*reinterpret_cast<float*>(floats.planeData(0)) == 0.0F, "blue first, from BGR24");
}

void floatsToBytes() {
    ox::Frame floats = newFrame(ox::FRAME_BGR_32F, {16, 16}, 0);
    reinterpret_cast<float*>(floats.planeData(0))[0] = 260.0F;
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {16, 16}, 0);
    ox::CvBackendBase().colorCvt(floats, bgr, ox::emptyRoi());
    require(*bgr.planeData(0) == 4, "the low 8 bits");
    ox::CvBackendSimd().colorCvt(floats, bgr, ox::emptyRoi());
    require(*bgr.planeData(0) == 255, "clamped");
}

void grayToYuv() {
    ox::Frame const gray = newFrame(ox::FRAME_GRAY8, {16, 16}, 100);
    ox::Frame nv12 = newFrame(ox::FRAME_NV12, {16, 16}, 9);
    ox::CvBackendBase backend;
    backend.colorCvt(gray, nv12, ox::emptyRoi());
    require(sampleOf(nv12, 1, 0, 0) == 0, "chroma of 0");
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {16, 16}, 0);
    backend.colorCvt(gray, bgr, ox::emptyRoi());
    backend.colorCvt(bgr, nv12, ox::emptyRoi());
    require(sampleOf(nv12, 1, 0, 0) == 128, "through BGR24");
}

void regionsOfArithmetic() {
    ox::Frame floats = newFrame(ox::FRAME_GRAY_32F, {16, 16}, 0);
    ox::CvBackendBase pipeline;
    pipeline.add(floats, 1.0F, {8, 8, 4, 4});
    auto const* const numbers = reinterpret_cast<float const*>(floats.planeData(0));
    require(numbers[0] == 1.0F, "a block at the top left");
    // [part]
    ox::Frame part = ox::getRegion(floats, {8, 8, 4, 4});
    pipeline.add(part, 1.0F, ox::emptyRoi());
    // [part]
    require(*reinterpret_cast<float*>(part.planeData(0)) == 1.0F, "the part alone");
    ox::Frame bytes = newFrame(ox::FRAME_GRAY8, {16, 16}, 5);
    requireRefused([&] { ox::CvBackendSimd().mul(bytes, 2.0F, ox::emptyRoi()); },
                   ox::StatusNotSupported, "bytes aren't multiplied");
    require(*bytes.planeData(0) == 0, "but cleared");
}

void oddSides() {
    ox::Frame const camera = newFrame(ox::FRAME_NV12, {15, 16}, 128);
    ox::Frame bgr = newFrame(ox::FRAME_BGR24, {15, 16}, 7);
    ox::Rect const whole{0, 0, 15, 16};
    requireRefused([&] { ox::CvBackendSimd().colorCvt(camera, bgr, whole); },
                   ox::StatusAssertionFailed, "odd sides");
    ox::CvBackendBase().colorCvt(camera, bgr, whole);
    require(sampleOf(bgr, 0, 44, 15) == 129, "by the pipeline");
}

void missingPairs() {
    ox::Frame const camera = newFrame(ox::FRAME_NV12, {16, 16}, 128);
    ox::FormatConverter converter;
    requireRefused([&] { converter.reuse(camera, ox::FRAME_RGB24); }, ox::StatusOutOfRange,
                   "a pair that doesn't exist");
    // [twice]
    ox::FormatConverter to_bgr;
    ox::FormatConverter to_rgb;
    to_bgr.reuse(camera, ox::FRAME_BGR24);
    to_rgb.reuse(to_bgr, ox::FRAME_RGB24);
    ox::Frame rgb;
    ox::produceFrame(to_rgb, rgb);
    // [twice]
    require(rgb.format() == ox::FRAME_RGB24 && *rgb.planeData(0) == 129, "through BGR24");
}

void bilinearReads() {
    ox::Frame lines = newFrame(ox::FRAME_GRAY8, {64, 8}, 0);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 64; x += 8) {  // one white column of eight
            lines.planeData(0)[y * lines.layout().plane[0].stride + x] = 255;
        }
    }
    ox::CvBackendSimd backend;
    ox::Frame small = newFrame(ox::FRAME_GRAY8, {8, 8}, 1);
    backend.resize(lines, small, ox::emptyRoi(), ox::emptyRoi());
    require(sampleOf(small, 0, 3, 3) == 0, "bilinear doesn't see the lines");
    // [area]
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea);
    backend.resize(lines, small, ox::emptyRoi(), ox::emptyRoi());
    // [area]
    require(std::abs(sampleOf(small, 0, 3, 3) - 32) <= 1, "area does");
}

/// A pixel of the fifth row that area makes of white ones.
int whiteByArea(ox::ICvBackend& backend, int from, int to, int column) {
    ox::Frame const white = newFrame(ox::FRAME_GRAY8, {from, from}, 255);
    ox::Frame small = newFrame(ox::FRAME_GRAY8, {to, to}, 0);
    backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea);
    backend.resize(white, small, ox::emptyRoi(), ox::emptyRoi());
    return sampleOf(small, 0, column, 4);
}

void whiteOfArea() {
    ox::CvBackendBase pipeline;
    ox::CvBackendSimd vectors;
    require(whiteByArea(pipeline, 3000, 300, 150) >= 254, "white inside");
    require(whiteByArea(pipeline, 3000, 300, 299) == 236, "the last column, the pipeline");
    require(whiteByArea(vectors, 3000, 300, 150) == 253, "white of vectors");
    require(whiteByArea(vectors, 1000, 10, 5) == 243, "white of a large ratio");
    require(whiteByArea(pipeline, 2048, 256, 255) == 255, "a power of two, the pipeline");
    require(whiteByArea(vectors, 2048, 256, 255) == 255, "a power of two, vectors");

    ox::BoxKernel box;
    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 300;
    recipe.kernel = &box;
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    to_tensor.run(newFrame(ox::FRAME_GRAY8, {3000, 3000}, 255), ox::emptyRoi(), input, 0);
    auto const* const numbers = reinterpret_cast<float const*>(input.data());
    require(numbers[299] == 255.0F && numbers[300 * 300 - 1] == 255.0F, "white by a filter");
}

void chainsAreRenewed() {
    ox::Frame const gray = newFrame(ox::FRAME_GRAY8, {16, 16}, 100);
    ox::Scaler scaler;
    ox::FormatConverter converter;
    ox::Frame first;
    ox::Frame second;
    for (ox::Frame* const picture : {&first, &second}) {
        // [renew]
        scaler.renew();  // before each picture
        converter.renew();
        scaler.reuse(gray, {8, 8}, ox::OX_SCALE_BILINEAR);
        converter.reuse(scaler, ox::FRAME_BGR24);
        ox::produceFrame(converter, *picture);
        // [renew]
    }
    require(sampleOf(second, 0, 0, 7) == 100, "the second picture");
    require(!scaler.initialized(), "Scaler::initialized is the other way round");
}

void framesAreHandles() {
    ox::Frame const first = newFrame(ox::FRAME_GRAY8, {16, 16}, 1);
    ox::Frame second;
    second = first;
    *second.planeData(0) = 9;
    require(*first.planeData(0) == 9, "the same pixels");
    // [copy]
    ox::Frame copy;
    first.copyTo(copy);
    // [copy]
    *copy.planeData(0) = 5;
    require(*first.planeData(0) == 9, "pixels of its own");
}

void warpsOfPlanes() {
    ox::Frame const white = newFrame(ox::FRAME_GRAY8, {16, 16}, 255);
    ox::Frame moved = newFrame(ox::FRAME_GRAY8, {16, 16}, 9);
    float const right[2][3]{{1, 0, 4}, {0, 1, 0}};  // from the source to the destination
    ox::CvBackendSimd().warpAffine(white, moved, right, ox::emptyRoi(), false);
    require(sampleOf(moved, 0, 3, 0) == 0 && sampleOf(moved, 0, 4, 0) == 255, "four to the right");
    ox::Frame const nv12 = newFrame(ox::FRAME_NV12, {16, 16}, 255);
    ox::Frame apart = newFrame(ox::FRAME_NV12, {16, 16}, 9);
    ox::CvBackendSimd().warpAffine(nv12, apart, right, ox::emptyRoi(), false);
    require(sampleOf(apart, 1, 2 * 3, 0) == 0, "chroma moves by four samples, eight pixels");
}

void shortHalves() {
    float const numbers[4]{1.0009F, 1.0009F, 1.0009F, 1.0009F};
    unsigned short three[3];
    unsigned short four[4];
    ox::convertFp32ToFp16(numbers, 3, three);
    ox::convertFp32ToFp16(numbers, 4, four);
    require(three[0] == 0x3c00 && four[0] == 0x3c01, "truncated and rounded");
}

}  // namespace

int main() try {
    coloursOfNv12();
    whiteOfBackends();
    packedPairs();
    orderOfFloats();
    floatsToBytes();
    grayToYuv();
    regionsOfArithmetic();
    oddSides();
    missingPairs();
    bilinearReads();
    whiteOfArea();
    chainsAreRenewed();
    framesAreHandles();
    warpsOfPlanes();
    shortHalves();
    std::puts("all as told");
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "surprises: %s\n", error.what());
    return 1;
}
