// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_tensor_fit.h"

#include <algorithm>
#include <cstdint>

#include "ox_core/ox_impl_format_facts.h"

namespace ox::impl {

namespace {

/// Sides below 2^31, whose products fit.
struct Sides {
    std::int64_t width;
    std::int64_t height;
};

Sides sidesOf(Rect rect) {
    return {rect.width, rect.height};
}

/// extent * to / from, rounded to nearest, in [1, most].
std::int32_t scaledSide(std::int64_t extent, std::int64_t to, std::int64_t from,
                        std::int64_t most) {
    std::int64_t const scaled = (2 * extent * to + from) / (2 * from);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(scaled, 1, most));
}

Rect letterbox(Sides picture, TensorRecipe const& recipe) {
    Sides const tensor{recipe.width, recipe.height};
    Rect inner{0, 0, recipe.width, recipe.height};
    if (tensor.width * picture.height <= picture.width * tensor.height) {
        inner.height = scaledSide(picture.height, tensor.width, picture.width, tensor.height);
    } else {
        inner.width = scaledSide(picture.width, tensor.height, picture.height, tensor.width);
    }
    if (recipe.fit == TENSOR_FIT_LETTERBOX) {
        inner.x = (recipe.width - inner.width) / 2;
        inner.y = (recipe.height - inner.height) / 2;
    }
    return inner;
}

/// Half of what is cut off, down to a chroma sample's edge if it is shared.
std::int32_t cropOffset(std::int32_t extent, std::int32_t kept, bool shared) {
    std::int32_t const offset = (extent - kept) / 2;
    return shared ? offset / 2 * 2 : offset;
}

Rect crop(Rect read, FrameFormat format, TensorRecipe const& recipe) {
    Sides const picture = sidesOf(read);
    Sides const tensor{recipe.width, recipe.height};
    Rect kept = read;
    if (picture.width * tensor.height >= picture.height * tensor.width) {
        kept.width = scaledSide(picture.height, tensor.width, tensor.height, picture.width);
    } else {
        kept.height = scaledSide(picture.width, tensor.height, tensor.width, picture.height);
    }
    FormatFacts const& facts = factsOf(format);
    bool const shares_columns = facts.planes[1].half_width || facts.pixel_group == 2;
    kept.x += cropOffset(read.width, kept.width, shares_columns);
    kept.y += cropOffset(read.height, kept.height, facts.planes[1].half_height);
    return kept;
}

}  // namespace

Rect readRegion(FrameFormat format, Rect region) {
    std::int32_t const group = factsOf(format).pixel_group;
    region.x = region.x / group * group;
    return region;
}

PictureMapping fitPicture(TensorRecipe const& recipe, FrameFormat format, Rect read) {
    Rect const whole{0, 0, recipe.width, recipe.height};
    switch (recipe.fit) {
        case TENSOR_FIT_LETTERBOX:
        case TENSOR_FIT_LETTERBOX_TOP_LEFT:
            return {read, letterbox(sidesOf(read), recipe)};
        case TENSOR_FIT_CROP:
            return {crop(read, format, recipe), whole};
        case TENSOR_FIT_STRETCH:
            break;
    }
    return {read, whole};
}

ScaleMethod scaleMethodOf(TensorRecipe const& recipe, PictureMapping const& mapping) {
    if (recipe.method != TENSOR_METHOD_AUTOMATIC) {
        return static_cast<ScaleMethod>(recipe.method);
    }
    Sides const read = sidesOf(mapping.source);
    Sides const inner = sidesOf(mapping.inner);
    bool const halves = 2 * inner.width <= read.width && 2 * inner.height <= read.height;
    return halves ? OX_SCALE_AREA : OX_SCALE_BILINEAR;
}

}  // namespace ox::impl
