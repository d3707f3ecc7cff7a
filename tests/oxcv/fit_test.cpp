// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Pictures that keep their aspect, rows with gaps, and a number for each channel.
#include "library.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "program.h"

namespace oxcv::test {

namespace {

class FitTest : public ProgramTest {
  protected:
    // `oxcv convert` of a frame to a raw one.
    std::string converted(ox::Frame const& frame, Words const& options) const {
        return ProgramTest::converted(
            bytesOf(frame), join(rawInput(frame.format(), frame.size()), options), "out.raw");
    }
};

}  // namespace

TEST_F(FitTest, ALetterboxByHand) {
    ox::Frame const gray = blankFrame(ox::FRAME_GRAY8, {2, 1});
    setBytes(gray, "ab");
    Words const fit{"--size", "2x4", "--bars", "46,1,2", "--fit"};
    EXPECT_EQ(converted(gray, join(fit, {"letterbox"})), "..ab....");
    EXPECT_EQ(converted(gray, join(fit, {"letterbox-top-left"})), "ab......");
    ox::Frame const colour = blankFrame(ox::FRAME_BGR24, {1, 1});
    setBytes(colour, "bgr");
    Words const wide{"--size", "3x1", "--fit", "letterbox", "--bars", "82,71,66"};
    EXPECT_EQ(converted(colour, wide), "BGRbgrBGR");
    EXPECT_EQ(converted(colour, join(wide, {"--format", "RGB24"})), "RGBrgbRGB");
    ox::Frame const planes = blankFrame(ox::FRAME_RGB_PLANAR, {1, 1});
    setBytes(planes, "rgb");
    EXPECT_EQ(converted(planes, wide), "RrRGgGBbB");
    EXPECT_EQ(converted(gray, {"--size", "2x2", "--fit", "letterbox"}), std::string("ab\0\0", 4));
}

TEST_F(FitTest, LetterboxesScaleThePictureAsEver) {
    for (ox::FrameFormat const format : {ox::FRAME_BGR24, ox::FRAME_BGR_PLANAR}) {
        ox::Frame const frame = randomFrame(format, {30, 20});
        std::string const inner = converted(frame, {"--size", "15x10", "--method", "area"});
        std::string const boxed = converted(
            frame, {"--size", "15x14", "--method", "area", "--fit", "letterbox", "--bars", "7"});
        ox::Frame result = blankFrame(format, {15, 14});
        setBytes(result, boxed);
        EXPECT_EQ(bytesOf(ox::getRegion(result, {0, 2, 15, 10})), inner);
        EXPECT_EQ(bytesOf(ox::getRegion(result, {0, 0, 15, 2})),
                  std::string(std::size_t{15} * 2 * 3, '\7'));
        EXPECT_EQ(bytesOf(ox::getRegion(result, {0, 12, 15, 2})),
                  std::string(std::size_t{15} * 2 * 3, '\7'));
    }
}

TEST_F(FitTest, YuvIsBoxedAsColours) {
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {32, 16});
    Words const box{"--size", "16x12", "--fit", "letterbox", "--bars", "9,200,3"};
    std::string const colours = converted(frame, join(box, {"--format", "BGR24"}));
    std::string const inner = converted(frame, {"--size", "16x8", "--format", "BGR24"});
    EXPECT_EQ(colours.substr(0, 3), std::string("\x03\xc8\x09"));
    EXPECT_EQ(colours.substr(std::size_t{16} * 2 * 3, inner.size()), inner);
    std::string const again = converted(frame, box);
    ox::Frame boxed = blankFrame(ox::FRAME_BGR24, {16, 12});
    setBytes(boxed, colours);
    EXPECT_EQ(again, bytesOf(Library("simd").inFormat(boxed, ox::FRAME_NV12)));
}

// The frames of a stream share the bars' frame.
TEST_F(FitTest, EveryFrameHasItsOwnPicture) {
    ox::Frame const one = randomFrame(ox::FRAME_BGR24, {6, 4}, 1);
    ox::Frame const two = randomFrame(ox::FRAME_BGR24, {6, 4}, 2);
    Words const options{"--size", "9x9", "--fit", "letterbox"};
    EXPECT_EQ(ProgramTest::converted(bytesOf(one) + bytesOf(two),
                                     join(rawInput(ox::FRAME_BGR24, {6, 4}), options), "out.raw"),
              converted(one, options) + converted(two, options));
}

