// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Warps and rotations.
#include <cmath>
#include <numbers>

#include "library.h"
#include "program.h"

namespace oxcv::test {

namespace {

using namespace std::string_literals;

constexpr char const* methods[]{"nearest", "bilinear"};

class WarpTest : public ProgramTest {
  protected:
    std::string warped(std::string const& pixels, ox::FrameFormat format, ox::Size size,
                       Words const& options) const {
        return converted(pixels, join(rawInput(format, size), options), "out.raw");
    }
};

std::string numbers(float const (&matrix)[2][3]) {
    std::string text;
    for (auto const& row : matrix) {
        for (float const number : row) {
            text += (text.empty() ? "" : ",") + std::to_string(number);
        }
    }
    return text;
}

// A tilt that moves the picture a little.
constexpr float tilt[2][3] = {{0.75F, 0.25F, 1.5F}, {-0.25F, 0.875F, 2.25F}};

ox::ResizeMethod methodOf(std::string const& name) {
    return name == "nearest" ? ox::ResizeNearestNeighbour : ox::ResizeBilinear;
}

}  // namespace

TEST_F(WarpTest, QuarterTurnsAreExact) {
    struct Case {
        char const* degrees;
        std::string expected;
    };
    std::string const upside_down =
        "onmlk"
        "jihgf"
        "edcba";
    std::string const to_the_left =
        "\0din\0"
        "\0chm\0"
        "\0bgl\0"s;
    std::string const to_the_right =
        "\0lgb\0"
        "\0mhc\0"
        "\0nid\0"s;
    std::string const picture =
        "abcde"
        "fghij"
        "klmno";
    for (auto const& [degrees, expected] :
         {Case{"0", picture}, Case{"360", picture}, Case{"-720", picture}, Case{"90", to_the_left},
          Case{"-270", to_the_left}, Case{"180", upside_down}, Case{"-180", upside_down},
          Case{"270", to_the_right}, Case{"-90", to_the_right}, Case{"3690", to_the_left}}) {
        for (std::string const method : methods) {
            EXPECT_EQ(warped(picture, ox::FRAME_GRAY8, {5, 3},
                             {"--rotate", degrees, "--warp-method", method}),
                      expected)
                << degrees << " " << method;
        }
    }
}

TEST_F(WarpTest, ASquareOfEvenSideTurnsOntoItself) {
    std::string const left_turn =
        "dhlp"
        "cgko"
        "bfjn"
        "aeim";
    for (std::string const method : methods) {
        EXPECT_EQ(warped("abcd"
                         "efgh"
                         "ijkl"
                         "mnop",
                         ox::FRAME_GRAY8, {4, 4}, {"--rotate", "90", "--warp-method", method}),
                  left_turn);
    }
    EXPECT_EQ(warped("aAbB"
                     "cCdD",
                     ox::FRAME_C2_8U, {2, 2}, {"--rotate", "90"}),
              "bBdDaAcC");
    EXPECT_EQ(warped("RGBrgb"
                     "XYZxyz",
                     ox::FRAME_RGB24, {2, 2}, {"--rotate", "180"}),
              "xyzXYZ"
              "rgbRGB");
    EXPECT_EQ(warped("abcd"
                     "ABCD"
                     "1234",
                     ox::FRAME_BGR_PLANAR, {2, 2}, {"--rotate", "-90"}),
              "cadb"
              "CADB"
              "3142");
}

TEST_F(WarpTest, AWarpLeadsFromTheSourceToTheDestination) {
    std::string const moved =
        "\0\0ab"
        "\0\0ef"
        "\0\0ij"s;
    for (std::string const method : methods) {
        EXPECT_EQ(
            warped("abcd"
                   "efgh"
                   "ijkl",
                   ox::FRAME_GRAY8, {4, 3}, {"--warp", "1,0,2,0,1,0", "--warp-method", method}),
            moved);
        EXPECT_EQ(warped("abcd"
                         "efgh"
                         "ijkl",
                         ox::FRAME_GRAY8, {4, 3},
                         {"--warp", "1,0,-2,0,1,0", "--invert", "--warp-method", method}),
                  moved);
        EXPECT_EQ(
            warped("abcd"
                   "efgh"
                   "ijkl",
                   ox::FRAME_GRAY8, {4, 3}, {"--warp", "-1,0,3,0,1,0", "--warp-method", method}),
            "dcba"
            "hgfe"
            "lkji");
    }
}

TEST_F(WarpTest, HalfAPixelBlendsNeighboursUnlessTheNearestIsAskedFor) {
    std::string const rows =
        "\x64\x20\x40\x10"
        "\x64\x20\x40\x10"
        "\x64\x20\x40\x10"s;
    Words const half{"--warp", "1,0,.5,0,1,0"};
    EXPECT_EQ(warped(rows, ox::FRAME_GRAY8, {4, 3}, half),
              "\x32\x42\x30\x28"
              "\x32\x42\x30\x28"
              "\x32\x42\x30\x28"s);
    EXPECT_EQ(warped(rows, ox::FRAME_GRAY8, {4, 3}, join(half, {"--warp-method", "nearest"})),
              "\0\x20\x40\x10"
              "\0\x20\x40\x10"
              "\0\x20\x40\x10"s);
}

TEST_F(WarpTest, AnInvertedWarpIsTheInverse) {
    float const there[2][3] = {{2, 0, 1}, {0, 4, -1}};
    float const back[2][3] = {{0.5F, 0, -0.5F}, {0, 0.25F, 0.25F}};
    for (auto const format : {ox::FRAME_BGR24, ox::FRAME_GRAY8, ox::FRAME_NV12}) {
        std::string const frame = bytesOf(randomFrame(format, {20, 14}));
        for (std::string const method : methods) {
            Words const options{"--warp-method", method};
            auto const by = [&](float const(&matrix)[2][3], Words const& invert) {
                return warped(frame, format, {20, 14},
                              join(join(options, {"--warp", numbers(matrix)}), invert));
            };
            EXPECT_EQ(by(there, {"--invert"}), by(back, {}));
            EXPECT_EQ(by(back, {"--invert"}), by(there, {}));
            EXPECT_NE(by(there, {}), by(back, {}));
        }
    }
}

TEST_F(WarpTest, WarpsAreTheLibrarysBytes) {
    for (auto const format :
         {ox::FRAME_GRAY8, ox::FRAME_RGB24, ox::FRAME_RGB_PLANAR, ox::FRAME_BGR24,
          ox::FRAME_BGR_PLANAR, ox::FRAME_C2_8U, ox::FRAME_C3_8U, ox::FRAME_C4_8U}) {
        ox::Frame const frame = randomFrame(format, {37, 21});
        for (std::string const method : methods) {
            for (bool const invert : {false, true}) {
                Words const options{"--warp", numbers(tilt), "--warp-method", method};
                EXPECT_EQ(warped(bytesOf(frame), format, {37, 21},
                                 join(options, invert ? Words{"--invert"} : Words{})),
                          bytesOf(Library("simd").warped(frame, tilt, methodOf(method), invert)))
                    << ox::toString(format) << " " << method;
            }
        }
    }
}

TEST_F(WarpTest, ARotationIsAboutTheMiddle) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {31, 18});
    double const angle = -20 * std::numbers::pi / 180;
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    double const x = 15;
    double const y = 8.5;
    // Forth, about the origin, and back; y runs downwards.
    float const matrix[2][3] = {
        {static_cast<float>(c), static_cast<float>(s), static_cast<float>(x - (c * x + s * y))},
        {static_cast<float>(-s), static_cast<float>(c), static_cast<float>(y - (c * y - s * x))}};
    EXPECT_EQ(warped(bytesOf(frame), ox::FRAME_BGR24, {31, 18},
                     {"--rotate", "-20", "--warp-method", "nearest"}),
              bytesOf(Library("simd").warped(frame, matrix, ox::ResizeNearestNeighbour, false)));
}

