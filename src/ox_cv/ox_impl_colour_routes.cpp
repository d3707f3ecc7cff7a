#include "ox_cv/ox_impl_colour_routes.h"

#include <algorithm>
#include <iterator>

namespace ox::impl {

namespace {

using enum ColourRoute;

constexpr ColourRouteRecord records[] = {
    {FRAME_GRAY8, FRAME_BGR24, ExpandGray},
    {FRAME_RGB24, FRAME_RGB_PLANAR, SplitPixels},
    {FRAME_RGB24, FRAME_BGR24, SwapRedBlue},
    {FRAME_RGB24, FRAME_BGR_32F, BytesToFloats},
    {FRAME_RGB24, FRAME_BGR_32F_PLANAR, TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_RGB_PLANAR, FRAME_RGB24, MergePixels},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F, TwoSteps, FRAME_RGB24},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F_PLANAR, BytesToFloats},
    {FRAME_BGR24, FRAME_GRAY8, BgrToGray},
    {FRAME_BGR24, FRAME_RGB24, SwapRedBlue},
    {FRAME_BGR24, FRAME_BGR_PLANAR, SplitPixels},
    {FRAME_BGR24, FRAME_I420, BgrToI420},
    {FRAME_BGR24, FRAME_NV12, BgrToNv12},
    {FRAME_BGR24, FRAME_YUV444, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_BGR24, FRAME_YUV444_PLANAR, BgrToYuv444},
    {FRAME_BGR24, FRAME_BGR_32F, BytesToFloats},
    {FRAME_BGR24, FRAME_BGR_32F_PLANAR, TwoSteps, FRAME_BGR_PLANAR},
    {FRAME_BGR_PLANAR, FRAME_BGR24, MergePixels},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F, TwoSteps, FRAME_BGR24},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F_PLANAR, BytesToFloats},
    {FRAME_I420, FRAME_GRAY8, CopyLuma},
    {FRAME_I420, FRAME_RGB24, I420ToPacked},
    {FRAME_I420, FRAME_BGR24, I420ToPacked},
    {FRAME_I420, FRAME_NV12, MergeChroma},
    {FRAME_NV12, FRAME_GRAY8, CopyLuma},
    {FRAME_NV12, FRAME_RGB24, SemiPlanarToPacked},
    {FRAME_NV12, FRAME_BGR24, SemiPlanarToPacked},
    {FRAME_NV12, FRAME_I420, SplitChroma},
    {FRAME_NV12, FRAME_NV21, ExchangeChroma},
    {FRAME_NV21, FRAME_GRAY8, CopyLuma},
    {FRAME_NV21, FRAME_RGB24, SemiPlanarToPacked},
    {FRAME_NV21, FRAME_BGR24, SemiPlanarToPacked},
    {FRAME_NV21, FRAME_I420, SplitChroma},
    {FRAME_NV21, FRAME_NV12, ExchangeChroma},
    {FRAME_YUV444, FRAME_GRAY8, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_BGR24, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_YUV444_PLANAR, SplitPixels},
    {FRAME_YUV444_PLANAR, FRAME_GRAY8, CopyLuma},
    {FRAME_YUV444_PLANAR, FRAME_BGR24, Yuv444ToBgr},
    {FRAME_YUV444_PLANAR, FRAME_YUV444, MergePixels},
    {FRAME_BGR_32F, FRAME_RGB24, FloatsToBytes},
    {FRAME_BGR_32F, FRAME_BGR24, FloatsToBytes},
    {FRAME_BGR_32F, FRAME_RGB_PLANAR, TwoSteps, FRAME_RGB24},
    {FRAME_BGR_32F, FRAME_BGR_PLANAR, TwoSteps, FRAME_BGR24},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB_PLANAR, FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR_PLANAR, FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB24, TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR24, TwoSteps, FRAME_BGR_PLANAR},
};

}  // namespace

ColourRouteRecord colourRoute(FrameFormat src, FrameFormat dst) {
    auto const* const record =
        std::find_if(std::begin(records), std::end(records),
                     [&](ColourRouteRecord const& r) { return r.src == src && r.dst == dst; });
    return record == std::end(records) ? ColourRouteRecord{src, dst} : *record;
}

}  // namespace ox::impl
