// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// From BGR24 to the YUV formats, on numbers worked out by hand.
#include <gtest/gtest.h>

#include "ox_cv/conversion_rows.h"

namespace ox::test {

namespace {

// Two rows of three pixels. Their terms:
//
//     B, G, R          Y    CU      CV
//     10, 20, 30       34   31268   34068
//     200, 100, 50     98   45868   25368
//     0, 0, 255        80   23078   61328
//
//     255, 0, 0        40   61328   28178
//     0, 255, 0       144   13898    8798
//     1, 2, 3          17   32618   32898
Planes const upperBgr{{10, 20, 30, 200, 100, 50, 0, 0, 255}};
Planes const lowerBgr{{255, 0, 0, 0, 255, 0, 1, 2, 3}};
Bytes const upperLuma{34, 98, 80};

TEST(BgrToYuv, OneRow) {
    Row const rows[] = {
        {FRAME_I420, {upperLuma, {150, 90}, {116, 239}}},
        {FRAME_YV12, {upperLuma, {116, 239}, {150, 90}}},
        {FRAME_NV12, {upperLuma, {150, 116, 90, 239}}},
        {FRAME_NV21, {upperLuma, {116, 150, 239, 90}}},
        {FRAME_YV16, {upperLuma, {116, 239}, {150, 90}}},
        {FRAME_YUYV, {{34, 150, 98, 116, 80, 90, 0, 239}}},
        {FRAME_UYVY, {{150, 34, 116, 98, 90, 80, 239, 0}}},
        {FRAME_NV16, {upperLuma, {150, 116, 90, 239}}},
        {FRAME_YUV444, {{34, 122, 133, 98, 179, 99, 80, 90, 239}}},
        {FRAME_YUV444_PLANAR, {upperLuma, {122, 179, 90}, {133, 99, 239}}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(BgrToYuv, ChromaOfTwoRows) {
    Row const rows[] = {
        {FRAME_I420, {upperLuma, {148, 108}, {94, 184}}},
        {FRAME_YV12, {upperLuma, {94, 184}, {148, 108}}},
        {FRAME_NV12, {upperLuma, {148, 94, 108, 184}}},
        {FRAME_NV21, {upperLuma, {94, 148, 184, 108}}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(BgrToYuv, ASinglePixel) {
    Planes const pixel{{10, 20, 30}};
    Planes const below{{255, 0, 0}};
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_YUYV), (Planes{{34, 122, 0, 133}}));
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_UYVY), (Planes{{122, 34, 133, 0}}));
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_I420), (Planes{{34}, {122}, {133}}));
    // (31268 + 61328) >> 9, (34068 + 28178) >> 9
    EXPECT_EQ(convert({FRAME_BGR24, pixel, below}, 1, FRAME_NV12), (Planes{{34}, {180, 121}}));
}

TEST(BgrToYuv, WhiteAndBlack) {
    Planes const white{Bytes(6, 255)};
    Planes const black{Bytes(6, 0)};
    EXPECT_EQ(convert({FRAME_BGR24, white, white}, 2, FRAME_I420),
              (Planes{{234, 234}, {128}, {128}}));
    EXPECT_EQ(convert({FRAME_BGR24, black, black}, 2, FRAME_I420),
              (Planes{{16, 16}, {128}, {128}}));
    EXPECT_EQ(convert(FRAME_BGR24, white, 2, FRAME_YUV444),
              (Planes{{234, 128, 128, 234, 128, 128}}));
}

TEST(BgrToYuv, TheLongestSumsStayPositive) {
    // U of blue and V of red are as large as they get, U of yellow and V of cyan as small.
    Planes const blue{{255, 0, 0, 255, 0, 0}};
    Planes const yellow{{0, 255, 255, 0, 255, 255}};
    Planes const cyan{{255, 255, 0, 255, 255, 0}};
    EXPECT_EQ(convert({FRAME_BGR24, blue, blue}, 2, FRAME_I420), (Planes{{40, 40}, {239}, {110}}));
    EXPECT_EQ(convert({FRAME_BGR24, yellow, yellow}, 2, FRAME_I420)[1], Bytes{16});
    EXPECT_EQ(convert({FRAME_BGR24, cyan, cyan}, 2, FRAME_I420)[2], Bytes{16});
}

TEST(BgrToYuv, RowsWithoutChromaHaveLumaOnly) {
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {1, 2}),
              (Planes{upperLuma, none2, none2}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_NV12, {1}),
              (Planes{upperLuma, Bytes(4, untouched)}));
    // One chroma plane alone isn't written either.
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {1}),
              (Planes{upperLuma, none2, none2}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_YV12, {2}),
              (Planes{upperLuma, none2, none2}));
}

TEST(BgrToYuv, NullPlanesAreSkipped) {
    Bytes const none(3, untouched);
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {0}),
              (Planes{none, {148, 108}, {94, 184}}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_NV12, {0}),
              (Planes{none, {148, 94, 108, 184}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YV16, {0, 1}),
              (Planes{none, none2, {150, 90}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YV16, {2}),
              (Planes{upperLuma, {116, 239}, none2}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_NV16, {1}),
              (Planes{upperLuma, Bytes(4, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUV444_PLANAR, {1}),
              (Planes{upperLuma, none, {133, 99, 239}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUYV, {0}), (Planes{Bytes(8, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUV444, {0}), (Planes{Bytes(9, untouched)}));
}

}  // namespace

}  // namespace ox::test
