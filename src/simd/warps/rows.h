// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the row routines of both affine warps share.

#pragma once

#include <algorithm>
#include <cstring>
#include <limits>

#include "simd/warps/columns.h"
#include "simd/warps/warp_affine.h"

namespace Simd::Base {

/// Bytes of scratch for a row: `bytes` for each column, and for one more. Sizes that don't fit 64
/// bits become one that can't be allocated.
inline std::uint64_t warpSliceBytes(WarpAffineParam const& param, std::uint64_t bytes) {
    std::uint64_t const columns = (param.dstW + param.align - 1) / param.align * param.align;
    return columns < UINT64_MAX / bytes - param.align ? (columns + param.align) * bytes
                                                      : UINT64_MAX;
}

/// Whether every offset in the source fits 32 bits. In a source whose rows overlap, some may not.
inline bool hasShortOffsets(WarpAffineParam const& param) {
    constexpr std::uint64_t most = 0x100000000;
    return param.srcW <= most / param.channels &&
           (param.srcH - 1) * param.srcS <= most - param.srcW * param.channels;
}

/// The index of the last of `count` samples, or the largest index of 32 bits if that is less.
inline std::int32_t lastIndex(std::uint64_t count) {
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(count - 1, most));
}

inline WarpPlane sourcePlane(WarpAffineParam const& param) {
    return {lastIndex(param.srcW), lastIndex(param.srcH), static_cast<std::uint32_t>(param.srcS),
            static_cast<std::uint32_t>(param.channels)};
}

/// Fills columns `first` up to before `last` of a row with the border's colour, unless the warp is
/// transparent.
inline void fillBorder(WarpAffineParam const& param, std::uint8_t* row, std::uint64_t first,
                       std::uint64_t last) {
    if (first >= last || (param.flags & WarpAffineFlagTransparent) != 0) {
        return;
    }
    std::uint64_t const channels = param.channels;
    std::uint8_t* const begin = row + first * channels;
    std::uint64_t const bytes = (last - first) * channels;
    if (std::count(param.border, param.border + channels, param.border[0]) ==
        static_cast<std::ptrdiff_t>(channels)) {
        std::memset(begin, param.border[0], bytes);
        return;
    }
    std::memcpy(begin, param.border, channels);
    for (std::uint64_t filled = channels; filled < bytes; filled *= 2) {
        std::memcpy(begin + filled, begin, std::min(filled, bytes - filled));
    }
}

}  // namespace Simd::Base
