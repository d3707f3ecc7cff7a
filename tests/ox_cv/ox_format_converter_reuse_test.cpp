// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Converters that are armed more than once, and what a failure leaves of them.
#include <gtest/gtest.h>

#include <vector>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/refusal_texts.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

using RowBytes = std::vector<int>;

// The first byte of the row that a producer stands at; 0 if it writes none.
int firstByteOf(IRowProducer& producer) {
    unsigned char bytes[6]{};
    RowData row{{bytes, nullptr, nullptr, nullptr}};
    producer.produce(row);
    return bytes[0];
}

TEST(FormatConverterReuse, AllocatesNothingForFramesOfAKind) {
    TestFrame const black(FRAME_BGR24, {5, 5});
    TestFrame white(FRAME_BGR24, {5, 5});
    fill(white.frame(), 255);
    TestFrame target(FRAME_I420, {5, 5});
    FormatConverter converter;
    converter.reuse(black.frame(), FRAME_I420);
    produceFrame(converter, target.frame());
    EXPECT_EQ(bytesOf(target.frame(), 0, 4), RowBytes(5, 16));
    std::uint64_t const calls = allocationCalls();
    converter.reuse(white.frame(), FRAME_I420);
    produceFrame(converter, target.frame());
    EXPECT_EQ(allocationCalls(), calls);
    for (int y = 0; y < 5; ++y) {
        EXPECT_EQ(bytesOf(target.frame(), 0, y), RowBytes(5, 234));
        EXPECT_EQ(bytesOf(target.frame(), 1, y / 2), RowBytes(3, 128));
        EXPECT_EQ(bytesOf(target.frame(), 2, y / 2), RowBytes(3, 128));
    }
}

// A picture of two columns and what two formats make of its chroma.
class FormatConverterRestart : public testing::Test {
  protected:
    struct Target {
        FrameFormat format;
        std::vector<RowBytes> u;
        std::vector<RowBytes> v;
    };

    FormatConverterRestart() {
        fill(source.frame(), 0, {{1, 2}, {3, 4}, {5, 6}, {7, 8}});
        fill(source.frame(), 1, {{10, 100}, {12, 102}, {20, 200}, {22, 202}});
    }

    static void expectStream(IRowProducer& producer, Target const& target) {
        Frame frame;
        produceFrame(producer, frame);
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(bytesOf(frame, 0, y), (RowBytes{2 * y + 1, 2 * y + 2}));
        }
        for (std::size_t y = 0; y < target.u.size(); ++y) {
            EXPECT_EQ(bytesOf(frame, 1, static_cast<int>(y)), target.u[y]);
            EXPECT_EQ(bytesOf(frame, 2, static_cast<int>(y)), target.v[y]);
        }
    }

    static void takeRows(IRowProducer& producer, int count) {
        for (int row = 0; row < count; ++row) {
            EXPECT_EQ(firstByteOf(producer), 2 * row + 1);
            producer.next();
        }
    }

    TestFrame source{FRAME_NV16, {2, 4}};
    // with two rows at a time, and with one
    Target const targets[2] = {{FRAME_I420, {{11}, {21}}, {{101}, {201}}},
                               {FRAME_YUV444_PLANAR,
                                {{10, 10}, {12, 12}, {20, 20}, {22, 22}},
                                {{100, 100}, {102, 102}, {200, 200}, {202, 202}}}};
};

TEST_F(FormatConverterRestart, OverAFrame) {
    FormatConverter converter;
    for (Target const& target : targets) {
        for (int const rows : {3, 0, 2, 4}) {
            converter.reuse(source.frame(), target.format);
            takeRows(converter, rows);
            converter.reuse(source.frame(), target.format);
            expectStream(converter, target);
        }
    }
}

TEST_F(FormatConverterRestart, OverAProducer) {
    ProbeProducer probe(source.frame());
    FormatConverter converter;
    for (Target const& target : targets) {
        for (int const rows : {3, 0, 2, 4}) {
            probe.rewind();
            converter.reuse(probe, target.format);
            takeRows(converter, rows);
            probe.rewind();
            converter.reuse(probe, target.format);
            expectStream(converter, target);
        }
    }
}

TEST(FormatConverterReuse, EqualFormatsLeaveAConversionArmed) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    TestFrame const other(FRAME_BGR24, {3, 3});
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    converter.next();
    converter.reuse(other.frame(), FRAME_BGR24);
    EXPECT_EQ(converter.layout().size, (Size{3, 3}));
    EXPECT_TRUE(converter.next());
    // A refused pair clears the copier, and what was armed before it shows again, at its old row.
    expectStatus(StatusNotSupported, [&] { converter.reuse(other.frame(), FRAME_RGB_PLANAR); });
    EXPECT_TRUE(converter.initialized());
    EXPECT_EQ(converter.layout().size, (Size{2, 2}));
    EXPECT_TRUE(converter.next());
    EXPECT_FALSE(converter.next());
}

