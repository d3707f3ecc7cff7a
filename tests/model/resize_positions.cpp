// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>

#include "model/resize.h"

namespace model {

namespace {

float ratio(std::uint64_t s, std::uint64_t d) {
    return static_cast<float>(s) / static_cast<float>(d);
}

float middle(std::uint64_t i) {
    return static_cast<float>(i) + 0.5F;
}

float centre(std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    return std::fma(ratio(s, d), middle(i), -0.5F);
}

std::int64_t below(float position) {
    return static_cast<std::int64_t>(std::floor(position));
}

// What is before the first sample counts as the first.
Position<float> split(float position) {
    std::int64_t const index = below(position);
    if (index < 0) {
        return {0, 0.0F};
    }
    return {index, position - static_cast<float>(index)};
}

// At the last sample and behind it there is nothing but the last sample.
template <class Weight>
Position<Weight> ended(std::int64_t index, Weight weight, Weight full, std::uint64_t s) {
    auto const samples = static_cast<std::int64_t>(s);
    return index >= samples - 1 ? Position<Weight>{samples - 2, full}
                                : Position<Weight>{index, weight};
}

std::int32_t roundedAwayFromZero(float number) {
    return static_cast<std::int32_t>(number >= 0 ? number + 0.5F : number - 0.5F);
}

}  // namespace

std::int64_t nearestPosition(int method, std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    std::int64_t const index = method == 1 ? static_cast<std::int64_t>(i * s / d)
                                           : static_cast<std::int32_t>(middle(i) * ratio(s, d));
    return std::max<std::int64_t>(std::min(index, static_cast<std::int64_t>(s) - 1), 0);
}

Position<int> bytePosition(std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    Position<float> const at = split(centre(s, d, i));
    return ended(at.index, static_cast<int>(std::fma(at.weight, 16.0F, 0.5F)), 16, s);
}

// The same with wider intermediate results, which now and then round to another weight.
Position<int> vectorBytePosition(std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    double const wide = std::fma(static_cast<double>(i) + 0.5, double{ratio(s, d)}, -0.5);
    Position<float> const at = split(static_cast<float>(wide));
    float const sixteenths = at.weight * 16.0F;
    return ended(at.index, static_cast<int>(double{sixteenths} + 0.5), 16, s);
}

Position<float> floatPosition(int method, std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    auto const number = static_cast<float>(i);
    if (method == 3) {
        float const scale = d < 2 ? 0.0F : ratio(s - 1, d - 1);
        std::int64_t const index = below(number * scale);
        return ended(index, std::fma(number, scale, -static_cast<float>(index)), 1.0F, s);
    }
    if (method == 4) {
        float const position = number * ratio(s, d);
        auto const index = static_cast<std::int64_t>(position);
        return ended(index, position - static_cast<float>(index), 1.0F, s);
    }
    Position<float> const at = split(centre(s, d, i));
    return ended(at.index, at.weight, 1.0F, s);
}

CubicPosition cubicPosition(std::uint64_t s, std::uint64_t d, std::uint64_t i) {
    auto const [index, t] = split(centre(s, d, i));
    auto const samples = static_cast<std::int64_t>(s);
    if (index >= samples - 1) {
        return {samples - 2, {0, 0, -128, 0}};
    }
    float const a = 1.0F - t;
    float const b = t + 1.0F;
    float const e = (t - 2.0F) * 128.0F * b;
    return {
        index,
        {roundedAwayFromZero((2.0F - t) * 128.0F * a * t / 6.0F), roundedAwayFromZero(a * e * 0.5F),
         roundedAwayFromZero(t * e * 0.5F), roundedAwayFromZero(b * 128.0F * a * t / 6.0F)}};
}

Position<std::int32_t> areaPosition(std::uint64_t s, std::uint64_t d, int range, std::uint64_t i) {
    float const scale = ratio(s, d);
    float const position = static_cast<float>(i) * scale;
    auto const index = static_cast<std::uint64_t>(position);
    if (index == s) {
        return {static_cast<std::int64_t>(s) - 1, 0};
    }
    float const rest = 1.0F - (position - static_cast<float>(index));
    float const weight = rest * static_cast<float>(range) / scale;
    return {static_cast<std::int64_t>(index),
            weight < 0x1p31F ? static_cast<std::int32_t>(weight) : 0x7FFFFFFF};
}

}  // namespace model
