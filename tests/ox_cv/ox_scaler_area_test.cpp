// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_area.h"

#include <gtest/gtest.h>

#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_area {

namespace {

constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;

Rows acrossOf(Rows const& rows, int width, ScalerPrecision precision = bits16) {
    return rowsOf(scaled<ScalerAreaX>(grayPicture(rows).frame(), {width, 0}, precision));
}

Rows downOf(Rows const& rows, int height, ScalerPrecision precision = bits16) {
    return rowsOf(scaled<ScalerAreaY>(grayPicture(rows).frame(), {0, height}, precision));
}

// Chroma of a picture whose luma doesn't matter.
Rows chromaDownOf(FrameFormat format, Size size, Rows const& chroma, int height) {
    TestFrame const src = picture(format, size, {{}, chroma});
    return rowsOf(scaled<ScalerAreaY>(src.frame(), {0, height}), 1);
}

TEST(ScalerAreaX, AveragesCells) {
    EXPECT_EQ(acrossOf({{1, 2, 4, 7}}, 2), (Rows{{1, 5}}));      // 1.5 and 5.5
    EXPECT_EQ(acrossOf({{1, 2, 4, 8, 10}}, 1), (Rows{{4}}));     // 25 x 6553 / 32768: 4.9995
    EXPECT_EQ(acrossOf({{0, 100, 200}}, 2), (Rows{{33, 166}}));  // 33.33 and 166.66
}

// Weights 21845 + 10923, then 10922 + 21845: the second sum is one short.
TEST(ScalerAreaX, TruncationIsNotRepaired) {
    EXPECT_EQ(acrossOf({{255, 255, 255}}, 2), (Rows{{255, 254}}));
    EXPECT_EQ(acrossOf({{255, 255, 255}}, 2, bits8), (Rows{{255, 253}}));  // 127 / 128
}

// 1920 to 224: a sample's weight is 3822 in place of 3822.93, so that cell 103, from sample 882 on,
// would begin with less than no weight. It gets none, while the cell before it was promised more:
// 33046 x 255 / 32768 is 257, and the byte keeps its low bits, on purpose.
TEST(ScalerAreaX, SumsThatLeaveAByteKeepItsLowBits) {
    Rows const scaled = acrossOf({Bytes(1920, 255)}, 224);
    EXPECT_EQ(scaled[0][0], 255);
    EXPECT_EQ(scaled[0][89], 0);
    EXPECT_EQ(scaled[0][103], 1);
}

TEST(ScalerAreaX, UpScalingBlendsTwo) {
    EXPECT_EQ(acrossOf({{10, 21}}, 3), (Rows{{10, 15, 21}}));
    EXPECT_EQ(acrossOf({{10, 21}}, 4), (Rows{{10, 10, 21, 21}}));
}

// Weights {2, 32766} leave 2 for a fourth sample; the third one stands in.
TEST(ScalerAreaX, RightEdgeRepeatsTheLastElement) {
    EXPECT_EQ(acrossOf({{200, 200, 200}}, 4), (Rows{{200, 200, 200, 200}}));
}

TEST(ScalerAreaX, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        SCOPED_TRACE(toString(halved.format));
        if (halved.format == FRAME_C1_32U) {
            continue;
        }
        TestFrame const src = ramp(halved.format, {4, 1});
        std::vector<Rows> expected;
        for (Bytes const& row : halved.averaged) {
            expected.push_back({row});
        }
        EXPECT_EQ(planesOf(scaled<ScalerAreaX>(src.frame(), {2, 0})), expected);
    }
}

// Luma's table has weights 32768, 16384, 32768 for cells 0, 0, 1. Chroma of 2 columns becomes 3,
// which is less than luma's 4: it takes the down-scaling form, so that cell 0 adds the rest of
// cell 1 (1.5 times the sample, in a byte), cell 1 has half a weight.
TEST(ScalerAreaX, ChromaBelowLumasWidthTakesTheDownScalingForm) {
    TestFrame const src = picture(FRAME_I420, {4, 1}, {{{0, 30, 60, 90}}, {{200, 90}}, {{100, 7}}});
    EXPECT_EQ(
        planesOf(scaled<ScalerAreaX>(src.frame(), {6, 0})),
        (std::vector<Rows>{{{0, 15, 30, 60, 75, 90}}, {{300 - 256, 100, 90}}, {{150, 50, 7}}}));
    EXPECT_EQ(planesOf(scaled<ScalerAreaX>(src.frame(), {8, 0})),
              (std::vector<Rows>{
                  {{0, 0, 30, 30, 60, 60, 90, 90}}, {{200, 200, 90, 90}}, {{100, 100, 7, 7}}}));
}

