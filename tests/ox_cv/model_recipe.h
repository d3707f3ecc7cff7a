// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The model's recipe for a recipe of the library.
#pragma once

#include <algorithm>
#include <iterator>

#include "model/frame_to_tensor.h"
#include "ox_cv/filter_pair.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace ox::test {

constexpr TensorDataType tensorElements[]{TENSOR_UINT_8, TENSOR_INT_8, TENSOR_FLOAT_16,
                                          TENSOR_FLOAT_32};

// @param filter behind the library's kernel, if it has one
inline model::TensorRecipe modelOf(TensorRecipe const& recipe, FilterPair& filter) {
    model::TensorRecipe result;
    result.width = recipe.width;
    result.height = recipe.height;
    result.fit = recipe.fit == TENSOR_FIT_STRETCH ? model::TensorFit::Stretch
                 : recipe.fit == TENSOR_FIT_CROP  ? model::TensorFit::Crop
                                                  : model::TensorFit::Letterbox;
    result.centred = recipe.fit == TENSOR_FIT_LETTERBOX;
    result.method = static_cast<model::TensorMethod>(recipe.method);
    if (recipe.kernel != nullptr) {
        result.filter = &filter.model();
    }
    result.precision = recipe.precision == OX_SCALER_FIXED_POINT_8S ? 8 : 16;
    result.colour = static_cast<model::TensorColour>(recipe.colour);
    result.layout =
        recipe.layout == TENSOR_FORMAT_NHWC ? model::TensorLayout::Nhwc : model::TensorLayout::Nchw;
    auto const* const element =
        std::find(std::begin(tensorElements), std::end(tensorElements), recipe.element);
    result.element = static_cast<model::TensorElement>(element - std::begin(tensorElements));
    std::copy_n(recipe.mean, 3, result.mean.begin());
    std::copy_n(recipe.scale, 3, result.scale.begin());
    result.quant_scale = recipe.quantScale;
    result.zero_point = recipe.zeroPoint;
    std::copy_n(recipe.bars, 3, result.bars.begin());
    result.matrix = static_cast<model::YuvMatrix>(recipe.matrix);
    result.range = static_cast<model::YuvRange>(recipe.range);
    return result;
}

}  // namespace ox::test
