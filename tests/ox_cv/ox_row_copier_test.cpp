// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_copier.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

TEST(RowCopier, StartsEmpty) {
    RowCopier copier;
    EXPECT_FALSE(copier.initialized());
    EXPECT_EQ(copier.layout().planeCount, 0);
    unsigned char byte = 1;
    RowData row{{&byte, &byte, &byte, &byte}};
    copier.produce(row);
    EXPECT_EQ(byte, 1);
    EXPECT_FALSE(copier.next());
}

TEST(RowCopier, CopiesAFrame) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame const source(format, {5, 3}, random, Placement{4});
        RowCopier copier;
        copier.reuse(source.frame());
        EXPECT_TRUE(copier.initialized());
        EXPECT_EQ(copier.layout().plane[0].stride, source.layout().plane[0].stride);
        Frame frame;
        produceFrame(copier, frame);
        EXPECT_TRUE(samePixels(frame, source.frame()));
    }
}

TEST(RowCopier, NextTellsWhetherAFrameHasMoreRows) {
    TestFrame const source(FRAME_GRAY8, {4, 3});
    RowCopier copier;
    copier.reuse(source.frame());
    EXPECT_TRUE(copier.next());
    EXPECT_TRUE(copier.next());
    EXPECT_FALSE(copier.next());
    EXPECT_FALSE(copier.next());
    EXPECT_TRUE(copier.initialized());
}

TEST(RowCopier, ProducesNothingBehindTheEnd) {
    TestFrame const source(FRAME_I420, {4, 1});
    TestFrame target(FRAME_I420, {4, 1});
    fill(target.frame(), 9);
    RowCopier copier;
    copier.reuse(source.frame());
    copier.next();
    RowData row{{target.row(0, 0), target.row(1, 0), target.row(2, 0), nullptr}};
    copier.produce(row);
    EXPECT_TRUE(isFilledWith(target.frame(), 9));
}

TEST(RowCopier, ForwardsToAProducer) {
    Random random;
    TestFrame const source(FRAME_NV12, {5, 3}, random);
    ProbeProducer probe(source.frame());
    RowCopier copier;
    copier.reuse(probe);
    EXPECT_TRUE(copier.initialized());
    EXPECT_EQ(probe.produceCalls(), 0);
    TestFrame target(FRAME_NV12, {5, 3});
    RowData row{{target.row(0, 0), nullptr, nullptr, nullptr}};
    copier.produce(row);
    EXPECT_EQ(probe.destinations()[0][0], target.row(0, 0)) << "the row was buffered";
    EXPECT_FALSE(probe.wanted()[0][1]);
    EXPECT_TRUE(copier.next());
    EXPECT_TRUE(copier.next());
    EXPECT_FALSE(copier.next());
    EXPECT_EQ(probe.nextCalls(), 3);
    EXPECT_EQ(probe.skipped(), (std::vector<int>{1, 2}));
    EXPECT_TRUE(copier.initialized()) << "after the producer's rows have ended";
}

TEST(RowCopier, ChainsOfCopiersForward) {
    Random random;
    TestFrame const source(FRAME_I420, {5, 5}, random);
    ProbeProducer probe(source.frame());
    RowCopier first;
    RowCopier second;
    first.reuse(probe);
    second.reuse(first);
    Frame frame;
    produceFrame(second, frame);
    EXPECT_TRUE(samePixels(frame, source.frame()));
    EXPECT_EQ(probe.produceCalls(), 5);
}

TEST(RowCopier, NullPlanesStayUnwritten) {
    TestFrame source(FRAME_I420, {2, 2});
    fill(source.frame(), 7);
    TestFrame target(FRAME_I420, {2, 2});
    RowCopier copier;
    copier.reuse(source.frame());
    RowData row{{target.row(0, 0), nullptr, target.row(2, 0), nullptr}};
    copier.produce(row);
    EXPECT_EQ(*target.row(0, 0), 7);
    EXPECT_EQ(*target.row(1, 0), 0);
    EXPECT_EQ(*target.row(2, 0), 7);
}

