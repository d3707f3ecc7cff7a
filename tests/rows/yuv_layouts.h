// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Rows of YUV samples in memory of their own.
#pragma once

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>

#include "rows/colour/layouts.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

using rows::YuvLayout;

// Where the samples of a layout lie: plane, offset and step of Y, U and V.
struct Place {
    std::size_t plane;
    std::size_t offset;
    std::size_t step;
};

struct LayoutCase {
    YuvLayout layout;
    std::size_t pixels_per_chroma;
    Place y;
    Place u;
    Place v;
};

inline constexpr LayoutCase yuvLayoutCases[]{
    {YuvLayout::HalfPlanes, 2, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}},
    {YuvLayout::PairsUv, 2, {0, 0, 1}, {1, 0, 2}, {1, 1, 2}},
    {YuvLayout::PairsVu, 2, {0, 0, 1}, {1, 1, 2}, {1, 0, 2}},
    {YuvLayout::PackedYuyv, 2, {0, 0, 2}, {0, 1, 4}, {0, 3, 4}},
    {YuvLayout::PackedUyvy, 2, {0, 1, 2}, {0, 0, 4}, {0, 2, 4}},
    {YuvLayout::FullPlanes, 1, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}},
    {YuvLayout::PackedYuv, 1, {0, 0, 3}, {0, 1, 3}, {0, 2, 3}},
};
static_assert(std::size(yuvLayoutCases) == rows::yuvLayouts);

// Planes of exactly the bytes that a row has.
class YuvPlanes {
  public:
    YuvPlanes(LayoutCase const& layout, std::size_t width, Guard guard) : _layout(layout) {
        for (std::size_t plane = 0; plane < 3; ++plane) {
            _planes[plane] = std::make_unique<GuardedMemory>(bytesOf(plane, width), guard);
            std::fill_n(_planes[plane]->data(), _planes[plane]->size(), std::uint8_t{0});
        }
    }

    void draw(Random& random) {
        for (auto const& plane : _planes) {
            std::generate_n(plane->data(), plane->size(), [&] { return random.byte(); });
        }
    }

    rows::YuvSamples<std::uint8_t> samples() const { return {y(0), u(0), v(0)}; }
    std::uint8_t* y(std::size_t index) const { return at(_layout.y, index); }
    std::uint8_t* u(std::size_t index) const { return at(_layout.u, index); }
    std::uint8_t* v(std::size_t index) const { return at(_layout.v, index); }
    bool touchedOutside() const {
        return std::any_of(_planes.begin(), _planes.end(),
                           [](auto const& plane) { return plane->touched() != 0; });
    }

  private:
    // The luma plane's row, or that of chroma samples.
    std::size_t bytesOf(std::size_t plane, std::size_t width) const {
        if (plane == _layout.y.plane) {
            std::size_t const pixels = _layout.y.step == 2 ? width + width % 2 : width;
            return pixels * _layout.y.step;
        }
        return (width + _layout.pixels_per_chroma - 1) / _layout.pixels_per_chroma * _layout.u.step;
    }
    std::uint8_t* at(Place place, std::size_t index) const {
        return _planes[place.plane]->data() + place.offset + index * place.step;
    }

    LayoutCase const& _layout;
    std::array<std::unique_ptr<GuardedMemory>, 3> _planes;
};

}  // namespace ox::test
