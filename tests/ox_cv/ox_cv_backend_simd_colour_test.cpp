// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Colour conversion by the vector backend: pictures small enough to be written out.
#include <gtest/gtest.h>

#include <limits>

#include "model/vector_colour.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_helpers.h"

namespace ox::test {

namespace {

TEST(CvBackendSimdColour, EqualFormatsAreCopiedInPlace) {
    CvBackendSimd backend;
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

// A rectangle with one positive side is none.
TEST(CvBackendSimdColour, RegionsNeedBothSides) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_RGB24, {2, 2});
    for (Rect const whole : {Rect{1, 1, 1, 0}, Rect{1, 1, 0, 1}, Rect{9, 9, -1, 9}, emptyRoi()}) {
        TestFrame dst(FRAME_BGR24, {2, 2});
        backend.colorCvt(src.frame(), dst.frame(), whole);
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{{2, 1, 0, 5, 4, 3}, {22, 21, 20, 25, 24, 23}}));
    }
}

// Luma below 16 counts as 16, and 516 x 64 is 129 x 256. The last two columns are no block.
TEST(CvBackendSimdColour, WholeNv12FramesOfEqualStridesGoDirectly) {
    CvBackendSimd backend;
    for (Rect const roi : {Rect{}, Rect{0, 0, 10, 0}, Rect{0, 0, 0, 4}, Rect{5, 1, -2, 9}}) {
        TestFrame const src = flatNv12({10, 4}, 5, 192, 128);
        TestFrame dst(FRAME_BGR24, {10, 4}, {3, Guard::AtEnd});
        fill(dst.frame(), 77);
        backend.colorCvt(src.frame(), dst.frame(), roi);
        Bytes row;
        for (int x = 0; x < 8; ++x) {
            row.insert(row.end(), {129, 0, 0});
        }
        row.resize(30, 77);
        EXPECT_EQ(rowsOf(dst.frame()), Rows(4, row));
        dst.expectGapsUntouched();
        EXPECT_FALSE(CvBackendSimdProbe::colorFrame(backend).initialized());
    }
}

Rows repeatedPixel(Bytes const& pixel, Size size) {
    Bytes row;
    for (int x = 0; x < size.width; ++x) {
        row.insert(row.end(), pixel.begin(), pixel.end());
    }
    return Rows(static_cast<std::size_t>(size.height), row);
}

// Luma 5 is 11 below black: 16531 x 64 - 9535 x 11 + 4096 = 116 x 8192 and more.
TEST(CvBackendSimdColour, Nv12RegionsDoNotGoDirectly) {
    CvBackendSimd backend;
    TestFrame const src = flatNv12({10, 4}, 5, 192, 128);
    TestFrame dst(FRAME_BGR24, {10, 4}, {3, Guard::AtEnd});
    backend.colorCvt(src.frame(), dst.frame(), {0, 0, 10, 4});
    EXPECT_EQ(rowsOf(dst.frame()), repeatedPixel({116, 0, 0}, {10, 4}));
}

TEST(CvBackendSimdColour, Nv12OfUnequalStridesDoesNotGoDirectly) {
    CvBackendSimd backend;
    model::Image picture = model::makeImage(model::Nv12, 10, 4, 128);
    picture.planes[0].bytes.assign(40, 5);
    for (std::size_t i = 0; i < 20; i += 2) {
        picture.planes[1].bytes[i] = 192;
    }
    for (Placements const& placements :
         {Placements{{{0, 2}, {0, 0}}}, Placements{{{0, 0}, {0, 2}}}}) {
        PlacedImage const src(picture, placements);
        TestFrame dst(FRAME_BGR24, {10, 4}, {3, Guard::AtEnd});
        backend.colorCvt(src.frame(), dst.frame(), {});
        EXPECT_EQ(rowsOf(dst.frame()), repeatedPixel({116, 0, 0}, {10, 4}));
    }
}

