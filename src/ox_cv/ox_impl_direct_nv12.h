/// @file
/// `NV12toBGR_neon` as the way of whole frames from `FRAME_NV12` to `FRAME_BGR24`.

#pragma once

#include <cstdint>
#include <limits>

#include "ox_core/ox_frame.h"

namespace ox::impl {

/// Columns that `NV12toBGR_neon` converts at a time; the last width mod 8 columns stay unwritten.
constexpr int directColumns = 8;

/// `NV12toBGR_neon` takes strides of 32 bits.
constexpr std::int64_t maxDirectStride = std::numeric_limits<int>::max();

/// Whether the formats are `FRAME_NV12` and `FRAME_BGR24`, and the strides fit.
bool goesDirectly(Frame const& src, Frame const& dst);

/// Whether luma and chroma have equal strides: `NV12toBGR_neon` steps over both by luma's.
inline bool hasDirectStrides(FrameLayout const& src) {
    return src.plane[0].stride == src.plane[1].stride && src.plane[0].stride <= maxDirectStride;
}

/// Whether `NV12toBGR_neon`, stepping over chroma by luma's stride, reads nothing but chroma rows.
bool readsInsideChroma(Frame const& src);

void convertNv12Directly(Frame const& src, Frame& dst);

}  // namespace ox::impl
