// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "tensor_recipes.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "parse.h"

namespace oxcv {

namespace {

using Three = std::array<float, 3>;

/// What isn't named is as in `ox::TensorRecipe`.
struct NamedRecipe {
    std::string_view name;
    ox::Size size;
    ox::TensorFit fit;
    std::uint8_t bars;
    ox::TensorColour colour;
    ox::TensorFormat layout;
    ox::TensorDataType type;
    Three mean;  ///< in the order of `colour`
    Three std;
};

constexpr Three all(float number) {
    return {number, number, number};
}

constexpr std::array recipes{
    NamedRecipe{"imagenet",
                {224, 224},
                ox::TENSOR_FIT_CROP,
                0,
                ox::TENSOR_COLOUR_RGB,
                ox::TENSOR_FORMAT_NCHW,
                ox::TENSOR_FLOAT_32,
                {123.675F, 116.28F, 103.53F},
                {58.395F, 57.12F, 57.375F}},
    NamedRecipe{"caffe",
                {224, 224},
                ox::TENSOR_FIT_CROP,
                0,
                ox::TENSOR_COLOUR_BGR,
                ox::TENSOR_FORMAT_NCHW,
                ox::TENSOR_FLOAT_32,
                {103.939F, 116.779F, 123.68F},
                all(1)},
    NamedRecipe{"yolo",
                {640, 640},
                ox::TENSOR_FIT_LETTERBOX,
                114,
                ox::TENSOR_COLOUR_RGB,
                ox::TENSOR_FORMAT_NCHW,
                ox::TENSOR_FLOAT_32,
                all(0),
                all(255)},
    NamedRecipe{"tf",
                {224, 224},
                ox::TENSOR_FIT_STRETCH,
                0,
                ox::TENSOR_COLOUR_RGB,
                ox::TENSOR_FORMAT_NHWC,
                ox::TENSOR_FLOAT_32,
                all(127.5F),
                all(127.5F)},
    NamedRecipe{"tflite",
                {224, 224},
                ox::TENSOR_FIT_STRETCH,
                0,
                ox::TENSOR_COLOUR_RGB,
                ox::TENSOR_FORMAT_NHWC,
                ox::TENSOR_UINT_8,
                all(0),
                all(1)},
    NamedRecipe{"face",
                {112, 112},
                ox::TENSOR_FIT_STRETCH,
                0,
                ox::TENSOR_COLOUR_RGB,
                ox::TENSOR_FORMAT_NCHW,
                ox::TENSOR_FLOAT_32,
                all(127.5F),
                all(128)},
};

template <class Words, class Value>
std::string wordFor(Words const& words, Value value) {
    auto const* const found = std::find_if(
        words.begin(), words.end(), [value](auto const& word) { return word.value == value; });
    return std::string(found->text);
}

/// The fewest digits that mean the same number.
std::string numberText(float number) {
    char text[32];
    auto const [end, error] = std::to_chars(std::begin(text), std::end(text), number);
    static_cast<void>(error);  // there is room for every float
    return std::string(text, end);
}

std::string numbersText(Three const& numbers) {
    return numbers == all(numbers[0]) ? numberText(numbers[0])
                                      : numberText(numbers[0]) + "," + numberText(numbers[1]) +
                                            "," + numberText(numbers[2]);
}

std::string optionsOf(NamedRecipe const& recipe) {
    std::string const bars = recipe.bars == 0 ? "" : " --bars " + std::to_string(recipe.bars);
    return "--size " + toText(recipe.size) + " --fit " + wordFor(fitWords, recipe.fit) + bars +
           " --colour " + wordFor(colourWords, recipe.colour) + " --layout " +
           wordFor(layoutWords, recipe.layout) + " --type " + wordFor(typeWords, recipe.type) +
           " --mean " + numbersText(recipe.mean) + " --std " + numbersText(recipe.std);
}

}  // namespace

std::vector<std::string> recipeNames() {
    std::vector<std::string> names;
    std::transform(recipes.begin(), recipes.end(), std::back_inserter(names),
                   [](NamedRecipe const& recipe) { return std::string(recipe.name); });
    return names;
}

ox::TensorRecipe recipeByName(std::string const& name) {
    auto const* const found =
        std::find_if(recipes.begin(), recipes.end(),
                     [&](NamedRecipe const& recipe) { return recipe.name == name; });
    ox::TensorRecipe recipe;
    recipe.width = found->size.width;
    recipe.height = found->size.height;
    recipe.fit = found->fit;
    recipe.colour = found->colour;
    recipe.layout = found->layout;
    recipe.element = found->type;
    for (std::size_t i = 0; i < 3; ++i) {
        recipe.mean[i] = found->mean[i];
        recipe.scale[i] = 1.0F / found->std[i];
        recipe.bars[i] = found->bars;
    }
    return recipe;
}

void printRecipes() {
    for (NamedRecipe const& recipe : recipes) {
        std::printf("%-9s %s\n", std::string(recipe.name).c_str(), optionsOf(recipe).c_str());
    }
}

}  // namespace oxcv
