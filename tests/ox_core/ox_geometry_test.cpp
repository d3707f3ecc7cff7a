// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_geometry.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <type_traits>

namespace ox::test::geometry {

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

static_assert(std::is_aggregate_v<Size> && std::is_aggregate_v<Rect>);
static_assert(sizeof(Size) == 8 && offsetof(Size, width) == 0 && offsetof(Size, height) == 4);
static_assert(sizeof(Rect) == 16 && offsetof(Rect, x) == 0 && offsetof(Rect, y) == 4 &&
              offsetof(Rect, width) == 8 && offsetof(Rect, height) == 12);

Rect cropped(Rect rect, Size size) {
    rect.crop(size);
    return rect;
}

void expectRect(Rect got, Rect expected) {
    EXPECT_EQ(got.x, expected.x);
    EXPECT_EQ(got.y, expected.y);
    EXPECT_EQ(got.width, expected.width);
    EXPECT_EQ(got.height, expected.height);
}

TEST(Size, IsEmptyUnlessBothSidesArePositive) {
    EXPECT_TRUE(Size().empty());
    EXPECT_TRUE((Size{5, 0}.empty()));
    EXPECT_TRUE((Size{0, 5}.empty()));
    EXPECT_TRUE((Size{-1, 5}.empty()));
    EXPECT_TRUE((Size{5, -1}.empty()));
    EXPECT_TRUE((Size{-5, -5}.empty()));
    EXPECT_FALSE((Size{1, 1}.empty()));
}

TEST(Size, ComparesByValue) {
    EXPECT_EQ((Size{3, 4}), (Size{3, 4}));
    EXPECT_NE((Size{3, 4}), (Size{4, 3}));
    EXPECT_EQ(Size(), (Size{0, 0}));
}

TEST(Rect, IsEmptyUnlessBothSidesArePositive) {
    EXPECT_TRUE(Rect().empty());
    EXPECT_TRUE((Rect{0, 0, 5, 0}.empty()));
    EXPECT_TRUE((Rect{0, 0, 0, 5}.empty()));
    EXPECT_TRUE((Rect{1, 1, -2, 5}.empty()));
    EXPECT_TRUE((Rect{1, 1, 5, -2}.empty()));
    EXPECT_FALSE((Rect{-7, -7, 1, 1}.empty()));
}

TEST(Rect, ComparesByValue) {
    EXPECT_EQ((Rect{1, 2, 3, 4}), (Rect{1, 2, 3, 4}));
    EXPECT_NE((Rect{1, 2, 3, 4}), (Rect{2, 1, 3, 4}));
    EXPECT_NE((Rect{1, 2, 3, 4}), (Rect{1, 2, 4, 3}));
    EXPECT_EQ(Rect(), (Rect{0, 0, 0, 0}));
}

TEST(Rect, CropClipsToTheArea) {
    expectRect(cropped({2, 3, 4, 5}, {100, 100}), {2, 3, 4, 5});
    expectRect(cropped({0, 0, 10, 8}, {10, 8}), {0, 0, 10, 8});
    expectRect(cropped({-2, -3, 6, 7}, {10, 8}), {0, 0, 4, 4});
    expectRect(cropped({7, 5, 6, 7}, {10, 8}), {7, 5, 3, 3});
    expectRect(cropped({-5, -5, 100, 100}, {10, 8}), {0, 0, 10, 8});
}

TEST(Rect, CropOfARectangleOutsideIsEmpty) {
    expectRect(cropped({10, 0, 4, 4}, {10, 8}), {});
    expectRect(cropped({0, 8, 4, 4}, {10, 8}), {});
    expectRect(cropped({-4, 0, 4, 4}, {10, 8}), {});
    expectRect(cropped({0, -4, 4, 4}, {10, 8}), {});
    expectRect(cropped({2, 2, 0, 3}, {10, 8}), {});
    expectRect(cropped({2, 2, 3, 3}, {0, 8}), {});
}

TEST(Rect, CropDoesNotWrap) {
    expectRect(cropped({highest - 1, highest - 1, highest, highest}, {highest, highest}),
               {highest - 1, highest - 1, 1, 1});
    EXPECT_TRUE(cropped({lowest, lowest, highest, highest}, {10, 8}).empty());
    expectRect(cropped({1, 1, highest, highest}, {10, 8}), {1, 1, 9, 7});
}

}  // namespace

}  // namespace ox::test::geometry
