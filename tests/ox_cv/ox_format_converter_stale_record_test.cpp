// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Formats without a record are written by the record of the destination before, as far as it stays
// inside their rows.
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/refusal_texts.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

using RowBytes = std::vector<int>;

TEST(FormatConverter, FormatsWithoutARecordAreRefusedAtFirst) {
    TestFrame const source(FRAME_I420, {4, 4});
    for (FrameFormat const format :
         {FRAME_RGB24, FRAME_RGB_PLANAR, FRAME_BGR_PLANAR, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        FormatConverter converter;
        expectException(StatusOutOfRange, windowSizeOutOfRange,
                        [&] { converter.reuse(source.frame(), format); });
        EXPECT_FALSE(converter.initialized());
    }
}

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
    EXPECT_EQ(bytesOf(frame, 0, 0), (RowBytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(bytesOf(frame, 1, 0), (RowBytes{21, 31, 22, 32, 23}));
    EXPECT_EQ(bytesOf(frame, 1, 1), (RowBytes{121, 131, 122, 132, 123}));
    EXPECT_EQ(bytesOf(frame, 2, 0), RowBytes(5, 0));
}

TEST_F(StaleRecord, TwoRowsAtATime) {
    Frame const frame = convert(FRAME_NV12, FRAME_RGB_PLANAR);
    EXPECT_EQ(bytesOf(frame, 0, 1), (RowBytes{101, 102, 103, 104, 105}));
    EXPECT_EQ(bytesOf(frame, 1, 0), (RowBytes{71, 81, 72, 82, 73}));
    EXPECT_EQ(bytesOf(frame, 1, 1), (RowBytes{121, 131, 122, 132, 123}));
}

TEST_F(StaleRecord, PackedInPlanes) {
    Frame const frame = convert(FRAME_UYVY, FRAME_BGR_PLANAR);
    EXPECT_EQ(bytesOf(frame, 0, 0), (RowBytes{21, 1, 31, 2, 22}));
    EXPECT_EQ(bytesOf(frame, 1, 0), RowBytes(5, 0));
    Frame const triples = convert(FRAME_YUV444, FRAME_RGB_PLANAR);
    EXPECT_EQ(bytesOf(triples, 0, 1), (RowBytes{101, 121, 131, 102, 121}));
}

TEST_F(StaleRecord, PackedInPacked) {
    Frame const frame = convert(FRAME_YUYV, FRAME_RGB24);
    EXPECT_EQ(bytesOf(frame, 0, 0), (RowBytes{1, 21, 2, 31, 3, 22, 4, 32, 5, 23, 0, 33, 0, 0, 0}));
}

TEST_F(StaleRecord, PlanesInOnePlaneLeaveLumaOnly) {
    Frame const frame = convert(FRAME_I420, FRAME_RGB24);
    EXPECT_EQ(bytesOf(frame, 0, 1),
              (RowBytes{101, 102, 103, 104, 105, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(StaleRecord, BytesInFloats) {
    Frame const frame = convert(FRAME_YUV444_PLANAR, FRAME_BGR_32F_PLANAR);
    RowBytes const starts[] = {
        {1, 2, 3, 4, 5, 0}, {21, 21, 22, 22, 23, 0}, {31, 31, 32, 32, 33, 0}};
    for (int plane = 0; plane < 3; ++plane) {
        RowBytes row = bytesOf(frame, plane, 0);
        row.resize(6);
        EXPECT_EQ(row, starts[plane]);
    }
}

}  // namespace

}  // namespace ox::test
