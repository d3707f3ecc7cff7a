// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_float_planes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace ox::test {

namespace {

// Three rows of six floats, with rows 28 bytes apart: 0 to 5, 10 to 15, 20 to 25. The storage may
// start at an odd address.
class Plane {
  public:
    explicit Plane(std::size_t shift = 0) : _bytes(3 * stride + shift, 0xEE), _shift(shift) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 6; ++x) {
                set(x, y, static_cast<float>(10 * y + x));
            }
        }
    }

    static constexpr std::size_t stride = 28;
    unsigned char* data() { return _bytes.data() + _shift; }
    void set(int x, int y, float value) { std::memcpy(at(x, y), &value, sizeof value); }

    std::vector<float> row(int y) {
        std::vector<float> values(6);
        std::memcpy(values.data(), at(0, y), 24);
        return values;
    }

    bool gapsUntouched() {
        for (std::size_t y = 0; y < 3; ++y) {
            for (std::size_t i = 24; i < stride; ++i) {
                if (data()[y * stride + i] != 0xEE) {
                    return false;
                }
            }
        }
        return true;
    }

  private:
    unsigned char* at(int x, int y) {
        return data() + static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * 4;
    }

    std::vector<unsigned char> _bytes;
    std::size_t _shift;
};

using Row = std::vector<float>;

TEST(FloatPlanes, AddToOneChannel) {
    Plane plane;
    addConstant_32f_C1(0.5F, plane.data(), Plane::stride, {1, 1, 3, 2});
    EXPECT_EQ(plane.row(0), (Row{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(plane.row(1), (Row{10, 11.5F, 12.5F, 13.5F, 14, 15}));
    EXPECT_EQ(plane.row(2), (Row{20, 21.5F, 22.5F, 23.5F, 24, 25}));
    EXPECT_TRUE(plane.gapsUntouched());
}

TEST(FloatPlanes, MultiplyOneChannel) {
    Plane plane;
    mulConstant_32f_C1(-2.0F, plane.data(), Plane::stride, {0, 0, 6, 2});
    EXPECT_EQ(plane.row(0), (Row{-0.0F, -2, -4, -6, -8, -10}));
    EXPECT_EQ(plane.row(1), (Row{-20, -22, -24, -26, -28, -30}));
    EXPECT_EQ(plane.row(2), (Row{20, 21, 22, 23, 24, 25}));
    EXPECT_TRUE(plane.gapsUntouched());
}

TEST(FloatPlanes, AddToThreeChannels) {
    Plane plane;
    float const values[3] = {100, 200, 300};
    addConstant_32f_C3(values, plane.data(), Plane::stride, {1, 0, 1, 3});
    EXPECT_EQ(plane.row(0), (Row{0, 1, 2, 103, 204, 305}));
    EXPECT_EQ(plane.row(1), (Row{10, 11, 12, 113, 214, 315}));
    EXPECT_EQ(plane.row(2), (Row{20, 21, 22, 123, 224, 325}));
    EXPECT_TRUE(plane.gapsUntouched());
}

TEST(FloatPlanes, MultiplyThreeChannels) {
    Plane plane;
    float const values[3] = {2, 0, -1};
    mulConstant_32f_C3(values, plane.data(), Plane::stride, {0, 1, 2, 1});
    EXPECT_EQ(plane.row(0), (Row{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(plane.row(1), (Row{20, 0, -12, 26, 0, -15}));
    EXPECT_EQ(plane.row(2), (Row{20, 21, 22, 23, 24, 25}));
    EXPECT_TRUE(plane.gapsUntouched());
}

TEST(FloatPlanes, RoundOncePerElement) {
    Plane plane;
    plane.set(0, 0, 16777216.0F);
    plane.set(1, 0, 0.1F);
    addConstant_32f_C1(1.0F, plane.data(), Plane::stride, {0, 0, 2, 1});
    EXPECT_EQ(plane.row(0)[0], 16777216.0F);
    EXPECT_EQ(plane.row(0)[1], 1.1F);
    plane.set(0, 1, 5592407.0F);
    mulConstant_32f_C1(3.0F, plane.data(), Plane::stride, {0, 1, 1, 1});
    EXPECT_EQ(plane.row(1)[0], 16777220.0F);  // 16777221 is a tie
}

TEST(FloatPlanes, RowsNeedNoAlignment) {
    Plane plane(1);
    float const values[3] = {1, 2, 3};
    addConstant_32f_C1(1.0F, plane.data(), Plane::stride, {0, 0, 6, 1});
    addConstant_32f_C3(values, plane.data(), Plane::stride, {0, 1, 2, 1});
    mulConstant_32f_C3(values, plane.data(), Plane::stride, {0, 2, 2, 1});
    mulConstant_32f_C1(2.0F, plane.data(), Plane::stride, {0, 0, 6, 1});
    EXPECT_EQ(plane.row(0), (Row{2, 4, 6, 8, 10, 12}));
    EXPECT_EQ(plane.row(1), (Row{11, 13, 15, 14, 16, 18}));
    EXPECT_EQ(plane.row(2), (Row{20, 42, 66, 23, 48, 75}));
}

TEST(FloatPlanes, EmptyRectanglesTouchNothing) {
    Plane plane;
    float const values[3] = {1, 2, 3};
    for (Rect const rect : {Rect{}, Rect{1, 1, 0, 2}, Rect{1, 1, 2, 0}, Rect{1, 1, -1, 2}}) {
        addConstant_32f_C1(1.0F, plane.data(), Plane::stride, rect);
        addConstant_32f_C3(values, plane.data(), Plane::stride, rect);
        mulConstant_32f_C1(0.0F, plane.data(), Plane::stride, rect);
        mulConstant_32f_C3(values, plane.data(), Plane::stride, rect);
    }
    EXPECT_EQ(plane.row(1), (Row{10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(plane.row(2), (Row{20, 21, 22, 23, 24, 25}));
}

}  // namespace

}  // namespace ox::test
