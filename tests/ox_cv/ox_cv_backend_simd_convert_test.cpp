// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Regions brought to another size and format at once by the vector backend: which ways they go, and
// what they come to.
#include <gtest/gtest.h>

#include "model/vector_colour.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/resized_image.h"
#include "support/exceptions.h"

namespace ox::test::cv_backend_simd_convert {

namespace {

constexpr char notInitialized[] = "Assertion failed: src.initialized() && dst.initialized()";
constexpr char oddSides[] =
    "Assertion failed: src_region.width() % 2 == 0 && src_region.height() % 2 == 0";
constexpr char otherBits[] = "Assertion failed: bits_per_channel == 8 || bits_per_channel == 32";
constexpr char noFloatArea[] = "resize: Unsupported method.";

Frame const& scratchOf(CvBackendSimd const& backend) {
    return CvBackendSimdProbe::resizeFrame(backend);
}

// Converts the pixels of `dst`, some of which stay where the pair goes directly.
void convertColour(model::Image const& src, bool one_stride, model::Image& dst) {
    if (src.format == dst.format) {
        dst = src;
    } else if (src.format == model::Nv12 && dst.format == model::Bgr24 && one_stride) {
        model::vectorColourDirectly(src, dst);
    } else {
        dst = model::vectorColour(src, dst.format);
    }
}

// What becomes of `dst`. The scratch frame's planes have one stride where that matters.
void convertImage(model::Image const& part, bool one_stride, int method, model::Image& dst) {
    Size const size = sizeOf(dst.geometry());
    if (sizeOf(part.geometry()) == size) {
        convertColour(part, one_stride, dst);
    } else {
        convertColour(resizedImage(part, size, method), true, dst);
    }
}

bool hasOneStride(Frame const& frame) {
    return frame.layout().plane[0].stride == frame.layout().plane[1].stride;
}

// One backend for all calls, so that each meets the scratch frame of the one before.
class CvBackendSimdConvert : public testing::Test {
  protected:
    // Converts the region of a random picture, from random to random memory.
    void check(FrameFormat format, Size whole, Rect roi, FrameFormat dst_format, Size size) {
        model::Image const picture =
            drawSamples(random, {static_cast<int>(format), whole.width, whole.height});
        PlacedImage const src(picture, drawPlacesFor(format, random));
        model::Image const part =
            roi.empty() ? picture : model::crop(picture, roi.x, roi.y, roi.width, roi.height);
        model::Image const before =
            drawImage(random, {static_cast<int>(dst_format), size.width, size.height});
        model::Image expected = before;
        int const method = drawMethod(format);
        convertImage(part, hasOneStride(src.frame()), method, expected);
        PlacedImage dst(before, drawPlacesFor(dst_format, random));
        backend.setIntProperty(PropertyResizeMethod, method);
        backend.convert(src.frame(), dst.frame(), roi);
        EXPECT_TRUE(dst.holds(expected))
            << describe(format, sizeOf(part.geometry())) << " of " << whole.width << "x"
            << whole.height << " to " << describe(dst_format, size) << ", method " << method;
        EXPECT_TRUE(src.holds(picture)) << "the source changed";
    }

    int drawMethod(FrameFormat format) {
        return random.between(0, hasFloats(format) ? ResizeBilinear : ResizeArea);
    }

    // With even sides, so that every source can be converted at that size.
    Size drawSize(int width, int height) {
        return {random.between(1, width / 2) * 2, random.between(1, height / 2) * 2};
    }

