// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// From the YUV formats to BGR24.
#include <gtest/gtest.h>

#include "ox_cv/conversion_rows.h"

namespace ox::test {

namespace {

TEST(YuvToBgr, EveryFormat) {
    for (Row const& source : yuvRows(77)) {
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_BGR24),
                  (Planes{{20, 54, 212, 0, 0, 114, 254, 254, 254}}))
            << toString(source.format);
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_BGR24, {0}),
                  (Planes{Bytes(9, untouched)}));
    }
}

// 219 x 297 is 254 x 256 and some: there is no exact white.
TEST(YuvToBgr, BlackAndWhite) {
    EXPECT_EQ(convert(FRAME_I420, {{16, 235}, {128}, {128}}, 2, FRAME_BGR24),
              (Planes{{0, 0, 0, 254, 254, 254}}));
}

TEST(YuvToBgr, Limits) {
    auto const bgr = [](int y, int u, int v) {
        return convert(FRAME_YUV444, {{y, u, v}}, 1, FRAME_BGR24)[0];
    };
    EXPECT_EQ(bgr(16, 128, 128), (Bytes{0, 0, 0}));
    EXPECT_EQ(bgr(15, 128, 128), (Bytes{0, 0, 0}));
    EXPECT_EQ(bgr(17, 128, 128), (Bytes{1, 1, 1}));
    EXPECT_EQ(bgr(235, 128, 128), (Bytes{254, 254, 254}));
    EXPECT_EQ(bgr(236, 128, 128), (Bytes{255, 255, 255}));
    EXPECT_EQ(bgr(237, 128, 128), (Bytes{255, 255, 255}));
    EXPECT_EQ(bgr(255, 255, 255), (Bytes{255, 124, 255}));
    EXPECT_EQ(bgr(0, 0, 0), (Bytes{0, 134, 0}));
}

}  // namespace

}  // namespace ox::test
