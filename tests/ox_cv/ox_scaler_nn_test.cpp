// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_nn.h"

#include <gtest/gtest.h>

#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_nn {

namespace {

constexpr char unsupported[] =
    "Failure in ScalerNearestNeighbor::produce(...) : unsupported frame format.";
constexpr char columnOutside[] = "Assertion failed: _src_xs[dst_size.width - 1] < src_size.width";
constexpr char rowOutside[] = "Assertion failed: _src_ys[dst_size.height - 1] < src_size.height";

Frame picked(Frame const& src, Size size) {
    return scaled<ScalerNearestNeighbor>(src, size);
}

TEST(ScalerNearestNeighbor, StartsUninitialized) {
    ScalerNearestNeighbor scaler;
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().planeCount, 0);
    EXPECT_FALSE(scaler.next());
    RowData row{};
    expectStatus(StatusAssertionFailed, [&] { scaler.produce(row); });
}

TEST(ScalerNearestNeighbor, PicksColumnsAndRows) {
    TestFrame const five = grayPicture({{10, 11, 12, 13, 14}, {20, 21, 22, 23, 24}});
    // columns 1 and 3; rows 0, 0, 0, 1, 1
    Rows const expected{{11, 13}, {11, 13}, {11, 13}, {21, 23}, {21, 23}};
    EXPECT_EQ(rowsOf(picked(five.frame(), {2, 5})), expected);
    EXPECT_EQ(rowsOf(picked(five.frame(), {1, 1})), (Rows{{22}}));
}

TEST(ScalerNearestNeighbor, LayoutIsThatOfTheDestination) {
    TestFrame const src = ramp(FRAME_NV12, {5, 4});
    ScalerNearestNeighbor scaler;
    scaler.reuse(src.frame(), {3, 7});
    EXPECT_TRUE(scaler.initialized());
    EXPECT_EQ(scaler.layout().format, FRAME_NV12);
    EXPECT_EQ(scaler.layout().size, (Size{3, 7}));
    EXPECT_EQ(scaler.layout().plane[0].stride, 64);
    EXPECT_EQ(scaler.layout().plane[1].rowBytes, 4U);
}

TEST(ScalerNearestNeighbor, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 1});
        std::vector<Rows> expected;
        for (Bytes const& row : halved.picked) {
            expected.push_back({row});
        }
        EXPECT_EQ(planesOf(picked(src.frame(), {2, 1})), expected);
    }
}

// Source row bytes 0 to 15 hold five whole elements. Elements 1, 3, 5, 7 are wanted: of element 5
// only byte 15 is there, and element 4, bytes 12 to 14, stands in for the rest.
TEST(ScalerNearestNeighbor, MacroPixelElementsEndWithTheRow) {
    TestFrame const src = ramp(FRAME_YUYV, {8, 1});
    EXPECT_EQ(rowsOf(picked(src.frame(), {4, 1})), (Rows{{3, 4, 5, 9, 10, 11, 15, 13}}));
}

// Chroma goes through luma's table, which may lead behind its row: to column 3 of 3, 1 of 1.
TEST(ScalerNearestNeighbor, ChromaColumnsEndWithTheRow) {
    TestFrame const planar =
        picture(FRAME_I420, {6, 2},
                {{{0, 1, 2, 3, 4, 5}, {6, 7, 8, 9, 10, 11}}, {{20, 21, 22}}, {{30, 31, 32}}});
    EXPECT_EQ(planesOf(picked(planar.frame(), {3, 2})),
              (std::vector<Rows>{{{1, 3, 5}, {7, 9, 11}}, {{21, 22}}, {{31, 32}}}));
    TestFrame const pairs = picture(FRAME_NV12, {2, 2}, {{{0, 1}, {2, 3}}, {{20, 30}}});
    EXPECT_EQ(planesOf(picked(pairs.frame(), {1, 2})), (std::vector<Rows>{{{1}, {3}}, {{20, 30}}}));
}

// Luma rows 0, 2, 3, 5: chroma row 1 is that of luma row 3. A scaling of its own would take row 2.
TEST(ScalerNearestNeighbor, ChromaRowsBelongToLumaRows) {
    for (FrameFormat const format : {FRAME_I420, FRAME_YV12, FRAME_NV12, FRAME_NV21}) {
        TestFrame const src = ramp(format, {2, 6});
        Frame const result = picked(src.frame(), {2, 4});
        EXPECT_EQ(rowsOf(result, 0), (Rows{{0, 1}, {40, 41}, {60, 61}, {100, 101}}));
        Bytes const chroma = bytesOf(src.frame(), 1, 0);
        EXPECT_EQ(rowsOf(result, 1), (Rows{chroma, plus(chroma, 20)}));
    }
}

TEST(ScalerNearestNeighbor, EqualSizesPassInEveryFormat) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {5, 3});
        EXPECT_TRUE(samePixels(picked(src.frame(), {5, 3}), src.frame()));
    }
}

