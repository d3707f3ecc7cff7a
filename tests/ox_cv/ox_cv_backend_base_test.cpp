// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend_base.h"

#include <gtest/gtest.h>

#include <thread>

#include "ox_cv/backend_frames.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

TEST(CvBackendBase, Properties) {
    CvBackendBase backend;
    EXPECT_EQ(backend.getIntProperty(1), ResizeBilinear);
    for (int const value : {0, 2, 7, -5, 1}) {
        EXPECT_EQ(backend.setIntProperty(1, value), 1);
        EXPECT_EQ(backend.getIntProperty(1), value);
    }
    for (int const id : {2, 0, -1, 3}) {
        EXPECT_EQ(backend.setIntProperty(id, 0), 0);
        EXPECT_EQ(backend.getIntProperty(id), -1);
    }
    EXPECT_EQ(backend.getIntProperty(1), 1);
    EXPECT_EQ(backend.getDeviceContext(), DeviceContext::cpuContext());
    EXPECT_EQ(ResizeNearestNeighbour, 0U);
    EXPECT_EQ(ResizeArea, 2U);
}

TEST(CvBackendBase, DoesNotWarp) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_GRAY8, {2, 2});
    Frame dst;
    float const matrix[2][3] = {{1, 0, 0}, {0, 1, 0}};
    for (bool const flag : {false, true}) {
        expectException(StatusNotSupported, "Operation is not implemented",
                        [&] { backend.warpAffine(src.frame(), dst, matrix, emptyRoi(), flag); });
    }
    expectException(StatusNotSupported, "Operation is not implemented",
                    [&] { backend.warpAffine(emptyFrame(), dst, nullptr, emptyRoi(), false); });
}

TEST(CvBackendBaseResize, ChecksItsFrames) {
    constexpr char text[] = "Assertion failed: src.initialized() && src.format() == dst.format()";
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame other(FRAME_BGR24, {2, 2});
    TestFrame dst(FRAME_GRAY8, {2, 2});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_GRAY8, {4, 4});
    expectException(StatusAssertionFailed, text,
                    [&] { backend.resize(emptyFrame(), none, {}, {}); });
    expectException(StatusAssertionFailed, text,
                    [&] { backend.resize(src.frame(), none, {}, {}); });
    expectException(StatusAssertionFailed, text,
                    [&] { backend.resize(src.frame(), other.frame(), {}, {}); });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.resize(src.frame(), elsewhere, {}, {}); });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.resize(elsewhere, dst.frame(), {}, {}); });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.resize(elsewhere, elsewhere, {}, {}); });
    for (Rect const outside : {Rect{3, 0, 2, 1}, Rect{-1, 0, 2, 2}, Rect{0, 0, 5, 5}}) {
        expectStatus(StatusOutOfRange,
                     [&] { backend.resize(src.frame(), dst.frame(), outside, {}); });
        expectStatus(StatusOutOfRange,
                     [&] { backend.resize(src.frame(), dst.frame(), {}, outside); });
    }
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
}

TEST(CvBackendBaseResize, MethodsOfTheProperty) {
    CvBackendBase backend;
    TestFrame const src = grayPicture({{0, 100, 20, 61}});
    TestFrame dst(FRAME_GRAY8, {1, 1});
    int const expected[] = {20, 60, 45};  // column 2; columns 1 and 2; all, 181 / 4
    backend.resize(src.frame(), dst.frame(), {}, {});
    EXPECT_EQ(dst.row(0, 0)[0], 60);  // bilinear at first
    for (int method = 0; method < 3; ++method) {
        backend.setIntProperty(PropertyResizeMethod, method);
        backend.resize(src.frame(), dst.frame(), {}, {});
        EXPECT_EQ(dst.row(0, 0)[0], expected[method]);
    }
}

TEST(CvBackendBaseResize, UnknownMethodsMatterWhereSizesDiffer) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame same(FRAME_GRAY8, {4, 4});
    TestFrame small(FRAME_GRAY8, {2, 2});
    TestFrame gray_to(FRAME_BGR24, {2, 2});
    EXPECT_EQ(backend.setIntProperty(PropertyResizeMethod, 7), 1);
    auto const text = "Failure in Scaler::reuse(...) : parameter 'method' is invalid 7.";
    expectException(StatusInvalidParameter, text,
                    [&] { backend.resize(src.frame(), small.frame(), {}, {}); });
    expectException(StatusInvalidParameter, text,
                    [&] { backend.convert(src.frame(), small.frame(), {}); });
    expectException(StatusInvalidParameter, text,
                    [&] { backend.convert(src.frame(), gray_to.frame(), {}); });
    backend.resize(src.frame(), same.frame(), {}, {});
    EXPECT_TRUE(samePixels(same.frame(), src.frame()));
    backend.setIntProperty(PropertyResizeMethod, -1);
    expectException(StatusInvalidParameter,
                    "Failure in Scaler::reuse(...) : parameter 'method' is invalid 4294967295.",
                    [&] { backend.resize(src.frame(), small.frame(), {}, {}); });
}

