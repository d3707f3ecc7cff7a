// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_area_xy {

namespace {

constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;
constexpr char unsupported[] = "Failure in scaleAreaXY::produce(...) : unsupported frame format.";
constexpr char onlyDown[] =
    "Failure in scaleAreaXY::reuse(...) : the area method is implemented for down-scaling only.";
constexpr char tooLarge[] = "Failure in scaleAreaXY::reuse(...) : size is out of range.";

Rows cellsOf(Rows const& rows, Size size) {
    return rowsOf(scaled<scaleAreaXY>(grayPicture(rows).frame(), size));
}

// A row of samples, scaled in width alone; what a refusal left in the destination too.
template <class Sample>
std::vector<Sample> rowOfCells(FrameFormat format, std::vector<Sample> const& samples, int width) {
    TestFrame const src(format, {static_cast<int>(samples.size()), 1}, {1, Guard::AtEnd});
    setSamples<Sample>(src, 0, samples);
    TestFrame dst(format, {width, 1});
    scaleAreaXY scaler;
    scaler.reuse(src.frame(), {width, 1}, bits16);
    RowData row{{dst.row(0, 0), nullptr, nullptr, nullptr}};
    if (format == FRAME_C1_32U) {
        expectException(StatusNotSupported, unsupported, [&] { scaler.produce(row); });
    } else {
        scaler.produce(row);
    }
    return samplesOf<Sample>(dst.frame(), 0);
}

TEST(ScaleAreaXY, StartsUninitialized) {
    scaleAreaXY scaler;
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().planeCount, 0);
    EXPECT_FALSE(scaler.next());
    RowData row{};
    expectStatus(StatusAssertionFailed, [&] { scaler.produce(row); });
}

TEST(ScaleAreaXY, AveragesCells) {
    EXPECT_EQ(cellsOf({{1, 2, 3, 4}, {5, 6, 7, 9}}, {2, 1}), (Rows{{3, 5}}));  // 3.5 and 5.75
    EXPECT_EQ(cellsOf({{1, 2}, {3, 4}, {5, 6}}, {1, 1}), (Rows{{3}}));
}

// Cells of 1.5: (30 + 60 / 2) / 1.5 and (60 / 2 + 90) / 1.5.
TEST(ScaleAreaXY, CellsOfOneAndAHalf) {
    EXPECT_EQ(cellsOf({{30, 60, 90}}, {2, 1}), (Rows{{40, 80}}));
    EXPECT_EQ(cellsOf({{30}, {60}, {90}}, {1, 2}), (Rows{{40}, {80}}));
    EXPECT_EQ(cellsOf({{30, 60, 90}, {30, 60, 90}, {30, 60, 90}}, {2, 2}),
              (Rows{{40, 80}, {40, 80}}));
}

// 255 + 127 in either cell, over 1.5; 1 + 0.
TEST(ScaleAreaXY, EveryPartIsTruncated) {
    EXPECT_EQ(cellsOf({{255, 255, 255}}, {2, 1}), (Rows{{254, 254}}));
    EXPECT_EQ(cellsOf({{255}, {255}, {255}}, {1, 2}), (Rows{{254}, {254}}));
    EXPECT_EQ(cellsOf({{1, 1, 1}}, {2, 1}), (Rows{{0, 0}}));
}

// Cells of 1.25: 0 to 1.25, 1.25 to 2.5, 2.5 to 3.75 and 3.75 to 5 share sample 1 as 1/4 and 3/4,
// sample 2 as two halves, sample 3 as 3/4 and 1/4.
TEST(ScaleAreaXY, FractionsOnBothSides) {
    EXPECT_EQ(cellsOf({{0, 100, 0, 0, 0}}, {4, 1}), (Rows{{20, 60, 0, 0}}));
    EXPECT_EQ(cellsOf({{0, 0, 100, 0, 0}}, {4, 1}), (Rows{{0, 40, 40, 0}}));
    EXPECT_EQ(cellsOf({{0}, {0}, {0}, {100}, {0}}, {1, 4}), (Rows{{0}, {0}, {60}, {20}}));
}

// Cells of 1.67, the middle one from row 1.67 to 3.33: 29 of 90, over 1.67; the last one has 60.
TEST(ScaleAreaXY, CellsMayTouchTwoRowsMoreThanTheyAreHigh) {
    EXPECT_EQ(cellsOf({{0}, {0}, {0}, {90}, {0}}, {1, 3}), (Rows{{0}, {17}, {36}}));
    EXPECT_EQ(cellsOf({{0, 0, 0, 90, 0}}, {3, 1}), (Rows{{0, 17, 36}}));
}

