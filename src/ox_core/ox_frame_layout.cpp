// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame_layout.h"

#include <algorithm>
#include <limits>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_sizes.h"

namespace ox {

namespace {

/// A side in units of `group` pixels, rounded up, in pixels again; at least 0.
std::int64_t roundUpSide(std::int32_t side, std::int64_t group) {
    std::int64_t const pixels = std::max(side, 0);
    return (pixels + group - 1) / group * group;
}

std::int32_t planeSide(std::int32_t side, std::int64_t group, bool halved) {
    std::int64_t const pixels = roundUpSide(side, halved ? 2 : group);
    if (!halved && pixels > std::numeric_limits<std::int32_t>::max()) {
        impl::throwTooLarge();
    }
    return static_cast<std::int32_t>(halved ? pixels / 2 : pixels);
}

FramePlane makePlane(impl::FormatFacts const& format, impl::PlaneFacts const& facts, Size size,
                     std::uint64_t alignment) {
    FramePlane plane;
    plane.width = planeSide(size.width, format.pixel_group, facts.half_width);
    plane.height = planeSide(size.height, 1, facts.half_height);
    plane.bits = facts.bits;
    plane.channels = facts.channels;
    plane.rowBytes = static_cast<std::uint64_t>(plane.width) * facts.channels * (facts.bits / 8U);
    std::uint64_t const stride = impl::roundUpBytes(plane.rowBytes, alignment);
    plane.stride = static_cast<std::int64_t>(stride);
    plane.planeBytes = impl::multiplyBytes(stride, static_cast<std::uint64_t>(plane.height));
    return plane;
}

}  // namespace

FrameLayout::FrameLayout(FrameFormat frame_format, Size frame_size, unsigned long alignment)
    : format(frame_format), size(frame_size) {
    impl::FormatFacts const& facts = impl::factsOf(frame_format);
    planeCount = facts.plane_count;
    std::uint64_t end = 0;
    for (int i = 0; i < planeCount; ++i) {
        plane[i] = makePlane(facts, facts.planes[static_cast<std::size_t>(i)], frame_size,
                             alignment == 0 ? impl::defaultAlignment : alignment);
        offset[i] = end;
        end = impl::addBytes(end, plane[i].planeBytes);
    }
}

void FrameLayout::clear() {
    *this = FrameLayout();
}

std::uint64_t FrameLayout::totalBytes() const {
    return planeCount == 0 ? 0 : offset[planeCount - 1] + plane[planeCount - 1].planeBytes;
}

std::uint32_t rowMask(std::int32_t frame_height, std::int32_t plane_height) {
    if (plane_height <= 0) {
        return 0;
    }
    return static_cast<std::uint32_t>(roundUpSide(frame_height, 2) / plane_height - 1);
}

}  // namespace ox
