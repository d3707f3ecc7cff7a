/// @file
/// Sizes and rectangles in pixels.

#pragma once

#include <cstdint>

#include "ox_core/ox_api.h"

namespace ox {

/// Width and height in pixels.
struct Size {
    std::int32_t width = 0;
    std::int32_t height = 0;

    /// True unless both sides are positive.
    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(Size const&) const = default;
};

/// A rectangle of pixels with its origin at the top left.
struct OX_API Rect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    /// True unless both sides are positive.
    bool empty() const { return width <= 0 || height <= 0; }

    /// Clips the rectangle in place to the area from (0, 0) to `size`. A rectangle outside that
    /// area becomes all zero.
    void crop(Size const& size);

    bool operator==(Rect const&) const = default;
};

static_assert(sizeof(Size) == 8 && sizeof(Rect) == 16);

}  // namespace ox
