// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Fills a network's input from a camera's frame, and carries a box of the network back to it.
///
///     camera_to_network                              # a gray frame of 1280x720
///     camera_to_network 1920x1080 frame.nv12 > input.f32
///
/// The input is what many detectors take: 3 x 640 x 640 floats from 0 to 1, in R,G,B, the picture
/// letterboxed with gray bars. With a file, the floats go to standard output.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace {

ox::TensorRecipe detectorRecipe() {
    ox::TensorRecipe recipe;  // R,G,B floats in planes, unless said otherwise
    recipe.width = 640;
    recipe.height = 640;
    recipe.fit = ox::TENSOR_FIT_LETTERBOX;
    std::fill_n(recipe.bars, 3, static_cast<unsigned char>(114));
    std::fill_n(recipe.scale, 3, 1.0F / 255.0F);
    return recipe;
}

/// Luma, then chroma pairs.
/// @param stride bytes from row to row, which a driver tells
ox::Frame wrapNv12(unsigned char* bytes, ox::Size size, std::int64_t stride) {
    ox::FrameLayout layout(ox::FRAME_NV12, size, 1);
    layout.plane[0].stride = layout.plane[1].stride = stride;
    unsigned char* planes[]{bytes, bytes + stride * size.height};
    return ox::Frame::wrap(layout, planes);
}

std::vector<unsigned char> readFile(char const* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void print(char const* what, ox::Rect const& rect) {
    std::fprintf(stderr, "%s %dx%d at %d,%d\n", what, rect.width, rect.height, rect.x, rect.y);
}

void run(ox::Size size, std::vector<unsigned char> bytes, bool writes) {
    std::size_t const expected =
        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) / 2 * 3;
    if (bytes.size() < expected) {
        throw std::runtime_error("the file is shorter than a frame");
    }
    ox::Frame const camera = wrapNv12(bytes.data(), size, size.width);

    ox::FrameToTensor to_tensor;  // kept over all frames of a stream
    to_tensor.reuse(detectorRecipe());
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());

    // For each frame:
    ox::PictureMapping const mapping = to_tensor.run(camera, ox::Rect{}, input, 0);

    print("read", mapping.source);
    print("put", mapping.inner);
    ox::PictureBox const found{300.0, 200.0, 340.0, 260.0};  // a network's answer
    ox::PictureBox const box = mapping.toSource(found);
    std::fprintf(stderr, "box %g,%g to %g,%g\n", box.left, box.top, box.right, box.bottom);
    auto const* const numbers = reinterpret_cast<float const*>(input.data());
    std::fprintf(stderr, "bar %.4f, middle %.4f\n", static_cast<double>(numbers[0]),
                 static_cast<double>(numbers[320 * 640 + 320]));
    if (writes) {
        std::fwrite(numbers, 1, input.layout().totalBytes(), stdout);
    }
}

}  // namespace

int main(int count, char** arguments) {
    try {
        if (count == 1) {
            constexpr std::size_t bytes = std::size_t{1280} * 720 / 2 * 3;
            run({1280, 720}, std::vector<unsigned char>(bytes, 128), false);
            return 0;
        }
        ox::Size size;
        if (count != 3 || std::sscanf(arguments[1], "%dx%d", &size.width, &size.height) != 2 ||
            size.empty() || size.width % 2 != 0 || size.height % 2 != 0) {
            std::fputs("usage: camera_to_network [WIDTHxHEIGHT frame.nv12] > input.f32\n", stderr);
            return 2;
        }
        run(size, readFile(arguments[2]), true);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
