// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the steps do to raw frames, byte by byte as the library does it.
#include "library.h"
#include "ox_cv/ox_cv_helpers.h"
#include "program.h"
#include "support/test_frame.h"

namespace oxcv::test {

namespace {

class ConvertTest : public ProgramTest {};

Words rawInputFor(std::string const& backend, ox::FrameFormat format, ox::Size size) {
    return join(rawInput(format, size), {"--backend", backend});
}

}  // namespace

TEST_F(ConvertTest, FormatsAreTheLibrarysBytes) {
    for (std::string const backend : backends) {
        for (auto const src :
             {ox::FRAME_GRAY8, ox::FRAME_RGB24, ox::FRAME_BGR24, ox::FRAME_BGR_PLANAR,
              ox::FRAME_NV12, ox::FRAME_YUYV, ox::FRAME_YUV444_PLANAR}) {
            for (auto const dst :
                 {ox::FRAME_GRAY8, ox::FRAME_RGB24, ox::FRAME_BGR24, ox::FRAME_I420, ox::FRAME_NV21,
                  ox::FRAME_YV16, ox::FRAME_UYVY, ox::FRAME_YUV444, ox::FRAME_BGR_32F_PLANAR}) {
                ox::Size const size = dst == ox::FRAME_UYVY ? ox::Size{13, 7} : ox::Size{14, 6};
                SCOPED_TRACE(backend + ": " + ox::toString(src) + " to " + ox::toString(dst));
                ox::Frame const frame = randomFrame(src, size);
                std::string const out = converted(
                    bytesOf(frame),
                    join(rawInputFor(backend, src, size), {"--format", ox::toString(dst)}),
                    "out.raw");
                EXPECT_EQ(out, bytesOf(Library(backend).inFormatByAnyWay(frame, dst)));
            }
        }
    }
}

namespace {

// One pixel of B 10, G 20, R 30.
struct Pixel {
    ox::FrameFormat format;
    std::string bytes;
};

std::string floats(std::vector<float> const& values) {
    return {reinterpret_cast<char const*>(values.data()), values.size() * sizeof(float)};
}

}  // namespace

TEST_F(ConvertTest, FloatsAreBlueFirstWhateverTheOtherSideIs) {
    std::string const blue_first = floats({10, 20, 30});
    for (std::string const backend : backends) {
        for (auto const& [format, bytes] :
             {Pixel{ox::FRAME_RGB24, "\x1e\x14\x0a"}, Pixel{ox::FRAME_RGB_PLANAR, "\x1e\x14\x0a"},
              Pixel{ox::FRAME_BGR24, "\x0a\x14\x1e"},
              Pixel{ox::FRAME_BGR_PLANAR, "\x0a\x14\x1e"}}) {
            for (auto const target : {ox::FRAME_BGR_32F, ox::FRAME_BGR_32F_PLANAR}) {
                SCOPED_TRACE(backend + ": " + ox::toString(format) + ", " + ox::toString(target));
                EXPECT_EQ(converted(bytes,
                                    join(rawInputFor(backend, format, {1, 1}),
                                         {"--format", ox::toString(target)}),
                                    "out.raw"),
                          blue_first);
                // The pipeline has no way back from planes of floats, nor to planes.
                bool const packed = target == ox::FRAME_BGR_32F && format != ox::FRAME_RGB_PLANAR;
                if (backend == "simd" || packed) {
                    EXPECT_EQ(converted(blue_first,
                                        join(rawInputFor(backend, target, {1, 1}),
                                             {"--format", ox::toString(format)}),
                                        "out.raw"),
                              bytes);
                }
            }
        }
    }
}

TEST_F(ConvertTest, Nv12ToBgr24IsWrittenInFullWhateverTheSize) {
    for (std::string const backend : backends) {
        for (ox::Size const size :
             {ox::Size{10, 4}, ox::Size{16, 5}, ox::Size{7, 1}, ox::Size{9, 9}}) {
            ox::Frame const frame = randomFrame(ox::FRAME_NV12, size);
            std::string const out = converted(
                bytesOf(frame),
                join(rawInputFor(backend, ox::FRAME_NV12, size), {"--format", "BGR24"}), "out.raw");
            EXPECT_EQ(out, bytesOf(Library(backend).inFormat(frame, ox::FRAME_BGR24))) << backend;
        }
    }
}

TEST_F(ConvertTest, Nv12OfWholeBlocksTakesTheQuickWay) {
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {16, 6});
    ox::Frame expected = blankFrame(ox::FRAME_BGR24, {16, 6});
    ox::CvBackendBase().colorCvt(frame, expected, ox::emptyRoi());
    for (std::string const backend : backends) {
        Words const input = rawInputFor(backend, ox::FRAME_NV12, {16, 6});
        EXPECT_EQ(converted(bytesOf(frame), join(input, {"--format", "BGR24"}), "out.raw"),
                  bytesOf(expected))
            << backend;
    }
}

