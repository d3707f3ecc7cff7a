// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Affine warps: objects that map one plane of interleaved bytes onto another through a 2x3 matrix.
///
/// They work on raw pointers, validate nothing but what `CreateWarpAffine` refuses, and touch
/// nothing outside the rows of the two planes.

#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"

namespace Simd {

enum WarpAffineFlags : std::uint32_t {
    WarpAffineFlagNonByte = 1,      ///< no border is copied; the bilinear class refuses
    WarpAffineFlagBilinear = 2,     ///< four weighted pixels instead of the nearest one
    WarpAffineFlagTransparent = 4,  ///< what the source doesn't cover stays as it is
};

struct WarpAffineParam {
    std::uint32_t flags;
    float mat[6];            ///< source to destination: m0 m1 m2 / m3 m4 m5
    float inv[6];            ///< destination to source
    std::uint8_t border[4];  ///< the colour of what the source doesn't cover
    std::uint64_t srcW;      ///< pixels
    std::uint64_t srcH;
    std::uint64_t srcS;  ///< stride, bytes
    std::uint64_t dstW;
    std::uint64_t dstH;
    std::uint64_t dstS;
    std::uint64_t channels;  ///< bytes of a pixel
    std::uint64_t align;     ///< pixels that scratch widths are rounded to; always 1
};

/// Warps planes of one geometry. The first run builds tables for the later ones.
class WarpAffine : Deletable {
  public:
    explicit WarpAffine(WarpAffineParam const& param);
    WarpAffine(WarpAffine const&) = delete;
    WarpAffine& operator=(WarpAffine const&) = delete;

    /// @throws std::system_error if a thread can't be started
    virtual void Run(std::uint8_t const* src, std::uint8_t* dst) = 0;

  protected:
    WarpAffineParam param;
    bool first = true;       ///< no run has ended yet
    std::uint64_t size = 0;  ///< bytes of scratch of a thread
    std::uint64_t threads;
    AlignedArray<std::uint8_t> buffer;
};

/// Whether a plane is small enough to be a source: `height` strides are at most 4 GiB.
constexpr bool CanWarpSource(std::uint64_t height, std::uint64_t stride) {
    constexpr std::uint64_t most_bytes = std::uint64_t{1} << 32;
    return height == 0 || stride <= most_bytes / height;
}

namespace Base {

/// @param mat six floats, source to destination
/// @param border `channels` bytes, or null for zeros
/// @return an object that the caller deletes; null for channels outside 1 to 4, a singular matrix,
///         a source that is too large, or bilinear sampling of what isn't bytes
WarpAffine* CreateWarpAffine(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t srcS,
                             std::uint64_t dstW, std::uint64_t dstH, std::uint64_t dstS,
                             std::uint64_t channels, float const* mat, std::uint32_t flags,
                             std::uint8_t const* border);

}  // namespace Base

}  // namespace Simd
