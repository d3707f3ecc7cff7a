#include "ox_cv/ox_impl_rules.h"

#include "ox_cv/ox_impl_colour_routes.h"
#include "ox_cv/ox_impl_format_converter.h"
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

bool canWarp(FramePlane const& src) {
    return Simd::CanWarpSource(static_cast<std::uint64_t>(src.height),
                               static_cast<std::uint64_t>(src.stride));
}

}  // namespace ox::impl
