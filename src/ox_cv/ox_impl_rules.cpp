// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_rules.h"

#include "ox_cv/ox_impl_colour_routes.h"
#include "ox_cv/ox_impl_format_converter.h"
#include "ox_cv/ox_impl_state.h"
#include "simd/simd.h"

namespace ox::impl {

bool pipelineConverts(FrameFormat src, FrameFormat dst) {
    return src == dst || hasConversion(src, dst);
}

bool pipelineScales(FrameFormat format, ResizeMethod method) {
    return method == ResizeArea ? isScalableByArea(format) : isScalable(format);
}

bool vectorConverts(FrameFormat src, FrameFormat dst) {
    return src == dst || colourRoute(src, dst).route != ColourRoute::Unsupported;
}

bool goesDirectly(Frame const& src, Frame const& dst) {
    auto const fits = [](Frame const& frame) {
        return frame.layout().plane[0].stride <= maxDirectStride;
    };
    return src.format() == FRAME_NV12 && dst.format() == FRAME_BGR24 && fits(src) && fits(dst);
}

bool readsInsideChroma(Frame const& frame) {
    FramePlane const& chroma = frame.layout().plane[1];
    std::int64_t const step = frame.layout().plane[0].stride;
    std::int64_t const pairs = frame.height() / 2;
    std::int64_t const bytes = std::int64_t{frame.width() / directColumns} * directColumns;
    if (step == chroma.stride || bytes == 0) {
        return true;
    }
    auto const row_bytes = static_cast<std::int64_t>(chroma.rowBytes);
    for (std::int64_t p = 0; p < pairs; ++p) {
        std::int64_t const start = p * step;
        std::int64_t const row = start / chroma.stride;
        bool const contiguous = chroma.stride == row_bytes;
        std::int64_t const end = start + bytes;
        std::int64_t const room =
            contiguous ? chroma.height * chroma.stride : row * chroma.stride + row_bytes;
        if (row >= chroma.height || end > room) {
            return false;
        }
    }
    return true;
}

bool canWarp(FramePlane const& src) {
    return Simd::CanWarpSource(static_cast<std::uint64_t>(src.height),
                               static_cast<std::uint64_t>(src.stride));
}

}  // namespace ox::impl
