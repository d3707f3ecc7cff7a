// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the public headers warn of: how far sides may shrink, what is left unwritten, what may share
// memory, how a filter is known again.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;

TestFrame whiteLine(Size size) {
    TestFrame frame(FRAME_GRAY8, size, {0, Guard::AtEnd});
    fill(frame.frame(), 255);
    return frame;
}

// 2048 / ratio, cut off: 2048 x 1, 2047 x 1, 1025 x 1 and 1000 x 2 of 2048, and 2049 x 0.
TEST(StatedLimits, AreaOfTheVectorBackendIsBlackBeyond2048) {
    struct {
        int ratio;
        int white;
    } const cases[] = {{512, 255}, {1000, 249}, {1025, 128}, {2047, 255}, {2048, 255}, {2049, 0}};
    CvBackendSimd backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeArea);
    for (auto const& [ratio, white] : cases) {
        TestFrame wide_dst(FRAME_GRAY8, {1, 2});
        backend.resize(whiteLine({ratio, 2}).frame(), wide_dst.frame(), {}, {});
        EXPECT_TRUE(isFilledWith(wide_dst.frame(), static_cast<unsigned char>(white))) << ratio;
        TestFrame high_dst(FRAME_GRAY8, {2, 1});
        backend.resize(whiteLine({2, ratio}).frame(), high_dst.frame(), {}, {});
        EXPECT_TRUE(isFilledWith(high_dst.frame(), static_cast<unsigned char>(white))) << ratio;
    }
}

// 2^15 / ratio and 2^7 / ratio, cut off.
TEST(StatedLimits, AreaScalersAreBlackBeyondTheirPrecision) {
    struct {
        ScalerPrecision precision;
        int ratio;
        int white;
    } const cases[] = {{bits16, 1000, 249}, {bits16, 32768, 255}, {bits16, 32769, 0},
                       {bits16, 65535, 0},  {bits8, 64, 255},     {bits8, 65, 129},
                       {bits8, 128, 255},   {bits8, 129, 0}};
    for (auto const& [precision, ratio, white] : cases) {
        SCOPED_TRACE(ratio);
        Frame const column = scaled<ScalerAreaX>(whiteLine({ratio, 1}).frame(), {1, 1}, precision);
        EXPECT_EQ(bytesOf(column, 0, 0), Bytes{white});
        Frame const row = scaled<ScalerAreaY>(whiteLine({1, ratio}).frame(), {1, 1}, precision);
        EXPECT_EQ(bytesOf(row, 0, 0), Bytes{white});
    }
}

// The end of the last cell is 65536, which 16 bits take for 0: half of its two samples is lost.
TEST(StatedLimits, AreaTablesWrapBeyond65535) {
    Frame const row = scaled<ScalerAreaX>(whiteLine({65534, 1}).frame(), {32767, 1});
    EXPECT_TRUE(isFilledWith(row, 255));
    Frame const wrapped_row = scaled<ScalerAreaX>(whiteLine({65536, 1}).frame(), {32768, 1});
    EXPECT_EQ(*(wrapped_row.planeData(0) + 32766), 255);
    EXPECT_EQ(*(wrapped_row.planeData(0) + 32767), 127);
    Frame const column = scaled<ScalerAreaY>(whiteLine({1, 65536}).frame(), {1, 32768});
    EXPECT_EQ(bytesOf(column, 0, 32766), Bytes{255});
    EXPECT_EQ(bytesOf(column, 0, 32767), Bytes{127});
    // enlarged, the weights of 65535 columns hold, and those of 65536 are none
    EXPECT_TRUE(isFilledWith(scaled<ScalerAreaX>(whiteLine({13107, 1}).frame(), {65535, 1}), 255));
    EXPECT_FALSE(isFilledWith(scaled<ScalerAreaX>(whiteLine({16384, 1}).frame(), {65536, 1}), 255));
    // a single cell ends where it begins, at row 0, and so has no rows
    ScalerAreaY scaler;
    TestFrame const high = whiteLine({1, 65536});
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { scaler.reuse(high.frame(), 1, bits16); });
}