TEST_F(FitTest, CropTakesTheMiddle) {
    for (ox::FrameFormat const format :
         {ox::FRAME_BGR24, ox::FRAME_GRAY8, ox::FRAME_NV12, ox::FRAME_YUYV, ox::FRAME_BGR_32F}) {
        ox::Frame const frame = randomFrame(format, {38, 16});
        EXPECT_EQ(converted(frame, {"--size", "8x8", "--fit", "crop"}),
                  converted(frame,
                            {"--size", "8x8", "--roi",
                             format == ox::FRAME_NV12 || format == ox::FRAME_YUYV ? "10,0,16,16"
                                                                                  : "11,0,16,16"}));
    }
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {38, 16});
    EXPECT_EQ(converted(frame, {"--size", "8x8", "--fit", "crop", "--roi", "2,0,16,14"}),
              converted(frame, {"--size", "8x8", "--roi", "3,0,14,14"}));
}

TEST_F(FitTest, TheTensorIsTheSame) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {50, 31});
    for (Words const& fit : {Words{"--fit", "letterbox", "--bars", "1,2,3"}, Words{"--fit", "crop"},
                             Words{"--fit", "letterbox-top-left"}}) {
        Words const options = join({"--size", "20x17"}, fit);
        Words const tensor = join({"tensor", "-", "-", "--raw", "--method", "bilinear", "--type",
                                   "u8", "--layout", "nhwc"},
                                  rawInput(ox::FRAME_BGR24, {50, 31}));
        EXPECT_EQ(run(join(tensor, options), bytesOf(frame)).out,
                  converted(frame, join(options, {"--format", "RGB24", "--backend", "base"})));
    }
}

TEST_F(FitTest, WhatCantBeFittedIsRefused) {
    struct Case {
        ox::FrameFormat format;
        Words options;
        int status;
        std::string text;
    };
    for (auto const& [format, options, status, text] :
         {Case{ox::FRAME_GRAY8,
               {"--fit", "crop"},
               2,
               "--fit requires --size; 'oxcv --help' tells the rest"},
          Case{ox::FRAME_GRAY8,
               {"--size", "4x4", "--bars", "1"},
               2,
               "--bars requires --fit; 'oxcv --help' tells the rest"},
          Case{ox::FRAME_GRAY8,
               {"--size", "4x4", "--fit", "fill"},
               2,
               "--fit: 'fill' is none of stretch, letterbox, letterbox-top-left, crop"},
          Case{ox::FRAME_GRAY_32F,
               {"--size", "4x4", "--fit", "letterbox"},
               1,
               "standard input: --fit: bars need gray or 8-bit red, green and blue, not GRAY_32F"},
          Case{ox::FRAME_C3_8U,
               {"--size", "4x4", "--fit", "letterbox"},
               1,
               "standard input: --fit: bars need gray or 8-bit red, green and blue, not C3_8U"}}) {
        Result const result =
            run(join(join({"convert", "-", path("out.raw")}, rawInput(format, {8, 6})), options),
                bytesOf(randomFrame(format, {8, 6})));
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.err, "oxcv: " + text + "\n");
        EXPECT_EQ(files(), Words{});
    }
}