    Random random;
    CvBackendSimd backend;
};

// The scratch frame tells the ways apart: only two steps need it.
TEST_F(CvBackendSimdConvert, Ways) {
    struct Case {
        FrameFormat src;
        Size whole;
        Rect roi;
        FrameFormat dst;
        Size size;
        bool two_steps;
    } const cases[] = {
        {FRAME_BGR24, {20, 6}, {}, FRAME_BGR24, {20, 6}, false},            // copied
        {FRAME_BGR24, {20, 6}, {3, 1, 9, 4}, FRAME_BGR24, {9, 4}, false},   //
        {FRAME_BGR24, {20, 6}, {}, FRAME_RGB24, {20, 6}, false},            // converted
        {FRAME_BGR24, {20, 6}, {3, 1, 9, 4}, FRAME_RGB24, {9, 4}, false},   //
        {FRAME_BGR24, {20, 6}, {}, FRAME_BGR24, {31, 4}, false},            // resized
        {FRAME_BGR24, {20, 6}, {3, 1, 9, 4}, FRAME_BGR24, {20, 6}, false},  //
        {FRAME_BGR24, {20, 6}, {}, FRAME_RGB24, {31, 4}, true},             // both
        {FRAME_BGR24, {20, 6}, {3, 1, 9, 4}, FRAME_RGB24, {20, 6}, true},   //
        {FRAME_BGR24, {20, 6}, {}, FRAME_RGB24, {20, 5}, true},             // one side alone
        {FRAME_BGR24, {20, 6}, {}, FRAME_RGB24, {19, 6}, true},             //
        {FRAME_NV12, {20, 6}, {2, 2, 4, 4}, FRAME_BGR_32F, {8, 2}, true},   // refused at last
        {FRAME_NV12, {21, 7}, {1, 1, 17, 5}, FRAME_BGR24, {24, 4}, true},   //
        {FRAME_BGR_32F, {20, 6}, {3, 1, 9, 4}, FRAME_BGR_PLANAR, {20, 6}, true},
    };
    for (Case const& each : cases) {
        CvBackendSimd fresh;
        TestFrame const src = ramp(each.src, each.whole);
        TestFrame dst(each.dst, each.size);
        try {
            fresh.convert(src.frame(), dst.frame(), each.roi);
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusNotSupported);
        }
        EXPECT_EQ(scratchOf(fresh).initialized(), each.two_steps);
        EXPECT_EQ(scratchOf(fresh).size(), each.two_steps ? each.size : Size{});
        EXPECT_EQ(scratchOf(fresh).format(), each.two_steps ? each.src : FRAME_FORMAT_NONE);
    }
}

TEST_F(CvBackendSimdConvert, EveryPairAtEqualSizes) {
    for (RoutedPair const& each : colourRoutes) {
        for (int i = 0; i < draws(25); ++i) {
            Size const size = drawSize(40, 6);
            check(each.src, size, {}, each.dst, size);
            Rect const roi = drawEvenRegion(random, size);
            check(each.src, size, roi, each.dst, {roi.width, roi.height});
        }
    }
}

TEST_F(CvBackendSimdConvert, EveryPairAtOtherSizes) {
    for (RoutedPair const& each : colourRoutes) {
        for (int i = 0; i < draws(25); ++i) {
            Size const whole{random.between(1, 30), random.between(1, 9)};
            check(each.src, whole, {}, each.dst, drawSize(60, 12));
            check(each.src, whole, drawRegion(random, whole), each.dst, drawSize(60, 12));
        }
    }
}

TEST_F(CvBackendSimdConvert, EqualFormats) {
    for (FrameFormat const format : resizedFormats()) {
        for (int i = 0; i < draws(25); ++i) {
            Size const whole{random.between(1, 30), random.between(1, 9)};
            Size const size{random.between(1, 60), random.between(1, 12)};
            check(format, whole, {}, format, size);
            check(format, whole, drawRegion(random, whole), format, size);
        }
    }
}

// Also of formats that can't be resized.
TEST_F(CvBackendSimdConvert, CopiesWhatAgrees) {
    for (FrameFormat const format : allFormats()) {
        Size const whole{random.between(1, 30), random.between(1, 9)};
        Rect const roi = drawRegion(random, whole);
        check(format, whole, {}, format, whole);
        check(format, whole, roi, format, {roi.width, roi.height});
        Frame const same = deviceFrame(format, whole);  // not on the CPU: no copy either
        Frame dst = same;
        expectException(StatusAssertionFailed, wrongDevice,
                        [&] { backend.convert(same, dst, {}); });
    }
}

TEST_F(CvBackendSimdConvert, InPlace) {
    for (FrameFormat const format : allFormats()) {
        model::Image const picture = drawImage(random, {static_cast<int>(format), 9, 5});
        PlacedImage image(picture, everywhere(gapped));
        unsigned char const* const pixels = image.frame().planeData(0);
        Frame handle = image.frame();
        backend.convert(image.frame(), image.frame(), {});
        backend.convert(image.frame(), handle, {0, 0, 9, 5});
        EXPECT_TRUE(image.holds(picture));
        EXPECT_EQ(image.frame().planeData(0), pixels);
        EXPECT_EQ(handle.planeData(0), pixels);
    }
}

// The region is a frame of its own then: `colorCvt` with a region never goes there.
TEST_F(CvBackendSimdConvert, RegionsGoDirectlyFromNv12ToBgr) {
    model::Image const picture = drawImage(random, {model::Nv12, 40, 8});
    PlacedImage const src(picture);
    for (int width = 2; width <= 22; width += 2) {
        model::Image expected = model::makeImage(model::Bgr24, width, 4, 77);
        PlacedImage dst(expected, everywhere(gapped));
        backend.convert(src.frame(), dst.frame(), {6, 2, width, 4});
        model::vectorColourDirectly(model::crop(picture, 6, 2, width, 4), expected);
        EXPECT_TRUE(dst.holds(expected));
    }
}

// So does the scratch frame, whatever the strides of the source.
TEST_F(CvBackendSimdConvert, ResizedFramesGoDirectlyFromNv12ToBgr) {
    model::Image const picture = drawImage(random, {model::Nv12, 40, 8});
    for (std::size_t const gap : {std::size_t{0}, std::size_t{6}}) {
        PlacedImage const src(picture, Placements{{{0, 0}, {0, gap}}});
        for (int width = 2; width <= 22; width += 2) {
            model::Image expected = model::makeImage(model::Bgr24, width, 4, 77);
            PlacedImage dst(expected, everywhere(gapped));
            backend.convert(src.frame(), dst.frame(), {});
            model::vectorColourDirectly(resizedImage(picture, {width, 4}, ResizeBilinear),
                                        expected);
            EXPECT_TRUE(dst.holds(expected));
        }
    }
}

TEST_F(CvBackendSimdConvert, UnsupportedPairsAreRefusedAfterTheResize) {
    struct {
        FrameFormat src;
        FrameFormat dst;
    } const pairs[] = {{FRAME_YV12, FRAME_BGR24},
                       {FRAME_C3_8U, FRAME_BGR24},
                       {FRAME_GRAY8, FRAME_C1_16U},
                       {FRAME_GRAY_32F, FRAME_BGR_32F}};
    for (auto const& pair : pairs) {
        auto const text = unsupportedConversion(pair.src, pair.dst);
        model::Image const picture = drawSamples(random, {static_cast<int>(pair.src), 12, 8});
        PlacedImage const src(picture);
        TestFrame equal(pair.dst, {12, 8});
        TestFrame larger(pair.dst, {20, 10});
        CvBackendSimd fresh;
        expectException(StatusNotSupported, text,
                        [&] { fresh.convert(src.frame(), equal.frame(), {}); });
        EXPECT_FALSE(scratchOf(fresh).initialized());
        expectException(StatusNotSupported, text,
                        [&] { fresh.convert(src.frame(), larger.frame(), {}); });
        EXPECT_TRUE(
            sameImage(imageOf(scratchOf(fresh)), resizedImage(picture, {20, 10}, ResizeBilinear)));
        EXPECT_TRUE(isFilledWith(equal.frame(), 0));
        EXPECT_TRUE(isFilledWith(larger.frame(), 0));
    }
}

// Even sides are asked for where the colours are converted, which is at the destination's size.
TEST_F(CvBackendSimdConvert, OddSidesAreRefusedAfterTheResize) {
    for (FrameFormat const format : {FRAME_I420, FRAME_NV12, FRAME_NV21}) {
        model::Image const picture = drawImage(random, {static_cast<int>(format), 12, 8});
        PlacedImage const src(picture);
        for (Size const size : {Size{7, 4}, Size{6, 5}, Size{7, 5}}) {
            TestFrame dst(FRAME_BGR24, size);
            expectException(StatusAssertionFailed, oddSides,
                            [&] { backend.convert(src.frame(), dst.frame(), {}); });
            EXPECT_TRUE(sameImage(imageOf(scratchOf(backend)),
                                  resizedImage(picture, size, ResizeBilinear)));
            EXPECT_TRUE(isFilledWith(dst.frame(), 0));
        }
        check(format, {11, 7}, {}, FRAME_BGR24, {8, 4});
        check(format, {12, 8}, {1, 1, 5, 3}, FRAME_BGR24, {8, 4});
    }
}

TEST_F(CvBackendSimdConvert, RefusalsOfTheResizePass) {
    TestFrame const shorts = ramp(FRAME_C1_16U, {6, 4});
    TestFrame const floats = ramp(FRAME_BGR_32F, {6, 4});
    TestFrame bytes(FRAME_BGR24, {8, 4});
    TestFrame wide_shorts(FRAME_C1_16U, {8, 4});
    TestFrame wide_floats(FRAME_BGR_32F, {8, 4});
    backend.setIntProperty(PropertyResizeMethod, ResizeArea);
    // before the pair is looked at
    for (TestFrame* const dst : {&bytes, &wide_shorts}) {
        expectException(StatusAssertionFailed, otherBits,
                        [&] { backend.convert(shorts.frame(), dst->frame(), {}); });
    }
    for (TestFrame* const dst : {&bytes, &wide_floats}) {
        expectException(StatusNotSupported, noFloatArea,
                        [&] { backend.convert(floats.frame(), dst->frame(), {}); });
        expectException(StatusNotSupported, noFloatArea, [&] {
            backend.convert(floats.frame(), dst->frame(), {1, 1, 3, 2});
        });
    }
    for (TestFrame* const dst : {&bytes, &wide_shorts, &wide_floats}) {
        EXPECT_TRUE(isFilledWith(dst->frame(), 0));
    }
    // nothing is resized at an equal size, nor averaged in a line
    backend.convert(floats.frame(), bytes.frame(), {1, 1, 5, 1});
    TestFrame equal(FRAME_BGR24, {6, 4});
    backend.convert(floats.frame(), equal.frame(), {});
}

// Each call breaks one rule and, where it can, all that are looked at later.
TEST_F(CvBackendSimdConvert, ChecksInTheirOrder) {
    TestFrame const src = ramp(FRAME_YV12, {4, 4});
    TestFrame dst(FRAME_BGR24, {4, 4});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_YV12, {4, 4});
    Frame other_device;
    other_device.reuse(FRAME_YV12, {4, 4}, DeviceContext(8, nullptr), 0);
    Rect const outside{3, 3, 2, 2};
    auto const expectAssertion = [&](char const* text, Frame const& from, Frame& to) {
        expectException(StatusAssertionFailed, text, [&] { backend.convert(from, to, outside); });
    };
    expectAssertion(notInitialized, emptyFrame(), elsewhere);
    expectAssertion(notInitialized, elsewhere, none);
    expectAssertion(notInitialized, emptyFrame(), none);
    expectAssertion(wrongDevice, src.frame(), elsewhere);
    expectAssertion(wrongDevice, elsewhere, dst.frame());
    expectAssertion(wrongDevice, elsewhere, elsewhere);
    expectAssertion(wrongDevice, elsewhere, other_device);
    for (Rect const far : {outside, Rect{0, 0, 5, 4}, Rect{-1, 0, 2, 2}, Rect{0, 0, 4, 5}}) {
        expectStatus(StatusOutOfRange, [&] { backend.convert(src.frame(), dst.frame(), far); });
    }
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
    EXPECT_FALSE(scratchOf(backend).initialized());
}