// What a backend leaves of a white picture of that size, without and with a region.
void checkColumns(ICvBackend& backend, Size size, int rows_written, int white) {
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
    Frame src;
    src.reuse(FRAME_NV12, size, DeviceContext(), 0);  // which gives both planes one stride
    fill(src, 128);
    auto const width = static_cast<std::size_t>(size.width);
    fill(src, 0, Rows(static_cast<std::size_t>(size.height), Bytes(width, 235)));
    TestFrame dst(FRAME_BGR24, size, {3, Guard::AtEnd});
    fill(dst.frame(), 77);
    backend.colorCvt(src, dst.frame(), emptyRoi());
    Bytes row(width / 8 * 24, 255);
    row.resize(3 * width, 77);
    for (int y = 0; y < size.height; ++y) {
        EXPECT_EQ(bytesOf(dst.frame(), 0, y), y < rows_written ? row : Bytes(row.size(), 77));
    }
    backend.colorCvt(src, dst.frame(), {0, 0, size.width, size.height});
    EXPECT_TRUE(isFilledWith(dst.frame(), static_cast<unsigned char>(white)));
}

TEST(StatedLimits, ARegionConvertsEveryColumnOfNv12) {
    CvBackendBase pipeline;
    CvBackendSimd vectors;
    for (int width = 1; width <= 41; ++width) {
        checkColumns(pipeline, {width, 4}, 4, 254);
        checkColumns(pipeline, {width, 3}, 2, 254);
        if (width % 2 == 0) {
            checkColumns(vectors, {width, 4}, 4, 255);
        }
    }
}

// The scaled picture is kept apart.
TEST(StatedLimits, ConvertMayShareMemoryWhereSizeAndFormatChange) {
    CvBackendBase pipeline;
    CvBackendSimd vectors;
    ICvBackend* const backends[] = {&pipeline, &vectors};
    for (ICvBackend* const backend : backends) {
        TestFrame const src = ramp(FRAME_BGR24, {24, 9});
        TestFrame expected(FRAME_GRAY8, {32, 11});
        backend->convert(src.frame(), expected.frame(), emptyRoi());
        for (std::size_t const offset : {0U, 5U, 300U}) {
            std::vector<unsigned char> memory(24 * 9 * 3 + 400);
            unsigned char* const start = memory.data();
            unsigned char* const other = start + offset;
            Frame const shared = Frame::wrap(FrameLayout(FRAME_BGR24, {24, 9}, 1), &start);
            Frame dst = Frame::wrap(FrameLayout(FRAME_GRAY8, {32, 11}, 1), &other);
            Frame target = shared;
            src.frame().copyTo(target);
            backend->convert(shared, dst, emptyRoi());
            EXPECT_TRUE(samePixels(dst, expected.frame())) << offset;
        }
    }
}

// The row that comes behind the last one, asked for three times.
void expectBehindTheEnd(IRowProducer& producer, Bytes const& expected) {
    for (int again = 0; again < 3; ++again) {
        std::vector<unsigned char> bytes(expected.size(), 99);
        RowData row{{bytes.data(), nullptr, nullptr, nullptr}};
        producer.produce(row);
        EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), expected);
        EXPECT_FALSE(producer.next());
    }
}

TEST(StatedLimits, ScalersRepeatTheLastRow) {
    TestFrame const src = ramp(FRAME_GRAY8, {6, 4});
    for (ScaleMethod const method : {OX_SCALE_NEAREST, OX_SCALE_BILINEAR, OX_SCALE_AREA}) {
        for (Size const size : {Size{3, 4}, Size{6, 2}, Size{3, 2}, Size{9, 7}, Size{6, 4}}) {
            Scaler scaler;
            scaler.reuse(src.frame(), size, method);
            Bytes const last = rowsOf(pump(scaler)).back();
            bool const copies = size == src.frame().size();
            expectBehindTheEnd(scaler, copies ? Bytes(last.size(), 99) : last);
        }
    }
    BoxKernel box;
    ScalerConvolutional filter;
    filter.reuse(box, src.frame(), {3, 2}, bits16);
    Bytes const last = rowsOf(pump(filter)).back();
    expectBehindTheEnd(filter, last);
}

