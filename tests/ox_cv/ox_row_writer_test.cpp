// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_writer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(!std::is_polymorphic_v<RowWriter> && sizeof(RowWriter) == 120);
static_assert(offsetof(RowWriter, rows) == 0 && offsetof(RowWriter, planes) == 32 &&
              offsetof(RowWriter, strides) == 64 && offsetof(RowWriter, masks) == 96 &&
              offsetof(RowWriter, row) == 112 && offsetof(RowWriter, height) == 116);
static_assert(std::is_same_v<decltype(RowWriter::planes), RowData> &&
              std::is_same_v<decltype(RowWriter::strides), std::int64_t[4]> &&
              std::is_same_v<decltype(RowWriter::masks), std::uint32_t[4]> &&
              std::is_same_v<decltype(RowWriter::row), std::int32_t> &&
              std::is_same_v<decltype(RowWriter::height), std::int32_t>);

void expectNumbersZero(RowWriter const& writer) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(writer.strides[i], 0);
        EXPECT_EQ(writer.masks[i], 0U);
    }
    EXPECT_EQ(writer.row, 0);
    EXPECT_EQ(writer.height, 0);
}

TEST(RowWriter, StartsAsZero) {
    RowWriter const writer;
    expectNumbersZero(writer);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(writer.rows[i], nullptr);
        EXPECT_EQ(writer.planes[i], nullptr);
    }
}

TEST(RowWriter, ReuseStartsAtTheFirstRow) {
    TestFrame target(FRAME_NV12, {5, 4}, Placement{3});
    RowWriter writer;
    writer.reuse(target.frame());
    EXPECT_EQ(writer.row, 0);
    EXPECT_EQ(writer.height, 4);
    for (int plane = 0; plane < 2; ++plane) {
        EXPECT_EQ(writer.rows[plane], target.row(plane, 0));
        EXPECT_EQ(writer.planes[plane], target.row(plane, 0));
    }
    EXPECT_EQ(writer.rows[2], nullptr);
    EXPECT_EQ(writer.strides[0], 8);
    EXPECT_EQ(writer.strides[1], 9);
    EXPECT_EQ(writer.masks[0], 0U);
    EXPECT_EQ(writer.masks[1], 1U);
}

TEST(RowWriter, ChromaIsWrittenOncePerPair) {
    TestFrame target(FRAME_I420, {4, 5});
    RowWriter writer;
    writer.reuse(target.frame());
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(writer.row, row);
        EXPECT_EQ(writer.rows[0], target.row(0, row));
        for (int plane = 1; plane < 3; ++plane) {
            EXPECT_EQ(writer.rows[plane], row % 2 == 0 ? target.row(plane, row / 2) : nullptr);
            EXPECT_EQ(writer.planes[plane], target.row(plane, row / 2));
        }
        EXPECT_EQ(writer.next(), row < 4);
    }
}

TEST(RowWriter, HasNoRowsPastTheEnd) {
    TestFrame target(FRAME_GRAY8, {4, 2});
    RowWriter writer;
    writer.reuse(target.frame());
    EXPECT_TRUE(writer.next());
    EXPECT_FALSE(writer.next());
    EXPECT_EQ(writer.row, 2);
    EXPECT_FALSE(writer.next());
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(writer.rows[i], nullptr);
    }
    EXPECT_EQ(writer.row, 2);
    EXPECT_EQ(writer.planes[0], target.row(0, 2));
}

// Behind an even row chroma has an address until the end is passed.
TEST(RowWriter, HasNoChromaRowsPastTheEnd) {
    TestFrame target(FRAME_I420, {4, 2});
    RowWriter writer;
    writer.reuse(target.frame());
    EXPECT_TRUE(writer.next());
    EXPECT_FALSE(writer.next());
    EXPECT_EQ(writer.rows[1], target.row(1, 1));
    for (int past = 0; past < 2; ++past) {
        EXPECT_FALSE(writer.next());
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(writer.rows[i], nullptr);
        }
    }
}

TEST(RowWriter, ASingleRowHasAllItsPlanes) {
    TestFrame target(FRAME_I420, {4, 1});
    RowWriter writer;
    writer.reuse(target.frame());
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(writer.rows[plane], target.row(plane, 0));
        EXPECT_EQ(writer.masks[plane], 1U);
    }
    EXPECT_FALSE(writer.next());
}

TEST(RowWriter, ClearLeavesTheAddresses) {
    TestFrame target(FRAME_I420, {4, 4});
    RowWriter writer;
    writer.reuse(target.frame());
    writer.next();
    writer.clear();
    expectNumbersZero(writer);
    EXPECT_EQ(writer.rows[0], target.row(0, 1));
    EXPECT_EQ(writer.rows[1], nullptr);
    EXPECT_EQ(writer.planes[0], target.row(0, 1));
    EXPECT_EQ(writer.planes[1], target.row(1, 0));
}

TEST(RowWriter, ReuseForFewerPlanesHasNullsBehindThem) {
    TestFrame first(FRAME_I420, {4, 4});
    TestFrame second(FRAME_GRAY8, {6, 3});
    RowWriter writer;
    writer.reuse(first.frame());
    writer.next();
    writer.reuse(second.frame());
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(writer.rows[0], second.row(0, row));
        for (int plane = 1; plane < 4; ++plane) {
            EXPECT_EQ(writer.rows[plane], nullptr) << "row " << row << ", plane " << plane;
        }
        writer.next();
    }
}

TEST(RowWriter, RefusesAFrameThatIsNotInitialized) {
    TestFrame target(FRAME_I420, {4, 4});
    RowWriter writer;
    writer.reuse(target.frame());
    Frame none;
    expectException(StatusInputNotInitialized,
                    "Failure in RowWriter::RowWriter(...) : frame is not initialized.",
                    [&] { writer.reuse(none); });
    expectNumbersZero(writer);
}

}  // namespace

}  // namespace ox::test
