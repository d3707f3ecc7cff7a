// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Fills a network's input from a decoded `AVFrame`, by the matrix and range that it states, and
/// gives a frame of the library to FFmpeg. No pixel is copied between the two.

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include "ox_cv/ox_cv.h"
#include "ox_interop/ox_ffmpeg.h"

namespace {

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using AvFrame = std::unique_ptr<AVFrame, FreeFrame>;

AvFrame newFrame() {
    AvFrame frame(av_frame_alloc());
    if (!frame) {
        throw std::bad_alloc();
    }
    return frame;
}

/// What a decoder gives: pure red of HD video.
AvFrame decodedFrame() {
    AvFrame frame = newFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = 1280;
    frame->height = 720;
    frame->colorspace = AVCOL_SPC_BT709;
    frame->color_range = AVCOL_RANGE_MPEG;
    if (av_frame_get_buffer(frame.get(), 0) != 0) {
        throw std::bad_alloc();
    }
    int const red[]{63, 102, 240};
    for (int i = 0; i < 3; ++i) {
        int const rows = i == 0 ? frame->height : frame->height / 2;
        std::memset(frame->data[i], red[i],
                    static_cast<std::size_t>(rows) * static_cast<std::size_t>(frame->linesize[i]));
    }
    return frame;
}

}  // namespace

int main() try {
    AvFrame const decoded = decodedFrame();
    // [frame]
    ox::Frame const frame = ox::interop::frameOf(*decoded);  // while `decoded` lives
    ox::interop::ColourMeaning const colour = ox::interop::colourOf(*decoded);

    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 224;
    recipe.fit = ox::TENSOR_FIT_CROP;
    recipe.matrix = colour.matrix;
    recipe.range = colour.range;
    // [frame]
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    to_tensor.run(frame, ox::Rect{}, input, 0);
    auto const* const numbers = reinterpret_cast<float const*>(input.data());
    constexpr std::size_t plane = std::size_t{224} * 224;
    std::printf("red %.0f, green %.0f, blue %.0f\n", static_cast<double>(numbers[0]),
                static_cast<double>(numbers[plane]), static_cast<double>(numbers[2 * plane]));

    ox::Frame small;
    small.reuse(ox::FRAME_I420, {640, 360}, ox::DeviceContext(), 0);
    ox::CvBackendSimd().resize(frame, small, ox::Rect{}, ox::Rect{});
    // [show]
    AvFrame const shown = newFrame();
    ox::interop::showFrame(small, *shown);  // for an encoder; it holds a handle
    // [show]
    std::printf("%dx%d, luma %d\n", shown->width, shown->height, shown->data[0][0]);
} catch (std::exception const& error) {
    std::fprintf(stderr, "ffmpeg_frames: %s\n", error.what());
    return 1;
}