// Chroma of 2 columns becomes 3, as many as luma has: it blends, with weights 32768, 21845, 32768.
TEST(ScalerAreaX, ChromaOfLumasWidthTakesTheUpScalingForm) {
    TestFrame const src = picture(FRAME_I420, {3, 1}, {{{0, 30, 60}}, {{200, 90}}, {{30, 30}}});
    EXPECT_EQ(planesOf(scaled<ScalerAreaX>(src.frame(), {5, 0})),
              (std::vector<Rows>{{{0, 10, 30, 50, 60}}, {{200, 163, 90}}, {{30, 30, 30}}}));
}

TEST(ScalerAreaX, WideSamplesDoNotOverflow) {
    TestFrame const src(FRAME_C1_16U, {3, 1}, {1, Guard::AtEnd});
    setSamples<std::uint16_t>(src, 0, {65535, 65535, 65535});
    // 65535 x 32767 / 32768
    EXPECT_EQ(samplesOf<std::uint16_t>(scaled<ScalerAreaX>(src.frame(), {2, 0}), 0),
              (std::vector<std::uint16_t>{65535, 65533}));
}

// The ratio wraps to 7661, which cell 98304's weight, 32768, exceeds: 40429 is left for it, not
// -25107. Sample indices keep 16 bits: columns 32767 and 32768. (32768 + 2 x 40429) / 32768.
TEST(ScalerAreaX, RestWeightsWrapIn16Bits) {
    TestFrame src(FRAME_GRAY8, {171073, 1});
    src.row(0, 0)[32767] = 1;
    src.row(0, 0)[32768] = 2;
    Frame const result = scaled<ScalerAreaX>(src.frame(), {171072, 0});
    EXPECT_EQ(rowOf(result, 0, 0)[98303], 3);
}

TEST(ScalerAreaX, CopiesAnyFormatWhileTheWidthStays) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {4, 3});
        EXPECT_TRUE(samePixels(scaled<ScalerAreaX>(src.frame(), {4, 0}), src.frame()));
    }
}

TEST(ScalerAreaX, StopsAtTheSourcesLastRow) {
    TestFrame const src = grayPicture({{0, 10}, {20, 30}, {40, 50}});
    ScalerAreaX scaler;
    scaler.reuse(src.frame(), 1, bits16);
    EXPECT_TRUE(scaler.next());
    EXPECT_TRUE(scaler.next());
    EXPECT_FALSE(scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(byte, 45);
}

TEST(ScalerAreaY, AveragesCells) {
    EXPECT_EQ(downOf({{1, 0}, {2, 8}, {4, 0}, {7, 1}}, 2), (Rows{{1, 4}, {5, 0}}));
    EXPECT_EQ(downOf({{1}, {2}, {4}, {8}, {10}}, 1), (Rows{{4}}));
    EXPECT_EQ(downOf({{0}, {100}, {200}}, 2), (Rows{{33}, {166}}));
}

TEST(ScalerAreaY, TruncationIsNotRepaired) {
    EXPECT_EQ(downOf({{255}, {255}, {255}}, 2), (Rows{{255}, {254}}));
    EXPECT_EQ(downOf({{255}, {255}, {255}}, 2, bits8), (Rows{{255}, {253}}));
}

// 6 to 2: three times 10922, and 2 of the fourth row, make 32768; 10920 and twice 10922 make 32764.
TEST(ScalerAreaY, SmallRestsCount) {
    EXPECT_EQ(downOf({{255}, {255}, {255}, {255}, {255}, {255}}, 2), (Rows{{255}, {254}}));
    EXPECT_EQ(acrossOf({{255, 255, 255, 255, 255, 255}}, 2), (Rows{{255, 254}}));
}

// Unlike columns, a row that isn't there is left out: 200 x 32766 / 32768.
TEST(ScalerAreaY, LowerEdgeLeavesTheRestOut) {
    EXPECT_EQ(downOf({{200}, {200}, {200}}, 4), (Rows{{200}, {200}, {200}, {199}}));
}

TEST(ScalerAreaY, UpScalingBlendsTwo) {
    EXPECT_EQ(downOf({{10}, {21}}, 3), (Rows{{10}, {15}, {21}}));
    EXPECT_EQ(downOf({{9}}, 3), (Rows{{9}, {9}, {9}}));
}

TEST(ScalerAreaY, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        FrameFormat const format = halved.format;
        if (format == FRAME_UYVY || format == FRAME_C2_8U || format == FRAME_C4_8U ||
            format == FRAME_C1_32U) {
            continue;
        }
        SCOPED_TRACE(toString(format));
        TestFrame const src = ramp(format, {4, 4});
        Frame const result = scaled<ScalerAreaY>(src.frame(), {0, 2});
        for (int plane = 0; plane < result.layout().planeCount; ++plane) {
            Bytes const first = bytesOf(src.frame(), plane, 0);
            Rows expected{plus(first, 10), plus(first, 50)};
            if (result.layout().plane[plane].height == 1) {
                // planar chroma: the mean of its two rows; interleaved: luma rows 0 and 1 share one
                bool const planar = format == FRAME_I420 || format == FRAME_YV12;
                expected = {planar ? plus(first, 10) : first};
            }
            EXPECT_EQ(rowsOf(result, plane), expected);
        }
    }
}

