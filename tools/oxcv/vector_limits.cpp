// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector_limits.h"

#include <algorithm>

#include "ox_cv/ox_impl_rules.h"

namespace oxcv {

namespace {

constexpr bool isRedFirst(ox::FrameFormat format) {
    return format == ox::FRAME_RGB24 || format == ox::FRAME_RGB_PLANAR;
}

}  // namespace

std::string_view whyNotConverted(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size) {
    if (src == dst) {
        return {};
    }
    if (!ox::impl::vectorConverts(src, dst)) {
        return "the vector backend doesn't convert this pair";
    }
    if ((isRedFirst(src) && isColourOfFloats(dst)) || (isColourOfFloats(src) && isRedFirst(dst))) {
        return "the vector backend would take floats for red first";
    }
    bool const even = size.width % 2 == 0 && size.height % 2 == 0;
    if (!even && ox::impl::needsEvenSides(src)) {
        return "the vector backend converts 4:2:0 frames of even sides only";
    }
    return {};
}

std::string_view whyNotScaled(ox::FrameFormat format, ox::ResizeMethod method) {
    ox::FrameLayout const layout(format, {1, 1}, 1);
    int const bits = layout.plane[0].bits;
    if (!ox::impl::hasResizers(bits)) {
        return "the vector backend scales channels of 8 and 32 bits only";
    }
    if (format == ox::FRAME_C1_32U && method != ox::ResizeNearestNeighbour) {
        return "the vector backend takes channels of 32 bits for floats";
    }
    if (method == ox::ResizeArea && !ox::impl::hasAreaResizer(bits)) {
        return "the vector backend doesn't scale floats by area";
    }
    return {};
}

std::string_view whyNotWarped(ox::FrameLayout const& layout) {
    auto const* const planes_end = layout.plane + layout.planeCount;
    if (std::any_of(layout.plane, planes_end,
                    [](ox::FramePlane const& plane) { return plane.bits != 8; })) {
        return "warps are for formats of 8 bits a channel";
    }
    if (!std::all_of(layout.plane, planes_end, ox::impl::canWarp)) {
        return "warps are for planes of up to 4 GiB";
    }
    return {};
}

}  // namespace oxcv
