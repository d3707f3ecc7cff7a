// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/columns.h"

#include <algorithm>

#include "vector/dispatch.h"

namespace Simd::Base {

namespace {

std::uint32_t clampIndex(std::int32_t index, std::int32_t last) {
    return static_cast<std::uint32_t>(std::max(std::min(index, last), 0));
}

/// The weight of the second sample at `position`, which isn't negative; `whole` is its whole part.
std::uint32_t secondWeight(float position, std::int32_t whole) {
    float const part = (position - static_cast<float>(whole)) * static_cast<float>(warpRange);
    float const raised = part + 0.5F;
    return static_cast<std::uint32_t>(raised);
}

template <std::size_t channels>
void blend(WarpTaps const& taps, std::size_t count, Bytes dst) {
    constexpr std::size_t bytes = warpTapBytes(channels);
    for (std::size_t i = 0; i < count; ++i) {
        ConstBytes const top = taps.pixels + i * bytes;
        ConstBytes const bottom = top + bytes / 2;
        std::uint32_t const left = taps.xWeights[i] & 0xffU;
        std::uint32_t const right = taps.xWeights[i] >> 8;
        std::uint32_t const upper = taps.yWeights[i] & 0xffffU;
        std::uint32_t const lower = taps.yWeights[i] >> 16;
        for (std::size_t c = 0; c < channels; ++c) {
            std::uint32_t const sum = (top[c] * left + top[channels + c] * right) * upper +
                                      (bottom[c] * left + bottom[channels + c] * right) * lower;
            dst[i * channels + c] = static_cast<std::uint8_t>((sum + 512) >> 10);
        }
    }
}

}  // namespace

void FindNearestOffsets(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                        std::size_t count, std::uint32_t* offsets) {
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t const at = column + static_cast<std::int32_t>(i);
        std::uint32_t const x = clampIndex(roundAway(line.x.at(at)), plane.lastX);
        std::uint32_t const y = clampIndex(roundAway(line.y.at(at)), plane.lastY);
        offsets[i] = y * plane.stride + x * plane.pixelBytes;
    }
}

void FindBilinearPositions(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                           std::size_t count, WarpTaps const& taps) {
    constexpr std::uint32_t range = warpRange;
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t const at = column + static_cast<std::int32_t>(i);
        float const x = line.x.at(at);
        float const y = line.y.at(at);
        auto const whole_x = static_cast<std::int32_t>(x);
        auto const whole_y = static_cast<std::int32_t>(y);
        std::uint32_t const right = secondWeight(x, whole_x);
        std::uint32_t const lower = secondWeight(y, whole_y);
        taps.offset[i] = static_cast<std::uint32_t>(whole_y) * plane.stride +
                         static_cast<std::uint32_t>(whole_x) * plane.pixelBytes;
        taps.xWeights[i] = static_cast<std::uint16_t>(range - right + (right << 8));
        taps.yWeights[i] = range - lower + (lower << 16);
    }
}

void BlendWarpTaps(WarpTaps const& taps, std::size_t count, std::size_t channels, Bytes dst) {
    using Blend = void(WarpTaps const&, std::size_t, Bytes);
    static constexpr Blend* blends[] = {blend<1>, blend<2>, blend<3>, blend<4>};
    blends[channels - 1](taps, count, dst);
}

}  // namespace Simd::Base

namespace Simd::Neon {

namespace {

WarpRoutines findWarpRoutines() {
    WarpRoutines best;
#ifdef OX_WITH_HIGHWAY
    takeWarpRoutines(best);
#endif
    return best;
}

}  // namespace

WarpRoutines const& warpRoutines() {
    return ox::vector::RoutineTable<WarpRoutines, findWarpRoutines>::get();
}

}  // namespace Simd::Neon
