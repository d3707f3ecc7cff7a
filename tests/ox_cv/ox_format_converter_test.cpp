#include "ox_cv/ox_format_converter.h"

#include <gtest/gtest.h>

#include <optional>
#include <type_traits>
#include <vector>

#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(std::is_base_of_v<IRowProducer, FormatConverter>);
static_assert(!std::is_copy_constructible_v<FormatConverter> &&
              !std::is_copy_assignable_v<FormatConverter>);

constexpr char unsupported[] =
    "Failure in ImplFormatConverter::get_context(...) : unsupported format.";
constexpr char outOfRange[] = "Parameter 'window_size' is out of range.";

using Bytes = std::vector<int>;

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
    expectException(StatusNotSupported, unsupported,
                    [&] { converter.reuse(source.frame(), FRAME_GRAY8); });
    expectException(StatusNotSupported, unsupported, [&] { converter.reuse(probe, FRAME_NV12); });
    expectException(StatusUnsupportedFormat, unsupported,
                    [&] { converter.reuse(source.frame(), FRAME_C1_16U); });
    expectException(StatusUnsupportedFormat, unsupported,
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
        expectException(StatusOutOfRange, outOfRange,
                        [&] { converter.reuse(bgr.frame(), format); });
        expectException(StatusOutOfRange, outOfRange,
                        [&] { converter.reuse(packed.frame(), format); });
        expectException(StatusOutOfRange, outOfRange, [&] { converter.reuse(probe, format); });
    }
    EXPECT_EQ(bytesOf(converted(bgr.frame(), FRAME_NV16), 0, 0), (Bytes{16, 16, 16, 16}));
}

TEST(FormatConverter, GrayNeedsNoPairOfRows) {
    TestFrame source(FRAME_GRAY8, {3, 1});
    fill(source.frame(), 0, {{1, 2, 3}});
    Frame const frame = converted(source.frame(), FRAME_NV12);
    EXPECT_EQ(bytesOf(frame, 0, 0), (Bytes{1, 2, 3}));
    EXPECT_EQ(bytesOf(frame, 1, 0), (Bytes{0, 0, 0, 0}));
}

TEST(FormatConverter, AllChromaOfGrayIsZero) {
    TestFrame source(FRAME_GRAY8, {5, 5});
    fill(source.frame(), 200);
    Frame const frame = converted(source.frame(), FRAME_NV12);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(bytesOf(frame, 1, y), Bytes(6, 0));
    }
}

// Rows of one pixel: blue, then green, then red, with the terms
//     CU 61328, 13898, 23078 and CV 28178, 8798, 61328.
TEST(FormatConverter, ChromaOfRowPairs) {
    Bytes const rows[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
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
        EXPECT_EQ(bytesOf(frame, 0, 0), Bytes{40});
        EXPECT_EQ(bytesOf(frame, 0, 1), Bytes{144});
        EXPECT_EQ(bytesOf(frame, 1, 0), Bytes{146});  // (61328 + 13898) >> 9
        EXPECT_EQ(bytesOf(frame, 2, 0), Bytes{72});   // (28178 + 8798) >> 9
        if (height == 3) {                            // the last row stands alone
            EXPECT_EQ(bytesOf(frame, 0, 2), Bytes{80});
            EXPECT_EQ(bytesOf(frame, 1, 1), Bytes{90});
            EXPECT_EQ(bytesOf(frame, 2, 1), Bytes{239});
        }
    }
}

