// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Filters for the tests of convolutional scaling.
#pragma once

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "ox_cv/ox_scale_kernel.h"

namespace ox::test {

// A filter of a fixed width that keeps record of what it is asked.
class TestKernel : public IKernel {
  public:
    using Function = std::function<float(float)>;

    explicit TestKernel(float wide, Function f = flat) : width(wide), function(std::move(f)) {}

    void setScale(float scale) override { scales.push_back(scale); }
    float value(float x) override {
        distances.push_back(x);
        return function(x);
    }
    float aperture() override { return width; }

    static float flat(float) { return 1.0F; }

    float width;
    Function function;
    std::vector<float> scales;
    std::vector<float> distances;
};

// A filter with that mean over each pixel, for windows that begin at a pixel's edge. It is 0 at the
// edges, and thus a trapezoid of 15 sixteenths on each pixel.
inline TestKernel tapKernel(std::vector<float> const& taps) {
    auto const half = static_cast<float>(taps.size()) / 2;
    return TestKernel(half * 2, [=](float x) {
        float const place = x + half;
        float const pixel = std::floor(place);
        return place == pixel ? 0.0F : taps[static_cast<std::size_t>(pixel)] * 16.0F / 15.0F;
    });
}

}  // namespace ox::test