TEST(FormatConverterReuse, AConversionClearsTheCopier) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_GRAY8);
    EXPECT_EQ(converter.layout().format, FRAME_GRAY8);
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_EQ(converter.layout().format, FRAME_BGR24);
    Frame frame;
    produceFrame(converter, frame);
    EXPECT_TRUE(isFilledWith(frame, 7));
}

TEST(FormatConverterReuse, AFailedReuseClearsTheCopier) {
    TestFrame const source(FRAME_BGR24, {2, 1});
    FormatConverter converter;
    for (FrameFormat const refused : {FRAME_RGB_PLANAR, FRAME_I420}) {
        converter.reuse(source.frame(), FRAME_BGR24);
        EXPECT_TRUE(converter.initialized());
        EXPECT_THROW(converter.reuse(source.frame(), refused), Exception);
        EXPECT_FALSE(converter.initialized());
        EXPECT_EQ(converter.layout().planeCount, 0);
    }
    // Bad arguments are found before.
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_THROW(converter.reuse(source.frame(), FRAME_FORMAT_NONE), Exception);
    EXPECT_TRUE(converter.initialized());
}

TEST(FormatConverterReuse, IsRevivedByTheNextReuse) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_THROW(converter.reuse(source.frame(), refusedFromGray), Exception);
    converter.reuse(source.frame(), FRAME_BGR24);
    Frame frame;
    produceFrame(converter, frame);
    EXPECT_TRUE(isFilledWith(frame, 7));
}

// A frame without rows leaves the copier empty; the conversion before must not show through.
TEST(FormatConverterReuse, EqualFormatsWithoutRowsYieldNothing) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    TestFrame other(FRAME_BGR24, {2, 3});
    Frame const flat = getRegion(other.frame(), {0, 0, 2, 0});
    for (bool const used : {false, true}) {
        FormatConverter converter;
        if (used) {
            converter.reuse(source.frame(), FRAME_BGR24);
            EXPECT_EQ(firstByteOf(converter), 7);
        }
        converter.reuse(flat, FRAME_BGR24);
        EXPECT_EQ(converter.layout().format, FRAME_BGR24);
        EXPECT_EQ(converter.layout().size, (Size{2, 0}));
        EXPECT_EQ(firstByteOf(converter), 0);
        EXPECT_FALSE(converter.next());
        EXPECT_EQ(firstByteOf(converter), 0);
        converter.reuse(source.frame(), FRAME_BGR24);
        EXPECT_EQ(firstByteOf(converter), 7);
    }
}

TEST(FormatConverterReuse, RefusesSourcesWithoutRows) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    Frame const flat = getRegion(source.frame(), {0, 0, 2, 0});
    RowCopier upstream;
    upstream.reuse(flat);
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    expectException(StatusAssertionFailed, "Assertion failed: !src_producer.layout().size.empty()",
                    [&] { converter.reuse(upstream, FRAME_GRAY8); });
    EXPECT_EQ(firstByteOf(converter), 7);
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { converter.reuse(flat, FRAME_BGR24); });
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { converter.reuse(upstream, FRAME_BGR24); });
}

// The pair is chosen and its window refused: what the window holds isn't of that format.
TEST(FormatConverterReuse, ProducesNothingOnceAWindowWasRefused) {
    TestFrame source(FRAME_BGR24, {2, 3});
    fill(source.frame(), 255);
    TestFrame const single(FRAME_BGR24, {2, 1});
    FormatConverter converter;
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { converter.reuse(single.frame(), FRAME_I420); });
    EXPECT_FALSE(converter.next());
    expectException(StatusNotInitialized,
                    "FormatConverter is not initialized. Call FormatConverter::reuse(...) first.",
                    [&] { firstByteOf(converter); });
    converter.reuse(source.frame(), FRAME_GRAY8);
    EXPECT_EQ(firstByteOf(converter), 255);
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { converter.reuse(single.frame(), FRAME_I420); });
    EXPECT_EQ(converter.layout().format, FRAME_GRAY8);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(firstByteOf(converter), 0);
        EXPECT_TRUE(converter.next());
    }
    EXPECT_FALSE(converter.next());
}

}  // namespace

}  // namespace ox::test