TEST(ScaleAreaXY, EqualSizesKeepThePixels) {
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_BGR24, FRAME_C1_16U, FRAME_NV12}) {
        TestFrame const src = ramp(format, {5, 4});
        EXPECT_TRUE(samePixels(scaled<scaleAreaXY>(src.frame(), {5, 4}), src.frame()));
    }
}

// Pairs of ramp rows lie 10, 50, 90 and 130 above row 0 in the mean; 4:2:0 chroma has two pairs. A
// fourth channel gets the third one's value.
TEST(ScaleAreaXY, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        if (halved.format == FRAME_C1_32U) {
            continue;
        }
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 8});
        Frame const result = scaled<scaleAreaXY>(src.frame(), {2, 4});
        for (int plane = 0; plane < result.layout().planeCount; ++plane) {
            Bytes first = halved.averaged[static_cast<std::size_t>(plane)];
            if (halved.format == FRAME_C4_8U || halved.format == FRAME_UYVY) {
                first = halved.format == FRAME_UYVY ? Bytes{2, 3, 4, 4}
                                                    : Bytes{2, 3, 4, 4, 10, 11, 12, 12};
            }
            Rows expected;
            for (int y = 0; y < result.layout().plane[plane].height; ++y) {
                expected.push_back(plus(first, 10 + 40 * y));
            }
            EXPECT_EQ(rowsOf(result, plane), expected);
        }
    }
}

// Luma's cells serve chroma too: the last of three, columns 2.4 to 3.6, asks for a column 3. Column
// 2 stands in: (60 + 59) / 1.2.
TEST(ScaleAreaXY, ChromaColumnsEndWithTheRow) {
    TestFrame const src =
        picture(FRAME_I420, {6, 4}, {{}, {{0, 0, 100}, {0, 0, 100}}, {{100, 0, 0}, {100, 0, 0}}});
    Frame const result = scaled<scaleAreaXY>(src.frame(), {5, 4});
    EXPECT_EQ(rowsOf(result, 1), (Rows{{0, 32, 99}, {0, 32, 99}}));
    EXPECT_EQ(rowsOf(result, 2), (Rows{{83, 0, 0}, {83, 0, 0}}));
}

// 9 rows to 3, chroma 5 to 2: chroma row 1 starts at 2.5, by chroma's step, and ends at 5.5, by
// luma's. Its three entries weigh 2.5 in all, and the area is 3.
TEST(ScaleAreaXY, ChromaCellsAreAsHighAsLumas) {
    for (FrameFormat const format : {FRAME_I420, FRAME_YV12, FRAME_NV12, FRAME_NV21}) {
        TestFrame const src(format, {2, 9}, {3, Guard::AtEnd});
        fill(src.frame(), 120);
        Frame const result = scaled<scaleAreaXY>(src.frame(), {2, 3});
        EXPECT_EQ(rowsOf(result, 0), (Rows{{120, 120}, {120, 120}, {120, 120}}));
        EXPECT_EQ(bytesOf(result, 1, 0)[0], 120);
        EXPECT_EQ(bytesOf(result, 1, 1)[0], 100);
    }
}

// 49152 x 65535 has bit 31 set: -16385 after the shift; and 32767 from the other side. 16382
// / 1.25, and -16385 as 4294950911 / 1.25, both in 16 bits.
TEST(ScaleAreaXY, ProductsOf16BitSamplesAreSigned) {
    std::vector<std::uint16_t> const both{0, 65535, 65535, 0, 0};
    EXPECT_EQ(rowOfCells(FRAME_C1_16U, both, 4)[1], 13105);
    std::vector<std::uint16_t> const left{0, 65535, 0, 0, 0};
    EXPECT_EQ(rowOfCells(FRAME_C1_16U, left, 4)[1], 3435960728U % 65536);
}

// 49152 x 65536 has bit 31 set, and counts in full: 49152 / 1.25. Twice that loses a bit: 32768.
TEST(ScaleAreaXY, ProductsOf32BitSamplesAreUnsigned) {
    std::vector<std::uint32_t> const high{0, 0x10000, 0, 0, 0};
    EXPECT_EQ(rowOfCells(FRAME_C1_32U, high, 4)[1], 39321U);
    std::vector<std::uint32_t> const lost{0, 0x20000, 0, 0, 0};
    EXPECT_EQ(rowOfCells(FRAME_C1_32U, lost, 4)[1], 26214U);
}

