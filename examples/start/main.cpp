// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The first program: a camera's frame becomes a network's input, and a box of the network goes
/// back.

// [program]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "ox_cv/ox_cv.h"

int main() {
    // Stands for a camera's memory. The driver tells the size and the bytes from row to row.
    int const width = 1280;
    int const height = 720;
    std::int64_t const pitch = 1536;
    std::vector<unsigned char> memory(std::size_t{1536} * 720 * 3 / 2, 128);

    // [job]
    ox::FrameLayout layout(ox::FRAME_NV12, {width, height}, 1);
    layout.plane[0].stride = layout.plane[1].stride = pitch;
    unsigned char* planes[]{memory.data(), memory.data() + pitch * height};
    ox::Frame const camera = ox::Frame::wrap(layout, planes);  // copies nothing

    ox::TensorRecipe recipe;  // R,G,B floats in planes, unless said otherwise
    recipe.width = recipe.height = 640;
    recipe.fit = ox::TENSOR_FIT_LETTERBOX;
    std::fill_n(recipe.scale, 3, 1.0F / 255.0F);

    ox::FrameToTensor to_tensor;  // kept over all frames, as is the tensor
    to_tensor.reuse(recipe);
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());

    // For each frame:
    ox::PictureMapping const mapping = to_tensor.run(camera, ox::Rect{}, input, 0);
    // ... run the network on input.data() ...
    ox::PictureBox const box = mapping.toSource({300, 200, 340, 260});
    // [job]
    std::printf("box %g,%g to %g,%g\n", box.left, box.top, box.right, box.bottom);
}
// [program]
