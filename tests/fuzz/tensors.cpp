// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One FrameToTensor over several recipes and pictures against the model, and with recipes and
// strides without sense, where nothing may be written but what the strides say.
#include <algorithm>
#include <cmath>
#include <vector>

#include "fuzz/pictures.h"
#include "fuzz/planes.h"
#include "fuzz/targets.h"
#include "model/frame_to_tensor.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/filter_pair.h"
#include "ox_cv/model_recipe.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace ox::fuzz {

namespace {

void drawShape(Input& input, TensorRecipe& recipe) {
    recipe.width = input.between(1, input.oneIn(8) ? 70 : 20);
    recipe.height = input.between(1, 20);
    recipe.fit = static_cast<TensorFit>(input.between(0, 3));
    recipe.method = static_cast<TensorMethod>(input.between(0, 3));
    recipe.colour = static_cast<TensorColour>(input.between(0, 2));
    recipe.layout = input.byte() % 2 == 0 ? TENSOR_FORMAT_NHWC : TENSOR_FORMAT_NCHW;
    recipe.matrix = static_cast<TensorMatrix>(input.between(0, 3));
    recipe.range = static_cast<TensorRange>(input.between(0, 1));
}

void drawNumbers(Input& input, TensorRecipe& recipe) {
    recipe.element = input.pick(test::tensorElements);
    constexpr float reaches[]{1.0F / 255.0F, 1.0F, 3.0F, 1000.0F};
    float const reach = input.pick(reaches);
    for (std::size_t c = 0; c < 3; ++c) {
        recipe.mean[c] = input.real(-20.0F, 280.0F);
        recipe.scale[c] = input.real(-reach, reach);
        recipe.bars[c] = input.byte();
    }
    recipe.quantScale = input.oneIn(2) ? input.real(0.001F, 2.0F) : 1.0F;
    recipe.zeroPoint = input.between(-140, 270);
}

void useFilter(Input& input, TensorRecipe& recipe, test::FilterPair& filter) {
    recipe.kernel = &filter.library();
    recipe.precision = input.byte() % 2 == 0 ? OX_SCALER_FIXED_POINT_8S : OX_SCALER_FIXED_POINT_16S;
}

// One field that means nothing.
void spoil(Input& input, TensorRecipe& recipe) {
    switch (input.between(0, 8)) {
        case 0:
            recipe.width = input.number<std::int32_t>();
            break;
        case 1:
            recipe.height = -input.between(0, 2);
            break;
        case 2:
            recipe.fit = static_cast<TensorFit>(input.byte());
            break;
        case 3:
            recipe.method = static_cast<TensorMethod>(input.byte());
            break;
        case 4:
            recipe.element = static_cast<TensorDataType>(input.byte());
            break;
        case 5:
            recipe.mean[input.between(0, 2)] = input.number<float>();
            break;
        case 6:
            recipe.scale[input.between(0, 2)] = input.number<float>();
            break;
        case 7:
            recipe.quantScale = input.number<float>();
            break;
        default:
            recipe.colour = static_cast<TensorColour>(input.byte());
            break;
    }
}

std::size_t bytesOf(TensorDataType element) {
    return element == TENSOR_FLOAT_32 ? 4 : element == TENSOR_FLOAT_16 ? 2 : 1;
}

// Memory for a picture of a recipe: rows and planes with gaps of whole elements.
class Target {
  public:
    Target(TensorRecipe const& recipe, Input& input)
        : _planes(recipe.layout == TENSOR_FORMAT_NCHW && recipe.colour != TENSOR_COLOUR_GRAY ? 3
                                                                                             : 1),
          _height(static_cast<std::size_t>(recipe.height)) {
        std::size_t const channels = recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
        std::size_t const element = bytesOf(recipe.element);
        _row = static_cast<std::size_t>(recipe.width) * element * channels / _planes;
        _row_stride = _row + element * (input.byte() % 8);
        _plane_stride = _row_stride * (_height - 1) + _row + element * (input.byte() % 8);
        _bytes.assign(_plane_stride * (_planes - 1) + _row_stride * (_height - 1) + _row,
                      untouched);
        _bytes.shrink_to_fit();
    }

    PictureMapping fill(FrameToTensor& to_tensor, Frame const& src, Rect region) {
        return to_tensor.run(src, region, _bytes.data(), static_cast<std::int64_t>(_row_stride),
                             static_cast<std::int64_t>(_plane_stride));
    }

