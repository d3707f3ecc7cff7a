// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Geometry of a frame's planes in memory.

#pragma once

#include <cstddef>
#include <cstdint>

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame_format.h"
#include "ox_core/ox_geometry.h"

namespace ox {

/// One plane. Only the first `rowBytes` bytes of a row are pixels; a plane is contiguous if
/// `stride` equals `rowBytes`.
struct FramePlane {
    std::int32_t width = 0;        ///< pixels in a row of this plane
    std::int32_t height = 0;       ///< rows of this plane
    std::uint16_t bits = 0;        ///< bits a channel sample: 8, 16 or 32
    std::uint16_t channels = 0;    ///< interleaved channels a pixel
    std::int64_t stride = 0;       ///< bytes from one row's start to the next
    std::uint64_t rowBytes = 0;    ///< bytes of pixels in a row: width x channels x (bits / 8)
    std::uint64_t planeBytes = 0;  ///< height x stride
};

/// Geometry of a whole frame; copied by value.
///
/// `FRAME_YUYV` and `FRAME_UYVY` have rows of whole macro-pixels: their plane's `width` is the
/// frame's, rounded up to even, with two channels a pixel.
struct OX_API FrameLayout {
    FrameFormat format = FRAME_FORMAT_NONE;
    std::int32_t planeCount = 0;  ///< 0 if not initialized
    Size size{};                  ///< of the frame, in pixels
    FramePlane plane[4]{};        ///< records past `planeCount` are zero
    std::uint64_t offset[4]{};    ///< first byte of each plane in the frame's `Buffer`

    FrameLayout() = default;

    /// The layout of a frame whose planes follow one another. A format without planes gives
    /// `planeCount` 0; a side that isn't positive gives planes without columns or rows.
    /// @param alignment every stride is the row's bytes rounded up to a multiple of it; 0 stands
    ///        for 64
    /// @throws Exception `StatusCapacityExceeded` past 2^62 bytes
    FrameLayout(FrameFormat format, Size size, unsigned long alignment);

    /// Back to all zero.
    void clear();

    /// Bytes from the first plane's start to the last plane's end.
    std::uint64_t totalBytes() const;
};

/// How often a plane has a row of its own: 0 for each frame row, 1 for every other one.
///
/// After frame row r the plane moves on if (mask | r) == r; it has a row to write at frame row r
/// unless (r & mask) != 0. A frame of one row has mask 1 for all its planes, which doesn't matter
/// for row 0.
OX_API std::uint32_t rowMask(std::int32_t frame_height, std::int32_t plane_height);

static_assert(sizeof(FramePlane) == 40, "fixed for the binary interface");
static_assert(offsetof(FramePlane, height) == 4 && offsetof(FramePlane, bits) == 8 &&
                  offsetof(FramePlane, channels) == 10 && offsetof(FramePlane, stride) == 16 &&
                  offsetof(FramePlane, rowBytes) == 24 && offsetof(FramePlane, planeBytes) == 32,
              "fixed for the binary interface");
static_assert(sizeof(FrameLayout) == 208, "fixed for the binary interface");
static_assert(offsetof(FrameLayout, planeCount) == 4 && offsetof(FrameLayout, size) == 8 &&
                  offsetof(FrameLayout, plane) == 16 && offsetof(FrameLayout, offset) == 176,
              "fixed for the binary interface");

}  // namespace ox
