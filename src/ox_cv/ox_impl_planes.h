/// @file
/// Planes of frames as the kernels of the vector layer take them.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "ox_core/ox_frame.h"

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

}  // namespace ox::impl
