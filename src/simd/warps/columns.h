// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The sweeps of a warp over the columns of one destination row: where each column lies in the
/// source, and the blend of what was gathered there. Each exists as a plain loop, below, and as a
/// vector routine with the same results.

#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "simd/kernels/kernels.h"

namespace Simd {

/// Towards zero. What doesn't fit becomes the nearest number that does, and NaN 0.
inline std::int32_t truncateToInt(float value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (value >= 0x1p31F) {
        return Limits::max();
    }
    if (value <= -0x1p31F) {
        return Limits::min();
    }
    return std::isnan(value) ? 0 : static_cast<std::int32_t>(value);
}

/// To the nearest integer, halves away from zero. The sum is rounded too, so that the number just
/// below 0.5 becomes 1.
inline std::int32_t roundAway(float value) {
    return truncateToInt(value < 0 ? value - 0.5F : value + 0.5F);
}

inline std::int32_t floorToInt(float value) {
    std::int32_t const whole = truncateToInt(value);
    bool const above = static_cast<float>(whole) > value;
    return above && whole > std::numeric_limits<std::int32_t>::min() ? whole - 1 : whole;
}

/// A source coordinate along a destination row. Each operation rounds but keeps the order, so that
/// the coordinate is monotonic along the row.
struct WarpAxis {
    float step;
    float row;
    float offset;

    float at(std::int32_t column) const {
        return std::fma(step, static_cast<float>(column), row) + offset;
    }
};

/// The source positions of a destination row.
struct WarpLine {
    WarpAxis x;
    WarpAxis y;

    /// @param inv destination to source, row by row
    WarpLine(float const* inv, std::uint64_t row)
        : x{inv[0], static_cast<float>(row) * inv[1], inv[2]},
          y{inv[3], static_cast<float>(row) * inv[4], inv[5]} {}
};

/// A source whose offsets fit 32 bits.
struct WarpPlane {
    std::int32_t lastX;
    std::int32_t lastY;
    std::uint32_t stride;
    std::uint32_t pixelBytes;
};

/// The weights of two samples add up to this.
constexpr std::int32_t warpRange = 32;

/// What the three sweeps of the bilinear class pass on to one another, an entry a column.
struct WarpTaps {
    std::uint32_t* offset;    ///< of the upper left sample
    std::uint32_t* yWeights;  ///< of the upper samples, and of the lower ones << 16
    std::uint16_t* xWeights;  ///< of the left samples, and of the right ones << 8
    std::uint8_t* pixels;     ///< the upper samples and then the lower ones, `warpTapBytes` in all
};

/// Bytes of the four samples of a pixel; a pair of three channels is padded to 8.
constexpr std::size_t warpTapBytes(std::size_t channels) {
    return channels == 3 ? 16 : 4 * channels;
}

/// Offsets of the nearest samples of the columns from `column` on. Columns outside the plane get
/// the offsets of its outermost samples.
using NearestOffsets = void(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                            std::size_t count, std::uint32_t* offsets);

/// Offsets and weights of the columns from `column` on, whose four samples lie in the plane.
using BilinearPositions = void(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                               std::size_t count, WarpTaps const& taps);

/// Weighs `count` gathered pixels of 1 to 4 channels.
using BlendTaps = void(WarpTaps const& taps, std::size_t count, std::size_t channels, Bytes dst);

namespace Base {

NearestOffsets FindNearestOffsets;
BilinearPositions FindBilinearPositions;
BlendTaps BlendWarpTaps;

}  // namespace Base

}  // namespace Simd

namespace Simd::Neon {

/// The routines of an instruction set. A new object has the scalar routines.
struct WarpRoutines {
    NearestOffsets* findNearestOffsets = Base::FindNearestOffsets;
    BilinearPositions* findBilinearPositions = Base::FindBilinearPositions;
    BlendTaps* blendTaps = Base::BlendWarpTaps;
};

/// The routines of the instruction set in use; see vector/dispatch.h.
WarpRoutines const& warpRoutines();

/// Enters the vector routines of the instruction set in use, if it has any.
void takeWarpRoutines(WarpRoutines& routines);

}  // namespace Simd::Neon