TEST_F(ConvertTest, ARegionOfNv12IsConvertedInFull) {
    for (ox::Rect const region : {ox::Rect{2, 2, 16, 4}, ox::Rect{3, 1, 8, 2}, ox::Rect{4, 0, 9, 3},
                                  ox::Rect{5, 3, 13, 5}}) {
        ox::Frame frame = randomFrame(ox::FRAME_NV12, {24, 8});
        ox::Frame const narrowed = ox::getRegion(frame, region);
        ox::Frame expected = blankFrame(ox::FRAME_BGR24, narrowed.size());
        bool const blocks = region.width % 8 == 0 && region.height % 2 == 0;
        ox::CvBackendBase().colorCvt(narrowed, expected, blocks ? ox::emptyRoi() : whole(narrowed));
        std::string const roi = std::to_string(region.x) + "," + std::to_string(region.y) + "," +
                                std::to_string(region.width) + "," + std::to_string(region.height);
        EXPECT_EQ(converted(bytesOf(frame),
                            join(rawInputFor("base", ox::FRAME_NV12, {24, 8}),
                                 {"--roi", roi, "--format", "BGR24"}),
                            "out.raw"),
                  bytesOf(expected))
            << roi;
    }
}

TEST_F(ConvertTest, ScalesByEveryMethod) {
    struct Case {
        char const* name;
        ox::ResizeMethod method;
    };
    for (auto const& [name, method] :
         {Case{"nearest", ox::ResizeNearestNeighbour}, Case{"Bilinear", ox::ResizeBilinear},
          Case{"AREA", ox::ResizeArea}}) {
        for (std::string const backend : backends) {
            for (auto const format : {ox::FRAME_BGR24, ox::FRAME_I420, ox::FRAME_NV12,
                                      ox::FRAME_GRAY8, ox::FRAME_C1_16U}) {
                ox::Frame const frame = randomFrame(format, {35, 11});
                std::string const out = converted(bytesOf(frame),
                                                  join(rawInputFor(backend, format, {35, 11}),
                                                       {"--size", "22x17", "--method", name}),
                                                  "out.raw");
                EXPECT_EQ(out, bytesOf(Library(backend).scaled(frame, {22, 17}, method)))
                    << backend << " " << name << " " << ox::toString(format);
            }
        }
    }
}

TEST_F(ConvertTest, OneSideOfASizeKeepsTheAspect) {
    struct Case {
        ox::Size source;
        char const* request;
        ox::Size expected;
    };
    for (auto const& [source, request, expected] :
         {Case{{20, 10}, "10x", {10, 5}}, Case{{20, 10}, "x20", {40, 20}},
          Case{{20, 10}, "3X", {3, 2}}, Case{{100, 2}, "10x", {10, 1}},
          Case{{3, 1000}, "x10", {1, 10}}, Case{{451, 300}, "640x", {640, 426}}}) {
        ox::Frame const frame = randomFrame(ox::FRAME_GRAY8, source);
        std::string const out =
            converted(bytesOf(frame), join(rawInput(ox::FRAME_GRAY8, source), {"--size", request}),
                      "out.raw");
        EXPECT_EQ(out, bytesOf(Library("simd").scaled(frame, expected, ox::ResizeBilinear)))
            << request;
    }
}