// Two and four channels are summed as one: `width` bytes are written.
TEST(ScalerAreaY, SomeFormatsAreWrittenInPart) {
    struct {
        FrameFormat format;
        int width;
        Bytes row;
    } const cases[] = {
        {FRAME_C2_8U, 3, {10, 11, 12, 99, 99, 99}},
        {FRAME_C4_8U, 2, {10, 11, 99, 99, 99, 99, 99, 99}},
        {FRAME_UYVY, 4, {10, 11, 12, 13, 99, 99, 99, 99}},
        {FRAME_UYVY, 3, {10, 11, 12, 13, 99, 99, 99, 99}},  // the plane is 4 pixels wide
    };
    for (auto const& each : cases) {
        TestFrame const src = ramp(each.format, {each.width, 2});
        TestFrame dst(each.format, {each.width, 1}, {3, Guard::AtEnd});
        fill(dst.frame(), 99);
        ScalerAreaY scaler;
        scaler.reuse(src.frame(), 1, bits16);
        produceFrame(scaler, dst.frame());
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{each.row}))
            << describe(each.format, src.frame().size());
    }
}

// Rows 0 to 7 to 4: weights {0}, {2}, {4}, {6}, each half.
TEST(ScalerAreaY, PlanarAndInterleavedChromaDiffer) {
    EXPECT_EQ(chromaDownOf(FRAME_I420, {1, 8}, {{0}, {40}, {80}, {200}}, 4), (Rows{{20}, {140}}));
    EXPECT_EQ(chromaDownOf(FRAME_YV12, {1, 8}, {{0}, {40}, {80}, {200}}, 4), (Rows{{20}, {140}}));
    Rows const pairs{{0, 1}, {40, 41}, {80, 81}, {200, 201}};
    EXPECT_EQ(chromaDownOf(FRAME_NV12, {1, 8}, pairs, 4), (Rows{{0, 1}, {80, 81}}));
    EXPECT_EQ(chromaDownOf(FRAME_NV21, {1, 8}, pairs, 4), (Rows{{0, 1}, {80, 81}}));
}

// 4 to 6: weights {0, 1}, {0, 1/2}, {1, 1}, {2, 1}, {2, 1/2}, {3, 1}. Planar chroma takes the first
// three; interleaved chroma takes every second one, for luma's rows.
TEST(ScalerAreaY, PlanarAndInterleavedChromaDifferUpwards) {
    EXPECT_EQ(chromaDownOf(FRAME_I420, {1, 4}, {{0}, {100}}, 6), (Rows{{0}, {50}, {100}}));
    EXPECT_EQ(chromaDownOf(FRAME_NV12, {1, 4}, {{0, 9}, {100, 19}}, 6),
              (Rows{{0, 9}, {0, 9}, {100, 19}}));
}

