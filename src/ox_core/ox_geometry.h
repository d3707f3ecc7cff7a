// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

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
    constexpr bool operator==(Size const& other) const noexcept {
        return width == other.width && height == other.height;
    }
    constexpr bool operator!=(Size const& other) const noexcept { return !(*this == other); }
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

    constexpr bool operator==(Rect const& other) const noexcept {
        return x == other.x && y == other.y && width == other.width && height == other.height;
    }
    constexpr bool operator!=(Rect const& other) const noexcept { return !(*this == other); }
};

static_assert(sizeof(Size) == 8 && sizeof(Rect) == 16, "fixed for the binary interface");

}  // namespace ox