    // What the rows hold, and gaps as they were.
    void expect(std::vector<std::uint8_t> const& bytes) const {
        std::vector<std::uint8_t> wanted(_bytes.size(), untouched);
        auto next = bytes.begin();
        for (std::size_t p = 0; p < _planes; ++p) {
            for (std::size_t y = 0; y < _height; ++y, next += static_cast<std::ptrdiff_t>(_row)) {
                std::copy_n(next, _row,
                            wanted.begin() +
                                static_cast<std::ptrdiff_t>(p * _plane_stride + y * _row_stride));
            }
        }
        expectBytes(_bytes, wanted, "tensor");
    }
    void expectUntouched() const {
        expectBytes(_bytes, std::vector<std::uint8_t>(_bytes.size(), untouched), "refused tensor");
    }

  private:
    std::size_t _planes;
    std::size_t _height;
    std::size_t _row = 0;
    std::size_t _row_stride = 0;
    std::size_t _plane_stride = 0;
    std::vector<std::uint8_t> _bytes;
};

void expectMapping(PictureMapping const& got, model::TensorMapping const& wanted) {
    model::TensorMapping const mapping{got.source.x,      got.source.y,    got.source.width,
                                       got.source.height, got.inner.x,     got.inner.y,
                                       got.inner.width,   got.inner.height};
    if (!(mapping == wanted && got.toInputX(7.25) == wanted.toInputX(7.25) &&
          got.toSourceY(-3.0) == wanted.toSourceY(-3.0))) {
        fail("another mapping");
    }
}

Rect drawPart(Input& input, Size whole) {
    Rect region = drawRegion(input, whole);
    if (input.oneIn(16)) {  // beyond the frame
        region.width += input.between(1, 100);
        region.height += 1;
    }
    return region;
}

void compare(Input& input, FrameToTensor& to_tensor, test::FilterPair& filter) {
    constexpr int last = model::Yuv444Planar;
    int const format = input.oneIn(16) ? drawNamedFormat(input) : input.between(1, last);
    int const width = drawSide(input);
    model::Image const image = drawImage(input, {format, width, drawSide(input)});
    Picture const src(image, drawPlaces(input));
    TensorRecipe recipe;
    drawShape(input, recipe);
    drawNumbers(input, recipe);
    if (input.oneIn(4)) {
        useFilter(input, recipe, filter);
    }
    Rect const region = drawPart(input, {image.width, image.height});
    model::TensorPicture const wanted = model::frameToTensor(
        test::modelOf(recipe, filter), image, {region.x, region.y, region.width, region.height});
    Target target(recipe, input);
    to_tensor.reuse(recipe);
    try {
        PictureMapping const mapping = target.fill(to_tensor, src.frame(), region);
        if (!wanted.outcome.ok) {
            fail("the model refuses this tensor: %d", wanted.outcome.status);
        }
        expectMapping(mapping, wanted.mapping);
        target.expect(wanted.bytes);
    } catch (Exception const& refusal) {
        if (wanted.outcome.status != static_cast<int>(refusal.status)) {
            fail("\"%s\" (%d), but the model has %d", refusal.what(),
                 static_cast<int>(refusal.status), wanted.outcome.status);
        }
        target.expectUntouched();
    }
    src.expect(image, "the source of a tensor");
}

// The memory of the largest recipe that isn't spoiled; strides may be anything, below zero too.
void withoutSense(Input& input, FrameToTensor& to_tensor) {
    TensorRecipe recipe;
    drawShape(input, recipe);
    drawNumbers(input, recipe);
    recipe.width = std::min(recipe.width, 20);
    TensorRecipe spoiled = recipe;
    if (input.oneIn(2)) {
        spoil(input, spoiled);
    }
    model::Image const image = drawImage(input, drawGeometry(input));
    Picture const src(image, drawPlaces(input));
    std::int64_t const row_stride =
        input.oneIn(4) ? input.number<std::int64_t>() : std::int64_t{input.between(-300, 300)};
    std::int64_t const plane_stride =
        input.oneIn(4) ? input.number<std::int64_t>() : std::int64_t{input.between(-7000, 7000)};
    bool const fits = spoiled.width == recipe.width && row_stride <= 300 && plane_stride <= 7000;
    std::vector<std::uint8_t> memory(20 * 300 + 2 * 7000 + 300, untouched);
    try {
        to_tensor.reuse(spoiled);
        if (fits) {
            to_tensor.run(src.frame(), drawPart(input, {image.width, image.height}), memory.data(),
                          row_stride, plane_stride);
        }
    } catch (Exception const&) {
    }
}

}  // namespace

void tensors(Input& input) {
    FrameToTensor to_tensor;
    test::FilterPair filter(input.pick(test::usualFilters()));
    for (int i = input.between(1, 3); i > 0; --i) {
        if (input.oneIn(4)) {
            withoutSense(input, to_tensor);
        } else {
            compare(input, to_tensor, filter);
        }
    }
}

}  // namespace ox::fuzz