TEST(ScaleAreaXY, SumsKeep32Bits) {
    std::vector<std::uint32_t> const full{0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_EQ(rowOfCells(FRAME_C1_32U, full, 1)[0], 0x7FFFFFFFU);  // 0x1FFFFFFFE, cut, halved
    EXPECT_EQ(rowOfCells(FRAME_C1_32U, full, 2), full);
}

TEST(ScaleAreaXY, LargestSide) {
    TestFrame const wide(FRAME_GRAY8, {32767, 1});
    TestFrame const high(FRAME_GRAY8, {1, 32767});
    fill(wide.frame(), 200);
    fill(high.frame(), 200);
    EXPECT_EQ(rowsOf(scaled<scaleAreaXY>(wide.frame(), {1, 1})), (Rows{{200}}));
    EXPECT_EQ(rowsOf(scaled<scaleAreaXY>(high.frame(), {1, 1})), (Rows{{200}}));
}

TEST(ScaleAreaXY, KeepsTheProducerContract) {
    for (FrameFormat const format : {FRAME_NV12, FRAME_BGR24, FRAME_YUV444_PLANAR}) {
        TestFrame const src = ramp(format, {7, 9});
        scaleAreaXY scaler;
        auto const rearm = [&]() -> IRowProducer& {
            scaler.reuse(src.frame(), {4, 6}, bits8);
            return scaler;
        };
        Frame const rows = checkProducer({rearm, format, {4, 6}});
        EXPECT_TRUE(samePixels(rows, scaled<scaleAreaXY>(src.frame(), {4, 6}, bits16)));
        src.expectGapsUntouched();
    }
}

TEST(ScaleAreaXY, StaysAtTheLastRow) {
    TestFrame const src = grayPicture({{1}, {3}, {5}, {9}});
    scaleAreaXY scaler;
    scaler.reuse(src.frame(), {1, 2}, bits16);
    EXPECT_TRUE(scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(scaler.next());
        scaler.produce(row);
        EXPECT_EQ(byte, 7);
    }
}

TEST(ScaleAreaXY, ServesFormatsInTurn) {
    scaleAreaXY scaler;
    for (int pass = 0; pass < 2; ++pass) {
        for (Size const size : {Size{2, 4}, Size{2, 4}, Size{3, 6}}) {
            for (FrameFormat const format : {FRAME_GRAY8, FRAME_I420, FRAME_C4_8U, FRAME_NV16}) {
                TestFrame const src = ramp(format, {4, 12});
                scaler.reuse(src.frame(), size, bits16);
                EXPECT_TRUE(samePixels(pump(scaler), scaled<scaleAreaXY>(src.frame(), size)));
            }
        }
    }
}

TEST(ScaleAreaXY, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {4, 8});
    scaleAreaXY scaler;
    Frame dst;
    scaler.reuse(src.frame(), {2, 4}, bits16);
    produceFrame(scaler, dst);
    std::uint64_t const calls = allocationCalls();
    scaler.reuse(src.frame(), {2, 4}, bits16);
    produceFrame(scaler, dst);
    EXPECT_EQ(allocationCalls(), calls);
}

// 23 rows to 12, chroma 12 to 6: chroma's step is 2, so the window stands at row 4 where row 2's
// luma starts at 3.8. The step outlives a change of format, not one of sizes.
TEST(ScaleAreaXY, ChromaStepOutlivesAChangeOfFormat) {
    TestFrame const subsampled = ramp(FRAME_I420, {1, 23});
    TestFrame const gray(FRAME_GRAY8, {1, 23});
    TestFrame const other(FRAME_GRAY8, {1, 24});
    scaleAreaXY scaler;
    scaler.reuse(gray.frame(), {1, 12}, bits16);
    pump(scaler);
    for (TestFrame const* src : {&subsampled, &gray}) {
        scaler.reuse(src->frame(), {1, 12}, bits16);
        EXPECT_TRUE(scaler.next());
        unsigned char bytes[3]{};
        RowData row{{bytes, nullptr, nullptr, nullptr}};
        scaler.produce(row);
        EXPECT_TRUE(scaler.next());
        expectException(StatusAssertionFailed, rowOutsideWindow, [&] { scaler.produce(row); });
    }
    scaler.reuse(other.frame(), {1, 12}, bits16);
    pump(scaler);
    scaler.reuse(gray.frame(), {1, 12}, bits16);
    pump(scaler);
}

