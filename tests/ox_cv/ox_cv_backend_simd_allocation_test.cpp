// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Memory of the vector backend: a repeated call allocates nothing, and a failed allocation leaves a
// backend that works.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "model/vector_colour.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

// Sources and destinations of every pair, none of which goes directly.
struct Conversion {
    Conversion(RoutedPair const& route, Size size, Random& random)
        : picture(drawPicture(random, {static_cast<int>(route.src), size.width, size.height})),
          expected(model::vectorColour(picture, static_cast<int>(route.dst))),
          src(picture, Placements{{{0, 0}, {0, 2}}}),
          dst(model::makeImage(static_cast<int>(route.dst), size.width, size.height, 0)) {}

    // In place of the last result.
    void run(CvBackendSimd& backend) {
        fill(dst.frame(), 77);
        backend.colorCvt(src.frame(), dst.frame(), {});
    }

    testing::AssertionResult isDone() const { return dst.holds(expected); }

    model::Image picture;
    model::Image expected;
    PlacedImage src;
    PlacedImage dst;
};

Size sizeFor(RoutedPair const& route, Size size) {
    return impl::needsEvenSides(route.src) ? Size{size.width / 2 * 2, size.height / 2 * 2} : size;
}

TEST(CvBackendSimdAllocation, NoneInARepeatedConversion) {
    Random random;
    for (RoutedPair const& route : colourRoutes) {
        // odd sides need strips, for which the scratch frame changes within the call
        Conversion conversion(route, sizeFor(route, {35, 7}), random);
        CvBackendSimd backend;
        conversion.run(backend);
        for (int pass = 0; pass < 2; ++pass) {
            std::uint64_t const before = allocationCalls();
            conversion.run(backend);
            EXPECT_EQ(allocationCalls(), before) << route.src << " to " << route.dst;
        }
        EXPECT_TRUE(conversion.isDone());
    }
}

TEST(CvBackendSimdAllocation, NoneForPlainKernels) {
    Random random;
    for (RoutedPair const& route : colourRoutes) {
        bool const scratch = route.route == ColourRoute::TwoSteps;
        Conversion conversion(route, {34, 6}, random);
        CvBackendSimd backend;
        std::uint64_t const before = allocationCalls();
        conversion.run(backend);
        EXPECT_EQ(allocationCalls() != before, scratch) << route.src << " to " << route.dst;
    }
}

TEST(CvBackendSimdAllocation, NoneInRepeatedArithmetic) {
    CvBackendSimd backend;
    TestFrame floats(FRAME_BGR_32F_PLANAR, {20, 4});
    TestFrame bgr(FRAME_BGR24, {20, 4});
    auto const calls = {
        std::function<void()>([&] { backend.add(floats.frame(), 1.0F, {}); }),
        std::function<void()>([&] {
            backend.add(floats.frame(), 1.0F, {2, 1, 9, 2});
        }),
        std::function<void()>([&] { backend.mul(floats.frame(), 2.0F, {}); }),
        std::function<void()>([&] {
            backend.mul(floats.frame(), 2.0F, {2, 1, 9, 2});
        }),
        std::function<void()>([&] {
            backend.roiToYuv444(bgr.frame(), {2, 1, 9, 2});
        }),
    };
    for (auto const& call : calls) {
        call();
        std::uint64_t const before = allocationCalls();
        call();
        EXPECT_EQ(allocationCalls(), before);
    }
}

// One backend, whose scratch frame grows, shrinks and changes its format.
TEST(CvBackendSimdAllocation, ScratchFramesFollowTheCalls) {
    Random random;
    CvBackendSimd backend;
    for (Size const size : {Size{36, 8}, Size{6, 2}, Size{100, 20}, Size{6, 2}, Size{37, 9}}) {
        for (RoutedPair const& route : colourRoutes) {
            Conversion conversion(route, sizeFor(route, size), random);
            conversion.run(backend);
            EXPECT_TRUE(conversion.isDone()) << route.src << " to " << route.dst;
        }
    }
}

// Runs `call` with the k-th allocation failing; true if it never came to that.
bool succeedsWithout(std::uint64_t k, std::function<void()> const& call) {
    try {
        FailingAllocation const failing(k);
        call();
        EXPECT_FALSE(failing.struck()) << "the failure of allocation " << k << " went unnoticed";
        return true;
    } catch (Exception const& exception) {
        EXPECT_EQ(exception.status, StatusCapacityExceeded) << exception.what();
    }
    return false;
}

TEST(CvBackendSimdAllocation, AFailureLeavesABackendThatConverts) {
    Random random;
    for (RoutedPair const& route : colourRoutes) {
        for (bool const used : {false, true}) {
            Conversion conversion(route, sizeFor(route, {35, 7}), random);
            Conversion small(route, sizeFor(route, {5, 3}), random);
            Conversion again(route, sizeFor(route, {35, 7}), random);
            std::int64_t const live = liveAllocations();
            bool done = false;
            for (std::uint64_t k = 1; !done && k < 50; ++k) {
                auto const backend = std::make_unique<CvBackendSimd>();
                if (used) {
                    small.run(*backend);
                }
                done = succeedsWithout(k, [&] { conversion.run(*backend); });
                again.run(*backend);
                EXPECT_TRUE(again.isDone()) << route.src << " to " << route.dst << ", " << k;
            }
            EXPECT_TRUE(done);
            EXPECT_EQ(liveAllocations(), live);
        }
    }
}

// `mul` needs its scratch frame before it clears anything.
TEST(CvBackendSimdAllocation, AFailureLeavesTheSamples) {
    Random random;
    model::Image const before = drawPicture(random, {model::Bgr32f, 20, 4});
    bool done = false;
    for (std::uint64_t k = 1; !done && k < 50; ++k) {
        PlacedImage image(before);
        CvBackendSimd backend;
        done = succeedsWithout(k, [&] { backend.mul(image.frame(), 2.0F, {}); });
        EXPECT_TRUE(done || image.holds(before)) << "allocation " << k;
        PlacedImage other(model::makeImage(model::Bgr32f, 20, 4, 0));
        backend.mul(other.frame(), 2.0F, {});
        EXPECT_TRUE(other.holds(model::makeImage(model::Bgr32f, 20, 4, 0)));
    }
    EXPECT_TRUE(done);
}

}  // namespace

}  // namespace ox::test
