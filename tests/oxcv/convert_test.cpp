// What the steps do to raw frames, byte by byte as the library does it.
#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "program.h"
#include "support/test_frame.h"

namespace oxcv::test {

namespace {

class ConvertTest : public ProgramTest {};

ox::Rect whole(ox::Frame const& frame) {
    return {0, 0, frame.width(), frame.height()};
}

ox::Frame inFormat(ox::Frame const& frame, ox::FrameFormat format) {
    ox::Frame result = blankFrame(format, frame.size());
    ox::CvBackendBase().colorCvt(frame, result, whole(frame));
    return result;
}

// Directly, or through BGR24.
ox::Frame inFormatByAnyWay(ox::Frame const& frame, ox::FrameFormat format) {
    try {
        return inFormat(frame, format);
    } catch (ox::Exception const&) {
        return inFormat(inFormat(frame, ox::FRAME_BGR24), format);
    }
}

ox::Frame scaled(ox::Frame const& frame, ox::Size size, ox::ResizeMethod method) {
    ox::Frame result = blankFrame(frame.format(), size);
    ox::CvBackendBase backend;
    backend.setIntProperty(1, static_cast<int>(method));
    backend.resize(frame, result, ox::emptyRoi(), ox::emptyRoi());
    return result;
}

}  // namespace

TEST_F(ConvertTest, FormatsAreTheLibrarysBytes) {
    for (auto const src : {ox::FRAME_GRAY8, ox::FRAME_RGB24, ox::FRAME_BGR24, ox::FRAME_BGR_PLANAR,
                           ox::FRAME_NV12, ox::FRAME_YUYV, ox::FRAME_YUV444_PLANAR}) {
        for (auto const dst :
             {ox::FRAME_GRAY8, ox::FRAME_RGB24, ox::FRAME_BGR24, ox::FRAME_I420, ox::FRAME_NV21,
              ox::FRAME_YV16, ox::FRAME_UYVY, ox::FRAME_YUV444, ox::FRAME_BGR_32F_PLANAR}) {
            SCOPED_TRACE(std::string(ox::toString(src)) + " to " + ox::toString(dst));
            ox::Frame const frame = randomFrame(src, {13, 7});
            std::string const out =
                converted(bytesOf(frame),
                          join(rawInput(src, {13, 7}), {"--format", ox::toString(dst)}), "out.raw");
            EXPECT_EQ(out, bytesOf(inFormatByAnyWay(frame, dst)));
        }
    }
}

TEST_F(ConvertTest, Nv12ToBgr24IsWrittenInFullWhateverTheSize) {
    for (ox::Size const size : {ox::Size{10, 4}, ox::Size{16, 5}, ox::Size{7, 1}, ox::Size{9, 9}}) {
        ox::Frame const frame = randomFrame(ox::FRAME_NV12, size);
        std::string const out = converted(
            bytesOf(frame), join(rawInput(ox::FRAME_NV12, size), {"--format", "BGR24"}), "out.raw");
        EXPECT_EQ(out, bytesOf(inFormat(frame, ox::FRAME_BGR24)));
    }
}

TEST_F(ConvertTest, Nv12OfWholeBlocksTakesTheQuickWay) {
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {16, 6});
    ox::Frame expected = blankFrame(ox::FRAME_BGR24, {16, 6});
    ox::CvBackendBase().colorCvt(frame, expected, ox::emptyRoi());
    EXPECT_EQ(converted(bytesOf(frame),
                        join(rawInput(ox::FRAME_NV12, {16, 6}), {"--format", "BGR24"}), "out.raw"),
              bytesOf(expected));
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
        EXPECT_EQ(
            converted(bytesOf(frame),
                      join(rawInput(ox::FRAME_NV12, {24, 8}), {"--roi", roi, "--format", "BGR24"}),
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
        for (auto const format : {ox::FRAME_BGR24, ox::FRAME_I420, ox::FRAME_GRAY8}) {
            ox::Frame const frame = randomFrame(format, {15, 11});
            std::string const out = converted(
                bytesOf(frame),
                join(rawInput(format, {15, 11}), {"--size", "6x17", "--method", name}), "out.raw");
            EXPECT_EQ(out, bytesOf(scaled(frame, {6, 17}, method))) << name;
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
        EXPECT_EQ(out, bytesOf(scaled(frame, expected, ox::ResizeBilinear))) << request;
    }
}

TEST_F(ConvertTest, StepsAreDoneInOrder) {
    ox::Frame frame = randomFrame(ox::FRAME_I420, {20, 14});
    ox::Frame expected = ox::getRegion(frame, {5, 3, 11, 8});
    expected = scaled(expected, {7, 5}, ox::ResizeArea);
    expected = inFormat(inFormat(expected, ox::FRAME_BGR24), ox::FRAME_BGR_32F);
    ox::CvBackendBase backend;
    backend.mul(expected, 0.25F, ox::emptyRoi());
    backend.add(expected, -1.5F, ox::emptyRoi());
    std::string const out =
        converted(bytesOf(frame),
                  join(rawInput(ox::FRAME_I420, {20, 14}),
                       {"--add", "-1.5", "--mul", "0.25", "--format", "bgr_32f", "--method", "area",
                        "--size", "7x5", "--roi", "5,3,11,8"}),
                  "out.raw");
    EXPECT_EQ(out, bytesOf(expected));
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
    EXPECT_EQ(out.substr(0, 24), bytesOf(inFormat(frame, ox::FRAME_YUYV)));
    for (std::size_t row = 0; row < 4; ++row) {
        EXPECT_EQ(out[row * 12 + 10], '\0') << "row " << row;
    }
}

TEST_F(ConvertTest, AStreamIsConvertedFrameByFrame) {
    std::string input;
    std::string expected;
    for (unsigned seed = 0; seed < 5; ++seed) {
        ox::Frame const frame = randomFrame(ox::FRAME_YUYV, {9, 6}, seed);
        input += bytesOf(frame);
        expected += bytesOf(inFormat(scaled(frame, {4, 3}, ox::ResizeBilinear), ox::FRAME_NV12));
    }
    Words const options =
        join(rawInput(ox::FRAME_YUYV, {9, 6}), {"--size", "4x3", "--format", "NV12"});
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
    EXPECT_LT(result.peak_kilobytes, peak + 4096);
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

TEST_F(ConvertTest, TheBackendCanBeNamed) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {6, 4}));
    Words const options = join(rawInput(ox::FRAME_GRAY8, {6, 4}), {"--format", "NV12"});
    EXPECT_EQ(converted(frame, join(options, {"--backend", "base"}), "out.raw"),
              converted(frame, options, "default.raw"));
}