// Windows of 62, 60 and 60 source pixels; of 63.3, 64.9 and 66, of which some touch too many.
TEST(StatedLimits, ClassicFiltersOfEightBits) {
    TestFrame const src = ramp(FRAME_GRAY8, {3100, 100});
    TriangleKernel triangle;
    CatmullRomKernel cubic;
    Lanczos3Kernel lanczos;
    struct {
        IKernel& kernel;
        Size fits;
        Size is_too_small;
    } const cases[] = {{triangle, {100, 100}, {98, 100}},
                       {cubic, {207, 100}, {191, 100}},
                       {lanczos, {310, 100}, {282, 100}}};
    for (auto const& each : cases) {
        ScalerConvolutional scaler;
        EXPECT_NO_THROW(scaler.reuse(each.kernel, src.frame(), each.fits, bits8));
        expectStatus(StatusCapacityExceeded,
                     [&] { scaler.reuse(each.kernel, src.frame(), each.is_too_small, bits8); });
    }
}

// 64 taps of 8 bits: windows of 63 fit wherever they begin, those of 64 only at whole samples.
TEST(StatedLimits, AperturesOfOneLessThanTheTapsFit) {
    TestFrame const src = ramp(FRAME_GRAY8, {90, 90});
    TestKernel narrow(63.0F);
    TestKernel wide(64.0F);
    ScalerConvolutional scaler;
    EXPECT_NO_THROW(scaler.reuse(narrow, src.frame(), {40, 40}, bits8));
    EXPECT_NO_THROW(scaler.reuse(wide, src.frame(), {45, 45}, bits8));
    expectStatus(StatusCapacityExceeded, [&] { scaler.reuse(wide, src.frame(), {40, 40}, bits8); });
    TestFrame const low = ramp(FRAME_GRAY8, {90, 62});
    expectException(StatusOutOfRange, windowSizeOutOfRange, [&] {
        scaler.reuse(narrow, low.frame(), {45, 31}, bits8);
    });
}

// Two taps of 17 values in two rows of weights, the second one for the border; in both axes.
TEST(StatedLimits, FiltersAreAskedSeventeenTimesATap) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    int asked = 0;
    TestKernel kernel(2.0F, [&](float) {
        ++asked;
        return 1.0F;
    });
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
    EXPECT_EQ(asked, 2 * 2 * 2 * 17);
}

// The filter that takes the left half stands where the one of both halves stood.
TEST(StatedLimits, AFilterIsKnownByItsAddress) {
    TestFrame const src = grayPicture(Rows(2, {10, 20, 30, 40}));
    bool halves = false;
    TestKernel kernel(2.0F, [&](float x) { return halves && x > 0.0F ? 0.0F : 1.0F; });
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {2, 1}, bits16);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{15, 35}}));
    halves = true;
    scaler.reuse(kernel, src.frame(), {2, 1}, bits16);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{15, 35}}));
    ScalerConvolutional other;
    other.reuse(kernel, src.frame(), {2, 1}, bits16);
    EXPECT_NE(rowsOf(pump(other)), (Rows{{15, 35}}));  // as it should be
}

TEST(StatedLimits, NanIsNoSingularMatrix) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_BGR24, {9, 5});
    for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear}) {
        backend.setIntProperty(PropertyWarpMethod, static_cast<int>(method));
        for (int i = 0; i < 12; ++i) {
            float matrix[2][3] = {{1, 0, 0}, {0, 1, 0}};
            matrix[i / 3 % 2][i % 3] = nan;
            TestFrame dst(FRAME_BGR24, {12, 7}, {3, Guard::AtEnd});
            EXPECT_NO_THROW(
                backend.warpAffine(src.frame(), dst.frame(), matrix, emptyRoi(), i >= 6));
            dst.expectGapsUntouched();
        }
    }
}

}  // namespace

}  // namespace ox::test
