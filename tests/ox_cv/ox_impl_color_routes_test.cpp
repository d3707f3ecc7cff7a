#include "ox_cv/ox_impl_color_routes.h"

#include <gtest/gtest.h>

#include "ox_cv/colour_routes.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

ColourRoute routeInTable(FrameFormat src, FrameFormat dst) {
    auto const* const found =
        std::find_if(colourRoutes.begin(), colourRoutes.end(),
                     [&](ColourRoute const& each) { return each.src == src && each.dst == dst; });
    return found != colourRoutes.end() ? *found : ColourRoute{src, dst, ColorRoute::Unsupported};
}

TEST(ColorRoutes, EveryPairOfValues) {
    for (std::uint32_t from = 0; from <= FRAME_BGR_32F_PLANAR; ++from) {
        for (std::uint32_t to = 0; to <= FRAME_BGR_32F_PLANAR; ++to) {
            auto const src = static_cast<FrameFormat>(from);
            auto const dst = static_cast<FrameFormat>(to);
            ColourRoute const expected = routeInTable(src, dst);
            impl::ColorRouteRecord const record = impl::colorRoute(src, dst);
            EXPECT_EQ(record.route, expected.route) << from << " to " << to;
            EXPECT_EQ(record.through, expected.through) << from << " to " << to;
        }
    }
}

TEST(ColorRoutes, ValuesOutsideTheListHaveNone) {
    for (FrameFormat const unknown : unknownFormats()) {
        for (FrameFormat const known : allFormats()) {
            EXPECT_EQ(impl::colorRoute(unknown, known).route, ColorRoute::Unsupported);
            EXPECT_EQ(impl::colorRoute(known, unknown).route, ColorRoute::Unsupported);
        }
    }
}

// Both steps of two are direct and leave the scratch frame between them alone.
TEST(ColorRoutes, TwoStepsAreTwoPlainOnes) {
    for (ColourRoute const& each : colourRoutes) {
        impl::ColorRouteRecord const record = impl::colorRoute(each.src, each.dst);
        if (record.route != ColorRoute::TwoSteps) {
            EXPECT_EQ(record.through, FRAME_FORMAT_NONE);
            continue;
        }
        for (auto const& step : {impl::colorRoute(each.src, record.through),
                                 impl::colorRoute(record.through, each.dst)}) {
            for (ColorRoute const complex :
                 {ColorRoute::Unsupported, ColorRoute::TwoSteps, ColorRoute::SemiPlanarToPacked,
                  ColorRoute::BgrToI420, ColorRoute::BgrToNv12}) {
                EXPECT_NE(step.route, complex) << each.src << " to " << each.dst;
            }
        }
    }
}

TEST(ColorRoutes, EvenSidesOfSubsampledSources) {
    for (FrameFormat const format : allFormats()) {
        bool const expected = format == FRAME_I420 || format == FRAME_NV12 || format == FRAME_NV21;
        EXPECT_EQ(impl::needsEvenSides(format), expected) << format;
    }
}

}  // namespace

}  // namespace ox::test
