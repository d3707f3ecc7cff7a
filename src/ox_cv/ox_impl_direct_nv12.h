/// @file
/// `NV12toBGR_neon` as the way of whole frames from `FRAME_NV12` to `FRAME_BGR24`.

#pragma once

#include <cstdint>
#include <limits>

#include "ox_core/ox_frame.h"

namespace ox::impl {

/// Columns that it takes at a time; what is left over of a row stays unwritten.
constexpr int directColumns = 8;

/// It takes strides of 32 bits.
constexpr std::int64_t maxDirectStride = std::numeric_limits<int>::max();

/// Whether the formats are these, and the strides such.
bool goesDirectly(Frame const& src, Frame const& dst);

/// It steps over luma and chroma by one stride. Whether both have that stride.
inline bool hasDirectStrides(FrameLayout const& src) {
    return src.plane[0].stride == src.plane[1].stride && src.plane[0].stride <= maxDirectStride;
}

/// Whether, stepping over chroma by luma's stride, it reads nothing but chroma rows.
bool readsInsideChroma(Frame const& src);

void convertNv12Directly(Frame const& src, Frame& dst);

}  // namespace ox::impl