TEST(CvBackendSimdColour, Nv21TakesVFirst) {
    CvBackendSimd backend;
    TestFrame const src = picture(FRAME_NV21, {2, 2}, {{{82, 82}, {82, 82}}, {{240, 90}}});
    TestFrame bgr(FRAME_BGR24, {2, 2});
    backend.colorCvt(src.frame(), bgr.frame(), {});
    EXPECT_EQ(rowsOf(bgr.frame()), repeatedPixel({0, 1, 255}, {2, 2}));  // green 9200 / 8192
    TestFrame rgb(FRAME_RGB24, {2, 2});
    backend.colorCvt(src.frame(), rgb.frame(), {});
    EXPECT_EQ(rowsOf(rgb.frame()), repeatedPixel({255, 1, 0}, {2, 2}));
    TestFrame i420(FRAME_I420, {2, 2});
    backend.colorCvt(src.frame(), i420.frame(), {});
    EXPECT_EQ(planesOf(i420.frame()), (std::vector<Rows>{{{82, 82}, {82, 82}}, {{90}}, {{240}}}));
    TestFrame nv12(FRAME_NV12, {2, 2});
    backend.colorCvt(src.frame(), nv12.frame(), {});
    EXPECT_EQ(rowsOf(nv12.frame(), 1), (Rows{{90, 240}}));
}

// What a BGR picture of 5 x 3 becomes: columns 0 to 3 of rows 0 and 1 share chroma by squares, the
// last column and the last row have that of the pixels at even places.
TEST(CvBackendSimdColour, OddEdgesPickTheirChroma) {
    CvBackendSimd backend;
    model::Image bgr = model::makeImage(model::Bgr24, 5, 3, 0);
    auto const paint = [&](std::size_t x, std::size_t y, std::uint8_t b, std::uint8_t g,
                           std::uint8_t r) {
        std::uint8_t* const pixel = &bgr.planes[0].bytes[(5 * y + x) * 3];
        pixel[0] = b;
        pixel[1] = g;
        pixel[2] = r;
    };
    paint(0, 0, 0, 0, 255);  // alone red in its square: its mean is 64
    paint(4, 0, 0, 0, 255);  // above a black one
    paint(2, 2, 0, 0, 255);
    paint(3, 2, 255, 255, 255);
    paint(4, 2, 255, 255, 255);
    PlacedImage const src(bgr);
    TestFrame dst(FRAME_I420, {5, 3}, {3, Guard::AtEnd});
    backend.colorCvt(src.frame(), dst.frame(), {});
    EXPECT_EQ(
        planesOf(dst.frame()),
        (std::vector<Rows>{{{82, 16, 16, 16, 82}, {16, 16, 16, 16, 16}, {16, 16, 82, 235, 235}},
                           {{119, 128, 90}, {128, 90, 128}},
                           {{156, 128, 240}, {128, 240, 128}}}));
    Frame const& scratch = CvBackendSimdProbe::colorFrame(backend);
    EXPECT_EQ(scratch.format(), FRAME_YUV444_PLANAR);  // of the bottom strip
    EXPECT_EQ(scratch.size(), (Size{5, 1}));
    TestFrame nv12(FRAME_NV12, {5, 3}, {3, Guard::AtEnd});
    backend.colorCvt(src.frame(), nv12.frame(), {});
    EXPECT_EQ(rowsOf(nv12.frame(), 0), rowsOf(dst.frame(), 0));
    EXPECT_EQ(rowsOf(nv12.frame(), 1),
              (Rows{{119, 156, 128, 128, 90, 240}, {128, 128, 90, 240, 128, 128}}));
}

