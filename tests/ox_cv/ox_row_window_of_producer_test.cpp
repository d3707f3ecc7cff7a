// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The band over a producer: which rows are asked for, and which are shown.
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "ox_cv/row_window_frames.h"
#include "support/producer_contract.h"

namespace ox::test {

namespace {

using RowNumbers = std::vector<int>;

TEST(RowWindowOfProducer, ProducesEachRowOnce) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 3);
    EXPECT_EQ(probe.produceCalls(), 0) << "rows are loaded on demand";
    for (int first = 0; first < 4; ++first) {
        for (int index = 0; index < 3; ++index) {
            EXPECT_EQ(byteAt(window, index), first + index);
        }
        EXPECT_EQ(probe.produceCalls(), first + 3);
        EXPECT_EQ(probe.nextCalls(), first + 3);
        window.next();
    }
    EXPECT_EQ(probe.produced(), (RowNumbers{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(probe.skipped().empty());
}

TEST(RowWindowOfProducer, ASecondLookLoadsNothing) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    RowData const first = *window.rowData(0);
    RowData const second = *window.rowData(0);
    EXPECT_EQ(probe.produceCalls(), 2);
    for (int plane = 0; plane < 4; ++plane) {
        EXPECT_EQ(first[plane], second[plane]);
    }
}

TEST(RowWindowOfProducer, RowsThatStayInTheBandKeepTheirPlace) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 3);
    unsigned char const* const second = (*window.rowData(1))[0];
    unsigned char const* const third = (*window.rowData(2))[0];
    window.next();
    EXPECT_EQ((*window.rowData(0))[0], second);
    EXPECT_EQ((*window.rowData(1))[0], third);
}

TEST(RowWindowOfProducer, ChromaIsSharedByAPair) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 7});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    for (int first = 0; first < 6; ++first) {
        RowData const upper = *window.rowData(0);
        RowData const lower = *window.rowData(1);
        EXPECT_EQ(*upper[0], first);
        EXPECT_EQ(*lower[0], first + 1);
        EXPECT_EQ(*upper[1], 100 + first / 2);
        EXPECT_EQ(*lower[2], 200 + (first + 1) / 2);
        EXPECT_EQ(upper[1] == lower[1], first % 2 == 0);
        EXPECT_EQ(upper[2] == lower[2], first % 2 == 0);
        window.next();
    }
    for (std::size_t row = 0; row < 7; ++row) {
        EXPECT_TRUE(probe.wanted()[row][0]);
        EXPECT_EQ(probe.wanted()[row][1], row % 2 == 0);
        EXPECT_EQ(probe.wanted()[row][2], row % 2 == 0);
    }
}

TEST(RowWindowOfProducer, AJumpBehindTheBandSkipsRows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 9});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.rowData(0);
    window.moveTo(5);
    EXPECT_EQ(probe.nextCalls(), 2);
    EXPECT_EQ(byteAt(window, 0), 5);
    EXPECT_EQ(byteAt(window, 1), 6);
    EXPECT_EQ(probe.produced(), (RowNumbers{0, 1, 5, 6}));
    EXPECT_EQ(probe.skipped(), (RowNumbers{2, 3, 4}));
}

TEST(RowWindowOfProducer, ChromaOfASkippedPairIsAnOlderSlot) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 8});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.moveTo(1);
    EXPECT_EQ(byteAt(window, 0), 1);
    EXPECT_EQ(byteAt(window, 0, 1), 0) << "rings start as zeros";
    EXPECT_EQ(byteAt(window, 1, 1), 101);
    window.moveTo(5);
    EXPECT_EQ(byteAt(window, 0), 5);
    EXPECT_EQ(byteAt(window, 0, 1), 101) << "what the slot held";
    EXPECT_EQ(byteAt(window, 1, 1), 103);
}

TEST(RowWindowOfProducer, ASingleRow) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 1});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 1);
    EXPECT_EQ(byteAt(window, 0, 2), 200);
    EXPECT_FALSE(window.next());
    EXPECT_EQ(probe.produceCalls(), 1);
}

// Fails once, at a row of the caller's choice.
class Faulty : public ProbeProducer {
  public:
    using ProbeProducer::ProbeProducer;
    void produce(RowData& row) override {
        if (nextCalls() == fails_at) {
            fails_at = -1;
            throw std::runtime_error("lost");
        }
        ProbeProducer::produce(row);
    }
    int fails_at = -1;
};

TEST(RowWindowOfProducer, PassesOnWhatTheSourceThrows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    Faulty faulty(source.frame());
    faulty.fails_at = 0;
    RowWindow window;
    window.reuse(faulty, 2);
    EXPECT_THROW(window.rowData(0), std::runtime_error);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(byteAt(window, 0), 0) << "the row is asked for again";
    EXPECT_EQ(byteAt(window, 1), 1);
}

}  // namespace

}  // namespace ox::test
