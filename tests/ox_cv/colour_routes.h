// Every pair of formats that the vector backend converts, and its way.
#pragma once

#include <algorithm>
#include <array>

#include "ox_cv/ox_impl_color_routes.h"

namespace ox::test {

using impl::ColorRoute;

struct ColourRoute {
    FrameFormat src;
    FrameFormat dst;
    ColorRoute route;
    FrameFormat through = FRAME_FORMAT_NONE;
};

constexpr std::array<ColourRoute, 48> colourRoutes{{
    {FRAME_GRAY8, FRAME_BGR24, ColorRoute::ExpandGray},
    {FRAME_RGB24, FRAME_RGB_PLANAR, ColorRoute::SplitPixels},
    {FRAME_RGB24, FRAME_BGR24, ColorRoute::SwapRedBlue},
    {FRAME_RGB24, FRAME_BGR_32F, ColorRoute::BytesToFloats},
    {FRAME_RGB24, FRAME_BGR_32F_PLANAR, ColorRoute::TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_RGB_PLANAR, FRAME_RGB24, ColorRoute::MergePixels},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F, ColorRoute::TwoSteps, FRAME_RGB24},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F_PLANAR, ColorRoute::BytesToFloats},
    {FRAME_BGR24, FRAME_GRAY8, ColorRoute::BgrToGray},
    {FRAME_BGR24, FRAME_RGB24, ColorRoute::SwapRedBlue},
    {FRAME_BGR24, FRAME_BGR_PLANAR, ColorRoute::SplitPixels},
    {FRAME_BGR24, FRAME_I420, ColorRoute::BgrToI420},
    {FRAME_BGR24, FRAME_NV12, ColorRoute::BgrToNv12},
    {FRAME_BGR24, FRAME_YUV444, ColorRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_BGR24, FRAME_YUV444_PLANAR, ColorRoute::BgrToYuv444},
    {FRAME_BGR24, FRAME_BGR_32F, ColorRoute::BytesToFloats},
    {FRAME_BGR24, FRAME_BGR_32F_PLANAR, ColorRoute::TwoSteps, FRAME_BGR_PLANAR},
    {FRAME_BGR_PLANAR, FRAME_BGR24, ColorRoute::MergePixels},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F, ColorRoute::TwoSteps, FRAME_BGR24},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F_PLANAR, ColorRoute::BytesToFloats},
    {FRAME_I420, FRAME_GRAY8, ColorRoute::CopyLuma},
    {FRAME_I420, FRAME_RGB24, ColorRoute::I420ToPacked},
    {FRAME_I420, FRAME_BGR24, ColorRoute::I420ToPacked},
    {FRAME_I420, FRAME_NV12, ColorRoute::MergeChroma},
    {FRAME_NV12, FRAME_GRAY8, ColorRoute::CopyLuma},
    {FRAME_NV12, FRAME_RGB24, ColorRoute::SemiPlanarToPacked},
    {FRAME_NV12, FRAME_BGR24, ColorRoute::SemiPlanarToPacked},
    {FRAME_NV12, FRAME_I420, ColorRoute::SplitChroma},
    {FRAME_NV12, FRAME_NV21, ColorRoute::ExchangeChroma},
    {FRAME_NV21, FRAME_GRAY8, ColorRoute::CopyLuma},
    {FRAME_NV21, FRAME_RGB24, ColorRoute::SemiPlanarToPacked},
    {FRAME_NV21, FRAME_BGR24, ColorRoute::SemiPlanarToPacked},
    {FRAME_NV21, FRAME_I420, ColorRoute::SplitChroma},
    {FRAME_NV21, FRAME_NV12, ColorRoute::ExchangeChroma},
    {FRAME_YUV444, FRAME_GRAY8, ColorRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_BGR24, ColorRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_YUV444_PLANAR, ColorRoute::SplitPixels},
    {FRAME_YUV444_PLANAR, FRAME_GRAY8, ColorRoute::CopyLuma},
    {FRAME_YUV444_PLANAR, FRAME_BGR24, ColorRoute::Yuv444ToBgr},
    {FRAME_YUV444_PLANAR, FRAME_YUV444, ColorRoute::MergePixels},
    {FRAME_BGR_32F, FRAME_RGB24, ColorRoute::FloatsToBytes},
    {FRAME_BGR_32F, FRAME_BGR24, ColorRoute::FloatsToBytes},
    {FRAME_BGR_32F, FRAME_RGB_PLANAR, ColorRoute::TwoSteps, FRAME_RGB24},
    {FRAME_BGR_32F, FRAME_BGR_PLANAR, ColorRoute::TwoSteps, FRAME_BGR24},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB_PLANAR, ColorRoute::FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR_PLANAR, ColorRoute::FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB24, ColorRoute::TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR24, ColorRoute::TwoSteps, FRAME_BGR_PLANAR},
}};

}  // namespace ox::test
