// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_reader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(!std::is_polymorphic_v<RowReader> && sizeof(RowReader) == 88);
static_assert(offsetof(RowReader, rows) == 0 && offsetof(RowReader, strides) == 32 &&
              offsetof(RowReader, masks) == 64 && offsetof(RowReader, row) == 80 &&
              offsetof(RowReader, height) == 84);
static_assert(std::is_same_v<decltype(RowReader::strides), std::int64_t[4]> &&
              std::is_same_v<decltype(RowReader::masks), std::uint32_t[4]> &&
              std::is_same_v<decltype(RowReader::row), std::int32_t> &&
              std::is_same_v<decltype(RowReader::height), std::int32_t>);

void expectNumbersZero(RowReader const& reader) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(reader.strides[i], 0);
        EXPECT_EQ(reader.masks[i], 0U);
    }
    EXPECT_EQ(reader.row, 0);
    EXPECT_EQ(reader.height, 0);
}

TEST(RowReader, StartsAsZero) {
    RowReader const reader;
    expectNumbersZero(reader);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(reader.rows[i], nullptr);
    }
}

TEST(RowReader, ReuseStartsAtTheFirstRow) {
    TestFrame source(FRAME_NV12, {5, 4}, Placement{3});
    RowReader reader;
    reader.reuse(source.frame());
    EXPECT_EQ(reader.row, 0);
    EXPECT_EQ(reader.height, 4);
    EXPECT_EQ(reader.rows[0], source.row(0, 0));
    EXPECT_EQ(reader.rows[1], source.row(1, 0));
    EXPECT_EQ(reader.rows[2], nullptr);
    EXPECT_EQ(reader.rows[3], nullptr);
    EXPECT_EQ(reader.strides[0], 8);
    EXPECT_EQ(reader.strides[1], 9);
    EXPECT_EQ(reader.strides[2], 0);
    EXPECT_EQ(reader.masks[0], 0U);
    EXPECT_EQ(reader.masks[1], 1U);
    EXPECT_EQ(reader.masks[2], 0U);
}

TEST(RowReader, ChromaRowsRepeat) {
    TestFrame source(FRAME_NV12, {4, 5});
    RowReader reader;
    reader.reuse(source.frame());
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(reader.row, row);
        EXPECT_EQ(reader.rows[0], source.row(0, row));
        EXPECT_EQ(reader.rows[1], source.row(1, row / 2));
        EXPECT_EQ(reader.next(), row < 4);
    }
}

TEST(RowReader, RowsOfFullHeightPlanesMoveTogether) {
    TestFrame source(FRAME_YV16, {4, 3});
    RowReader reader;
    reader.reuse(source.frame());
    reader.next();
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(reader.rows[plane], source.row(plane, 1));
    }
}

TEST(RowReader, StandsBehindThePlanesAtTheEnd) {
    TestFrame source(FRAME_I420, {4, 4}, Placement{2});
    RowReader reader;
    reader.reuse(source.frame());
    for (int row = 0; row < 4; ++row) {
        reader.next();
    }
    EXPECT_EQ(reader.row, 4);
    EXPECT_EQ(reader.rows[0], source.row(0, 4));
    EXPECT_EQ(reader.rows[1], source.row(1, 2));
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.row, 4);
    EXPECT_EQ(reader.rows[0], source.row(0, 4));
    EXPECT_EQ(reader.rows[1], source.row(1, 2));
    EXPECT_EQ(reader.rows[2], source.row(2, 2));
}

TEST(RowReader, ASingleRowHasTheMaskOfAPair) {
    TestFrame source(FRAME_I420, {4, 1});
    RowReader reader;
    reader.reuse(source.frame());
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(reader.masks[plane], 1U);
        EXPECT_EQ(reader.rows[plane], source.row(plane, 0));
    }
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.row, 1);
    EXPECT_EQ(reader.rows[0], source.row(0, 0));
}

TEST(RowReader, ClearLeavesTheAddresses) {
    TestFrame source(FRAME_I420, {4, 4});
    RowReader reader;
    reader.reuse(source.frame());
    reader.next();
    reader.clear();
    expectNumbersZero(reader);
    EXPECT_EQ(reader.rows[0], source.row(0, 1));
    EXPECT_EQ(reader.rows[2], source.row(2, 0));
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.rows[0], source.row(0, 1));
}

TEST(RowReader, ReuseStartsOver) {
    TestFrame first(FRAME_I420, {4, 4});
    TestFrame second(FRAME_GRAY8, {6, 2});
    RowReader reader;
    reader.reuse(first.frame());
    reader.next();
    reader.reuse(second.frame());
    EXPECT_EQ(reader.row, 0);
    EXPECT_EQ(reader.height, 2);
    EXPECT_EQ(reader.rows[0], second.row(0, 0));
    EXPECT_EQ(reader.strides[0], 6);
    EXPECT_EQ(reader.strides[1], 0);
    EXPECT_EQ(reader.masks[1], 0U);
}

TEST(RowReader, RefusesAFrameThatIsNotInitialized) {
    TestFrame source(FRAME_I420, {4, 4});
    RowReader reader;
    reader.reuse(source.frame());
    // The text names the writer.
    expectException(StatusInputNotInitialized,
                    "Failure in RowWriter::RowWriter(...) : frame is not initialized.",
                    [&] { reader.reuse(Frame()); });
    expectNumbersZero(reader);
    EXPECT_EQ(reader.rows[0], source.row(0, 0));
}

}  // namespace

}  // namespace ox::test