TEST(CvBackendBaseResize, RegionsOfSourceAndDestination) {
    CvBackendBase backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
    TestFrame const src = ramp(FRAME_GRAY8, {6, 4});
    TestFrame dst(FRAME_GRAY8, {5, 3}, {7, Guard::AtEnd});
    fill(dst.frame(), 99);
    // columns 1 to 4 and rows 1 to 2 become the block at (2, 1)
    backend.resize(src.frame(), dst.frame(), {1, 1, 4, 2}, {2, 1, 2, 2});
    EXPECT_EQ(rowsOf(dst.frame()),
              (Rows{{99, 99, 99, 99, 99}, {99, 99, 22, 24, 99}, {99, 99, 42, 44, 99}}));
    dst.expectGapsUntouched();
    // equal sizes: a copy, in place too
    backend.resize(src.frame(), dst.frame(), {4, 3, 1, 1}, {0, 0, 1, 1});
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0), (Bytes{64, 99, 99, 99, 99}));
}

TEST(CvBackendBase, RegionsNeedBothSides) {
    CvBackendBase backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
    TestFrame const src = grayPicture({{1, 2}, {3, 4}});
    for (Rect const whole : {Rect{1, 1, 1, 0}, Rect{1, 1, 0, 1}, Rect{9, 9, -1, 9}, emptyRoi()}) {
        TestFrame dst(FRAME_GRAY8, {4, 2});
        backend.resize(src.frame(), dst.frame(), whole, whole);
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{{1, 1, 2, 2}, {3, 3, 4, 4}}));
        TestFrame coloured(FRAME_BGR24, {1, 2});
        backend.convert(src.frame(), coloured.frame(), whole);
        EXPECT_EQ(rowsOf(coloured.frame()), (Rows{{2, 2, 2}, {4, 4, 4}}));
    }
}

TEST(CvBackendBaseResize, RegionsOfSubsampledFrames) {
    CvBackendBase backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
    TestFrame const src = ramp(FRAME_NV12, {8, 8});
    TestFrame dst(FRAME_NV12, {4, 4});
    fill(dst.frame(), 200);
    backend.resize(src.frame(), dst.frame(), {4, 4, 4, 4}, {2, 2, 2, 2});
    EXPECT_EQ(rowsOf(dst.frame(), 0), (Rows{{200, 200, 200, 200},
                                            {200, 200, 200, 200},
                                            {200, 200, 105, 107},
                                            {200, 200, 145, 147}}));
    // luma row 5 shows chroma row 2; chroma column 1 of the region, bytes 6 and 7
    EXPECT_EQ(rowsOf(dst.frame(), 1), (Rows{{200, 200, 200, 200}, {200, 200, 46, 47}}));
}

TEST(CvBackendBaseResize, KeepsItsTables) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_NV12, {8, 8});
    TestFrame dst(FRAME_NV12, {4, 4});
    backend.resize(src.frame(), dst.frame(), {}, {});
    std::uint64_t const calls = allocationCalls();
    backend.resize(src.frame(), dst.frame(), {}, {});
    EXPECT_EQ(allocationCalls(), calls);
}

TEST(CvBackendBaseConvert, ChecksItsFrames) {
    constexpr char text[] = "Assertion failed: src.initialized() && dst.initialized()";
    CvBackendBase backend;
    TestFrame src = ramp(FRAME_GRAY8, {4, 4});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_BGR24, {4, 4});
    expectException(StatusAssertionFailed, text,
                    [&] { backend.convert(emptyFrame(), src.frame(), {}); });
    expectException(StatusAssertionFailed, text, [&] { backend.convert(src.frame(), none, {}); });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.convert(src.frame(), elsewhere, {}); });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.convert(elsewhere, src.frame(), {}); });
}

