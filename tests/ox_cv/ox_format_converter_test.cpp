// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_format_converter.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "ox_cv/refusal_texts.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(std::is_base_of_v<IRowProducer, FormatConverter>);
static_assert(!std::is_copy_constructible_v<FormatConverter> &&
              !std::is_copy_assignable_v<FormatConverter>);

using RowBytes = std::vector<int>;

Frame converted(Frame const& source, FrameFormat format) {
    FormatConverter converter;
    converter.reuse(source, format);
    Frame frame;
    produceFrame(converter, frame);
    return frame;
}

TEST(FormatConverter, StartsEmpty) {
    FormatConverter converter;
    EXPECT_FALSE(converter.initialized());
    EXPECT_EQ(converter.layout().planeCount, 0);
    EXPECT_FALSE(converter.next());
    RowData row{};
    expectException(StatusNotInitialized,
                    "FormatConverter is not initialized. Call FormatConverter::reuse(...) first.",
                    [&] { converter.produce(row); });
}

// The address of the source's layout and the layout of the rows come first, as they are published.
TEST(FormatConverter, MembersStandInOrder) {
    struct Published {
        virtual ~Published() = default;
        bool initialized;
        FrameLayout const* src_layout;
        FrameLayout dst_layout;
    };
    FormatConverter converter;
    Published published;
    auto const offset = [](auto const& object, auto const& member) {
        return reinterpret_cast<char const*>(&member) - reinterpret_cast<char const*>(&object);
    };
    EXPECT_EQ(offset(converter, converter.layout()), offset(published, published.dst_layout));
}

TEST(FormatConverter, RefusesBadArguments) {
    TestFrame const source(FRAME_GRAY8, {4, 4});
    ProbeProducer probe(source.frame());
    RowCopier empty;
    FormatConverter converter;
    expectException(StatusInvalidParameter, "Parameter 'frame' is not initialized.",
                    [&] { converter.reuse(Frame(), FRAME_BGR24); });
    expectException(StatusInvalidParameter, "Parameter 'producer' is not initialized.",
                    [&] { converter.reuse(empty, FRAME_BGR24); });
    expectException(StatusInvalidParameter, "Parameter 'frame' is not initialized.",
                    [&] { converter.reuse(Frame(), FRAME_FORMAT_NONE); });
    expectException(StatusUnsupportedFormat, "Invalid value for parameter 'dst_format'.",
                    [&] { converter.reuse(source.frame(), FRAME_FORMAT_NONE); });
    expectException(StatusUnsupportedFormat, "Invalid value for parameter 'dst_format'.",
                    [&] { converter.reuse(probe, FRAME_FORMAT_NONE); });
    EXPECT_FALSE(converter.initialized());
}

TEST(FormatConverter, RefusesPairsThatDoNotExist) {
    TestFrame const source(FRAME_RGB24, {4, 4});
    TestFrame const planes(FRAME_BGR_32F_PLANAR, {4, 4});
    ProbeProducer probe(source.frame());
    FormatConverter converter;
    expectException(StatusNotSupported, unsupportedPair,
                    [&] { converter.reuse(source.frame(), FRAME_GRAY8); });
    expectException(StatusNotSupported, unsupportedPair,
                    [&] { converter.reuse(probe, FRAME_NV12); });
    expectException(StatusUnsupportedFormat, unsupportedPair,
                    [&] { converter.reuse(source.frame(), FRAME_C1_16U); });
    expectException(StatusUnsupportedFormat, unsupportedPair,
                    [&] { converter.reuse(planes.frame(), FRAME_BGR24); });
    EXPECT_FALSE(converter.initialized());
}

TEST(FormatConverter, LayoutOfTheRowsYielded) {
    TestFrame const source(FRAME_I420, {5, 3}, Placement{3});
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_TRUE(converter.initialized());
    EXPECT_EQ(converter.layout().format, FRAME_BGR24);
    EXPECT_EQ(converter.layout().size, (Size{5, 3}));
    EXPECT_EQ(converter.layout().plane[0].rowBytes, 15U);
    EXPECT_EQ(converter.layout().plane[0].stride, 64);
}