// The right strip of the one, the bottom strip of the other have no pixels.
TEST(CvBackendSimdColour, PicturesOfOneColumnOrRow) {
    CvBackendSimd backend;
    for (FrameFormat const format : {FRAME_I420, FRAME_NV12}) {
        for (Size const size : {Size{1, 1}, Size{1, 2}, Size{2, 1}, Size{1, 5}, Size{5, 1}}) {
            model::Image const red = [&] {
                model::Image image = model::makeImage(model::Bgr24, size.width, size.height, 0);
                for (std::size_t i = 2; i < image.planes[0].bytes.size(); i += 3) {
                    image.planes[0].bytes[i] = 255;
                }
                return image;
            }();
            PlacedImage const src(red, everywhere(gapped));
            PlacedImage dst(model::makeImage(static_cast<int>(format), size.width, size.height, 7),
                            everywhere(gapped));
            backend.colorCvt(src.frame(), dst.frame(), {});
            EXPECT_TRUE(dst.holds(model::vectorColour(red, static_cast<int>(format))));
            EXPECT_EQ(dst.frame().planeData(0)[0], 82);
            EXPECT_EQ(dst.frame().planeData(1)[0], 90);
        }
    }
}

TEST(CvBackendSimdColour, Nv12AndI420AgreeForOnePicture) {
    CvBackendSimd backend;
    Random random;
    for (Size const size : {Size{34, 6}, Size{33, 5}, Size{7, 4}, Size{66, 7}}) {
        TestFrame const src(FRAME_BGR24, size, random);
        TestFrame i420(FRAME_I420, size);
        TestFrame nv12(FRAME_NV12, size);
        backend.colorCvt(src.frame(), i420.frame(), {});
        backend.colorCvt(src.frame(), nv12.frame(), {});
        EXPECT_EQ(rowsOf(nv12.frame(), 0), rowsOf(i420.frame(), 0));
        for (int y = 0; y < (size.height + 1) / 2; ++y) {
            Bytes pairs;
            for (int x = 0; x < (size.width + 1) / 2; ++x) {
                pairs.push_back(i420.row(1, y)[x]);
                pairs.push_back(i420.row(2, y)[x]);
            }
            EXPECT_EQ(bytesOf(nv12.frame(), 1, y), pairs);
        }
    }
}

// Five colours in a row of odd width, with no strip.
TEST(CvBackendSimdColour, FullChromaNeedsNoEdges) {
    CvBackendSimd backend;
    TestFrame const src =
        picture(FRAME_BGR24, {5, 1}, {{{0, 0, 0, 255, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 0}}});
    TestFrame packed(FRAME_YUV444, {5, 1});
    backend.colorCvt(src.frame(), packed.frame(), {});
    EXPECT_EQ(rowsOf(packed.frame()),
              (Rows{{16, 128, 128, 235, 128, 128, 82, 90, 240, 145, 54, 34, 41, 240, 110}}));
    EXPECT_EQ(CvBackendSimdProbe::colorFrame(backend).size(), (Size{5, 1}));
    TestFrame planar(FRAME_YUV444_PLANAR, {5, 1});
    backend.colorCvt(src.frame(), planar.frame(), {});
    EXPECT_EQ(planesOf(planar.frame()), (std::vector<Rows>{{{16, 235, 82, 145, 41}},
                                                           {{128, 128, 90, 54, 240}},
                                                           {{128, 128, 240, 34, 110}}}));
    TestFrame back(FRAME_BGR24, {5, 1});
    backend.colorCvt(packed.frame(), back.frame(), {});
    EXPECT_EQ(rowsOf(back.frame()),
              (Rows{{0, 0, 0, 255, 255, 255, 0, 1, 255, 1, 255, 0, 255, 0, 0}}));
}