TEST(ScalerNearestNeighbor, RowsOfAnyFormatPassWhileTheWidthStays) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {3, 4});
        Frame const result = picked(src.frame(), {3, 2});
        EXPECT_EQ(bytesOf(result, 0, 0), bytesOf(src.frame(), 0, 1));
        EXPECT_EQ(bytesOf(result, 0, 1), bytesOf(src.frame(), 0, 3));
    }
}

TEST(ScalerNearestNeighbor, ProduceRefusesOtherFormats) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {4, 2});
        ScalerNearestNeighbor scaler;
        scaler.reuse(src.frame(), {3, 2});
        EXPECT_EQ(scaler.layout().format, format);
        expectException(StatusNotSupported, unsupported, [&] { pump(scaler); });
    }
    for (FrameFormat const format : unknownFormats()) {
        ClaimingProducer src = ClaimingProducer::ofFormat(format);
        ScalerNearestNeighbor scaler;
        scaler.reuse(src, {3, 2});
        RowData row{};
        expectException(StatusNotSupported, unsupported, [&] { scaler.produce(row); });
    }
}

TEST(ScalerNearestNeighbor, KeepsTheProducerContract) {
    TestFrame const planar = ramp(FRAME_I420, {5, 7});
    TestFrame const pairs = ramp(FRAME_NV16, {5, 7});
    for (TestFrame const* src : {&planar, &pairs}) {
        ScalerNearestNeighbor scaler;
        auto const arm = [&]() -> IRowProducer& {
            scaler.reuse(src->frame(), {8, 5});
            return scaler;
        };
        Frame const rows = checkProducer({arm, src->frame().format(), {8, 5}});
        EXPECT_TRUE(samePixels(rows, picked(src->frame(), {8, 5})));
        src->expectGapsUntouched();
    }
}

TEST(ScalerNearestNeighbor, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_I420, {4, 2});
    ScalerNearestNeighbor scaler;
    scaler.reuse(src.frame(), {2, 2});
    unsigned char v[2] = {99, 99};
    RowData row{{nullptr, nullptr, v, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(v[0], 1);
    EXPECT_EQ(v[1], 99);
}

TEST(ScalerNearestNeighbor, StaysAtTheLastRow) {
    TestFrame const src = grayPicture({{1, 2}, {3, 4}, {5, 6}});
    ScalerNearestNeighbor scaler;
    scaler.reuse(src.frame(), {1, 2});
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    EXPECT_TRUE(scaler.next());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(scaler.next());
        byte = 0;
        scaler.produce(row);
        EXPECT_EQ(byte, 6);  // row 2, column 1
    }
    scaler.reuse(src.frame(), {1, 2});
    scaler.produce(row);
    EXPECT_EQ(byte, 2);
    scaler.reuse(src.frame(), {2, 1});
    EXPECT_FALSE(scaler.next());
}

TEST(ScalerNearestNeighbor, ServesSourcesInTurn) {
    TestFrame const first = grayPicture({{1, 2, 3, 4}, {5, 6, 7, 8}});
    TestFrame const second = grayPicture({{11, 12, 13, 14}, {15, 16, 17, 18}});
    TestFrame const narrow = grayPicture({{21, 22}, {25, 26}});
    TestFrame const coloured = ramp(FRAME_C2_8U, {4, 2});
    ScalerNearestNeighbor scaler;
    for (int pass = 0; pass < 2; ++pass) {
        scaler.reuse(first.frame(), {2, 1});
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{6, 8}}));
        scaler.reuse(second.frame(), {2, 1});
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{16, 18}}));
        scaler.reuse(coloured.frame(), {2, 1});
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{22, 23, 26, 27}}));
        scaler.reuse(narrow.frame(), {2, 1});
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{25, 26}}));
        scaler.reuse(narrow.frame(), {1, 1});
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{26}}));
    }
}

TEST(ScalerNearestNeighbor, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {6, 6});
    ScalerNearestNeighbor scaler;
    Frame dst;
    scaler.reuse(src.frame(), {4, 3});
    produceFrame(scaler, dst);
    std::uint64_t const calls = allocationCalls();
    scaler.reuse(src.frame(), {4, 3});
    produceFrame(scaler, dst);
    EXPECT_EQ(allocationCalls(), calls);
}

TEST(ScalerNearestNeighbor, ScalesARegion) {
    TestFrame src = ramp(FRAME_GRAY8, {6, 5});
    Frame const region = getRegion(src.frame(), {1, 2, 4, 2});
    EXPECT_EQ(rowsOf(picked(region, {2, 2})), (Rows{{42, 44}, {62, 64}}));
}