// The same picture through the library's own call.
std::string vectorConverted(ox::Frame const& frame, ox::FrameFormat format) {
    ox::Frame result;
    ox::colorConvert(frame, format, result);
    return bytesOf(result);
}

TEST_F(ConvertTest, TheVectorBackendHasColoursOfItsOwn) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {34, 6});
    Words const options = join(rawInput(ox::FRAME_BGR24, {34, 6}), {"--backend", "simd"});
    for (ox::FrameFormat const format :
         {ox::FRAME_NV12, ox::FRAME_GRAY8, ox::FRAME_YUV444, ox::FRAME_BGR_PLANAR}) {
        std::string const name = std::string(toString(format)).substr(6);
        EXPECT_EQ(converted(bytesOf(frame), join(options, {"--format", name}), "out.raw"),
                  vectorConverted(frame, format))
            << name;
    }
    EXPECT_NE(converted(bytesOf(frame), join(options, {"--format", "GRAY8"}), "out.raw"),
              bytesOf(inFormat(frame, ox::FRAME_GRAY8)));
}

TEST_F(ConvertTest, ThePipelineHelpsTheVectorBackendOut) {
    ox::Frame const odd = randomFrame(ox::FRAME_NV12, {35, 7});
    Words const odd_input = rawInput(ox::FRAME_NV12, {35, 7});
    Words const gray = rawInput(ox::FRAME_GRAY8, {34, 6});
    std::string const picture = bytesOf(randomFrame(ox::FRAME_GRAY8, {34, 6}));
    for (auto const& [input, frame, option, value] :
         {std::tuple{odd_input, bytesOf(odd), "--format", "BGR24"},  // sides that aren't even
          std::tuple{gray, picture, "--format", "NV12"},             // a pair that it doesn't have
          std::tuple{gray, picture, "--size", "17x3"}}) {            // no resizing yet
        Words const options = join(input, {option, value});
        EXPECT_EQ(converted(frame, join(options, {"--backend", "simd"}), "simd.raw"),
                  converted(frame, options, "base.raw"))
            << option << " " << value;
    }
}

TEST_F(ConvertTest, TheVectorBackendLeavesNoPixelOut) {
    // Ten columns: the quick way from NV12 to BGR24 would do eight of them.
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {10, 4});
    ox::Frame expected;
    expected.reuse(ox::FRAME_BGR24, {10, 4}, {}, 0);
    ox::CvBackendSimd().colorCvt(frame, expected, {0, 0, 10, 4});
    Words const options =
        join(rawInput(ox::FRAME_NV12, {10, 4}), {"--backend", "simd", "--format", "BGR24"});
    EXPECT_EQ(converted(bytesOf(frame), options, "out.raw"), bytesOf(expected));
}

TEST_F(ConvertTest, AnEndingMayNameTheFormat) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {6, 4});
    std::string const nv12 = bytesOf(inFormat(frame, ox::FRAME_NV12));
    EXPECT_EQ(converted(bytesOf(frame), rawInput(ox::FRAME_BGR24, {6, 4}), "out.nv12"), nv12);
    Result const back =
        run({"convert", path("out.nv12"), path("out.bgr24"), "--input-size", "6x4"});
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_EQ(read("out.bgr24").size(), 72U);
}

}  // namespace oxcv::test