TEST_F(FitTest, EachChannelHasItsNumber) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR_32F, {5, 3});
    auto const part = [&](std::string const& numbers, std::size_t channel) {
        std::string const all = converted(frame, {"--mul", numbers, "--add", numbers});
        std::string bytes;
        for (std::size_t i = channel * 4; i < all.size(); i += 12) {
            bytes += all.substr(i, 4);
        }
        return bytes;
    };
    EXPECT_EQ(part("2,-0.3,7", 0), part("2", 0));
    EXPECT_EQ(part("2,-0.3,7", 1), part("-0.3", 1));
    EXPECT_EQ(part("2,-0.3,7", 2), part("7", 2));

    ox::Frame const planes = randomFrame(ox::FRAME_BGR_32F_PLANAR, {5, 3});
    std::size_t const plane = sizeof(float) * 5 * 3;
    std::string const all = converted(planes, {"--mul", "1,2,3"});
    EXPECT_EQ(all.substr(0, plane), bytesOf(planes).substr(0, plane));
    EXPECT_EQ(all.substr(plane, plane), converted(planes, {"--mul", "2"}).substr(plane, plane));
    EXPECT_EQ(all.substr(2 * plane), converted(planes, {"--mul", "3"}).substr(2 * plane));

    ox::Frame const gray = randomFrame(ox::FRAME_GRAY_32F, {5, 3});
    EXPECT_EQ(converted(gray, {"--add", "1,2,3"}), converted(gray, {"--add", "1"}));
    Result const bytes = run(
        join({"convert", "-", path("x.raw"), "--mul", "1,2,3"}, rawInput(ox::FRAME_BGR24, {1, 1})),
        "abc");
    EXPECT_EQ(bytes.err, "oxcv: standard input: --mul: mul: Unsupported src format FRAME_BGR24.\n");
}

TEST_F(FitTest, RowsMayHaveGaps) {
    auto const withGaps = [](Words const& rows, std::size_t stride) {
        std::string bytes;
        for (std::string row : rows) {
            row.resize(stride, '#');
            bytes += row;
        }
        return bytes;
    };
    auto const read = [&](std::string const& bytes, ox::FrameFormat format,
                          std::string const& stride) {
        return ProgramTest::converted(
            bytes, join(rawInput(format, {3, 3}), {"--input-stride", stride}), "out.raw");
    };
    std::string const luma = withGaps({"abc", "def", "ghi"}, 7);
    EXPECT_EQ(read(luma + luma, ox::FRAME_GRAY8, "7"), "abcdefghiabcdefghi");
    EXPECT_EQ(read(luma + withGaps({"uvUV", "xyXY"}, 8), ox::FRAME_NV12, "7"), "abcdefghiuvUVxyXY");
    EXPECT_EQ(read(luma + withGaps({"uvUV", "xyXY"}, 5), ox::FRAME_NV12, "7,5"),
              "abcdefghiuvUVxyXY");
    EXPECT_EQ(
        read(luma + withGaps({"uU", "xX"}, 4) + withGaps({"vV", "yY"}, 4), ox::FRAME_I420, "7"),
        "abcdefghiuUxXvVyY");
    EXPECT_EQ(
        read(luma + withGaps({"uU", "xX"}, 4) + withGaps({"vV", "yY"}, 2), ox::FRAME_I420, "7,4,2"),
        "abcdefghiuUxXvVyY");
    std::string const array = run(join({"tensor", "-", "-", "--raw", "--size", "3x3", "--type",
                                        "u8", "--colour", "gray", "--input-stride", "7"},
                                       rawInput(ox::FRAME_GRAY8, {3, 3})),
                                  luma)
                                  .out;
    EXPECT_EQ(array, "abcdefghi");

    std::string const file = write("in.gray8", luma.substr(0, 20));
    Words const call{"convert", file, path("x.raw"), "--input-size", "3x3", "--input-stride"};
    Result const cut = run(join(call, {"7"}));
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(cut.err, "oxcv: " + file + ": frame 1 is truncated: 20 of 21 bytes\n");
    Result const narrow = run(join(call, {"2"}));
    EXPECT_EQ(narrow.status, 2);
    EXPECT_EQ(narrow.err,
              "oxcv: " + file + ": rows of plane 0 have 3 bytes, so --input-stride can't be 2\n");
    for (std::string const value : {"0", "-7", "7,", "7,0", "1,2,3,4", "2147483648", ""}) {
        Result const bad = run(join(call, {value}));
        EXPECT_EQ(bad.status, 2);
        EXPECT_EQ(bad.err, "oxcv: --input-stride: '" + value +
                               "' is no stride such as 1024, or 1024,512,512\n");
    }
    Result const huge = run(join(call, {"2147483647,2147483647,2147483647"}));
    EXPECT_EQ(huge.err, "oxcv: " + file + ": frame 1 is truncated: 20 of 6442450941 bytes\n");
}

}  // namespace oxcv::test
