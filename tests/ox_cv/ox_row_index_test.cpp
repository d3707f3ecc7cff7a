// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_index.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <vector>

namespace ox::test::row_index {

namespace {

static_assert(!std::is_polymorphic_v<RowIndex> && sizeof(RowIndex) == 40);
static_assert(offsetof(RowIndex, plane_row) == 0 && offsetof(RowIndex, masks) == 16 &&
              offsetof(RowIndex, height) == 32 && offsetof(RowIndex, planes) == 36);
static_assert(std::is_same_v<decltype(RowIndex::plane_row), std::int32_t[4]> &&
              std::is_same_v<decltype(RowIndex::masks), std::uint32_t[4]>);

using Rows = std::vector<int>;

Rows rowsOf(RowIndex const& index) {
    return {index.plane_row, index.plane_row + 4};
}

RowIndex indexOf(FrameFormat format, Size size) {
    RowIndex index;
    index.reuse(FrameLayout(format, size, 64));
    return index;
}

TEST(RowIndex, StartsAsZero) {
    RowIndex index;
    EXPECT_EQ(rowsOf(index), (Rows{0, 0, 0, 0}));
    EXPECT_EQ(index.height, 0);
    EXPECT_EQ(index.planes, 0);
    EXPECT_FALSE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{0, 0, 0, 0}));
}

TEST(RowIndex, CountsRowsPerPlane) {
    RowIndex index = indexOf(FRAME_I420, {4, 5});
    EXPECT_EQ(index.planes, 3);
    EXPECT_EQ(index.height, 5);
    EXPECT_EQ(index.masks[0], 0U);
    EXPECT_EQ(index.masks[1], 1U);
    EXPECT_EQ(index.masks[2], 1U);
    EXPECT_EQ(index.masks[3], 0U);
    EXPECT_TRUE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{1, 0, 0, 0}));
    EXPECT_TRUE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{2, 1, 1, 0}));
    EXPECT_TRUE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{3, 1, 1, 0}));
    EXPECT_TRUE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{4, 2, 2, 0}));
    EXPECT_FALSE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{5, 2, 2, 0}));
    EXPECT_FALSE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{5, 2, 2, 0}));
}

TEST(RowIndex, PlanesOfFullHeightCountWithTheFrame) {
    RowIndex index = indexOf(FRAME_NV16, {4, 3});
    index.next();
    index.next();
    EXPECT_EQ(rowsOf(index), (Rows{2, 2, 0, 0}));
}

TEST(RowIndex, ASingleRowLeavesPlaneZeroItsMask) {
    RowIndex index = indexOf(FRAME_I420, {4, 1});
    EXPECT_EQ(index.masks[0], 0U);
    EXPECT_EQ(index.masks[1], 1U);
    EXPECT_FALSE(index.next());
    EXPECT_EQ(rowsOf(index), (Rows{1, 0, 0, 0}));
}

TEST(RowIndex, ReuseStartsOver) {
    RowIndex index = indexOf(FRAME_I420, {4, 5});
    index.next();
    index.next();
    index.reuse(FrameLayout(FRAME_GRAY8, {4, 2}, 64));
    EXPECT_EQ(rowsOf(index), (Rows{0, 0, 0, 0}));
    EXPECT_EQ(index.masks[1], 0U);
    EXPECT_EQ(index.planes, 1);
    EXPECT_EQ(index.height, 2);
}

}  // namespace

}  // namespace ox::test::row_index
