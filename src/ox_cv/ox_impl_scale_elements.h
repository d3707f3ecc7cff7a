/// @file
/// What the streaming scalers take for one element of a plane, and which bytes of a row are its.

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

/// By area, 32-bit samples are refused too, after they have been computed and written: on purpose.
constexpr bool isScalableByArea(FrameFormat format) {
    return isScalable(format) && format != FRAME_C1_32U;
}

/// What a plane is scaled by; without channels for planes that don't exist and formats that aren't
/// scalable. The packed 4:2:2 formats are treated as 3-channel and 4-channel data, on purpose and
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

/// Bytes of a source row that elements can lie in. Tables hold indices of 16 bits, and elements
/// take up to 4 bytes; a limit above that, of whole elements of every size, keeps offsets in 32
/// bits however long a row claims to be.
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