TEST_F(WarpTest, YuvPicturesAreWarpedInColoursThatHaveABlack) {
    Library library("simd");
    for (auto const format : {ox::FRAME_I420, ox::FRAME_NV21, ox::FRAME_YV16, ox::FRAME_YUYV,
                              ox::FRAME_YUV444, ox::FRAME_YUV444_PLANAR}) {
        SCOPED_TRACE(ox::toString(format));
        ox::Frame const frame = randomFrame(format, {20, 14});
        ox::Frame const bgr = library.warped(library.inFormat(frame, ox::FRAME_BGR24), tilt,
                                             ox::ResizeBilinear, false);
        Words const options{"--warp", numbers(tilt)};
        EXPECT_EQ(warped(bytesOf(frame), format, {20, 14}, options),
                  bytesOf(library.inFormatByAnyWay(bgr, format)));
        EXPECT_EQ(warped(bytesOf(frame), format, {20, 14}, join(options, {"--format", "BGR_32F"})),
                  bytesOf(library.inFormat(bgr, ox::FRAME_BGR_32F)));
        ox::Frame const gray = library.warped(library.inFormat(frame, ox::FRAME_GRAY8), tilt,
                                              ox::ResizeBilinear, false);
        EXPECT_EQ(warped(bytesOf(frame), format, {20, 14}, join(options, {"--format", "GRAY8"})),
                  bytesOf(gray));
    }
}

