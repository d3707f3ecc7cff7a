// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_colour_routes.h"
#include "ox_cv/ox_impl_rules.h"

#include <gtest/gtest.h>

#include "ox_cv/colour_routes.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

RoutedPair routeInTable(FrameFormat src, FrameFormat dst) {
    auto const* const found =
        std::find_if(colourRoutes.begin(), colourRoutes.end(),
                     [&](RoutedPair const& each) { return each.src == src && each.dst == dst; });
    return found != colourRoutes.end() ? *found : RoutedPair{src, dst, ColourRoute::Unsupported};
}

TEST(ColourRoutes, EveryPairOfValues) {
    for (std::uint32_t from = 0; from <= FRAME_BGR_32F_PLANAR; ++from) {
        for (std::uint32_t to = 0; to <= FRAME_BGR_32F_PLANAR; ++to) {
            auto const src = static_cast<FrameFormat>(from);
            auto const dst = static_cast<FrameFormat>(to);
            RoutedPair const expected = routeInTable(src, dst);
            impl::ColourRouteRecord const record = impl::colourRoute(src, dst);
            EXPECT_EQ(record.route, expected.route) << from << " to " << to;
            EXPECT_EQ(record.through, expected.through) << from << " to " << to;
        }
    }
}

TEST(ColourRoutes, ValuesOutsideTheListHaveNone) {
    for (FrameFormat const unknown : unknownFormats()) {
        for (FrameFormat const known : allFormats()) {
            EXPECT_EQ(impl::colourRoute(unknown, known).route, ColourRoute::Unsupported);
            EXPECT_EQ(impl::colourRoute(known, unknown).route, ColourRoute::Unsupported);
        }
    }
}

// Both steps of two are direct and leave the scratch frame between them alone.
TEST(ColourRoutes, TwoStepsAreTwoPlainOnes) {
    for (RoutedPair const& each : colourRoutes) {
        impl::ColourRouteRecord const record = impl::colourRoute(each.src, each.dst);
        if (record.route != ColourRoute::TwoSteps) {
            EXPECT_EQ(record.through, FRAME_FORMAT_NONE);
            continue;
        }
        for (auto const& step : {impl::colourRoute(each.src, record.through),
                                 impl::colourRoute(record.through, each.dst)}) {
            for (ColourRoute const complex :
                 {ColourRoute::Unsupported, ColourRoute::TwoSteps, ColourRoute::SemiPlanarToPacked,
                  ColourRoute::BgrToI420, ColourRoute::BgrToNv12}) {
                EXPECT_NE(step.route, complex) << each.src << " to " << each.dst;
            }
        }
    }
}

TEST(ColourRoutes, EvenSidesOfSubsampledSources) {
    for (FrameFormat const format : allFormats()) {
        bool const expected = format == FRAME_I420 || format == FRAME_NV12 || format == FRAME_NV21;
        EXPECT_EQ(impl::needsEvenSides(format), expected) << format;
    }
}

}  // namespace

}  // namespace ox::test
