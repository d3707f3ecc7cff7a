// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames that are converted at once, against the same conversion row by row.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <tuple>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_format_converter.h"
#include "support/random.h"
#include "support/test_frame.h"

namespace ox::test::frame_conversion {

namespace {

bool isYuv(FrameFormat format) {
    return format >= FRAME_I420 && format <= FRAME_YUV444_PLANAR;
}

// Frames of a format and a size whose planes have gaps between rows where a bit of a mask says so.
class GappedFrames {
  public:
    GappedFrames(FrameFormat format, Size size, Random& random)
        : _tight(format, size, random, {0, Guard::AtEnd}),
          _gapped(format, size, random, {3, Guard::AtStart}) {}

    Frame withGaps(unsigned mask) const {
        FrameLayout layout = _tight.layout();
        unsigned char* planes[4]{};
        for (int i = 0; i < layout.planeCount; ++i) {
            Frame const& from = (mask >> i) % 2 != 0 ? _gapped.frame() : _tight.frame();
            layout.plane[i] = from.layout().plane[i];
            planes[i] = from.planeData(i);
        }
        return Frame::wrap(layout, planes);
    }

    void expectGapsUntouched() const {
        _tight.expectGapsUntouched();
        _gapped.expectGapsUntouched();
    }

  private:
    TestFrame _tight;
    TestFrame _gapped;
};

constexpr unsigned char untouched = 0x3C;

Frame filledFrame(FrameFormat format, Size size) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(), 0);
    fill(frame, untouched);
    return frame;
}

bool arm(FormatConverter& converter, Frame const& src, FrameFormat format) {
    try {
        converter.reuse(src, format);
        return true;
    } catch (Exception const&) {
        return false;
    }
}

class FrameConversion : public testing::Test {
  protected:
    // Every pair of formats of that size, by a converter that has been armed for `before`.
    void checkPairs(Size size, FrameFormat before) {
        for (FrameFormat const from : allFormats()) {
            for (FrameFormat const to : allFormats()) {
                FormatConverter converter;
                Frame const small = filledFrame(FRAME_BGR24, {4, 4});
                ASSERT_TRUE(before == FRAME_FORMAT_NONE || arm(converter, small, before));
                GappedFrames const& src = frames(from, size);
                if (from != to && arm(converter, src.withGaps(0), to)) {
                    SCOPED_TRACE(describe(from, size) + " to " + toString(to) + " after " +
                                 toString(before));
                    checkGaps(converter, src, frames(to, size));
                }
                if (HasFailure()) {
                    return;
                }
            }
        }
    }

    int conversions() const { return _conversions; }

  private:
    GappedFrames const& frames(FrameFormat format, Size size) {
        return _frames
            .try_emplace(std::tuple(format, size.width, size.height), format, size, _random)
            .first->second;
    }

    void checkGaps(FormatConverter& converter, GappedFrames const& src, GappedFrames const& dst) {
        constexpr unsigned all = 7;
        std::array<std::array<unsigned, 2>, 6> masks{{{0, 0}, {all, 0}, {0, all}, {all, all}}};
        for (std::size_t i = 4; i < masks.size(); ++i) {
            masks[i] = {drawMask(), drawMask()};
        }
        for (auto const& [src_mask, dst_mask] : masks) {
            check(converter, src.withGaps(src_mask), dst.withGaps(dst_mask));
        }
        dst.expectGapsUntouched();
    }

    void check(FormatConverter& converter, Frame const& src, Frame dst) {
        Frame expected = filledFrame(dst.format(), dst.size());
        converter.reuse(src, dst.format());
        produceFrame(converter, expected);
        fill(dst, untouched);
        converter.reuse(src, dst.format());
        ASSERT_TRUE(converter.produceAtOnce(dst));
        ASSERT_TRUE(samePixels(dst, expected));
        ++_conversions;
    }

    unsigned drawMask() { return static_cast<unsigned>(_random.between(1, 6)); }

    Random _random{31};
    std::map<std::tuple<FrameFormat, int, int>, GappedFrames> _frames;
    int _conversions = 0;
};

TEST_F(FrameConversion, SmallSizes) {
    for (int width = 1; width <= 5; ++width) {
        for (int height = 1; height <= 5; height += emulated() ? 2 : 1) {
            checkPairs({width, height}, FRAME_FORMAT_NONE);
        }
    }
    EXPECT_GT(conversions(), 1000);
}

