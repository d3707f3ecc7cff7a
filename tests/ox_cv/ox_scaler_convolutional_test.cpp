// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_convolutional.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ox_cv/scaler_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_convolutional {

namespace {

constexpr ScalerPrecision precisions[] = {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S};
constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;
constexpr auto unknown = static_cast<ScalerPrecision>(12);

constexpr char emptySize[] =
    "Failure in ScalerConvolutional::reuse(...) : parameter 'dst_size' is empty.";
constexpr char badSide[] =
    "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.";

Frame boxed(Frame const& src, Size size, ScalerPrecision precision) {
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src, size, precision);
    return pump(scaler);
}

void expectUninitialized(ScalerConvolutional& scaler) {
    RowData row{};
    EXPECT_FALSE(scaler.initialized());
    expectException(StatusNotInitialized, "instance not initialized", [&] { scaler.layout(); });
    expectException(StatusNotInitialized,
                    "Failure in ScalerConvolutional::produce(...) : instance not initialized",
                    [&] { scaler.produce(row); });
    expectException(StatusNotInitialized,
                    "Failure in ScalerConvolutional::next(...) : instance not initialized",
                    [&] { scaler.next(); });
}

// The formats that both passes take.
bool isTaken(FrameFormat format) {
    return format != FRAME_BGR_PLANAR && format != FRAME_YUYV && format != FRAME_UYVY &&
           format != FRAME_C1_16U && format != FRAME_C1_32U;
}

TEST(ScalerConvolutional, StartsUninitialized) {
    ScalerConvolutional scaler;
    expectUninitialized(scaler);
}

// 55.5 and 75.5 across: each pass drops its fraction.
TEST(ScalerConvolutional, BothPassesTruncate) {
    TestFrame const src = grayPicture({{50, 61, 0, 1}, {71, 80, 1, 1}});
    for (ScalerPrecision const precision : precisions) {
        EXPECT_EQ(rowsOf(boxed(src.frame(), {2, 1}, precision)), (Rows{{65, 0}}));
        EXPECT_EQ(rowsOf(boxed(src.frame(), {4, 1}, precision)), (Rows{{60, 70, 0, 1}}));
        EXPECT_EQ(rowsOf(boxed(src.frame(), {2, 2}, precision)), (Rows{{55, 0}, {75, 1}}));
    }
}

// 21, 22 and 21 of 64; 5461, 5462 and 5461 of 16384.
TEST(ScalerConvolutional, WeightsHaveThePrecisionAskedFor) {
    TestFrame const src = grayPicture({{255, 0, 0}});
    EXPECT_EQ(rowsOf(boxed(src.frame(), {1, 1}, bits8)), (Rows{{83}}));   // 83.7
    EXPECT_EQ(rowsOf(boxed(src.frame(), {1, 1}, bits16)), (Rows{{84}}));  // 84.995
}

TEST(ScalerConvolutional, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        if (!isTaken(halved.format)) {
            continue;
        }
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 4});
        for (ScalerPrecision const precision : precisions) {
            Frame const result = boxed(src.frame(), {2, 2}, precision);
            EXPECT_TRUE(samePixels(boxed(src.frame(), {4, 4}, precision), src.frame()));
            for (int plane = 0; plane < result.layout().planeCount; ++plane) {
                Bytes const& first = halved.averaged[static_cast<std::size_t>(plane)];
                bool const half = result.layout().plane[plane].height == 1;  // row 0 twice
                EXPECT_EQ(rowsOf(result, plane),
                          half ? Rows{first} : (Rows{plus(first, 10), plus(first, 50)}));
            }
        }
    }
}

// 9 by 7 to 5 by 4: chroma is 5 by 4 and becomes 3 by 2.
TEST(ScalerConvolutional, TellsTheKernelEachPlanesScale) {
    TestFrame const src = ramp(FRAME_I420, {9, 7});
    for (ScalerPrecision const precision : precisions) {
        TestKernel kernel(2.0F);
        ScalerConvolutional scaler;
        scaler.reuse(kernel, src.frame(), {5, 4}, precision);
        EXPECT_EQ(kernel.scales, (std::vector<float>{9.0F / 5.0F, 5.0F / 3.0F, 5.0F / 3.0F,
                                                     7.0F / 4.0F, 2.0F, 2.0F}));
        std::size_t const values = kernel.distances.size();
        pump(scaler);
        scaler.reuse(kernel, src.frame(), {5, 4}, precision);
        EXPECT_EQ(kernel.scales.size(), 6U);
        EXPECT_EQ(kernel.distances.size(), values);
    }
}