TEST(RowCopier, AFrameReplacesAProducer) {
    TestFrame const first(FRAME_I420, {4, 4});
    TestFrame const second(FRAME_GRAY8, {3, 2});
    ProbeProducer probe(first.frame());
    RowCopier copier;
    copier.reuse(probe);
    copier.reuse(second.frame());
    Frame frame;
    produceFrame(copier, frame);
    EXPECT_EQ(probe.produceCalls(), 0);
    EXPECT_EQ(probe.nextCalls(), 0);
    EXPECT_TRUE(samePixels(frame, second.frame()));
}

TEST(RowCopier, AProducerReplacesAFrame) {
    Random random;
    TestFrame const first(FRAME_GRAY8, {3, 2}, random);
    TestFrame const second(FRAME_I420, {4, 4}, random);
    ProbeProducer probe(second.frame());
    RowCopier copier;
    copier.reuse(first.frame());
    copier.reuse(probe);
    Frame frame;
    produceFrame(copier, frame);
    EXPECT_TRUE(samePixels(frame, second.frame()));
}

TEST(RowCopier, KeepsTheLayoutThatItFound) {
    Frame source;
    source.reuse(FRAME_GRAY8, {3, 2}, DeviceContext(), 0);
    RowCopier copier;
    copier.reuse(source);
    source.reuse(FRAME_BGR24, {9, 9}, DeviceContext(), 0);
    EXPECT_EQ(copier.layout().format, FRAME_GRAY8);
    EXPECT_EQ(copier.layout().size, (Size{3, 2}));

    TestFrame const gray(FRAME_GRAY8, {3, 2});
    TestFrame const packed(FRAME_BGR24, {9, 9});
    RowCopier upstream;
    upstream.reuse(gray.frame());
    copier.reuse(upstream);
    upstream.reuse(packed.frame());
    EXPECT_EQ(copier.layout().format, FRAME_GRAY8);
}

TEST(RowCopier, ClearReturnsToEmpty) {
    TestFrame const source(FRAME_GRAY8, {3, 2});
    ProbeProducer probe(source.frame());
    RowCopier copier;
    copier.reuse(source.frame());
    copier.clear();
    EXPECT_FALSE(copier.initialized());
    EXPECT_EQ(copier.layout().planeCount, 0);
    EXPECT_FALSE(copier.next());
    copier.reuse(probe);
    copier.clear();
    EXPECT_FALSE(copier.initialized());
    EXPECT_FALSE(copier.next());
    EXPECT_EQ(probe.nextCalls(), 0);
}

TEST(RowCopier, AFrameWithoutRowsCountsAsEmpty) {
    TestFrame source(FRAME_GRAY8, {3, 2});
    RowCopier copier;
    copier.reuse(getRegion(source.frame(), {0, 0, 3, 0}));
    EXPECT_FALSE(copier.initialized());
}

TEST(RowCopier, RefusesSourcesThatAreNotInitialized) {
    TestFrame source(FRAME_GRAY8, {3, 2});
    RowCopier copier;
    expectException(StatusAssertionFailed, "Assertion failed: src_frame.initialized()",
                    [&] { copier.reuse(Frame()); });
    RowCopier empty;
    std::string const text = "Assertion failed: !src_producer.layout().size.empty()";
    expectException(StatusAssertionFailed, text, [&] { copier.reuse(empty); });
    for (Rect const rect : {Rect{0, 0, 0, 2}, Rect{0, 0, 3, 0}}) {
        RowCopier flat;
        flat.reuse(getRegion(source.frame(), rect));
        expectException(StatusAssertionFailed, text, [&] { copier.reuse(flat); });
    }
    EXPECT_FALSE(copier.initialized());
}

}  // namespace

}  // namespace ox::test