TEST_F(ConvertTest, PackedPairsAreScaledAsSeparatePlanes) {
    for (std::string const backend : backends) {
        Library library(backend);
        for (auto const format : {ox::FRAME_YUYV, ox::FRAME_UYVY}) {
            ox::Frame const frame = randomFrame(format, {20, 8});
            ox::Frame const planes =
                library.scaled(library.inFormat(frame, ox::FRAME_NV16), {11, 5}, ox::ResizeArea);
            Words const options =
                join(rawInputFor(backend, format, {20, 8}), {"--size", "11x5", "--method", "area"});
            EXPECT_EQ(converted(bytesOf(frame), options, "out.raw"),
                      bytesOf(library.inFormat(planes, format)));
            EXPECT_EQ(converted(bytesOf(frame), join(options, {"--format", "BGR24"}), "out.raw"),
                      bytesOf(library.inFormat(planes, ox::FRAME_BGR24)));
        }
    }
}

TEST_F(ConvertTest, TheSizeThatIsThereChangesNothing) {
    for (std::string const backend : backends) {
        for (ox::FrameFormat const format : ox::test::allFormats()) {
            std::string const frame = bytesOf(randomFrame(format, {6, 4}));
            Words const options =
                join(rawInputFor(backend, format, {6, 4}), {"--size", "6x4", "--method", "area"});
            EXPECT_EQ(converted(frame, options, "out.raw"), frame) << ox::toString(format);
        }
    }
}

TEST_F(ConvertTest, StepsAreDoneInOrder) {
    for (std::string const backend : backends) {
        Library library(backend);
        ox::Frame frame = randomFrame(ox::FRAME_I420, {20, 14});
        ox::Frame expected = ox::getRegion(frame, {5, 3, 11, 8});
        expected = library.scaled(expected, {8, 6}, ox::ResizeArea);
        expected = library.inFormat(expected, ox::FRAME_BGR24);
        expected = library.inFormat(expected, ox::FRAME_BGR_32F);
        library.multiply(expected, 0.25F);
        library.add(expected, -1.5F);
        std::string const out =
            converted(bytesOf(frame),
                      join(rawInputFor(backend, ox::FRAME_I420, {20, 14}),
                           {"--add", "-1.5", "--mul", "0.25", "--format", "bgr_32f", "--method",
                            "area", "--size", "8x6", "--roi", "5,3,11,8"}),
                      "out.raw");
        EXPECT_EQ(out, bytesOf(expected)) << backend;
    }
}

TEST_F(ConvertTest, ARegionAloneCopiesItsPixels) {
    for (auto const format : {ox::FRAME_BGR24, ox::FRAME_NV12, ox::FRAME_YUYV, ox::FRAME_YV16}) {
        ox::Frame frame = randomFrame(format, {21, 13});
        std::string const out = converted(
            bytesOf(frame), join(rawInput(format, {21, 13}), {"--roi", "4,2,9,7"}), "out.raw");
        EXPECT_EQ(out, bytesOf(ox::getRegion(frame, {4, 2, 9, 7})));
    }
}

TEST_F(ConvertTest, RawFramesOfOddWidthHaveRowsOfTheirPlanesOwnSize) {
    for (ox::FrameFormat const format : ox::test::allFormats()) {
        std::string const bytes =
            bytesOf(randomFrame(format, {5, 3}, 1)) + bytesOf(randomFrame(format, {5, 3}, 2));
        EXPECT_EQ(converted(bytes, rawInput(format, {5, 3}), "out.raw"), bytes);
    }
}

TEST_F(ConvertTest, PaddingOfOddWidthsIsZero) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {5, 2});
    std::string const input = bytesOf(frame) + bytesOf(randomFrame(ox::FRAME_BGR24, {5, 2}, 2));
    std::string const out =
        converted(input, join(rawInput(ox::FRAME_BGR24, {5, 2}), {"--format", "YUYV"}), "out.raw");
    ASSERT_EQ(out.size(), 2U * 2 * 12);
    EXPECT_EQ(out.substr(0, 24), bytesOf(Library("simd").inFormat(frame, ox::FRAME_YUYV)));
    for (std::size_t row = 0; row < 4; ++row) {
        EXPECT_EQ(out[row * 12 + 10], '\0') << "row " << row;
    }
}

