// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "working_formats.h"

#include "ox_core/ox_impl_format_facts.h"

namespace oxcv {

namespace {

/// The YUV formats stand together.
constexpr bool isYuv(ox::FrameFormat format) {
    return format >= ox::FRAME_I420 && format <= ox::FRAME_YUV444_PLANAR;
}

}  // namespace

ox::FrameFormat formatToScaleIn(ox::FrameFormat format) {
    bool const packed_pairs = ox::impl::factsOf(format).pixel_group == 2;
    return packed_pairs ? ox::FRAME_NV16 : format;
}

ox::FrameFormat formatToFilterIn(ox::FrameFormat format) {
    switch (format) {
        case ox::FRAME_RGB24:
        case ox::FRAME_RGB_PLANAR:
        case ox::FRAME_BGR_PLANAR:
            return ox::FRAME_BGR24;
        default:
            return formatToScaleIn(format);
    }
}

ox::FrameFormat formatToWarpIn(ox::FrameFormat format, ox::FrameFormat target) {
    if (!isYuv(format)) {
        return format;
    }
    bool const warped_as_it_is = !isYuv(target) && ox::impl::factsOf(target).planes[0].bits == 8;
    return warped_as_it_is ? target : ox::FRAME_BGR24;
}

}  // namespace oxcv