// A rectangle without a positive side selects the whole frame, wherever it is.
TEST_F(CvBackendSimdConvert, EmptyRegionsAreTheWholeFrame) {
    for (Rect const empty : {Rect{}, Rect{1, 1, 0, 2}, Rect{9, 9, 2, 0}, Rect{0, 0, -2, -2}}) {
        TestFrame const src = grayPicture({{10, 20}, {30, 40}});
        TestFrame dst(FRAME_BGR24, {2, 2});
        backend.convert(src.frame(), dst.frame(), empty);
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{{10, 10, 10, 20, 20, 20}, {30, 30, 30, 40, 40, 40}}));
        TestFrame wide(FRAME_BGR24, {4, 1});
        backend.convert(src.frame(), wide.frame(), empty);
        EXPECT_EQ(rowsOf(wide.frame()), (Rows{{20, 20, 20, 23, 23, 23, 28, 28, 28, 30, 30, 30}}));
    }
}

// Whatever the source's size and region, as long as the destination's format and size stay.
// The scratch frame still holds the picture before; a region without pixels doesn't show it.
TEST_F(CvBackendSimdConvert, NoPixelsAreZerosInBetween) {
    TestFrame src(FRAME_BGR24, {8, 6});
    fill(src.frame(), 200);
    for (Rect const rect : {Rect{2, 2, 0, 3}, Rect{2, 2, 3, 0}}) {
        for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear, ResizeArea}) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            TestFrame dst(FRAME_GRAY8, {20, 5});
            backend.convert(src.frame(), dst.frame(), {});
            EXPECT_TRUE(isFilledWith(dst.frame(), 200));
            Frame const empty = getRegion(src.frame(), rect);
            backend.convert(empty, dst.frame(), {});
            EXPECT_TRUE(isFilledWith(dst.frame(), 0));
        }
    }
}