TEST(CvBackendSimdColour, GrayOfColours) {
    CvBackendSimd backend;
    TestFrame const src =
        picture(FRAME_BGR24, {5, 1}, {{{0, 0, 0, 255, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 0}}});
    TestFrame gray(FRAME_GRAY8, {5, 1});
    backend.colorCvt(src.frame(), gray.frame(), {});
    EXPECT_EQ(rowsOf(gray.frame()), (Rows{{0, 255, 76, 150, 29}}));
    TestFrame bgr(FRAME_BGR24, {5, 1});
    backend.colorCvt(gray.frame(), bgr.frame(), {});
    EXPECT_EQ(rowsOf(bgr.frame()),
              (Rows{{0, 0, 0, 255, 255, 255, 76, 76, 76, 150, 150, 150, 29, 29, 29}}));
}

// Floats that are no numbers count as 0, signalling ones too.
TEST(CvBackendSimdColour, FloatsAreCutAndClamped) {
    using Limits = std::numeric_limits<float>;
    CvBackendSimd backend;
    std::vector<float> const floats{1.9F,
                                    -1.0F,
                                    -0.5F,
                                    254.99F,
                                    255.5F,
                                    300.0F,
                                    1e20F,
                                    -1e20F,
                                    0.0F,
                                    Limits::infinity(),
                                    -Limits::infinity(),
                                    -Limits::quiet_NaN(),
                                    Limits::quiet_NaN(),
                                    Limits::signaling_NaN(),
                                    -Limits::signaling_NaN()};
    Bytes const bytes{1, 0, 0, 254, 255, 255, 255, 0, 0, 255, 0, 0, 0, 0, 0};
    for (int repeats : {1, 4}) {  // below a block of 16, and above
        Size const size{5 * repeats, 1};
        TestFrame src(FRAME_BGR_32F, size);
        Bytes expected;
        for (int i = 0; i < repeats; ++i) {
            std::memcpy(src.row(0, 0) + 60 * i, floats.data(), 60);
            expected.insert(expected.end(), bytes.begin(), bytes.end());
        }
        TestFrame dst(FRAME_BGR24, size);
        backend.colorCvt(src.frame(), dst.frame(), {});
        EXPECT_EQ(bytesOf(dst.frame(), 0, 0), expected);
        TestFrame rgb(FRAME_RGB24, size);
        backend.colorCvt(src.frame(), rgb.frame(), {});
        EXPECT_EQ(bytesOf(rgb.frame(), 0, 0), expected);  // floats have no order of their own
    }
}

TEST(CvBackendSimdColour, FloatsGiveEveryByteBackWithoutAnExchange) {
    CvBackendSimd backend;
    TestFrame src(FRAME_RGB24, {86, 1});
    std::iota(src.row(0, 0), src.row(0, 0) + 86 * 3, static_cast<unsigned char>(0));
    TestFrame floats(FRAME_BGR_32F, {86, 1});
    backend.colorCvt(src.frame(), floats.frame(), {});
    EXPECT_EQ(samplesOf<float>(floats.frame(), 0)[200], 200.0F);
    TestFrame dst(FRAME_BGR24, {86, 1});
    backend.colorCvt(floats.frame(), dst.frame(), {});
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0), bytesOf(src.frame(), 0, 0));
}

// Neither `dst` nor the region of it that a caller holds changes its place.
TEST(CvBackendSimdColour, WritesThroughRegionsOfTheDestination) {
    CvBackendSimd backend;
    Random random;
    for (RoutedPair const& each : colourRoutes) {
        model::Image whole = drawImage(random, {static_cast<int>(each.dst), 40, 12});
        PlacedImage canvas(whole, everywhere(gapped));
        model::Image const picture = drawPicture(random, {static_cast<int>(each.src), 34, 6});
        PlacedImage const src(picture, Placements{{{0, 0}, {0, 2}}});  // not the direct path
        Frame window = getRegion(canvas.frame(), {4, 2, 34, 6});
        backend.colorCvt(src.frame(), window, {});
        model::paste(model::vectorColour(picture, static_cast<int>(each.dst)), whole, 4, 2);
        EXPECT_TRUE(canvas.holds(whole)) << each.src << " to " << each.dst;
    }
}

}  // namespace

}  // namespace ox::test
