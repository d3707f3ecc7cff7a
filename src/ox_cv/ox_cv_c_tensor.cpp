// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>

#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_impl_c.h"

struct ox_to_tensor {
    std::unique_ptr<ox::IKernel> kernel;  ///< of the recipe; null if it has none
    ox::FrameToTensor to_tensor;
};

namespace ox::impl::c {

namespace {

static_assert(sizeof(ox_recipe) == 80 + sizeof(void*) && offsetof(ox_recipe, filter) == 24,
              "the recipe has no gaps");

void checkSize(std::uint32_t struct_size) {
    if (struct_size != sizeof(ox_recipe)) {
        refuseValue("struct_size", static_cast<int>(struct_size));
    }
}

ox_recipe defaultRecipe() {
    TensorRecipe const recipe;
    ox_recipe same{};
    same.struct_size = sizeof same;
    same.method = static_cast<std::int32_t>(recipe.method);
    same.precision = static_cast<std::int32_t>(recipe.precision);
    same.colour = static_cast<std::int32_t>(recipe.colour);
    same.layout = static_cast<std::int32_t>(recipe.layout);
    same.element = static_cast<std::int32_t>(recipe.element);
    std::copy_n(recipe.scale, 3, same.scale);
    same.quant_scale = recipe.quantScale;
    return same;
}

TensorRecipe recipeOf(ox_recipe const& given, IKernel* kernel) {
    TensorRecipe recipe;
    recipe.width = given.width;
    recipe.height = given.height;
    recipe.fit = static_cast<TensorFit>(given.fit);
    recipe.method = static_cast<TensorMethod>(given.method);
    recipe.kernel = kernel;
    recipe.precision = static_cast<ScalerPrecision>(given.precision);
    recipe.colour = static_cast<TensorColour>(given.colour);
    recipe.layout = static_cast<TensorFormat>(given.layout);
    recipe.element = static_cast<TensorDataType>(given.element);
    std::copy_n(given.mean, 3, recipe.mean);
    std::copy_n(given.scale, 3, recipe.scale);
    recipe.quantScale = given.quant_scale;
    recipe.zeroPoint = given.zero_point;
    std::copy_n(given.bars, 3, recipe.bars);
    recipe.matrix = static_cast<TensorMatrix>(given.matrix);
    recipe.range = static_cast<TensorRange>(given.range);
    return recipe;
}

struct Strides {
    std::int64_t row;
    std::int64_t channel;
};

/// Gives strides of 0 the number that lets rows, and channels with those rows, follow one another.
Strides filled(FrameToTensor const& to_tensor, Strides strides) {
    if (strides.row != 0 && strides.channel != 0) {
        return strides;
    }
    TensorLayout const tight = to_tensor.layout(1);
    bool const has_planes = tight.format() == TENSOR_FORMAT_NCHW;
    if (strides.row == 0) {
        strides.row = tight.strides().values[has_planes ? 2 : 1];
    }
    if (strides.channel == 0) {
        // A product that doesn't fit wraps; `run` refuses such rows.
        strides.channel =
            static_cast<std::int64_t>(static_cast<std::uint64_t>(strides.row) *
                                      static_cast<std::uint32_t>(tight.size().values[2]));
    }
    return strides;
}

ox_rect rectOf(Rect const& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

}  // namespace

}  // namespace ox::impl::c

using namespace ox::impl::c;

ox_status ox_recipe_init(ox_recipe* recipe, uint32_t struct_size) {
    return guarded([&] {
        requireParameter(recipe, "recipe");
        checkSize(struct_size);
        *recipe = defaultRecipe();
    });
}

ox_status ox_to_tensor_create(ox_recipe const* recipe, ox_to_tensor** to_tensor) {
    return give(to_tensor, "to_tensor", [&] {
        requireParameter(recipe, "recipe");
        checkSize(recipe->struct_size);
        auto made = std::make_unique<ox_to_tensor>();
        if (recipe->filter != nullptr) {
            made->kernel = kernelOf(*recipe->filter);
        }
        made->to_tensor.reuse(recipeOf(*recipe, made->kernel.get()));
        return made;
    });
}

ox_status ox_to_tensor_get_info(ox_to_tensor const* to_tensor, int32_t batch,
                                ox_tensor_info* info) {
    return guarded([&] {
        requireParameter(to_tensor, "to_tensor");
        requireParameter(info, "info");
        ox::TensorLayout const layout = to_tensor->to_tensor.layout(batch);
        std::copy_n(layout.size().values, 4, info->sides);
        std::copy_n(layout.strides().values, 4, info->strides);
        info->bytes = layout.totalBytes();
    });
}

ox_status ox_to_tensor_run(ox_to_tensor* to_tensor, ox_frame const* src, ox_rect const* region,
                           void* dst, int64_t row_stride, int64_t channel_stride,
                           ox_mapping* mapping) {
    return guarded([&] {
        requireParameter(to_tensor, "to_tensor");
        ox::Frame const& frame = frameOf(src, "src");
        ox::FrameToTensor& fill = to_tensor->to_tensor;
        Strides const strides = filled(fill, {row_stride, channel_stride});
        ox::PictureMapping const made =
            fill.run(frame, rectOf(region), dst, strides.row, strides.channel);
        if (mapping != nullptr) {
            *mapping = {rectOf(made.source), rectOf(made.inner)};
        }
    });
}

void ox_to_tensor_destroy(ox_to_tensor* to_tensor) {
    delete to_tensor;
}
