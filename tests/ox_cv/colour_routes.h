// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every pair of formats that the vector backend converts, and its way.
#pragma once

#include <algorithm>
#include <array>

#include "ox_cv/ox_impl_colour_routes.h"
#include "ox_cv/ox_impl_rules.h"

namespace ox::test {

using impl::ColourRoute;

struct RoutedPair {
    FrameFormat src;
    FrameFormat dst;
    ColourRoute route;
    FrameFormat through = FRAME_FORMAT_NONE;
};

constexpr std::array<RoutedPair, 48> colourRoutes{{
    {FRAME_GRAY8, FRAME_BGR24, ColourRoute::ExpandGray},
    {FRAME_RGB24, FRAME_RGB_PLANAR, ColourRoute::SplitPixels},
    {FRAME_RGB24, FRAME_BGR24, ColourRoute::SwapRedBlue},
    {FRAME_RGB24, FRAME_BGR_32F, ColourRoute::BytesToFloats},
    {FRAME_RGB24, FRAME_BGR_32F_PLANAR, ColourRoute::TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_RGB_PLANAR, FRAME_RGB24, ColourRoute::MergePixels},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F, ColourRoute::TwoSteps, FRAME_RGB24},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F_PLANAR, ColourRoute::BytesToFloats},
    {FRAME_BGR24, FRAME_GRAY8, ColourRoute::BgrToGray},
    {FRAME_BGR24, FRAME_RGB24, ColourRoute::SwapRedBlue},
    {FRAME_BGR24, FRAME_BGR_PLANAR, ColourRoute::SplitPixels},
    {FRAME_BGR24, FRAME_I420, ColourRoute::BgrToI420},
    {FRAME_BGR24, FRAME_NV12, ColourRoute::BgrToNv12},
    {FRAME_BGR24, FRAME_YUV444, ColourRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_BGR24, FRAME_YUV444_PLANAR, ColourRoute::BgrToYuv444},
    {FRAME_BGR24, FRAME_BGR_32F, ColourRoute::BytesToFloats},
    {FRAME_BGR24, FRAME_BGR_32F_PLANAR, ColourRoute::TwoSteps, FRAME_BGR_PLANAR},
    {FRAME_BGR_PLANAR, FRAME_BGR24, ColourRoute::MergePixels},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F, ColourRoute::TwoSteps, FRAME_BGR24},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F_PLANAR, ColourRoute::BytesToFloats},
    {FRAME_I420, FRAME_GRAY8, ColourRoute::CopyLuma},
    {FRAME_I420, FRAME_RGB24, ColourRoute::I420ToPacked},
    {FRAME_I420, FRAME_BGR24, ColourRoute::I420ToPacked},
    {FRAME_I420, FRAME_NV12, ColourRoute::MergeChroma},
    {FRAME_NV12, FRAME_GRAY8, ColourRoute::CopyLuma},
    {FRAME_NV12, FRAME_RGB24, ColourRoute::SemiPlanarToPacked},
    {FRAME_NV12, FRAME_BGR24, ColourRoute::SemiPlanarToPacked},
    {FRAME_NV12, FRAME_I420, ColourRoute::SplitChroma},
    {FRAME_NV12, FRAME_NV21, ColourRoute::ExchangeChroma},
    {FRAME_NV21, FRAME_GRAY8, ColourRoute::CopyLuma},
    {FRAME_NV21, FRAME_RGB24, ColourRoute::SemiPlanarToPacked},
    {FRAME_NV21, FRAME_BGR24, ColourRoute::SemiPlanarToPacked},
    {FRAME_NV21, FRAME_I420, ColourRoute::SplitChroma},
    {FRAME_NV21, FRAME_NV12, ColourRoute::ExchangeChroma},
    {FRAME_YUV444, FRAME_GRAY8, ColourRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_BGR24, ColourRoute::TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_YUV444_PLANAR, ColourRoute::SplitPixels},
    {FRAME_YUV444_PLANAR, FRAME_GRAY8, ColourRoute::CopyLuma},
    {FRAME_YUV444_PLANAR, FRAME_BGR24, ColourRoute::Yuv444ToBgr},
    {FRAME_YUV444_PLANAR, FRAME_YUV444, ColourRoute::MergePixels},
    {FRAME_BGR_32F, FRAME_RGB24, ColourRoute::FloatsToBytes},
    {FRAME_BGR_32F, FRAME_BGR24, ColourRoute::FloatsToBytes},
    {FRAME_BGR_32F, FRAME_RGB_PLANAR, ColourRoute::TwoSteps, FRAME_RGB24},
    {FRAME_BGR_32F, FRAME_BGR_PLANAR, ColourRoute::TwoSteps, FRAME_BGR24},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB_PLANAR, ColourRoute::FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR_PLANAR, ColourRoute::FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB24, ColourRoute::TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR24, ColourRoute::TwoSteps, FRAME_BGR_PLANAR},
}};

}  // namespace ox::test