TEST(ScalerNearestNeighbor, RefusesBadArguments) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer producer = ClaimingProducer::ofSize({4, 4});
    ClaimingProducer flat = ClaimingProducer::ofSize({4, 0});
    ClaimingProducer thin = ClaimingProducer::ofSize({0, 4});
    ScalerNearestNeighbor scaler;
    expectException(StatusAssertionFailed, "Assertion failed: src_frame.initialized()", [&] {
        scaler.reuse(Frame(), {0, 0});
    });
    for (Size const size : {Size{0, 3}, Size{3, 0}, Size{-1, 3}, Size{3, -1}}) {
        expectException(StatusAssertionFailed, "Assertion failed: !dst_size.empty()",
                        [&] { scaler.reuse(src.frame(), size); });
        expectException(StatusAssertionFailed, "Assertion failed: !dst_size.empty()",
                        [&] { scaler.reuse(producer, size); });
    }
    for (ClaimingProducer* const empty : {&flat, &thin}) {
        expectException(StatusAssertionFailed,
                        "Assertion failed: !src_producer.layout().size.empty()", [&] {
                            scaler.reuse(*empty, {0, 0});
                        });
    }
    EXPECT_FALSE(scaler.initialized());
}

TEST(ScalerNearestNeighbor, PassesTheWindowsFailureOn) {
    ClaimingProducer producer = ClaimingProducer::withoutPlanes();
    ScalerNearestNeighbor scaler;
    expectException(StatusInputNotInitialized, "Row producer is not initialized.", [&] {
        scaler.reuse(producer, {2, 2});
    });
    EXPECT_FALSE(scaler.initialized());
}

TEST(ScalerNearestNeighbor, RefusesSidesThatCoordinatesCannotHold) {
    TestFrame const wide(FRAME_GRAY8, {32768, 1});
    TestFrame const high(FRAME_GRAY8, {1, 32768});
    TestFrame const small = grayPicture({{1, 2}});
    ScalerNearestNeighbor scaler;
    scaler.reuse(small.frame(), {1, 1});
    expectException(StatusAssertionFailed, columnOutside, [&] {
        scaler.reuse(wide.frame(), {1, 1});
    });
    expectException(StatusAssertionFailed, rowOutside, [&] { scaler.reuse(high.frame(), {1, 1}); });
    scaler.reuse(small.frame(), {1, 1});
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{2}}));
}

TEST(ScalerNearestNeighbor, RefusesRegionsWithoutPixels) {
    TestFrame src = ramp(FRAME_GRAY8, {4, 4});
    ScalerNearestNeighbor scaler;
    expectException(StatusAssertionFailed, columnOutside, [&] {
        scaler.reuse(getRegion(src.frame(), {1, 1, 0, 2}), {2, 2});
    });
    expectException(StatusAssertionFailed, rowOutside, [&] {
        scaler.reuse(getRegion(src.frame(), {1, 1, 2, 0}), {2, 2});
    });
    EXPECT_FALSE(scaler.initialized());
}

// 65536 << 16 is 0 in 32 bits: every entry is 0, and the last one is less than the width.
TEST(ScalerNearestNeighbor, SomeLargeSidesGoWrongUnnoticed) {
    TestFrame src(FRAME_GRAY8, {65536, 1});
    src.row(0, 0)[0] = 7;
    EXPECT_EQ(rowsOf(picked(src.frame(), {3, 1})), (Rows{{7, 7, 7}}));
}

TEST(ScalerNearestNeighbor, RowsThatAreDroppedAreNotProduced) {
    TestFrame const src = ramp(FRAME_GRAY8, {2, 6});
    ProbeProducer probe(src.frame());
    ScalerNearestNeighbor scaler;
    scaler.reuse(probe, {2, 2});
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{20, 21}, {80, 81}}));
    EXPECT_EQ(probe.produced(), (std::vector<int>{1, 4}));
    EXPECT_EQ(probe.skipped(), (std::vector<int>{0, 2, 3}));
}

// The window counts the rows of all its streams and never skips below that count again.
TEST(ScalerNearestNeighbor, SecondStreamOverAProducerSkipsNothing) {
    TestFrame const src = ramp(FRAME_GRAY8, {2, 6});
    ProbeProducer probe(src.frame());
    ScalerNearestNeighbor scaler;
    scaler.reuse(probe, {2, 2});
    pump(scaler);
    probe.rewind();
    scaler.reuse(probe, {2, 2});
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{0, 1}, {20, 21}}));
}

// Row 1 is taken, and the chroma row that belongs to it was never produced: the window's zeros.
TEST(ScalerNearestNeighbor, ChromaOfSkippedRowsIsZeroOverAProducer) {
    TestFrame const src = ramp(FRAME_NV12, {2, 6});
    ProbeProducer probe(src.frame());
    ScalerNearestNeighbor scaler;
    scaler.reuse(probe, {2, 2});
    EXPECT_EQ(planesOf(pump(scaler)), (std::vector<Rows>{{{20, 21}, {80, 81}}, {{0, 0}}}));
}

}  // namespace

}  // namespace ox::test::scaler_nn