TEST(CvBackendBaseConvert, EqualSizesAreAColourConversion) {
    CvBackendBase backend;
    TestFrame const src = flatNv12({8, 4}, 235, 128, 128);
    TestFrame dst(FRAME_BGR24, {8, 4});
    backend.convert(src.frame(), dst.frame(), {});
    EXPECT_TRUE(isFilledWith(dst.frame(), 255));
    // a region that is the frame goes by the other coefficients
    backend.convert(src.frame(), dst.frame(), {0, 0, 8, 4});
    EXPECT_TRUE(isFilledWith(dst.frame(), 254));
    TestFrame const gray = ramp(FRAME_GRAY8, {4, 4});
    TestFrame part(FRAME_BGR24, {2, 1});
    backend.convert(gray.frame(), part.frame(), {1, 3, 2, 1});
    EXPECT_EQ(rowsOf(part.frame()), (Rows{{61, 61, 61, 62, 62, 62}}));
}

TEST(CvBackendBaseConvert, EqualFormatsAreAResize) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame dst(FRAME_GRAY8, {2, 1});
    backend.convert(src.frame(), dst.frame(), {});
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{30, 32}}));  // rows 1 and 2, columns by pairs
    backend.convert(src.frame(), dst.frame(), {0, 2, 4, 2});
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{50, 52}}));
}

// Scaled first: the mean of (1, 1, 0) and (1, 1, 2) is (1, 1, 1), whose gray is 1. The grays of
// both are 0 and 1, with mean 0.
TEST(CvBackendBaseConvert, ScalesBeforeItConverts) {
    CvBackendBase backend;
    TestFrame const src = picture(FRAME_BGR24, {4, 1}, {{{9, 9, 9, 1, 1, 0, 1, 1, 2, 9, 9, 9}}});
    TestFrame dst(FRAME_GRAY8, {1, 1});
    backend.convert(src.frame(), dst.frame(), {});
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{1}}));
    backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
    backend.convert(src.frame(), dst.frame(), {2, 0, 2, 1});
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{9}}));
}

// The second step has a whole frame for its source, but never takes the direct call.
// Area rows of `FRAME_UYVY` are half written; the other half is 0, not what was there before.
TEST(CvBackendBaseConvert, HalfWrittenRowsShowNothingOld) {
    TestFrame const src = ramp(FRAME_UYVY, {6, 8});
    TestFrame const white = picture(FRAME_UYVY, {6, 8}, {Rows(8, Bytes(12, 255))});
    for (Size const size : {Size{6, 4}, Size{6, 12}, Size{4, 4}, Size{10, 12}}) {
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
        Scaler scaler;
        scaler.reuse(src.frame(), size, OX_SCALE_AREA);
        TestFrame half_written(FRAME_UYVY, size);
        fill(half_written.frame(), 0);
        produceFrame(scaler, half_written.frame());
        FormatConverter converter;
        converter.reuse(half_written.frame(), FRAME_BGR24);
        Frame const expected = pump(converter);

        CvBackendBase backend;
        TestFrame dst(FRAME_BGR24, size);
        backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
        backend.convert(white.frame(), dst.frame(), {});
        backend.setIntProperty(PropertyResizeMethod, ResizeArea);
        backend.convert(src.frame(), dst.frame(), {});
        EXPECT_TRUE(samePixels(dst.frame(), expected));
    }
}

TEST(CvBackendBaseConvert, ConvertsTheScaledFrameByTheConverter) {
    CvBackendBase backend;
    TestFrame const src = flatNv12({16, 8}, 235, 128, 128);
    TestFrame dst(FRAME_BGR24, {9, 5}, {5, Guard::AtEnd});
    for (int pass = 0; pass < 2; ++pass) {
        backend.convert(src.frame(), dst.frame(), {});
        EXPECT_TRUE(isFilledWith(dst.frame(), 254));
        dst.expectGapsUntouched();
    }
    std::uint64_t const calls = allocationCalls();
    backend.convert(src.frame(), dst.frame(), {});
    EXPECT_EQ(allocationCalls(), calls);
}

// For the thread sanitizer: separate backends share nothing but sources.
TEST(CvBackendBase, SeparateBackendsServeThreads) {
    TestFrame const src = ramp(FRAME_I420, {16, 16});
    std::vector<Frame> results(8);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([&, i] {
            CvBackendBase backend;
            for (int method = 0; method < 3; ++method) {
                backend.setIntProperty(PropertyResizeMethod, method);
                results[i].reuse(FRAME_BGR24, {9, 7}, DeviceContext(), 0);
                backend.convert(src.frame(), results[i], emptyRoi());
            }
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
