// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the convolutional scaler keeps from one frame for the next, and after a failure.
#include <gtest/gtest.h>

#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_convolutional_reuse {

namespace {

constexpr ScalerPrecision precisions[] = {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S};
constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;

constexpr char badPrecision[] = "Parameter 'precision' is incorrect.";
constexpr char badSide[] =
    "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.";

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

TEST(ScalerConvolutionalReuse, RefusesOtherPrecisions) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ProbeProducer producer(src.frame());
    for (unsigned const value : {0U, 7U, 9U, 12U, 15U, 17U, 32U}) {
        auto const precision = static_cast<ScalerPrecision>(value);
        BoxKernel kernel;
        ScalerConvolutional scaler;
        scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
        EXPECT_TRUE(scaler.initialized());
        expectException(StatusInvalidParameter, badPrecision, [&] {
            scaler.reuse(kernel, src.frame(), {2, 2}, precision);
        });
        expectUninitialized(scaler);
        expectException(StatusInvalidParameter, badPrecision, [&] {
            scaler.reuse(kernel, producer, {2, 2}, precision);
        });
        expectUninitialized(scaler);
        scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{10, 12}, {50, 52}}));
    }
}

// What is checked before the precision leaves everything as it was.
TEST(ScalerConvolutionalReuse, EarlyRefusalsChangeNothing) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
    EXPECT_ANY_THROW(scaler.reuse(kernel, Frame(), {2, 2}, bits16));
    EXPECT_ANY_THROW(scaler.reuse(kernel, src.frame(), {0, 2}, bits16));
    EXPECT_TRUE(scaler.initialized());
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{10, 12}, {50, 52}}));
}

// The object knows its precision by then, but has no rows.
TEST(ScalerConvolutionalReuse, AFailedPassLeavesItWithoutRows) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    for (Size const size : {Size{5, 2}, Size{2, 5}}) {
        BoxKernel kernel;
        ScalerConvolutional scaler;
        expectException(StatusOutOfRange, badSide,
                        [&] { scaler.reuse(kernel, src.frame(), size, bits16); });
        RowData row{};
        EXPECT_FALSE(scaler.initialized());
        EXPECT_NO_THROW(scaler.layout());
        EXPECT_FALSE(scaler.next());
        expectException(StatusNotInitialized, "The scaler is not initialized.",
                        [&] { scaler.produce(row); });
        scaler.reuse(kernel, src.frame(), {2, 2}, bits16);
        EXPECT_TRUE(scaler.initialized());
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{10, 12}, {50, 52}}));
    }
}

TEST(ScalerConvolutionalReuse, PrecisionsHaveTheirOwnPasses) {
    TestFrame const src = grayPicture({{255, 0, 0}});
    TestFrame const other = grayPicture({{0, 0, 0, 0}});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {1, 1}, bits16);
    scaler.reuse(kernel, src.frame(), {1, 1}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{83}}));
    scaler.reuse(kernel, src.frame(), {1, 1}, bits16);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{84}}));
    EXPECT_ANY_THROW(scaler.reuse(kernel, other.frame(), {9, 1}, bits16));
    scaler.reuse(kernel, src.frame(), {1, 1}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{83}}));
}

// The second pass takes 15 from rows 0 and 1 twice; a fresh object doesn't.
TEST(ScalerConvolutionalReuse, ASecondPassLosesItsFirstStep) {
    TestFrame const src = grayPicture({{10}, {20}, {30}, {40}, {50}, {60}});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {1, 3}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{15}, {35}, {55}}));
    scaler.reuse(kernel, src.frame(), {1, 3}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{15}, {15}, {35}}));
}

// Four columns to two, then six; two to one, then four to two.
TEST(ScalerConvolutionalReuse, AnotherWidthAloneKeepsTheLayout) {
    TestFrame const src = grayPicture({{2, 4, 6, 8}, {2, 4, 6, 8}});
    TestFrame const wide = grayPicture({{1, 3, 5, 7, 9, 9}, {1, 3, 5, 7, 9, 9}});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{3, 7}, {3, 7}}));
    scaler.reuse(kernel, wide.frame(), {2, 2}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler))[0], (Bytes{2, 6}));
    scaler.reuse(kernel, wide.frame(), {3, 2}, bits8);
    EXPECT_EQ(scaler.layout().size, (Size{2, 2}));
    EXPECT_EQ(rowsOf(pump(scaler))[0], (Bytes{2, 6}));
    scaler.reuse(kernel, wide.frame(), {3, 1}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{2, 6, 9}}));
}

// Another height at the same width isn't seen: rows below the old one don't count, and for those
// that aren't there the last one comes again.
TEST(ScalerConvolutionalReuse, AnotherHeightAloneIsNotSeen) {
    TestFrame const src = grayPicture({{10}, {20}, {30}, {40}});
    TestFrame const high = grayPicture({{1}, {3}, {5}, {7}, {9}, {11}, {13}, {15}});
    TestFrame const low = grayPicture({{50}, {60}});
    for (TestFrame const* const other : {&high, &low}) {
        BoxKernel kernel;
        ScalerConvolutional scaler;
        scaler.reuse(kernel, src.frame(), {1, 2}, bits8);
        scaler.reuse(kernel, other->frame(), {1, 2}, bits8);
        EXPECT_EQ(rowsOf(pump(scaler)), other == &high ? (Rows{{2}, {6}}) : (Rows{{55}, {60}}));
    }
}

// Also where it was the height that failed: only another width, format or filter helps.
TEST(ScalerConvolutionalReuse, AHeightThatFailedIsKept) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer high = ClaimingProducer::ofSize({4, 8193});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    EXPECT_ANY_THROW(scaler.reuse(kernel, high, {2, 2}, bits8));
    expectException(StatusOutOfRange,
                    "Failure in ScaleData::reuse(...), parameter 'src_size' is out of range.", [&] {
                        scaler.reuse(kernel, src.frame(), {2, 2}, bits8);
                    });
    scaler.reuse(kernel, src.frame(), {1, 2}, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{11}, {51}}));
}

TEST(ScalerConvolutionalReuse, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {8, 8});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    TestFrame dst(FRAME_NV12, {3, 5});
    for (ScalerPrecision const precision : precisions) {
        scaler.reuse(kernel, src.frame(), {3, 5}, precision);
        std::uint64_t const calls = allocationCalls();
        produceFrame(scaler, dst.frame());
        scaler.reuse(kernel, src.frame(), {3, 5}, precision);
        produceFrame(scaler, dst.frame());
        EXPECT_EQ(allocationCalls(), calls);
    }
}

}  // namespace

}  // namespace ox::test::scaler_convolutional_reuse