TEST(FormatConverter, EqualFormatsPassTheLayoutOfTheSource) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame const source(format, {5, 3}, random, Placement{4});
        FormatConverter converter;
        converter.reuse(source.frame(), format);
        EXPECT_TRUE(converter.initialized());
        EXPECT_EQ(converter.layout().plane[0].stride, source.layout().plane[0].stride);
        Frame frame;
        produceFrame(converter, frame);
        EXPECT_TRUE(samePixels(frame, source.frame()));
    }
}

TEST(FormatConverter, EqualFormatsForwardToAProducer) {
    TestFrame const source(FRAME_C1_32U, {5, 3});
    ProbeProducer probe(source.frame());
    FormatConverter converter;
    converter.reuse(probe, FRAME_C1_32U);
    TestFrame target(FRAME_C1_32U, {5, 3});
    RowData row{{target.row(0, 0), nullptr, nullptr, nullptr}};
    converter.produce(row);
    EXPECT_EQ(probe.destinations()[0][0], target.row(0, 0));
    EXPECT_TRUE(converter.next());
    EXPECT_TRUE(converter.next());
    EXPECT_FALSE(converter.next()) << "as the source says";
}

TEST(FormatConverter, NextIsTrueAfterTheLastRowToo) {
    TestFrame const source(FRAME_GRAY8, {4, 3});
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_TRUE(converter.next());
    EXPECT_TRUE(converter.next());
    EXPECT_TRUE(converter.next());
    EXPECT_FALSE(converter.next());
    EXPECT_FALSE(converter.next());
}

TEST(FormatConverter, ProducesNothingBehindTheEnd) {
    TestFrame const source(FRAME_BGR24, {4, 2});
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_I420}) {
        ProbeProducer probe(source.frame());
        FormatConverter converter;
        converter.reuse(probe, format);
        TestFrame target(format, {4, 2});
        fill(target.frame(), 9);
        converter.next();
        converter.next();
        RowData row{{target.row(0, 0), nullptr, nullptr, nullptr}};
        converter.produce(row);
        EXPECT_TRUE(isFilledWith(target.frame(), 9));
    }
}

TEST(FormatConverter, ASingleRowHasNoPairOfRows) {
    TestFrame const bgr(FRAME_BGR24, {4, 1});
    TestFrame const packed(FRAME_YUYV, {4, 1});
    FormatConverter converter;
    for (FrameFormat const format : {FRAME_I420, FRAME_YV12, FRAME_NV12, FRAME_NV21}) {
        ProbeProducer probe(bgr.frame());
        expectException(StatusOutOfRange, windowSizeOutOfRange,
                        [&] { converter.reuse(bgr.frame(), format); });
        expectException(StatusOutOfRange, windowSizeOutOfRange,
                        [&] { converter.reuse(packed.frame(), format); });
        expectException(StatusOutOfRange, windowSizeOutOfRange,
                        [&] { converter.reuse(probe, format); });
    }
    EXPECT_EQ(bytesOf(converted(bgr.frame(), FRAME_NV16), 0, 0), (RowBytes{16, 16, 16, 16}));
}

TEST(FormatConverter, GrayNeedsNoPairOfRows) {
    TestFrame source(FRAME_GRAY8, {3, 1});
    fill(source.frame(), 0, {{1, 2, 3}});
    ProbeProducer probe(source.frame());
    for (FrameFormat const format : {FRAME_I420, FRAME_YV12, FRAME_NV12, FRAME_NV21}) {
        Frame const frame = converted(source.frame(), format);
        EXPECT_EQ(bytesOf(frame, 0, 0), (RowBytes{1, 2, 3}));
        for (int plane = 1; plane < frame.layout().planeCount; ++plane) {
            EXPECT_EQ(bytesOf(frame, plane, 0), RowBytes(frame.layout().plane[plane].rowBytes, 0));
        }
        probe.rewind();
        FormatConverter converter;
        converter.reuse(probe, format);
        EXPECT_EQ(converter.layout().format, format);
    }
}

