// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Streams of video.
#include "library.h"
#include "program.h"

namespace oxcv::test {

namespace {

class Y4mTest : public ProgramTest {};

Result y4mFrom(ox::FrameFormat format, ox::Size size, std::string const& frames) {
    return run(join({"convert", "-", "-", "--output-kind", "y4m"}, rawInput(format, size)), frames);
}

Result rawFrom(std::string const& stream) {
    return run({"convert", "-", "-", "--output-kind", "raw"}, stream);
}

std::string y4mHeader(std::string const& sides, std::string const& chroma) {
    return "YUV4MPEG2 " + sides + " F25:1 Ip A1:1 C" + chroma + "\n";
}

}  // namespace

TEST_F(Y4mTest, StoredFormatsComeBack) {
    struct Case {
        ox::FrameFormat format;
        char const* chroma;
    };
    for (auto const& [format, chroma] :
         {Case{ox::FRAME_GRAY8, "mono"}, Case{ox::FRAME_I420, "420jpeg"},
          Case{ox::FRAME_YV16, "422"}, Case{ox::FRAME_YUV444_PLANAR, "444"}}) {
        std::string const first = bytesOf(randomFrame(format, {7, 5}, 1));
        std::string const second = bytesOf(randomFrame(format, {7, 5}, 2));
        Result const stream = y4mFrom(format, {7, 5}, first + second);
        ASSERT_EQ(stream.status, 0) << stream.err;
        EXPECT_TRUE(stream.out.starts_with(y4mHeader("W7 H5", chroma) + "FRAME\n"));
        EXPECT_EQ(stream.out.size(), y4mHeader("W7 H5", chroma).size() +
                                         2 * (std::string("FRAME\n").size() + first.size()));
        EXPECT_EQ(rawFrom(stream.out).out, first + second);
    }
}

TEST_F(Y4mTest, PlanesStandInTheOrderYUV) {
    Result const yv16 = y4mFrom(ox::FRAME_YV16, {2, 1}, "YyVU");
    EXPECT_EQ(yv16.out, y4mHeader("W2 H1", "422") + "FRAME\nYyUV");
    Result const i420 = y4mFrom(ox::FRAME_I420, {2, 2}, "YyYyUV");
    EXPECT_EQ(i420.out, y4mHeader("W2 H2", "420jpeg") + "FRAME\nYyYyUV");
}

TEST_F(Y4mTest, OtherFormatsKeepTheirChroma) {
    struct Case {
        ox::FrameFormat format;
        char const* frame;
        char const* stored;
        char const* chroma;
    };
    for (auto const& [format, frame, stored, chroma] :
         {Case{ox::FRAME_YV12, "YyYyVU", "YyYyUV", "420jpeg"},
          Case{ox::FRAME_NV12, "YyYyUV", "YyYyUV", "420jpeg"},
          Case{ox::FRAME_NV16, "YyYyUVuv", "YyYyUuVv", "422"},
          Case{ox::FRAME_YUYV, "YUyVYuyv", "YyYyUuVv", "422"},
          Case{ox::FRAME_YUV444, "1aA2bB3cC4dD", "1234abcdABCD", "444"}}) {
        EXPECT_EQ(y4mFrom(format, {2, 2}, frame).out,
                  y4mHeader("W2 H2", chroma) + "FRAME\n" + stored);
    }
    Result const bgr = y4mFrom(ox::FRAME_BGR24, {2, 2}, std::string(12, '\x40'));
    EXPECT_TRUE(bgr.out.starts_with(y4mHeader("W2 H2", "420jpeg")));
}

TEST_F(Y4mTest, AStreamIsScaledFromPipeToPipe) {
    struct Case {
        ox::FrameFormat format;
        char const* chroma;
    };
    for (auto const& [format, chroma] :
         {Case{ox::FRAME_GRAY8, "mono"}, Case{ox::FRAME_I420, "420jpeg"},
          Case{ox::FRAME_YUV444_PLANAR, "444"}}) {
        std::string input = y4mHeader("W9 H7", chroma);
        for (unsigned seed = 1; seed <= 3; ++seed) {
            input += "FRAME\n" + bytesOf(randomFrame(format, {9, 7}, seed));
        }
        for (std::string const backend : backends) {
            std::string expected = y4mHeader("W5 H4", chroma);
            for (unsigned seed = 1; seed <= 3; ++seed) {
                ox::Frame const frame = randomFrame(format, {9, 7}, seed);
                expected +=
                    "FRAME\n" + bytesOf(Library(backend).scaled(frame, {5, 4}, ox::ResizeBilinear));
            }
            Result const result =
                run({"convert", "-", "-", "--size", "5x", "--backend", backend}, input);
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.out, expected) << backend << " " << chroma;
        }
    }
}

TEST_F(Y4mTest, TheRateIsHandedOn) {
    std::string const stream = "YUV4MPEG2 W1 H1 F30000:1001 Ib C420mpeg2 XCOLOR\nFRAME\nYUV";
    EXPECT_EQ(run({"convert", "-", "-"}, stream).out,
              "YUV4MPEG2 W1 H1 F30000:1001 Ip A1:1 C420jpeg\nFRAME\nYUV");
}

TEST_F(Y4mTest, ChromaIs420UnlessItIsNamed) {
    EXPECT_EQ(rawFrom("YUV4MPEG2 W1 H1\nFRAME Ip\nYUV").out, "YUV");
}

TEST_F(Y4mTest, BadStreamsAreRefused) {
    struct Case {
        std::string stream;
        std::string text;
    };
    std::string const good = "YUV4MPEG2 W2 H2 Cmono\n";
    for (auto const& [stream, text] :
         {Case{"YUV4MPEG2 W2\nFRAME\n", "bad H in the Y4M header"},
          Case{"YUV4MPEG2 W0 H2\nFRAME\n", "bad W in the Y4M header"},
          Case{"YUV4MPEG2 W2 H99999999999\nFRAME\n", "bad H in the Y4M header"},
          Case{"YUV4MPEG2 W2 H2 C420p10\nFRAME\n", "Y4M chroma '420p10' isn't supported"},
          Case{"YUV4MPEG2 W2 H2", "no Y4M header"}, Case{good, "there are no frames"},
          Case{good + "FRAME\n1234FRAM", "frame 2 has no FRAME line"},
          Case{good + "FRAME\n1234FRAME\n", "frame 2 is truncated: 0 bytes"},
          Case{good + "FRAME\n1234FRAME\n123", "frame 2 is truncated: 3 of 4 bytes"}}) {
        Result const result = run({"convert", "-", path("out.raw")}, stream);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: standard input: " + text + "\n");
    }
    EXPECT_EQ(files(), Words{});
}

}  // namespace oxcv::test