TEST_F(WarpTest, AStoredFormatIsReachedWithoutADetour) {
    Library library("simd");
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {20, 14});
    ox::Frame const bgr =
        library.warped(library.inFormat(frame, ox::FRAME_BGR24), tilt, ox::ResizeBilinear, false);
    converted(bytesOf(frame), join(rawInput(ox::FRAME_NV12, {20, 14}), {"--warp", numbers(tilt)}),
              "out.png");
    Result const result = run({"convert", path("out.png"), "-", "--output-kind", "raw"});
    EXPECT_EQ(result.out, bytesOf(bgr));
}

TEST_F(WarpTest, TheSizeComesFirst) {
    Library library("simd");
    ox::Frame frame = randomFrame(ox::FRAME_BGR24, {50, 30});
    ox::Frame const small =
        library.scaled(ox::getRegion(frame, {4, 2, 40, 24}), {25, 17}, ox::ResizeArea);
    EXPECT_EQ(warped(bytesOf(frame), ox::FRAME_BGR24, {50, 30},
                     {"--warp", numbers(tilt), "--size", "25x17", "--method", "area", "--roi",
                      "4,2,40,24"}),
              bytesOf(library.warped(small, tilt, ox::ResizeBilinear, false)));
}

TEST_F(WarpTest, AStreamIsRotatedFromPipeToPipe) {
    struct Case {
        ox::FrameFormat format;
        char const* chroma;
    };
    Library library("simd");
    float const half_turn[2][3] = {{-1, 0, 11}, {0, -1, 7}};
    for (auto const& [format, chroma] :
         {Case{ox::FRAME_GRAY8, "mono"}, Case{ox::FRAME_I420, "420jpeg"},
          Case{ox::FRAME_YV16, "422"}, Case{ox::FRAME_YUV444_PLANAR, "444"}}) {
        std::string const header = "YUV4MPEG2 W12 H8 F25:1 Ip A1:1 C"s + chroma + "\n";
        std::string input = header;
        for (unsigned seed = 1; seed <= 3; ++seed) {
            input += "FRAME\n" + bytesOf(randomFrame(format, {12, 8}, seed));
        }
        Result const raw = run({"convert", "-", "-", "--output-kind", "raw"}, input);
        Result const result = run({"convert", "-", "-", "--rotate", "180"}, input);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(result.out.starts_with(header + "FRAME\n")) << chroma;
        Result const turned = run({"convert", "-", "-", "--output-kind", "raw"}, result.out);
        std::string expected;
        ox::Frame frame = blankFrame(format, {12, 8});
        std::size_t const bytes = raw.out.size() / 3;
        for (std::size_t i = 0; i < 3; ++i) {
            setBytes(frame, raw.out.substr(i * bytes, bytes));
            bool const gray = format == ox::FRAME_GRAY8;
            ox::Frame const source = gray ? frame : library.inFormat(frame, ox::FRAME_BGR24);
            ox::Frame const half = library.warped(source, half_turn, ox::ResizeBilinear, false);
            expected += bytesOf(gray ? half : library.inFormat(half, format));
        }
        EXPECT_EQ(turned.out, expected) << chroma;
    }
}

TEST_F(WarpTest, WhatCantBeWarpedIsRefused) {
    for (auto const format : {ox::FRAME_C1_16U, ox::FRAME_C1_32U, ox::FRAME_GRAY_32F,
                              ox::FRAME_BGR_32F, ox::FRAME_BGR_32F_PLANAR}) {
        std::string const name = std::string(ox::toString(format)).substr(6);
        for (auto const& [option, value] :
             {std::pair{"--rotate", "90"}, std::pair{"--warp", "1,0,1,0,1,0"}}) {
            Result const result = run(
                join({"convert", "-", path("out.raw"), option, value}, rawInput(format, {4, 4})),
                bytesOf(randomFrame(format, {4, 4})));
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.err, "oxcv: standard input: "s + option + ": " + name +
                                      ": warps are for formats of 8 bits a channel\n");
        }
    }
    EXPECT_EQ(files(), Words{});
}

}  // namespace oxcv::test
