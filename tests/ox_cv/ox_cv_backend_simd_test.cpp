// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend_simd.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <type_traits>

#include "model/vector_colour.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

static_assert(std::is_base_of_v<ICvBackend, CvBackendSimd>);

TEST(CvBackendSimd, Properties) {
    constexpr char unknown[] =
        "Assertion failed: value == ResizeBilinear || value == ResizeArea || value == "
        "ResizeNearestNeighbour";
    CvBackendSimd backend;
    EXPECT_EQ(backend.getIntProperty(1), ResizeBilinear);
    EXPECT_EQ(backend.getIntProperty(2), ResizeBilinear);
    for (int const id : {1, 2}) {
        for (int const value : {0, 2, 1, 2}) {
            EXPECT_EQ(backend.setIntProperty(id, value), 1);
            EXPECT_EQ(backend.getIntProperty(id), value);
        }
        for (int const value :
             {3, -1, 256, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            expectException(StatusAssertionFailed, unknown,
                            [&] { backend.setIntProperty(id, value); });
            EXPECT_EQ(backend.getIntProperty(id), 2);
        }
    }
}

TEST(CvBackendSimd, PropertiesAreApart) {
    CvBackendSimd backend;
    backend.setIntProperty(1, 0);
    backend.setIntProperty(2, 2);
    EXPECT_EQ(backend.getIntProperty(1), 0);
    EXPECT_EQ(backend.getIntProperty(2), 2);
}

TEST(CvBackendSimd, OtherPropertiesDoNotExist) {
    CvBackendSimd backend;
    for (int const id : {0, 3, -1, 257, std::numeric_limits<int>::min()}) {
        for (int const value : {0, 1, 3, -1}) {
            EXPECT_EQ(backend.setIntProperty(id, value), 0);
        }
        EXPECT_EQ(backend.getIntProperty(id), -1);
    }
    EXPECT_EQ(backend.getIntProperty(1), 1);
    EXPECT_EQ(backend.getIntProperty(2), 1);
}

TEST(CvBackendSimd, IsOnTheCpu) {
    EXPECT_EQ(CvBackendSimd().getDeviceContext(), DeviceContext::cpuContext());
    EXPECT_EQ(CvBackendSimd().getDeviceContext(), DeviceContext());
}

// The scratch frame, whose rows start anywhere.
testing::AssertionResult scratchHolds(CvBackendSimd const& backend, model::Image const& expected) {
    return sameImage(imageOf(CvBackendSimdProbe::colorFrame(backend)), expected);
}

TEST(CvBackendSimdRoiToYuv444, FillsTheScratchFrame) {
    CvBackendSimd backend;
    Random random;
    for (Placements const& placements :
         {everywhere({0, 0, Guard::AtEnd}), everywhere({0, 0, Guard::AtStart}),
          everywhere({0, 29, Guard::AtEnd})}) {
        for (Rect const roi : {Rect{0, 0, 40, 5}, Rect{3, 1, 1, 1}, Rect{39, 4, 1, 1},
                               Rect{1, 2, 15, 3}, Rect{7, 0, 33, 2}, Rect{24, 3, 16, 2}}) {
            model::Image const picture = drawImage(random, {model::Bgr24, 40, 5});
            PlacedImage src(picture, placements);
            backend.roiToYuv444(src.frame(), roi);
            model::Image const part = model::crop(picture, roi.x, roi.y, roi.width, roi.height);
            EXPECT_TRUE(scratchHolds(backend, model::vectorColour(part, model::Yuv444Planar)));
            EXPECT_TRUE(src.holds(picture));
        }
    }
}

// Whatever the format, the first three bytes per pixel count from the region's corner.
TEST(CvBackendSimdRoiToYuv444, TakesBytesForBgr) {
    CvBackendSimd backend;
    Random random;
    for (FrameFormat const format :
         {FRAME_RGB24, FRAME_YUV444, FRAME_C3_8U, FRAME_C4_8U, FRAME_C1_32U, FRAME_GRAY_32F,
          FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        model::Image const picture = drawImage(random, {static_cast<int>(format), 9, 3});
        PlacedImage src(picture, everywhere({0, 3, Guard::AtEnd}));
        model::Image const part = model::crop(picture, 2, 1, 7, 2);
        model::Image bgr = model::makeImage(model::Bgr24, 7, 2, 0);
        for (std::size_t y = 0; y < 2; ++y) {
            std::copy_n(&part.planes[0].bytes[y * part.planes[0].row_bytes], 21,
                        &bgr.planes[0].bytes[y * 21]);
        }
        backend.roiToYuv444(src.frame(), {2, 1, 7, 2});
        EXPECT_TRUE(scratchHolds(backend, model::vectorColour(bgr, model::Yuv444Planar)))
            << toString(format);
    }
}

TEST(CvBackendSimdRoiToYuv444, RowsOfFewerBytesAreRefused) {
    CvBackendSimd backend;
    for (FrameFormat const format :
         {FRAME_GRAY8, FRAME_RGB_PLANAR, FRAME_BGR_PLANAR, FRAME_I420, FRAME_YV12, FRAME_NV12,
          FRAME_NV21, FRAME_YV16, FRAME_YUYV, FRAME_UYVY, FRAME_NV16, FRAME_YUV444_PLANAR,
          FRAME_C2_8U, FRAME_C1_16U}) {
        TestFrame src = ramp(format, {12, 8});
        for (Rect const roi : {Rect{0, 0, 12, 8}, Rect{0, 0, 4, 4}, Rect{8, 4, 4, 4}}) {
            expectStatus(StatusNotSupported, [&] { backend.roiToYuv444(src.frame(), roi); });
        }
    }
    EXPECT_FALSE(CvBackendSimdProbe::colorFrame(backend).initialized());
    // one pixel of a whole pair has four bytes
    TestFrame pairs = ramp(FRAME_YUYV, {4, 1});
    backend.roiToYuv444(pairs.frame(), {3, 0, 1, 1});
    model::Image const bgr{model::Bgr24, 1, 1, {{1, 1, 3, {4, 5, 6}}}};
    EXPECT_TRUE(scratchHolds(backend, model::vectorColour(bgr, model::Yuv444Planar)));
}

TEST(CvBackendSimdRoiToYuv444, ChecksItsFrame) {
    CvBackendSimd backend;
    Frame none;
    TestFrame src = ramp(FRAME_BGR24, {4, 4});
    expectException(StatusAssertionFailed, "Assertion failed: src.initialized()", [&] {
        backend.roiToYuv444(none, {0, 0, 4, 4});
    });
    for (Rect const outside : {Rect{1, 0, 4, 4}, Rect{0, -1, 2, 2}, Rect{0, 0, 4, 5}}) {
        expectStatus(StatusOutOfRange, [&] { backend.roiToYuv444(src.frame(), outside); });
    }
    for (Rect const empty : {Rect{4, 0, 0, 4}, Rect{0, 4, 4, 0}, emptyRoi()}) {
        expectStatus(StatusInvalidParameter, [&] { backend.roiToYuv444(src.frame(), empty); });
    }
    EXPECT_FALSE(CvBackendSimdProbe::colorFrame(backend).initialized());
}

// For the thread sanitizer: separate backends share nothing but sources.
TEST(CvBackendSimd, SeparateBackendsServeThreads) {
    TestFrame const src = ramp(FRAME_BGR24, {35, 7});
    std::vector<Frame> results(8);
    std::vector<std::thread> threads;
    for (Frame& result : results) {
        threads.emplace_back([&src, &result] {
            CvBackendSimd backend;
            for (FrameFormat const format : {FRAME_NV12, FRAME_YUV444, FRAME_BGR_32F_PLANAR}) {
                Frame frame;
                frame.reuse(format, {35, 7}, DeviceContext(), 0);
                backend.colorCvt(src.frame(), frame, emptyRoi());
                result = frame;
            }
            backend.mul(result, 0.5F, emptyRoi());
            backend.add(result, 1.0F, emptyRoi());
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (Frame const& result : results) {
        EXPECT_TRUE(samePixels(result, results[0]));
    }
}

}  // namespace

}  // namespace ox::test
