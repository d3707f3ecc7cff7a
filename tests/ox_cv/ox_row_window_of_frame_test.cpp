// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The band over a frame: addresses only.
#include <gtest/gtest.h>

#include "ox_cv/row_window_frames.h"
#include "support/allocation_counter.h"

namespace ox::test {

namespace {

TEST(RowWindowOfFrame, HoldsAddressesOnly) {
    TestFrame const source(FRAME_NV12, {5, 5}, Placement{3});
    RowWindow window;
    window.reuse(source.frame(), 3);
    EXPECT_TRUE(window.initialized());
    EXPECT_EQ(window.layout().plane[0].stride, 8);
    for (int first = 0; first < 3; ++first) {
        for (int index = 0; index < 3; ++index) {
            RowData const& row = *window.rowData(index);
            EXPECT_EQ(row[0], source.row(0, first + index));
            EXPECT_EQ(row[1], source.row(1, (first + index) / 2));
            EXPECT_EQ(row[2], nullptr);
            EXPECT_EQ(row[3], nullptr);
        }
        EXPECT_EQ(window.next(), first < 2);
    }
}

TEST(RowWindowOfFrame, StopsAtTheBottom) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 4});
    RowWindow window;
    window.reuse(source.frame(), 3);
    EXPECT_TRUE(window.next());
    EXPECT_FALSE(window.next());
    EXPECT_FALSE(window.next());
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(byteAt(window, 0), 1);
    EXPECT_EQ(byteAt(window, 2), 3);
}

TEST(RowWindowOfFrame, ASingleRowFollowsTheFirstRow) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 1);
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(byteAt(window, 0), row);
        EXPECT_EQ(byteAt(window, 0, 2), 200 + row / 2);
        window.next();
    }
}

TEST(RowWindowOfFrame, JumpsOverRows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 9});
    RowWindow window;
    window.reuse(source.frame(), 2);
    EXPECT_EQ(byteAt(window, 1), 1);
    window.moveTo(6);
    EXPECT_EQ(window.firstRow(), 6);
    EXPECT_EQ(byteAt(window, 0), 6);
    window.moveTo(3);
    EXPECT_EQ(window.firstRow(), 6) << "the band never moves up";
    window.moveTo(100);
    EXPECT_EQ(window.firstRow(), 7);
    EXPECT_EQ(byteAt(window, 1), 8);
}

TEST(RowWindowOfFrame, ReuseStartsAgainWithoutAnAllocation) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    TestFrame const same = rampFrame(FRAME_I420, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 3);
    window.moveTo(2);
    window.rowData(0);
    std::uint64_t const calls = allocationCalls();
    window.reuse(same.frame(), 3);
    EXPECT_EQ(allocationCalls(), calls);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ((*window.rowData(2))[0], same.row(0, 2));
    EXPECT_EQ(allocationCalls(), calls);
}

TEST(RowWindowOfFrame, ReuseTakesOtherGeometries) {
    RowWindow window;
    struct {
        FrameFormat format;
        Size size;
        int window_size;
    } const cases[] = {{FRAME_I420, {4, 5}, 3}, {FRAME_I420, {4, 5}, 2}, {FRAME_I420, {4, 6}, 2},
                       {FRAME_I420, {6, 6}, 2}, {FRAME_YV12, {6, 6}, 2}, {FRAME_GRAY8, {6, 6}, 6}};
    for (auto const& c : cases) {
        TestFrame const source(c.format, c.size);
        window.reuse(source.frame(), c.window_size);
        RowData const& row = *window.rowData(c.window_size - 1);
        EXPECT_EQ(row[0], source.row(0, c.window_size - 1));
        EXPECT_EQ(window.layout().format, c.format);
        EXPECT_EQ(window.layout().size, c.size);
        EXPECT_EQ(window.windowSize(), c.window_size);
    }
}

}  // namespace

}  // namespace ox::test