TEST_F(CvBackendSimdConvert, TheScratchFrameKeepsItsStorage) {
    check(FRAME_I420, {30, 8}, {}, FRAME_BGR24, {24, 6});
    unsigned char const* const storage = scratchOf(backend).planeData(0);
    for (FrameFormat const format : {FRAME_BGR24, FRAME_RGB24, FRAME_NV12, FRAME_GRAY8}) {
        for (Size const whole : {Size{30, 8}, Size{5, 40}, Size{100, 3}}) {
            check(FRAME_I420, whole, {}, format, {24, 6});
            check(FRAME_I420, whole, {2, 1, 3, 2}, format, {24, 6});
            EXPECT_EQ(scratchOf(backend).planeData(0), storage);
        }
    }
    // the other ways leave it, with its pixels
    model::Image const kept = imageOf(scratchOf(backend));
    check(FRAME_I420, {24, 6}, {}, FRAME_BGR24, {24, 6});
    check(FRAME_I420, {30, 8}, {}, FRAME_I420, {24, 6});
    check(FRAME_BGR24, {30, 8}, {}, FRAME_BGR24, {30, 8});
    EXPECT_EQ(scratchOf(backend).planeData(0), storage);
    EXPECT_TRUE(sameImage(imageOf(scratchOf(backend)), kept));
}

// The colours may need a scratch frame as well, which is another.
TEST_F(CvBackendSimdConvert, TwoScratchFrames) {
    for (int i = 0; i < 3; ++i) {
        check(FRAME_YUV444, {9, 7}, {}, FRAME_BGR24, {20, 6});
        EXPECT_EQ(scratchOf(backend).format(), FRAME_YUV444);
        EXPECT_EQ(CvBackendSimdProbe::colorFrame(backend).format(), FRAME_YUV444_PLANAR);
    }
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_convert
