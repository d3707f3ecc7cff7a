// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How the resizers map destination indices to source samples, along one axis.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Simd {

/// A source sample, and the weight of the sample behind it.
struct SamplePair {
    std::int64_t first;
    float weight;
};

/// Towards zero; what lies outside saturates, and NaN gives 0.
inline std::int64_t truncatedPosition(float position) {
    constexpr float limit = 9223372036854775808.0F;
    if (std::isnan(position)) {
        return 0;
    }
    if (position >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return position < -limit ? std::numeric_limits<std::int64_t>::min()
                             : static_cast<std::int64_t>(position);
}

/// The pair at the end of an axis: the last two samples, or -1 and 0 on an axis of one sample.
constexpr SamplePair lastPair(std::uint64_t src) {
    return {static_cast<std::int64_t>(src) - 2, 1.0F};
}

/// The pair around a position. Positions before the first sample count as the first sample.
inline SamplePair pairAt(float position, std::uint64_t src) {
    std::int64_t const first = std::max<std::int64_t>(truncatedPosition(std::floor(position)), 0);
    if (first >= static_cast<std::int64_t>(src) - 1) {
        return lastPair(src);
    }
    return {first, std::max(position - static_cast<float>(first), 0.0F)};
}

/// Where the centre of pixel `i` falls among those of the source.
/// @param scale source pixels of a destination pixel
inline float centredPosition(float scale, std::uint64_t i) {
    return std::fma(scale, static_cast<float>(i) + 0.5F, -0.5F);
}

/// An offset in a row, for a table of 32-bit numbers. A larger offset becomes the largest such
/// number, which is still in the row.
constexpr std::int32_t rowOffset(std::int64_t index, std::uint64_t channels,
                                 std::uint64_t channel = 0) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::uint64_t const offset = static_cast<std::uint64_t>(index) * channels + channel;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(static_cast<std::int64_t>(offset), Limits::min(), Limits::max()));
}

}  // namespace Simd