TEST_F(ConvertTest, AStreamIsConvertedFrameByFrame) {
    std::string input;
    std::string expected;
    Library library("simd");
    for (unsigned seed = 0; seed < 5; ++seed) {
        ox::Frame const frame = randomFrame(ox::FRAME_NV16, {9, 6}, seed);
        ox::Frame const small = library.scaled(frame, {4, 3}, ox::ResizeBilinear);
        input += bytesOf(frame);
        expected += bytesOf(library.inFormat(small, ox::FRAME_NV12));
    }
    Words const options =
        join(rawInput(ox::FRAME_NV16, {9, 6}), {"--size", "4x3", "--format", "NV12"});
    EXPECT_EQ(converted(input, options, "out.raw"), expected);
    EXPECT_EQ(converted(input, join(options, {"--frames", "2"}), "out.raw"),
              expected.substr(0, 2 * expected.size() / 5));
    EXPECT_EQ(converted(input, join(options, {"--frames", "99"}), "out.raw"), expected);
}

TEST_F(ConvertTest, AStreamTakesNoMoreMemoryThanAFewFrames) {
    Words const steps = join(rawInput(ox::FRAME_NV12, {80, 60}),
                             {"--size", "60x", "--format", "BGR_32F_PLANAR", "--add", "1"});
    auto const runFor = [&](std::size_t frames, std::string const& input) {
        return run(join(join({"convert", "-", path("out.npy")}, steps),
                        {"--frames", std::to_string(frames)}),
                   input);
    };
    std::size_t const frames = 2000;
    std::string const input(frames * 80 * 60 * 3 / 2, '\x55');
    long const peak = runFor(10, input).peak_kilobytes;
    Result const result = runFor(frames, input);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(read("out.npy").size(), 128 + frames * 60 * 45 * 3 * 4);
    // All frames would be 14 MB before and 63 MB after. Sanitizers keep freed memory for a while,
    // and notes on all that a step has asked for beforehand.
    long const more = underSanitizer ? 40 : 12;
    EXPECT_LT(result.peak_kilobytes, peak + more * 1024);
}

TEST_F(ConvertTest, StandardOutputTakesTheKindOfTheInput) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {6, 4});
    Result const raw =
        run(join({"convert", "-", "-"}, rawInput(ox::FRAME_BGR24, {6, 4})), bytesOf(frame));
    EXPECT_EQ(raw.status, 0) << raw.err;
    EXPECT_EQ(raw.out, bytesOf(frame));
    Result const png =
        run(join({"convert", "-", "-", "--output-kind", "PNG"}, rawInput(ox::FRAME_BGR24, {6, 4})),
            bytesOf(frame));
    EXPECT_EQ(png.out.substr(1, 3), "PNG");
    Result const again = run({"convert", "-", "-"}, png.out);
    EXPECT_EQ(again.out, png.out);
}

TEST_F(ConvertTest, ASizeSaysThatAPipeIsRaw) {
    Words const options{"--input-format", "NV12", "--input-size", "4x4"};
    for (std::string const start : {"", "\xff\xd8\xff", "\x89PNG\r\n\x1a\n", "YUV4MPEG2 W"}) {
        std::string const frame = start + std::string(24 - start.size(), '.');
        EXPECT_EQ(converted(frame, options, "out.raw"), frame);
        Result const result = run(join({"convert", "-", "-"}, options), frame + frame);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, frame + frame);
    }
}

TEST_F(ConvertTest, AnEndingMayNameTheFormat) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {6, 4});
    std::string const nv12 = bytesOf(Library("simd").inFormat(frame, ox::FRAME_NV12));
    EXPECT_EQ(converted(bytesOf(frame), rawInput(ox::FRAME_BGR24, {6, 4}), "out.nv12"), nv12);
    Result const back =
        run({"convert", path("out.nv12"), path("out.bgr24"), "--input-size", "6x4"});
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_EQ(read("out.bgr24").size(), 72U);
}

}  // namespace oxcv::test
