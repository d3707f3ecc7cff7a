/// @file
/// What the streaming scalers take for an element of a plane, and how many bytes elements cover.

#pragma once

#include <algorithm>
#include <cstdint>

#include "ox_core/ox_frame_layout.h"
#include "ox_core/ox_impl_format_facts.h"
#include "rows/elements.h"

namespace ox::impl {

/// Formats that a streaming scaler can compute with; the others can only be copied.
constexpr bool isScalable(FrameFormat format) {
    return factsOf(format).plane_count > 0 && format <= FRAME_C1_32U && format != FRAME_RGB24 &&
           format != FRAME_RGB_PLANAR;
}

/// Area scaling also refuses 32-bit samples, after they have been written, on purpose.
constexpr bool isScalableByArea(FrameFormat format) {
    return isScalable(format) && format != FRAME_C1_32U;
}

/// The element of a plane. It has no channels if the plane doesn't exist or the format isn't
/// scalable. `FRAME_YUYV` is treated as 3-channel and `FRAME_UYVY` as 4-channel data, on purpose,
/// whatever their packing is.
constexpr rows::Element scaleElement(FrameFormat format, int plane) {
    FormatFacts const& facts = factsOf(format);
    if (!isScalable(format) || plane >= facts.plane_count) {
        return {};
    }
    PlaneFacts const& plane_facts = facts.planes[static_cast<std::size_t>(plane)];
    if (format == FRAME_YUYV) {
        return {3, 8};
    }
    if (format == FRAME_UYVY) {
        return {4, 8};
    }
    return {plane_facts.channels, plane_facts.bits};
}

/// Formats whose rows `ScalerAreaY` sums as one channel: only the first `width` bytes of a row are
/// written, on purpose.
constexpr bool hasShortAreaRows(FrameFormat format) {
    return format == FRAME_UYVY || format == FRAME_C2_8U || format == FRAME_C4_8U;
}

/// Whether the rows of two layouts are alike.
inline bool sameRows(FrameLayout const& a, FrameLayout const& b) {
    return a.format == b.format && a.planeCount == b.planeCount &&
           std::equal(a.plane, a.plane + a.planeCount, b.plane,
                      [](FramePlane const& p, FramePlane const& q) {
                          return p.width == q.width && p.rowBytes == q.rowBytes;
                      });
}

/// Bytes of a source row that elements can lie in. Tables hold indices of 16 bits, so elements
/// never reach beyond a limit. The limit is a multiple of every element's size, and keeps offsets
/// in 32 bits however long a row claims to be.
constexpr std::uint64_t reachedBytes(std::uint64_t row_bytes) {
    constexpr std::uint64_t limit = std::uint64_t{12} << 16;
    return std::min(row_bytes, limit);
}

/// Samples of a destination row that elements cover.
inline std::int64_t coveredSamples(FramePlane const& dst, rows::Element element) {
    return std::min(static_cast<std::int64_t>(dst.rowBytes) / (element.bits / 8),
                    dst.width * std::int64_t{element.channels});
}

}  // namespace ox::impl