TEST(FormatConverter, ASingleRowOfEqualFormatsIsCopied) {
    Random random;
    for (FrameFormat const format : {FRAME_I420, FRAME_YV12, FRAME_NV12, FRAME_NV21}) {
        TestFrame const source(format, {5, 1}, random);
        EXPECT_TRUE(samePixels(converted(source.frame(), format), source.frame()));
    }
}

TEST(FormatConverter, AllChromaOfGrayIsZero) {
    TestFrame source(FRAME_GRAY8, {5, 5});
    fill(source.frame(), 200);
    Frame const frame = converted(source.frame(), FRAME_NV12);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(bytesOf(frame, 1, y), RowBytes(6, 0));
    }
}

// Rows of one pixel: blue, then green, then red, with the terms
//     CU 61328, 13898, 23078 and CV 28178, 8798, 61328.
TEST(FormatConverter, ChromaOfRowPairs) {
    RowBytes const rows[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    for (int const height : {2, 3}) {
        TestFrame source(FRAME_BGR24, {1, height});
        fill(source.frame(), 0, {rows, rows + height});
        ProbeProducer probe(source.frame());
        FormatConverter from_producer;
        from_producer.reuse(probe, FRAME_I420);
        Frame streamed;
        produceFrame(from_producer, streamed);
        Frame const frame = converted(source.frame(), FRAME_I420);
        EXPECT_TRUE(samePixels(streamed, frame));
        EXPECT_EQ(bytesOf(frame, 0, 0), RowBytes{40});
        EXPECT_EQ(bytesOf(frame, 0, 1), RowBytes{144});
        EXPECT_EQ(bytesOf(frame, 1, 0), RowBytes{146});  // (61328 + 13898) >> 9
        EXPECT_EQ(bytesOf(frame, 2, 0), RowBytes{72});   // (28178 + 8798) >> 9
        if (height == 3) {                               // the last row stands alone
            EXPECT_EQ(bytesOf(frame, 0, 2), RowBytes{80});
            EXPECT_EQ(bytesOf(frame, 1, 1), RowBytes{90});
            EXPECT_EQ(bytesOf(frame, 2, 1), RowBytes{239});
        }
    }
}

TEST(FormatConverter, TheLastOfThreeRowsHasPairsOfItsOwn) {
    TestFrame source(FRAME_BGR24, {2, 3});
    fill(source.frame(), 0, {{0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {10, 20, 30, 200, 100, 50}});
    Frame const frame = converted(source.frame(), FRAME_I420);
    EXPECT_EQ(bytesOf(frame, 1, 1), RowBytes{150});  // (31268 + 45868) >> 9
    EXPECT_EQ(bytesOf(frame, 2, 1), RowBytes{116});  // (34068 + 25368) >> 9
}

TEST(FormatConverter, AveragesRowPairsOfYuv) {
    TestFrame source(FRAME_NV16, {2, 3});
    fill(source.frame(), 0, {{1, 2}, {3, 4}, {5, 6}});
    fill(source.frame(), 1, {{10, 100}, {13, 101}, {7, 9}});
    Frame const frame = converted(source.frame(), FRAME_I420);
    EXPECT_EQ(bytesOf(frame, 0, 2), (RowBytes{5, 6}));
    EXPECT_EQ(bytesOf(frame, 1, 0), RowBytes{11});
    EXPECT_EQ(bytesOf(frame, 2, 0), RowBytes{100});
    EXPECT_EQ(bytesOf(frame, 1, 1), RowBytes{7});
    EXPECT_EQ(bytesOf(frame, 2, 1), RowBytes{9});
}

TEST(FormatConverter, ReadsEachRowOfAProducerOnce) {
    Random random;
    TestFrame const source(FRAME_I420, {5, 5}, random);
    ProbeProducer probe(source.frame());
    FormatConverter converter;
    converter.reuse(probe, FRAME_NV12);
    Frame frame;
    produceFrame(converter, frame);
    EXPECT_EQ(probe.produced(), (RowBytes{0, 1, 2, 3, 4}));
    EXPECT_TRUE(probe.skipped().empty());
    EXPECT_TRUE(samePixels(frame, converted(source.frame(), FRAME_NV12)));
}

}  // namespace

}  // namespace ox::test
