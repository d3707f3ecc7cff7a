// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Colour conversion by the pipeline backend.
#include <gtest/gtest.h>

#include <vector>

#include "ox_cv/backend_frames.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_impl_rules.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

Bytes repeated(Bytes const& pixel, int count) {
    Bytes row;
    for (int i = 0; i < count; ++i) {
        row.insert(row.end(), pixel.begin(), pixel.end());
    }
    return row;
}

TEST(CvBackendBaseColour, ChecksItsFrames) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_BGR24, {4, 4});
    TestFrame dst(FRAME_GRAY8, {4, 3});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_BGR24, {4, 4});
    expectException(StatusAssertionFailed, "Assertion failed: src.initialized()",
                    [&] { backend.colorCvt(emptyFrame(), none, {}); });
    expectException(StatusAssertionFailed, wrongDevice, [&] {
        backend.colorCvt(src.frame(), elsewhere, {9, 9, 9, 9});
    });
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { backend.colorCvt(elsewhere, elsewhere, {}); });
    for (Frame* const target : {&dst.frame(), &none}) {
        expectException(StatusAssertionFailed, "Assertion failed: temp.size() == dst.size()",
                        [&] { backend.colorCvt(src.frame(), *target, {}); });
    }
    expectException(StatusAssertionFailed, "Assertion failed: temp.size() == dst.size()", [&] {
        backend.colorCvt(src.frame(), dst.frame(), {0, 0, 3, 3});
    });
    expectStatus(StatusOutOfRange, [&] {
        backend.colorCvt(src.frame(), dst.frame(), {1, 0, 4, 3});
    });
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
}

TEST(CvBackendBaseColour, EqualFormatsAreCopied) {
    CvBackendBase backend;
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {5, 3});
        TestFrame dst(format, {5, 3}, {13, Guard::AtEnd});
        unsigned char* const storage = dst.frame().planeData(0);
        backend.colorCvt(src.frame(), dst.frame(), {});
        EXPECT_TRUE(samePixels(dst.frame(), src.frame()));
        EXPECT_EQ(dst.frame().planeData(0), storage);
        dst.expectGapsUntouched();
    }
}

TEST(CvBackendBaseColour, ConvertsARegion) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_BGR_PLANAR, {4, 3});
    TestFrame dst(FRAME_BGR24, {2, 1});
    backend.colorCvt(src.frame(), dst.frame(), {1, 2, 2, 1});
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{41, 41, 41, 42, 42, 42}}));
}

// 219 x 298 + 128 is 255 x 256 and more, 219 x 297 is 254 x 256 and more.
TEST(CvBackendBaseColour, WholeNv12FramesGoDirectly) {
    CvBackendBase backend;
    TestFrame const src = flatNv12({10, 3}, 235, 128, 128);
    // a rectangle with one positive side is none
    for (Rect const whole : {Rect{}, Rect{0, 0, 10, 0}, Rect{0, 0, 0, 3}, Rect{5, 1, -2, 9}}) {
        TestFrame dst(FRAME_BGR24, {10, 3}, {3, Guard::AtEnd});
        fill(dst.frame(), 77);
        backend.colorCvt(src.frame(), dst.frame(), whole);
        Bytes row = repeated({255, 255, 255}, 8);
        row.resize(30, 77);
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{row, row, Bytes(30, 77)}));
        dst.expectGapsUntouched();
    }
    TestFrame dst(FRAME_BGR24, {10, 3});
    backend.colorCvt(src.frame(), dst.frame(), {0, 0, 10, 3});
    EXPECT_TRUE(isFilledWith(dst.frame(), 254));
}

TEST(CvBackendBaseColour, OtherPairsDoNotGoDirectly) {
    CvBackendBase backend;
    TestFrame bgr(FRAME_BGR24, {8, 2});
    TestFrame nv21(FRAME_NV21, {8, 2});
    fill(nv21.frame(), 128);
    fill(nv21.frame(), 0, Rows(2, Bytes(8, 235)));
    backend.colorCvt(nv21.frame(), bgr.frame(), {});
    EXPECT_TRUE(isFilledWith(bgr.frame(), 254));
    TestFrame const src = flatNv12({8, 2}, 235, 128, 128);
    TestFrame gray(FRAME_GRAY8, {8, 2});
    backend.colorCvt(src.frame(), gray.frame(), {});
    EXPECT_TRUE(isFilledWith(gray.frame(), 235));
}