TEST(ScalerConvolutional, OtherFormatsAreFoundOutByProduce) {
    struct {
        FrameFormat format;
        char const* text;
    } const cases[] = {
        {FRAME_BGR_PLANAR, "Failure in ScaleY::produce(...) : unsupported frame format."},
        {FRAME_C1_16U, "Failure in ScaleY::produce(...) : unsupported frame format."},
        {FRAME_C1_32U, "Failure in ScaleY::produce(...) : unsupported frame format."},
        {FRAME_RGB24, "Failure in ScaleY::produce(...) : unsupported frame format."},
        {FRAME_BGR_32F, "Failure in ScaleY::produce(...) : unsupported frame format."},
        {FRAME_YUYV, "Failure in ScaleX::produce(...) : unsupported format."},
        {FRAME_UYVY, "Failure in ScaleX::produce(...) : unsupported format."},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(toString(each.format));
        TestFrame const src = ramp(each.format, {4, 4});
        ProbeProducer probe(src.frame());
        for (ScalerPrecision const precision : precisions) {
            BoxKernel kernel;
            ScalerConvolutional scaler;
            scaler.reuse(kernel, probe, {2, 2}, precision);
            EXPECT_TRUE(scaler.initialized());
            expectException(StatusNotSupported, each.text, [&] { pump(scaler); });
        }
        EXPECT_EQ(probe.produceCalls(), 0);
    }
}

TEST(ScalerConvolutional, RefusesBadArguments) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer none = ClaimingProducer::withoutPlanes();
    BoxKernel kernel;
    ScalerConvolutional scaler;
    // a frame comes before the size, a size before the producer
    expectException(StatusInputNotInitialized,
                    "Failure in ScalerConvolutional::reuse(...) : frame is not initialized.", [&] {
                        scaler.reuse(kernel, Frame(), {0, 0}, unknown);
                    });
    expectException(StatusInputNotInitialized, emptySize, [&] {
        scaler.reuse(kernel, none, {0, 0}, unknown);
    });
    expectException(StatusInputNotInitialized,
                    "Failure in ScalerConvolutional::reuse(...) : layout is not initialized.", [&] {
                        scaler.reuse(kernel, none, {2, 2}, unknown);
                    });
    for (Size const size : {Size{0, 2}, Size{2, 0}, Size{-1, 2}, Size{2, -1}}) {
        expectException(StatusInputNotInitialized, emptySize,
                        [&] { scaler.reuse(kernel, src.frame(), size, unknown); });
    }
    expectUninitialized(scaler);
}

TEST(ScalerConvolutional, RefusesSidesOutOfReach) {
    TestFrame const src = ramp(FRAME_GRAY8, {80, 80});
    for (ScalerPrecision const precision : precisions) {
        for (Size const size : {Size{81, 80}, Size{80, 81}, Size{8192, 1}}) {
            expectException(StatusOutOfRange, badSide,
                            [&] { boxed(src.frame(), size, precision); });
        }
        for (Size const size : {Size{2, 80}, Size{80, 2}}) {
            expectException(StatusOutOfRange,
                            "Failure in ScaleData::reuse(...), scale factor is out of range.",
                            [&] { boxed(src.frame(), size, precision); });
        }
    }
    ClaimingProducer wide = ClaimingProducer::ofSize({8193, 4});
    ClaimingProducer high = ClaimingProducer::ofSize({4, 8193});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    for (ClaimingProducer* const producer : {&wide, &high}) {
        expectException(StatusOutOfRange,
                        "Failure in ScaleData::reuse(...), parameter 'src_size' is out of range.",
                        [&] {
                            scaler.reuse(kernel, *producer, {4, 4}, bits8);
                        });
        EXPECT_FALSE(scaler.initialized());
    }
}

TEST(ScalerConvolutional, LayoutIsThatOfTheTarget) {
    TestFrame const src = ramp(FRAME_I420, {9, 7});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {5, 4}, bits8);
    EXPECT_EQ(scaler.layout().format, FRAME_I420);
    EXPECT_EQ(scaler.layout().size, (Size{5, 4}));
    EXPECT_EQ(scaler.layout().plane[1].width, 3);
    EXPECT_EQ(scaler.layout().plane[1].height, 2);
}

// Rows that no row needs aren't computed.
TEST(ScalerConvolutional, AsksForTheRowsUnderAWindowOnly) {
    TestFrame const src = ramp(FRAME_GRAY8, {2, 12});
    ProbeProducer probe(src.frame());
    TestKernel kernel(1.0F);
    ScalerConvolutional scaler;
    scaler.reuse(kernel, probe, {2, 2}, bits8);  // rows 2, 3 and 8, 9; the first two from the top
    pump(scaler);
    EXPECT_EQ(probe.produced(), (std::vector<int>{0, 1, 8, 9}));
    EXPECT_EQ(probe.skipped(), (std::vector<int>{2, 3, 4, 5, 6, 7}));
}

}  // namespace

}  // namespace ox::test::scaler_convolutional
