// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "growth_memory.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

#include "heap_use.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "pictures.h"

namespace ox::benchmarks {

namespace {

// Each makes and keeps what a way needs, and returns its work on one frame.

std::function<void()> rowsBy(ScaleMethod method, Picture const& src, Picture const& dst) {
    auto const scaler = std::make_shared<Scaler>();
    auto const converter = std::make_shared<FormatConverter>();
    return [=] {
        scaler->renew();
        converter->renew();
        scaler->reuse(*src, dst->size(), method);
        converter->reuse(*scaler, dst->format());
        produceFrame(*converter, *dst);
    };
}

std::function<void()> rowsByLanczos(Picture const& src, Picture const& dst) {
    auto const kernel = std::make_shared<Lanczos3Kernel>();
    auto const scaler = std::make_shared<ScalerConvolutional>();
    auto const converter = std::make_shared<FormatConverter>();
    return [=] {
        scaler->renew();
        converter->renew();
        scaler->reuse(*kernel, *src, dst->size(), OX_SCALER_FIXED_POINT_8S);
        converter->reuse(*scaler, dst->format());
        produceFrame(*converter, *dst);
    };
}

template <class Backend>
std::function<void()> wholeBy(ResizeMethod method, Picture const& src, Picture const& dst) {
    auto const backend = std::make_shared<Backend>();
    backend->setIntProperty(PropertyResizeMethod, static_cast<int>(method));
    return [=] { backend->convert(*src, *dst, Rect{}); };
}

/// A detector's input, letterboxed.
std::function<void()> tensorBy(TensorMethod method, Picture const& src, Picture const& dst) {
    TensorRecipe recipe;
    recipe.width = dst->width();
    recipe.height = dst->height();
    recipe.fit = TENSOR_FIT_LETTERBOX;
    recipe.method = method;
    auto const to_tensor = std::make_shared<FrameToTensor>();
    to_tensor->reuse(recipe);
    return [=] {
        FramePlane const& plane = dst->layout().plane[0];
        to_tensor->run(*src, Rect{}, dst->planeData(0), plane.stride,
                       static_cast<std::int64_t>(plane.planeBytes));
    };
}

/// VmHWM: the most kilobytes that the program has had in memory.
long long mostResident() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, 6, "VmHWM:") == 0) {
            return std::stoll(line.substr(6));
        }
    }
    return 0;
}

template <class Make>
void printWay(std::string const& name, std::size_t frame_bytes, Make make) {
    HeapUse const before = heapUse();
    forgetMostBytes();
    std::function<void()> const run = make();
    run();
    HeapUse const first = heapUse();
    run();
    HeapUse const second = heapUse();
    run();
    HeapUse const third = heapUse();
    long long const most = third.most_bytes - before.bytes;
    std::printf("%-34s%11lld%11lld%9.2f %%%9lld%9lld%9lld%12lld\n", name.c_str(),
                third.bytes - before.bytes, most,
                100.0 * static_cast<double>(most) / static_cast<double>(frame_bytes),
                first.blocks - before.blocks, second.blocks - first.blocks,
                third.blocks - second.blocks, mostResident());
}

}  // namespace

void printMemory() {
    Picture const src = randomPicture(FRAME_NV12, {7680, 4320});
    Picture const dst = blankPicture(FRAME_BGR24, {3840, 2160});
    std::size_t const bytes = pixelBytes(*src);
    std::string const frames =
        "NV12 " + std::to_string(bytes) + ", BGR24 " + std::to_string(pixelBytes(*dst));
    std::printf("%-34s%11s%11s%11s%9s%9s%9s%12s\n", "heap beside the frames", "bytes held",
                "most bytes", "of NV12", "blocks 1", "frame 2", "frame 3", "VmHWM in kB");
    std::printf("%-34s%72lld\n", frames.c_str(), mostResident());
    printWay("links, nearest", bytes, [&] { return rowsBy(OX_SCALE_NEAREST, src, dst); });
    printWay("links, bilinear", bytes, [&] { return rowsBy(OX_SCALE_BILINEAR, src, dst); });
    printWay("links, area", bytes, [&] { return rowsBy(OX_SCALE_AREA, src, dst); });
    printWay("links, Lanczos 3", bytes, [&] { return rowsByLanczos(src, dst); });
    for (auto const method : {ResizeBilinear, ResizeArea}) {
        std::string const name = method == ResizeArea ? ", area" : ", bilinear";
        printWay("convert by the pipeline" + name, bytes,
                 [&] { return wholeBy<CvBackendBase>(method, src, dst); });
        printWay("convert by vectors" + name, bytes,
                 [&] { return wholeBy<CvBackendSimd>(method, src, dst); });
    }
    Picture const planes = blankPicture(FRAME_BGR_32F_PLANAR, {640, 640});
    printWay("to a tensor, bilinear", bytes,
             [&] { return tensorBy(TENSOR_METHOD_BILINEAR, src, planes); });
    printWay("to a tensor, area", bytes, [&] { return tensorBy(TENSOR_METHOD_AREA, src, planes); });
}

}  // namespace ox::benchmarks
