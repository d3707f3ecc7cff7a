// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Recipes for the inputs of well-known networks, and the words for a recipe's parts.

#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "ox_cv/ox_frame_to_tensor.h"

namespace oxcv {

/// A word of the command line, and what it stands for.
template <class Value>
struct Word {
    std::string_view text;
    Value value;
};

inline constexpr std::array fitWords{
    Word<ox::TensorFit>{"stretch", ox::TENSOR_FIT_STRETCH},
    Word<ox::TensorFit>{"letterbox", ox::TENSOR_FIT_LETTERBOX},
    Word<ox::TensorFit>{"letterbox-top-left", ox::TENSOR_FIT_LETTERBOX_TOP_LEFT},
    Word<ox::TensorFit>{"crop", ox::TENSOR_FIT_CROP},
};
inline constexpr std::array tensorMethodWords{
    Word<ox::TensorMethod>{"automatic", ox::TENSOR_METHOD_AUTOMATIC},
    Word<ox::TensorMethod>{"nearest", ox::TENSOR_METHOD_NEAREST},
    Word<ox::TensorMethod>{"bilinear", ox::TENSOR_METHOD_BILINEAR},
    Word<ox::TensorMethod>{"area", ox::TENSOR_METHOD_AREA},
};
inline constexpr std::array colourWords{
    Word<ox::TensorColour>{"rgb", ox::TENSOR_COLOUR_RGB},
    Word<ox::TensorColour>{"bgr", ox::TENSOR_COLOUR_BGR},
    Word<ox::TensorColour>{"gray", ox::TENSOR_COLOUR_GRAY},
};
inline constexpr std::array layoutWords{
    Word<ox::TensorFormat>{"nchw", ox::TENSOR_FORMAT_NCHW},
    Word<ox::TensorFormat>{"nhwc", ox::TENSOR_FORMAT_NHWC},
};
inline constexpr std::array typeWords{
    Word<ox::TensorDataType>{"f32", ox::TENSOR_FLOAT_32},
    Word<ox::TensorDataType>{"f16", ox::TENSOR_FLOAT_16},
    Word<ox::TensorDataType>{"u8", ox::TENSOR_UINT_8},
    Word<ox::TensorDataType>{"i8", ox::TENSOR_INT_8},
};
inline constexpr std::array matrixWords{
    Word<ox::TensorMatrix>{"library", ox::TENSOR_MATRIX_LIBRARY},
    Word<ox::TensorMatrix>{"bt601", ox::TENSOR_MATRIX_BT601},
    Word<ox::TensorMatrix>{"bt709", ox::TENSOR_MATRIX_BT709},
    Word<ox::TensorMatrix>{"bt2020", ox::TENSOR_MATRIX_BT2020},
};
inline constexpr std::array rangeWords{
    Word<ox::TensorRange>{"limited", ox::TENSOR_RANGE_LIMITED},
    Word<ox::TensorRange>{"full", ox::TENSOR_RANGE_FULL},
};

/// The choices of `--recipe`.
std::vector<std::string> recipeNames();

/// @param name one of `recipeNames`
ox::TensorRecipe recipeByName(std::string const& name);

/// Prints the recipes, as options that mean the same.
void printRecipes();

}  // namespace oxcv
