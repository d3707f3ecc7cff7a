// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Planes of frames, and the vector backend's operations on whole planes.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_backend.h"

namespace ox::impl {

struct PlaneView {
    unsigned char* data = nullptr;
    std::size_t stride = 0;
    std::size_t width = 0;   ///< pixels
    std::size_t height = 0;  ///< rows

    PlaneView fromRow(std::size_t row) const {
        return {data + row * stride, stride, width, height - row};
    }
};

inline PlaneView planeOf(Frame const& frame, int index) {
    FramePlane const& plane = frame.layout().plane[index];
    return {frame.planeData(index), static_cast<std::size_t>(plane.stride),
            static_cast<std::size_t>(plane.width), static_cast<std::size_t>(plane.height)};
}

/// Rows of wrapped frames needn't be aligned; the kernels cope with that.
inline float* floatsAt(unsigned char* bytes) {
    return static_cast<float*>(static_cast<void*>(bytes));
}

/// Whether the rows of each plane follow one another. The row's bytes are compared as a 32-bit
/// number, on purpose: rows past 2 GiB don't count as contiguous.
inline bool isContiguous(Frame const& frame) {
    FrameLayout const& layout = frame.layout();
    return std::all_of(layout.plane, layout.plane + layout.planeCount, [](FramePlane const& plane) {
        auto const bytes =
            static_cast<std::uint32_t>(plane.width) * plane.channels * (plane.bits / 8U);
        return plane.stride == static_cast<std::int32_t>(bytes);
    });
}

/// By `NV12toBGR_neon`, for frames that `goesDirectly` lets pass.
void convertNv12Directly(Frame const& src, Frame& dst);

/// Resizes plane by plane, with a resizer for each.
/// @param src, dst of one format of 8 or 32 bits a channel. Channels of 32 bits are taken for
///        floats, which `ResizeArea` doesn't serve
void resizePlanes(Frame const& src, Frame const& dst, ResizeMethod method);

/// Warps plane by plane.
/// @param matrix six floats, from source to destination
/// @return false at the first plane that can't be warped, or for a matrix without an inverse; the
///         planes before it are written by then
bool warpPlanes(Frame const& src, Frame const& dst, float const* matrix, ResizeMethod method);

}  // namespace ox::impl
