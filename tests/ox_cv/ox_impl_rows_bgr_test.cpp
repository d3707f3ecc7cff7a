// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Among the packed, planar and float formats, and to gray and back.
#include <gtest/gtest.h>

#include <limits>

#include "ox_cv/conversion_rows.h"

namespace ox::test {

namespace {

TEST(BgrToGray, WeightsOfItsOwn) {
    Planes const pixels{{10, 20, 30, 200, 100, 50, 0, 0, 255}};
    // 5600 >> 8, 24600 >> 8, 19380 >> 8: not the luma of the YUV formats.
    EXPECT_EQ(convert(FRAME_BGR24, pixels, 3, FRAME_GRAY8), (Planes{{21, 96, 75}}));
    EXPECT_EQ(convert(FRAME_BGR24, {{255, 255, 255, 0, 0, 0}}, 2, FRAME_GRAY8), (Planes{{255, 0}}));
    EXPECT_EQ(convert(FRAME_BGR24, pixels, 3, FRAME_GRAY8, {0}), (Planes{Bytes(3, untouched)}));
}

TEST(GrayToBgr, TheByteThreeTimes) {
    EXPECT_EQ(convert(FRAME_GRAY8, {{0, 77, 255}}, 3, FRAME_BGR24),
              (Planes{{0, 0, 0, 77, 77, 77, 255, 255, 255}}));
    EXPECT_EQ(convert(FRAME_GRAY8, {{0, 77, 255}}, 3, FRAME_BGR24, {0}),
              (Planes{Bytes(9, untouched)}));
}

TEST(PackedAndPlanar, Bytes) {
    Planes const packed{{1, 2, 3, 4, 5, 6}};
    Planes const planes{{1, 4}, {2, 5}, {3, 6}};
    Planes const swapped{{3, 2, 1, 6, 5, 4}};
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_PLANAR), planes);
    EXPECT_EQ(convert(FRAME_BGR_PLANAR, planes, 2, FRAME_BGR24), packed);
    EXPECT_EQ(convert(FRAME_RGB_PLANAR, planes, 2, FRAME_RGB24), packed);
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_RGB24), swapped);
    EXPECT_EQ(convert(FRAME_RGB24, packed, 2, FRAME_BGR24), swapped);
}

TEST(PackedAndPlanar, NullPlanesAreSkipped) {
    Planes const packed{{1, 2, 3, 4, 5, 6}};
    Bytes const none(2, untouched);
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_PLANAR, {0, 2}),
              (Planes{none, {2, 5}, none}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_RGB24, {0}), (Planes{Bytes(6, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR_PLANAR, {{1, 2}, {1, 2}, {1, 2}}, 2, FRAME_BGR24, {0}),
              (Planes{Bytes(6, untouched)}));
}

TEST(Floats, BytesBecomeFloatsOfTheSameValue) {
    Planes const packed{{0, 1, 127, 128, 254, 255}};
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F), floats({0, 1, 127, 128, 254, 255}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F_PLANAR),
              (Planes{floats({0, 128})[0], floats({1, 254})[0], floats({127, 255})[0]}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F_PLANAR, {1}),
              (Planes{floats({0, 128})[0], Bytes(8, untouched), floats({127, 255})[0]}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F, {0}), (Planes{Bytes(24, untouched)}));
}

// Floats wrap at 256 and saturate at 32 bits.
TEST(Floats, TruncateAndKeepTheLowByte) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    struct {
        std::vector<float> values;
        Bytes bytes;
    } const cases[] = {
        {{-1.0F, 255.9F, 256.0F}, {0, 255, 0}},
        {{300.7F, 0.99F, -0.5F}, {44, 0, 0}},
        {{511.5F, 65535.0F, 65536.0F}, {255, 255, 0}},
        {{4294967040.0F, 4294967296.0F, 1e20F}, {0, 255, 255}},
        {{infinity, -infinity, nan}, {255, 0, 0}},
        {{-nan, std::numeric_limits<float>::denorm_min(), -0.0F}, {0, 0, 0}},
        {{2147483648.0F, 2147483904.0F, 16777215.0F}, {0, 0, 255}},
        {{-256.5F, -1e20F, 1.0F}, {0, 0, 1}},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(convert(FRAME_BGR_32F, floats(c.values), 1, FRAME_BGR24), (Planes{c.bytes}));
    }
    EXPECT_EQ(convert(FRAME_BGR_32F, floats({1, 2, 3}), 1, FRAME_BGR24, {0}),
              (Planes{Bytes(3, untouched)}));
}

// Source and destination rows in the middle of nowhere, at odd addresses.
TEST(Floats, RowsNeedNoAlignment) {
    unsigned char bytes[3] = {1, 2, 3};
    unsigned char memory[1 + 12];
    unsigned char back[3]{};
    RowData const source{{bytes, nullptr, nullptr, nullptr}};
    RowData middle{{memory + 1, nullptr, nullptr, nullptr}};
    RowData target{{back, nullptr, nullptr, nullptr}};
    RowData const* const first[2] = {&source, nullptr};
    RowData const* const second[2] = {&middle, nullptr};
    bgr24ToBgr32f(first, middle, 1, nullptr);
    bgr32fToBgr24(second, target, 1, nullptr);
    EXPECT_EQ(Bytes(back, back + 3), (Bytes{1, 2, 3}));
}

}  // namespace

}  // namespace ox::test