TEST_F(FrameConversion, LargerSizes) {
    for (Size const size : {Size{130, 6}, Size{129, 5}, Size{64, 3}, Size{1030, 4}}) {
        checkPairs(size, FRAME_FORMAT_NONE);
    }
}

// Formats without a record are written by that of the destination before.
TEST_F(FrameConversion, ByStaleRecords) {
    for (FrameFormat const before : allFormats()) {
        for (Size const size : {Size{5, 3}, Size{6, 4}, Size{66, 5}}) {
            if (isYuv(before)) {
                checkPairs(size, before);
            }
        }
    }
}

// Sources and destinations of other calls: a converter from BGR24 to gray, of 4x2.
class AtOnce : public testing::Test {
  protected:
    AtOnce() { converter.reuse(src, FRAME_GRAY8); }

    void expectRefused() { expectRefused(FRAME_GRAY8, {4, 2}); }

    void expectRefused(FrameFormat format, Size size) {
        Frame other = filledFrame(format, size);
        EXPECT_FALSE(converter.produceAtOnce(other));
        EXPECT_TRUE(isFilledWith(other, untouched));
    }

    // What the rows from the current one on come to.
    Frame rest() {
        Frame frame = filledFrame(FRAME_GRAY8, {4, 2});
        for (int y = 0; y < 2; ++y) {
            RowData row{{rowOf(frame, 0, y), nullptr, nullptr, nullptr}};
            converter.produce(row);
            converter.next();
        }
        return frame;
    }

    Frame gray() {
        FormatConverter other;
        other.reuse(src, FRAME_GRAY8);
        Frame frame;
        produceFrame(other, frame);
        return frame;
    }

    Frame src = drawFrame();
    Frame dst = filledFrame(FRAME_GRAY8, {4, 2});
    FormatConverter converter;

  private:
    static Frame drawFrame() {
        Random random;
        Frame frame = filledFrame(FRAME_BGR24, {4, 2});
        fill(frame, random);
        return frame;
    }
};

TEST_F(AtOnce, NothingIsLeftBehindIt) {
    EXPECT_TRUE(converter.produceAtOnce(dst));
    EXPECT_TRUE(samePixels(dst, gray()));
    expectRefused();
    fill(dst, untouched);
    RowData row{{rowOf(dst, 0, 0), nullptr, nullptr, nullptr}};
    converter.produce(row);
    EXPECT_TRUE(isFilledWith(dst, untouched));
    EXPECT_FALSE(converter.next());
    converter.reuse(src, FRAME_GRAY8);
    EXPECT_TRUE(samePixels(rest(), gray()));
}

TEST_F(AtOnce, NotBehindARow) {
    EXPECT_TRUE(converter.next());
    expectRefused();
    EXPECT_EQ(bytesOf(rest(), 0, 0), bytesOf(gray(), 0, 1));
}

TEST_F(AtOnce, NotIntoAnotherGeometry) {
    expectRefused(FRAME_GRAY8, {4, 3});
    expectRefused(FRAME_GRAY8, {5, 2});
    expectRefused(FRAME_GRAY8, {2, 4});
    expectRefused(FRAME_BGR24, {4, 2});
    Frame none;
    EXPECT_FALSE(converter.produceAtOnce(none));
    EXPECT_TRUE(samePixels(rest(), gray()));
}

TEST_F(AtOnce, NotFromAProducer) {
    RowCopier copier;
    copier.reuse(src);
    converter.reuse(copier, FRAME_GRAY8);
    expectRefused();
    EXPECT_TRUE(samePixels(rest(), gray()));
}

TEST_F(AtOnce, NotBetweenEqualFormats) {
    Frame const source = gray();
    converter.reuse(source, FRAME_GRAY8);
    expectRefused();
    EXPECT_TRUE(samePixels(rest(), source));
}

TEST_F(AtOnce, NotUnarmed) {
    FormatConverter fresh;
    EXPECT_FALSE(fresh.produceAtOnce(dst));
    EXPECT_THROW(converter.reuse(src, FRAME_C1_16U), Exception);
    expectRefused();
}

// The source is another frame by now.
TEST_F(AtOnce, NotFromAFrameThatHasChanged) {
    src = filledFrame(FRAME_BGR24, {4, 1});
    expectRefused();
    src = filledFrame(FRAME_RGB24, {4, 2});
    expectRefused();
    src = Frame();
    expectRefused();
}

}  // namespace

}  // namespace ox::test::frame_conversion