// Three times the rows of a cell are in the window of 4:2:0 formats, and it isn't limited.
TEST(ScaleAreaXY, Short420FramesAreRefused) {
    TestFrame const src = ramp(FRAME_NV12, {4, 4});
    scaleAreaXY scaler;
    expectException(StatusOutOfRange, windowSizeOutOfRange, [&] {
        scaler.reuse(src.frame(), {2, 2}, bits16);
    });
    EXPECT_FALSE(scaler.initialized());
}

// Cells of 1.5 rows take three entries: nine rows of the window, more than six, no more than nine.
// Whole cells of two rows take two: six rows.
TEST(ScaleAreaXY, WindowOf420IsThreeTimesACell) {
    TestFrame const six = ramp(FRAME_I420, {4, 6});
    TestFrame const nine = ramp(FRAME_I420, {4, 9});
    scaleAreaXY scaler;
    expectException(StatusOutOfRange, windowSizeOutOfRange, [&] {
        scaler.reuse(six.frame(), {4, 4}, bits16);
    });
    scaler.reuse(nine.frame(), {4, 6}, bits16);
    EXPECT_TRUE(scaler.initialized());
    scaler.reuse(six.frame(), {4, 3}, bits16);
    EXPECT_TRUE(scaler.initialized());
}

// 12 rows to 5: the last chroma cell ends at chroma row 6.4 of 6, window row 12 of 12.
TEST(ScaleAreaXY, ChromaRowsBelowTheWindowAreRefused) {
    TestFrame const src = ramp(FRAME_YV12, {2, 12});
    scaleAreaXY scaler;
    scaler.reuse(src.frame(), {2, 5}, bits16);
    TestFrame dst(FRAME_YV12, {2, 5});
    fill(dst.frame(), 99);
    expectException(StatusAssertionFailed, rowOutsideWindow,
                    [&] { produceFrame(scaler, dst.frame()); });
    EXPECT_EQ(rowsOf(dst.frame(), 1)[2], (Bytes{99}));
}

TEST(ScaleAreaXY, OnlyScalesDown) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    scaleAreaXY scaler;
    for (Size const size : {Size{5, 4}, Size{4, 5}, Size{5, 1}, Size{1, 5}, Size{40000, 1}}) {
        expectException(StatusNotSupported, onlyDown,
                        [&] { scaler.reuse(src.frame(), size, bits16); });
    }
}

TEST(ScaleAreaXY, RefusesLargeSidesAfterTheDirection) {
    TestFrame const wide(FRAME_GRAY8, {32768, 1});
    TestFrame const high(FRAME_GRAY8, {1, 32768});
    scaleAreaXY scaler;
    expectException(StatusOutOfRange, tooLarge, [&] {
        scaler.reuse(wide.frame(), {1, 1}, bits16);
    });
    expectException(StatusOutOfRange, tooLarge, [&] {
        scaler.reuse(high.frame(), {1, 1}, bits16);
    });
    expectException(StatusNotSupported, onlyDown, [&] {
        scaler.reuse(wide.frame(), {1, 2}, bits16);
    });
}

TEST(ScaleAreaXY, RefusesBadArguments) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    auto const bad = static_cast<ScalerPrecision>(12);
    scaleAreaXY scaler;
    expectException(StatusAssertionFailed, "Assertion failed: src_frame.initialized()", [&] {
        scaler.reuse(emptyFrame(), {0, 0}, bad);
    });
    for (Size const size : {Size{0, 9}, Size{9, 0}, Size{-1, 9}}) {
        expectException(StatusAssertionFailed, "Assertion failed: !dst_size.empty()",
                        [&] { scaler.reuse(src.frame(), size, bad); });
    }
    expectException(StatusAssertionFailed,
                    "Assertion failed: precision == OX_SCALER_FIXED_POINT_8S || precision == "
                    "OX_SCALER_FIXED_POINT_16S",
                    [&] {
                        scaler.reuse(src.frame(), {9, 9}, bad);
                    });
    EXPECT_FALSE(scaler.initialized());
}

TEST(ScaleAreaXY, ProduceRefusesOtherFormats) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {4, 4});
        for (Size const size : {Size{4, 4}, Size{2, 2}}) {
            scaleAreaXY scaler;
            scaler.reuse(src.frame(), size, bits16);
            expectException(StatusNotSupported, unsupported, [&] { pump(scaler); });
        }
    }
}

TEST(ScaleAreaXY, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_BGR_PLANAR, {2, 2});
    scaleAreaXY scaler;
    scaler.reuse(src.frame(), {1, 1}, bits16);
    unsigned char g = 99;
    RowData row{{nullptr, &g, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(g, 10);
}

}  // namespace

}  // namespace ox::test::scaler_area_xy
