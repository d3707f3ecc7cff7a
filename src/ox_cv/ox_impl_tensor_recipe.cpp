// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_tensor_recipe.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "ox_core/ox_impl_place.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_tensor_recipe"};

bool areFinite(float const (&numbers)[3]) {
    return std::all_of(numbers, numbers + 3, [](float number) { return std::isfinite(number); });
}

rows::YuvMatrix const* matrixFor(TensorMatrix matrix, bool full) {
    switch (matrix) {
        case TENSOR_MATRIX_BT601:
            return full ? &rows::bt601Full : &rows::bt601Limited;
        case TENSOR_MATRIX_BT709:
            return full ? &rows::bt709Full : &rows::bt709Limited;
        case TENSOR_MATRIX_BT2020:
            return full ? &rows::bt2020Full : &rows::bt2020Limited;
        case TENSOR_MATRIX_LIBRARY:
            break;
    }
    return nullptr;
}

/// The next stride out: `extent` times the one inside.
std::int32_t strideAround(std::int32_t inside, std::int32_t extent) {
    std::int64_t const stride = std::int64_t{inside} * extent;
    if (stride > std::numeric_limits<std::int32_t>::max()) {
        here.fail({StatusCapacityExceeded, "layout"},
                  "Failure in FrameToTensor::layout(...) : a stride is too large.");
    }
    return static_cast<std::int32_t>(stride);
}

}  // namespace

void checkRecipe(TensorRecipe const& recipe) {
    bool const has_layout =
        recipe.layout == TENSOR_FORMAT_NCHW || recipe.layout == TENSOR_FORMAT_NHWC;
    bool const has_element = recipe.element == TENSOR_UINT_8 || recipe.element == TENSOR_INT_8 ||
                             recipe.element == TENSOR_FLOAT_16 || recipe.element == TENSOR_FLOAT_32;
    bool const has_precision = recipe.precision == OX_SCALER_FIXED_POINT_8S ||
                               recipe.precision == OX_SCALER_FIXED_POINT_16S;
    // In the order of the fields; some can't be invalid.
    std::pair<char const*, bool> const fields[] = {
        {"width", recipe.width > 0},
        {"height", recipe.height > 0},
        {"fit", recipe.fit <= TENSOR_FIT_CROP},
        {"method", recipe.method <= TENSOR_METHOD_AUTOMATIC},
        {"precision", has_precision},
        {"colour", recipe.colour <= TENSOR_COLOUR_GRAY},
        {"layout", has_layout},
        {"element", has_element},
        {"mean", areFinite(recipe.mean)},
        {"scale", areFinite(recipe.scale)},
        {"quantScale", std::isfinite(recipe.quantScale) && recipe.quantScale > 0.0F},
        {"matrix", recipe.matrix <= TENSOR_MATRIX_BT2020},
        {"range", recipe.range <= TENSOR_RANGE_FULL},
    };
    for (auto const& [name, is_valid] : fields) {
        if (!is_valid) {
            here.fail({StatusInvalidParameter, "reuse"},
                      "Failure in FrameToTensor::reuse(...) : field '%s' of the recipe is invalid.",
                      name);
        }
    }
}

rows::Number numberOf(TensorRecipe const& recipe) {
    switch (recipe.element) {
        case TENSOR_UINT_8:
            return rows::Number::Byte;
        case TENSOR_INT_8:
            return rows::Number::SignedByte;
        case TENSOR_FLOAT_16:
            return rows::Number::Half;
        default:
            return rows::Number::Float;
    }
}

rows::YuvMatrix const* matrixOf(TensorRecipe const& recipe) {
    return matrixFor(recipe.matrix, recipe.range == TENSOR_RANGE_FULL);
}

void fillNumbers(TensorRecipe const& recipe, std::array<rows::ChannelNumbers, 3>& channels) {
    rows::Number const number = numberOf(recipe);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        rows::ChannelNumbers& channel = channels[i];
        channel.mean = recipe.mean[i];
        channel.scale = recipe.scale[i];
        channel.quant_scale = recipe.quantScale;
        channel.zero_point = static_cast<float>(recipe.zeroPoint);
        channel.fill(number);
    }
}

TensorLayout layoutOf(TensorRecipe const& recipe, std::int32_t batch) {
    if (batch < 1) {
        here.fail({StatusInvalidParameter, "layout"},
                  "Failure in FrameToTensor::layout(...) : parameter 'batch' is invalid %d.",
                  batch);
    }
    std::int32_t const channels = channelsOf(recipe);
    bool const nchw = recipe.layout == TENSOR_FORMAT_NCHW;
    TensorSize const size = nchw ? TensorSize{4, {batch, channels, recipe.height, recipe.width}}
                                 : TensorSize{4, {batch, recipe.height, recipe.width, channels}};
    TensorSize strides{4, {}};
    strides.values[3] = static_cast<std::int32_t>(rows::bytesOf(numberOf(recipe)));
    for (int i = 3; i > 0; --i) {
        strides.values[i - 1] = strideAround(strides.values[i], size.values[i]);
    }
    return {recipe.element, recipe.layout, size, strides, TENSOR_CHANNEL_ORDER_NONE};
}

}  // namespace ox::impl
