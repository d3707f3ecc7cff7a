// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vector backend's colour conversion refuses, and in which order it looks.
#include <gtest/gtest.h>

#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

constexpr char notInitialized[] = "Assertion failed: src.initialized() && dst.initialized()";
constexpr char otherSize[] = "Assertion failed: src_region.size() == dst.size()";
constexpr char oddSides[] =
    "Assertion failed: src_region.width() % 2 == 0 && src_region.height() % 2 == 0";

bool isConverted(FrameFormat src, FrameFormat dst) {
    return std::any_of(colourRoutes.begin(), colourRoutes.end(),
                       [&](RoutedPair const& each) { return each.src == src && each.dst == dst; });
}

// Each call breaks one rule and, where it can, all that are looked at later.
TEST(CvBackendSimdColourRefusals, ChecksInTheirOrder) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_I420, {5, 5});
    TestFrame dst(FRAME_YV12, {4, 5});
    TestFrame same_size(FRAME_YV12, {5, 5});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_I420, {5, 5});
    Frame other_device;
    other_device.reuse(FRAME_I420, {5, 5}, DeviceContext(8, nullptr), 0);
    Rect const outside{9, 9, 9, 9};
    auto const expectAssertion = [&](char const* text, Frame const& from, Frame& to, Rect roi) {
        expectException(StatusAssertionFailed, text, [&] { backend.colorCvt(from, to, roi); });
    };
    expectAssertion(notInitialized, emptyFrame(), elsewhere, outside);
    expectAssertion(notInitialized, elsewhere, none, outside);
    expectAssertion(notInitialized, emptyFrame(), none, outside);
    expectAssertion(wrongDevice, src.frame(), elsewhere, outside);
    expectAssertion(wrongDevice, elsewhere, dst.frame(), outside);
    expectAssertion(wrongDevice, elsewhere, elsewhere, outside);
    expectAssertion(wrongDevice, elsewhere, other_device, outside);
    expectStatus(StatusOutOfRange, [&] { backend.colorCvt(src.frame(), dst.frame(), outside); });
    expectAssertion(otherSize, src.frame(), dst.frame(), {});
    expectAssertion(otherSize, src.frame(), dst.frame(), {0, 0, 3, 3});
    expectAssertion(oddSides, src.frame(), same_size.frame(), {});
    expectException(StatusNotSupported, unsupportedConversion(FRAME_I420, FRAME_YV12), [&] {
        TestFrame even(FRAME_YV12, {2, 2});
        backend.colorCvt(src.frame(), even.frame(), {0, 0, 2, 2});
    });
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
    EXPECT_TRUE(isFilledWith(same_size.frame(), 0));
}

// The size is looked at even where the frame would only be copied.
TEST(CvBackendSimdColourRefusals, SizesAgreeForCopiesToo) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_C4_8U, {5, 4});
    for (Size const size : {Size{4, 4}, Size{5, 3}, Size{6, 4}, Size{4, 5}}) {
        TestFrame dst(FRAME_C4_8U, size);
        expectException(StatusAssertionFailed, otherSize,
                        [&] { backend.colorCvt(src.frame(), dst.frame(), {}); });
        EXPECT_TRUE(isFilledWith(dst.frame(), 0));
    }
}

TEST(CvBackendSimdColourRefusals, OddSidesOfSubsampledSources) {
    CvBackendSimd backend;
    for (FrameFormat const format : {FRAME_I420, FRAME_NV12, FRAME_NV21}) {
        model::Image const picture = model::makeImage(static_cast<int>(format), 7, 7, 128);
        PlacedImage src(picture);
        for (FrameFormat const target : allFormats()) {
            if (target == format) {
                continue;
            }
            for (Rect const roi : {Rect{0, 0, 3, 2}, Rect{0, 0, 2, 3}, Rect{1, 1, 5, 5}, Rect{}}) {
                Size const size = roi.empty() ? Size{7, 7} : Size{roi.width, roi.height};
                TestFrame dst(target, size);
                expectException(StatusAssertionFailed, oddSides,
                                [&] { backend.colorCvt(src.frame(), dst.frame(), roi); });
                EXPECT_TRUE(isFilledWith(dst.frame(), 0));
            }
        }
        // its own format is copied, whatever the sides
        PlacedImage copy(model::makeImage(picture.format, 3, 5, 0));
        backend.colorCvt(src.frame(), copy.frame(), {1, 2, 3, 5});
        EXPECT_TRUE(copy.holds(model::makeImage(picture.format, 3, 5, 128)));
    }
}

TEST(CvBackendSimdColourRefusals, OtherPairsAreRefusedUntouched) {
    CvBackendSimd backend;
    for (FrameFormat const src_format : allFormats()) {
        TestFrame const src = ramp(src_format, {8, 8});
        for (FrameFormat const dst_format : allFormats()) {
            if (src_format == dst_format || isConverted(src_format, dst_format)) {
                continue;
            }
            for (Rect const roi : {Rect{}, Rect{2, 2, 4, 4}}) {
                Size const size = roi.empty() ? Size{8, 8} : Size{4, 4};
                TestFrame dst(dst_format, size, {5, Guard::None});
                fill(dst.frame(), 77);
                expectException(StatusNotSupported, unsupportedConversion(src_format, dst_format),
                                [&] { backend.colorCvt(src.frame(), dst.frame(), roi); });
                EXPECT_TRUE(isFilledWith(dst.frame(), 77));
                dst.expectGapsUntouched();
            }
        }
    }
    EXPECT_FALSE(CvBackendSimdProbe::colorFrame(backend).initialized());
}

TEST(CvBackendSimdColourRefusals, RefusalsNameBothFormats) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_YV12, {4, 4});
    TestFrame dst(FRAME_BGR24, {4, 4});
    expectException(StatusNotSupported,
                    "colorCvt: Unsupported conversion FRAME_YV12 -> FRAME_BGR24.",
                    [&] { backend.colorCvt(src.frame(), dst.frame(), {}); });
}

}  // namespace

}  // namespace ox::test