// White NV12 whose luma rows lie 24 apart, over chroma rows without gaps.
class WideLuma {
  public:
    explicit WideLuma(Size size)
        : _luma(FRAME_GRAY8, size, {static_cast<std::size_t>(24 - size.width), Guard::AtEnd}),
          _chroma(FRAME_C2_8U, {(size.width + 1) / 2, (size.height + 1) / 2}, {0, Guard::AtEnd}) {
        fill(_luma.frame(), 235);
        fill(_chroma.frame(), 128);
        FrameLayout layout(FRAME_NV12, size, 1);
        layout.plane[0].stride = 24;
        unsigned char* const planes[] = {_luma.row(0, 0), _chroma.row(0, 0)};
        frame = Frame::wrap(layout, planes);
    }

    Frame frame;

  private:
    TestFrame _luma;
    TestFrame _chroma;
};

// The direct call would leave the second of two chroma rows, 16 bytes each. With one pair of rows
// it reads the first alone.
TEST(CvBackendBaseColour, ReadsNothingOutsideChromaRows) {
    CvBackendBase backend;
    for (int const height : {2, 3, 4}) {
        WideLuma const src({16, height});
        TestFrame dst(FRAME_BGR24, {16, height});
        backend.colorCvt(src.frame, dst.frame(), {});
        int const white = height < 4 ? 255 : 254;
        EXPECT_EQ(bytesOf(dst.frame(), 0, 0), Bytes(48, white));
        EXPECT_EQ(bytesOf(dst.frame(), 0, height - 1), Bytes(48, height == 3 ? 0 : white));
    }
}

// Without a block nothing is read.
TEST(CvBackendBaseColour, DirectCallLeavesNarrowFramesAlone) {
    CvBackendBase backend;
    WideLuma const src({7, 8});
    TestFrame dst(FRAME_BGR24, {7, 8});
    backend.colorCvt(src.frame, dst.frame(), {});
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
}

// Width 9 packed tightly: chroma rows of 10 bytes, of which the second pair starts at byte 9.
TEST(CvBackendBaseColour, DirectCallStepsOverChromaByLumasStride) {
    CvBackendBase backend;
    TestFrame const src = flatNv12({9, 4}, 80, 128, 128, {0, Guard::AtEnd});
    src.row(1, 0)[9] = 192;  // V of the last pair of row 0, U of the first pair of the second
    TestFrame dst(FRAME_BGR24, {9, 4});
    backend.colorCvt(src.frame(), dst.frame(), {});
    Bytes upper = repeated({75, 75, 75}, 8);
    Bytes lower = repeated({204, 50, 75}, 2);
    Bytes const rest = repeated({75, 75, 75}, 6);
    lower.insert(lower.end(), rest.begin(), rest.end());
    upper.resize(27);
    lower.resize(27);
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{upper, upper, lower, lower}));
}

// The second chroma row that the direct call would read starts at a row's start and the stride's
// surplus, and has 8 bytes.
TEST(CvBackendBaseColour, DirectCallStaysInChromaRowsToTheByte) {
    auto const isInside = [](std::int64_t luma_stride, std::int64_t chroma_stride) {
        std::vector<unsigned char> luma(static_cast<std::size_t>(4 * luma_stride));
        std::vector<unsigned char> chroma(static_cast<std::size_t>(2 * chroma_stride));
        FrameLayout layout(FRAME_NV12, {8, 4}, 1);
        layout.plane[0].stride = luma_stride;
        layout.plane[1].stride = chroma_stride;
        unsigned char* const planes[] = {luma.data(), chroma.data()};
        return impl::readsInsideChroma(Frame::wrap(layout, planes));
    };
    EXPECT_TRUE(isInside(16, 16));
    EXPECT_FALSE(isInside(17, 16));
    EXPECT_FALSE(isInside(24, 16));
    EXPECT_TRUE(isInside(8, 8));
    EXPECT_FALSE(isInside(9, 8));  // rows follow one another, but these are the last
    EXPECT_FALSE(isInside(32, 16));
}

TEST(CvBackendBaseColour, UnsupportedPairsPass) {
    CvBackendBase backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame dst(refusedFromGray, {4, 4});
    expectException(StatusNotSupported, unsupportedPair,
                    [&] { backend.colorCvt(src.frame(), dst.frame(), {}); });
}

}  // namespace

}  // namespace ox::test
