// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Among gray and the YUV formats.
#include <gtest/gtest.h>

#include "ox_cv/conversion_rows.h"

namespace ox::test {

namespace {

// Chroma is 0 and not 128: gray comes out greenish.
TEST(GrayToYuv, ChromaIsZero) {
    Bytes const gray{1, 2, 3};
    Bytes const zero2(2, 0);
    Bytes const zero4(4, 0);
    Row const rows[] = {
        {FRAME_I420, {gray, zero2, zero2}},
        {FRAME_YV12, {gray, zero2, zero2}},
        {FRAME_NV12, {gray, zero4}},
        {FRAME_NV21, {gray, zero4}},
        {FRAME_YV16, {gray, zero2, zero2}},
        {FRAME_YUYV, {{1, 0, 2, 0, 3, 0, untouched, 0}}},
        {FRAME_UYVY, {{0, 1, 0, 2, 0, 3, 0, untouched}}},
        {FRAME_NV16, {gray, zero4}},
        {FRAME_YUV444, {{1, 0, 0, 2, 0, 0, 3, 0, 0}}},
        {FRAME_YUV444_PLANAR, {gray, Bytes(3, 0), Bytes(3, 0)}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(GrayToYuv, RowsWithoutChromaHaveLumaOnly) {
    Bytes const gray{1, 2, 3};
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {1, 2}), (Planes{gray, none2, none2}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {2}), (Planes{gray, none2, none2}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_NV21, {1}),
              (Planes{gray, Bytes(4, untouched)}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {0}),
              (Planes{Bytes(3, untouched), {0, 0}, {0, 0}}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_YUYV, {0}), (Planes{Bytes(8, untouched)}));
}

TEST(YuvToGray, TakesTheLuma) {
    for (Row const& source : yuvRows(77)) {
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_GRAY8), (Planes{{100, 16, 235}}))
            << toString(source.format);
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_GRAY8, {0}),
                  (Planes{Bytes(3, untouched)}));
    }
}

TEST(YuvToYuv, EveryPair) {
    for (Row const& source : yuvRows(77)) {
        for (Row const& expected : yuvRows(untouched)) {
            EXPECT_EQ(convert(source.format, source.planes, 3, expected.format), expected.planes)
                << toString(source.format) << " to " << toString(expected.format);
        }
    }
}

TEST(YuvToYuv, ChromaIsTheTruncatedMeanOfAGroup) {
    Planes const upper{{1, 2, 3}, {10, 13, 7}, {255, 254, 1}};
    Planes const lower{{4, 5, 6}, {1, 2, 4}, {255, 253, 2}};
    EXPECT_EQ(convert(FRAME_YUV444_PLANAR, upper, 3, FRAME_NV16),
              (Planes{{1, 2, 3}, {11, 254, 7, 1}}));
    EXPECT_EQ(convert({FRAME_YUV444_PLANAR, upper, lower}, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {6, 5}, {254, 1}}));
    EXPECT_EQ(convert(FRAME_YUV444_PLANAR, upper, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {11, 7}, {254, 1}}));
}

TEST(YuvToYuv, PairsOfTwoRows) {
    Planes const upper{{1, 2, 3}, {100, 102}, {10, 20}};  // V, U
    Planes const lower{{4, 5, 6}, {103, 105}, {13, 21}};
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 3, FRAME_NV12),
              (Planes{{1, 2, 3}, {11, 101, 20, 103}}));
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 3, FRAME_NV21),
              (Planes{{1, 2, 3}, {101, 11, 103, 20}}));
}

TEST(YuvToYuv, FullHeightDestinationsReadOneRow) {
    Planes const upper{{1, 2}, {100}, {10}};
    Planes const lower{{4, 5}, {103}, {13}};
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 2, FRAME_NV16), (Planes{{1, 2}, {10, 100}}));
}

TEST(YuvToYuv, SubsampledChromaIsRepeated) {
    EXPECT_EQ(convert(FRAME_NV12, {{1, 2, 3}, {10, 20, 11, 21}}, 3, FRAME_YUV444),
              (Planes{{1, 10, 20, 2, 10, 20, 3, 11, 21}}));
}

TEST(YuvToYuv, ALoneColumnCountsItsOwnSamples) {
    // Both rows of a 4:2:0 pair show the same chroma; the last group holds two samples, not four.
    Planes const row{{1, 2, 3}, {10, 20, 11, 21}};
    EXPECT_EQ(convert({FRAME_NV12, row, row}, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {10, 11}, {20, 21}}));
}

TEST(YuvToYuv, RowsWithoutChromaHaveLumaOnly) {
    for (Row const& source : yuvRows(77)) {
        for (Row const& target : yuvRows(untouched)) {
            if (target.planes.size() == 1) {
                continue;
            }
            Planes const got = convert(source.format, source.planes, 3, target.format, {1});
            EXPECT_EQ(got[0], (Bytes{100, 16, 235}));
            for (std::size_t plane = 1; plane < got.size(); ++plane) {
                EXPECT_EQ(got[plane], Bytes(got[plane].size(), untouched));
            }
            Planes const chroma = convert(source.format, source.planes, 3, target.format, {0});
            EXPECT_EQ(chroma[0], Bytes(3, untouched));
            EXPECT_EQ(chroma[1], target.planes[1]);
        }
    }
}

}  // namespace

}  // namespace ox::test
