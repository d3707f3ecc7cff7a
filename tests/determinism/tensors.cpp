// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cstddef>
#include <vector>

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

struct Element {
    TensorDataType type;
    char const* name;
};

constexpr Element elements[]{{TENSOR_UINT_8, "unsigned bytes"},
                             {TENSOR_INT_8, "signed bytes"},
                             {TENSOR_FLOAT_16, "halves"},
                             {TENSOR_FLOAT_32, "floats"}};

template <class Value>
Value draw(Random& random, Value last) {
    return static_cast<Value>(random.between(0, static_cast<int>(last)));
}

TensorRecipe randomRecipe(TensorDataType element, IKernel& kernel, Random& random) {
    TensorRecipe recipe;
    recipe.width = random.between(1, 80);
    recipe.height = random.between(1, 40);
    recipe.fit = draw(random, TENSOR_FIT_CROP);
    recipe.method = draw(random, TENSOR_METHOD_AUTOMATIC);
    recipe.kernel = random.between(0, 7) == 0 ? &kernel : nullptr;
    recipe.colour = draw(random, TENSOR_COLOUR_GRAY);
    recipe.layout = random.between(0, 1) == 0 ? TENSOR_FORMAT_NCHW : TENSOR_FORMAT_NHWC;
    recipe.element = element;
    for (int i = 0; i < 3; ++i) {
        recipe.mean[i] = static_cast<float>(random.between(0, 255));
        recipe.scale[i] = moderateFloat(random);
        recipe.bars[i] = random.byte();
    }
    recipe.quantScale = static_cast<float>(random.between(1, 64)) / 16.0F;
    recipe.zeroPoint = random.between(-10, 100);
    recipe.matrix = draw(random, TENSOR_MATRIX_BT2020);
    recipe.range = draw(random, TENSOR_RANGE_FULL);
    return recipe;
}

void addTensor(Digest& digest, Tensor const& tensor) {
    std::size_t const bytes = tensor.layout().totalBytes();
    switch (tensor.layout().dataType()) {
        case TENSOR_FLOAT_32:
            return digest.addFloats(tensor.data(), bytes / 4);
        case TENSOR_FLOAT_16:
            return digest.addHalves(tensor.data(), bytes / 2);
        default:
            return digest.addBytes(tensor.data(), bytes);
    }
}

void addRect(Digest& digest, Rect const& rect) {
    for (std::int32_t const side : {rect.x, rect.y, rect.width, rect.height}) {
        digest.addNumber(static_cast<std::uint64_t>(std::int64_t{side}));
    }
}

// Crops, scales, converts and normalises a frame by a random recipe.
void digestRun(Digest& digest, FrameFormat format, TensorDataType element, Random& random) {
    CatmullRomKernel kernel;
    Size const size{random.between(1, 150), random.between(1, 60)};
    Frame const src = randomFrame(format, size, random);
    TensorRecipe const recipe = randomRecipe(element, kernel, random);
    Rect region{0, 0, size.width, size.height};
    if (random.between(0, 1) == 1) {
        region = {size.width / 4, size.height / 4, size.width / 2 + 1, size.height / 2 + 1};
    }
    FrameToTensor network;
    Tensor tensor;
    attempt(digest, [&] {
        network.reuse(recipe);
        tensor.reuse(network.layout(1), DeviceContext());
        PictureMapping const mapping = network.run(src, region, tensor, 0);
        addTensor(digest, tensor);
        addRect(digest, mapping.source);
        addRect(digest, mapping.inner);
    });
}

}  // namespace

void digestTensors(Table& table) {
    for (FrameFormat const format : formats()) {
        for (Element const& element : elements) {
            Random random(format * 10 + element.type);
            Digest digest;
            for (int i = 0; i < 40; ++i) {
                digestRun(digest, format, element.type, random);
            }
            table.add("tensor of " + nameOf(format) + " in " + element.name, digest.value());
        }
    }
}

}  // namespace ox::test
