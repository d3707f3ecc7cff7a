// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What follows from a recipe alone.

#pragma once

#include <array>
#include <cstdint>

#include "ox_cv/ox_frame_to_tensor.h"
#include "rows/tensor/routines.h"

namespace ox::impl {

/// @throws Exception `StatusInvalidParameter`, with the name of the first bad field
void checkRecipe(TensorRecipe const& recipe);

constexpr int channelsOf(TensorRecipe const& recipe) {
    return recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
}

constexpr bool hasPlanes(TensorRecipe const& recipe) {
    return recipe.colour != TENSOR_COLOUR_GRAY && recipe.layout == TENSOR_FORMAT_NCHW;
}

/// What the elements are.
rows::Number numberOf(TensorRecipe const& recipe);

/// The matrix, or null for the library's.
rows::YuvMatrix const* matrixOf(TensorRecipe const& recipe);

/// The numbers of each channel, in the tensor's order.
void fillNumbers(TensorRecipe const& recipe, std::array<rows::ChannelNumbers, 3>& channels);

/// @throws Exception as `FrameToTensor::layout`
TensorLayout layoutOf(TensorRecipe const& recipe, std::int32_t batch);

}  // namespace ox::impl