// 5 to 3: weights {0, 19660}, {1, 6552}, {3, 13104}. Chroma row 1 starts at chroma row 1 and its
// rest, 6556, belongs to a chroma row 3 that isn't there: 26212 / 32768 of 200.
TEST(ScalerAreaY, ChromaRestBelowTheBottomIsLeftOut) {
    TestFrame const src =
        picture(FRAME_I420, {1, 5}, {{{200}, {200}, {200}, {200}, {200}}, {{200}, {200}, {200}}});
    Frame const result = scaled<ScalerAreaY>(src.frame(), {0, 3});
    EXPECT_EQ(rowsOf(result, 0), (Rows{{200}, {200}, {199}}));  // 32764 / 32768
    EXPECT_EQ(rowsOf(result, 1), (Rows{{200}, {159}}));
    // luma rows 3 and 4 show chroma rows 1 and 2, with weights 13104 and 19660
    EXPECT_EQ(chromaDownOf(FRAME_NV12, {1, 5}, {{200, 0}, {100, 0}, {200, 0}}, 3),
              (Rows{{200, 0}, {159, 0}}));
}

// 12 to 3: chroma row 1 wants chroma rows 4 to 7 in quarters. Rows 6 and 7 aren't there, and lie in
// the middle of the sum: row 5 stands in, (100 + 3 x 20) / 4.
TEST(ScalerAreaY, ChromaRowsMissingInTheMiddleAreTheLastRow) {
    EXPECT_EQ(chromaDownOf(FRAME_I420, {1, 12}, {{4}, {8}, {12}, {16}, {100}, {20}}, 3),
              (Rows{{10}, {40}}));
    // to one row: (0 + 3 x 100) / 4
    EXPECT_EQ(chromaDownOf(FRAME_I420, {1, 4}, {{0}, {100}}, 1), (Rows{{75}}));
}

TEST(ScalerAreaY, CopiesAnyFormatWhileTheHeightStays) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {3, 4});
        EXPECT_TRUE(samePixels(scaled<ScalerAreaY>(src.frame(), {0, 4}), src.frame()));
    }
}

TEST(ScalerAreaY, StaysAtTheLastRow) {
    TestFrame const src = grayPicture({{1}, {2}, {4}, {7}});
    ScalerAreaY scaler;
    scaler.reuse(src.frame(), 2, bits16);
    EXPECT_TRUE(scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(scaler.next());
        scaler.produce(row);
        EXPECT_EQ(byte, 5);
    }
}

// The window holds the rows that the first cell takes: those up to cell 1's first, and two more if
// it shares one; twice as many where chroma has half the rows.
TEST(ScalerAreaY, WindowHoldsTheRowsOfACell) {
    struct {
        FrameFormat format;
        int height;
        int dst_height;
        int rows;
    } const cases[] = {{FRAME_GRAY8, 8, 4, 2}, {FRAME_GRAY8, 5, 2, 4}, {FRAME_GRAY8, 9, 1, 9},
                       {FRAME_GRAY8, 4, 6, 2}, {FRAME_I420, 8, 4, 4},  {FRAME_NV12, 12, 5, 8},
                       {FRAME_NV12, 8, 9, 4},  {FRAME_NV12, 4, 1, 4},  {FRAME_NV16, 8, 4, 2}};
    for (auto const& each : cases) {
        TestFrame const src = ramp(each.format, {4, each.height});
        ProbeProducer probe(src.frame());
        ScalerAreaY scaler;
        scaler.reuse(probe, each.dst_height, bits16);
        TestFrame dst(each.format, {4, each.dst_height});
        RowData row{{dst.row(0, 0), nullptr, nullptr, nullptr}};
        scaler.produce(row);
        EXPECT_EQ(probe.produceCalls(), each.rows)
            << describe(each.format, src.frame().size()) << " to " << each.dst_height;
    }
}

// The window is limited to a producer's rows too.
TEST(ScalerAreaY, TakesProducersOfFewRows) {
    TestFrame const flat = grayPicture({{70, 80}});
    ProbeProducer probe(flat.frame());
    ScalerAreaY scaler;
    scaler.reuse(probe, 3, bits8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{70, 80}, {70, 80}, {70, 80}}));
    TestFrame const high = grayPicture({{0}, {100}, {200}});
    ProbeProducer rows(high.frame());
    scaler.reuse(rows, 2, bits16);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{33}, {166}}));
    EXPECT_EQ(rows.produced(), (std::vector<int>{0, 1, 2}));
}

}  // namespace

}  // namespace ox::test::scaler_area