TEST(FormatConverter, TheLastOfThreeRowsHasPairsOfItsOwn) {
    TestFrame source(FRAME_BGR24, {2, 3});
    fill(source.frame(), 0, {{0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {10, 20, 30, 200, 100, 50}});
    Frame const frame = converted(source.frame(), FRAME_I420);
    EXPECT_EQ(bytesOf(frame, 1, 1), Bytes{150});  // (31268 + 45868) >> 9
    EXPECT_EQ(bytesOf(frame, 2, 1), Bytes{116});  // (34068 + 25368) >> 9
}

TEST(FormatConverter, AveragesRowPairsOfYuv) {
    TestFrame source(FRAME_NV16, {2, 3});
    fill(source.frame(), 0, {{1, 2}, {3, 4}, {5, 6}});
    fill(source.frame(), 1, {{10, 100}, {13, 101}, {7, 9}});
    Frame const frame = converted(source.frame(), FRAME_I420);
    EXPECT_EQ(bytesOf(frame, 0, 2), (Bytes{5, 6}));
    EXPECT_EQ(bytesOf(frame, 1, 0), Bytes{11});
    EXPECT_EQ(bytesOf(frame, 2, 0), Bytes{100});
    EXPECT_EQ(bytesOf(frame, 1, 1), Bytes{7});
    EXPECT_EQ(bytesOf(frame, 2, 1), Bytes{9});
}

TEST(FormatConverter, ReadsEachRowOfAProducerOnce) {
    Random random;
    TestFrame const source(FRAME_I420, {5, 5}, random);
    ProbeProducer probe(source.frame());
    FormatConverter converter;
    converter.reuse(probe, FRAME_NV12);
    Frame frame;
    produceFrame(converter, frame);
    EXPECT_EQ(probe.produced(), (Bytes{0, 1, 2, 3, 4}));
    EXPECT_TRUE(probe.skipped().empty());
    EXPECT_TRUE(samePixels(frame, converted(source.frame(), FRAME_NV12)));
}

TEST(FormatConverter, ReuseOfTheSameGeometryAllocatesNothing) {
    Random random;
    TestFrame const first(FRAME_BGR24, {5, 5}, random);
    TestFrame const second(FRAME_BGR24, {5, 5}, random);
    TestFrame target(FRAME_I420, {5, 5});
    FormatConverter converter;
    converter.reuse(first.frame(), FRAME_I420);
    produceFrame(converter, target.frame());
    std::uint64_t const calls = allocationCalls();
    converter.reuse(second.frame(), FRAME_I420);
    produceFrame(converter, target.frame());
    EXPECT_EQ(allocationCalls(), calls);
    EXPECT_TRUE(samePixels(target.frame(), converted(second.frame(), FRAME_I420)));
}

TEST(FormatConverter, EqualFormatsLeaveAConversionArmed) {
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

TEST(FormatConverter, AConversionClearsTheCopier) {
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

TEST(FormatConverter, AFailedReuseClearsTheCopier) {
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

TEST(FormatConverter, IsRevivedByTheNextReuse) {
    TestFrame source(FRAME_GRAY8, {2, 2});
    fill(source.frame(), 7);
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_BGR24);
    EXPECT_THROW(converter.reuse(source.frame(), FRAME_RGB24), Exception);
    converter.reuse(source.frame(), FRAME_BGR24);
    Frame frame;
    produceFrame(converter, frame);
    EXPECT_TRUE(isFilledWith(frame, 7));
}

TEST(FormatConverter, FormatsWithoutARecordAreRefusedAtFirst) {
    TestFrame const source(FRAME_I420, {4, 4});
    for (FrameFormat const format :
         {FRAME_RGB24, FRAME_RGB_PLANAR, FRAME_BGR_PLANAR, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        FormatConverter converter;
        expectException(StatusOutOfRange, outOfRange,
                        [&] { converter.reuse(source.frame(), format); });
        EXPECT_FALSE(converter.initialized());
    }
}

// Formats without a record are written by the record of the destination before, as far as it stays
// inside their rows.
class StaleRecord : public testing::Test {
  protected:
    // Y 1 to 5, U 21 to 23, V 31 to 33; in the second row all are higher by 100.
    StaleRecord() {
        fill(_source.frame(), 0, {{1, 2, 3, 4, 5}, {101, 102, 103, 104, 105}});
        fill(_source.frame(), 1, {{31, 32, 33}, {131, 132, 133}});
        fill(_source.frame(), 2, {{21, 22, 23}, {121, 122, 123}});
    }

    // What `dst` looks like after a conversion to `before`; untouched bytes are 0.
    Frame convert(FrameFormat before, FrameFormat dst) {
        FormatConverter converter;
        converter.reuse(_source.frame(), before);
        converter.reuse(_source.frame(), dst);
        EXPECT_EQ(converter.layout().format, dst);
        _target.emplace(dst, Size{5, 2}, Placement{4, Guard::AtEnd});
        produceFrame(converter, _target->frame());
        _target->expectGapsUntouched();
        return _target->frame();
    }

  private:
    TestFrame _source{FRAME_YV16, {5, 2}};
    std::optional<TestFrame> _target;
};

TEST_F(StaleRecord, SemiPlanarInPlanes) {
    Frame const frame = convert(FRAME_NV16, FRAME_BGR_PLANAR);
    EXPECT_EQ(bytesOf(frame, 0, 0), (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(bytesOf(frame, 1, 0), (Bytes{21, 31, 22, 32, 23}));
    EXPECT_EQ(bytesOf(frame, 1, 1), (Bytes{121, 131, 122, 132, 123}));
    EXPECT_EQ(bytesOf(frame, 2, 0), Bytes(5, 0));
}

TEST_F(StaleRecord, TwoRowsAtATime) {
    Frame const frame = convert(FRAME_NV12, FRAME_RGB_PLANAR);
    EXPECT_EQ(bytesOf(frame, 0, 1), (Bytes{101, 102, 103, 104, 105}));
    EXPECT_EQ(bytesOf(frame, 1, 0), (Bytes{71, 81, 72, 82, 73}));
    EXPECT_EQ(bytesOf(frame, 1, 1), (Bytes{121, 131, 122, 132, 123}));
}

TEST_F(StaleRecord, PackedInPlanes) {
    Frame const frame = convert(FRAME_UYVY, FRAME_BGR_PLANAR);
    EXPECT_EQ(bytesOf(frame, 0, 0), (Bytes{21, 1, 31, 2, 22}));
    EXPECT_EQ(bytesOf(frame, 1, 0), Bytes(5, 0));
    Frame const triples = convert(FRAME_YUV444, FRAME_RGB_PLANAR);
    EXPECT_EQ(bytesOf(triples, 0, 1), (Bytes{101, 121, 131, 102, 121}));
}

TEST_F(StaleRecord, PackedInPacked) {
    Frame const frame = convert(FRAME_YUYV, FRAME_RGB24);
    EXPECT_EQ(bytesOf(frame, 0, 0), (Bytes{1, 21, 2, 31, 3, 22, 4, 32, 5, 23, 0, 33, 0, 0, 0}));
}

TEST_F(StaleRecord, PlanesInOnePlaneLeaveLumaOnly) {
    Frame const frame = convert(FRAME_I420, FRAME_RGB24);
    EXPECT_EQ(bytesOf(frame, 0, 1), (Bytes{101, 102, 103, 104, 105, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(StaleRecord, BytesInFloats) {
    Frame const frame = convert(FRAME_YUV444_PLANAR, FRAME_BGR_32F_PLANAR);
    Bytes const starts[] = {{1, 2, 3, 4, 5, 0}, {21, 21, 22, 22, 23, 0}, {31, 31, 32, 32, 33, 0}};
    for (int plane = 0; plane < 3; ++plane) {
        Bytes row = bytesOf(frame, plane, 0);
        row.resize(6);
        EXPECT_EQ(row, starts[plane]);
    }
}

}  // namespace

}  // namespace ox::test
