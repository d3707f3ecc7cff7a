// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which backend does a step, and what is said about it.
#include "library.h"
#include "ox_cv/ox_cv_helpers.h"
#include "program.h"

namespace oxcv::test {

namespace {

// "--format" and its value, or those of another step.
using Step = Words;

class BackendsTest : public ProgramTest {
  protected:
    // What is said on standard error, and the bytes are left in out.raw.
    std::string said(ox::Frame const& frame, Step const& step, std::string const& input,
                     Words const& options) const {
        Words const call = join(join({"convert", "-", path("out.raw")}, step),
                                join(rawInput(frame.format(), frame.size()), options));
        Result const result = run(call, input);
        EXPECT_EQ(result.status, 0);
        return result.err;
    }
};

struct Fallback {
    ox::FrameFormat format;
    ox::Size size;
    Step step;
    std::string remark;
};

std::string pipelineInstead(std::string const& step, std::string const& reason) {
    return "oxcv: " + step + ": done by the pipeline backend, since the vector backend " + reason +
           "\n";
}

std::vector<Fallback> fallbacks() {
    std::string const even = "converts 4:2:0 frames of even sides only";
    std::string const no_pair = "doesn't convert this pair";
    std::string const depth = "scales channels of 8 and 32 bits only";
    std::string const integers = "takes channels of 32 bits for floats";
    return {
        {ox::FRAME_GRAY8, {34, 6}, {"--format", "NV12"}, pipelineInstead("GRAY8 to NV12", no_pair)},
        {ox::FRAME_NV12, {35, 6}, {"--format", "BGR24"}, pipelineInstead("NV12 to BGR24", even)},
        {ox::FRAME_I420, {34, 7}, {"--format", "GRAY8"}, pipelineInstead("I420 to GRAY8", even)},
        {ox::FRAME_C1_16U, {34, 6}, {"--size", "17x5"}, pipelineInstead("--size", depth)},
        {ox::FRAME_C1_32U, {34, 6}, {"--size", "17x5"}, pipelineInstead("--size", integers)},
        {ox::FRAME_YUYV, {34, 6}, {"--format", "NV16"}, pipelineInstead("YUYV to NV16", no_pair)},
    };
}

}  // namespace

TEST_F(BackendsTest, ThePipelineDoesWhatTheVectorBackendDoesnt) {
    for (auto const& [format, size, step, remark] : fallbacks()) {
        SCOPED_TRACE(remark);
        ox::Frame const frame = randomFrame(format, size);
        std::string const bytes = bytesOf(frame);
        EXPECT_EQ(said(frame, step, bytes, {"--backend", "base"}), "");
        std::string const expected = read("out.raw");
        EXPECT_EQ(said(frame, step, bytes, {}), "");
        EXPECT_EQ(read("out.raw"), expected);
        EXPECT_EQ(said(frame, step, bytes, {"--verbose"}), remark);
        EXPECT_EQ(read("out.raw"), expected);
    }
}

TEST_F(BackendsTest, ItIsSaidOnceForAStream) {
    for (auto const& [format, size, step, remark] : fallbacks()) {
        ox::Frame const frame = randomFrame(format, size);
        std::string const bytes = bytesOf(frame);
        EXPECT_EQ(said(frame, step, bytes + bytes + bytes, {"-v"}), remark);
    }
    ox::Frame const frame = randomFrame(ox::FRAME_YUYV, {34, 6});
    std::string const pair = "doesn't convert this pair";
    EXPECT_EQ(said(frame, {"--size", "17x"}, bytesOf(frame) + bytesOf(frame), {"-v"}),
              pipelineInstead("YUYV to NV16", pair) + pipelineInstead("NV16 to YUYV", pair));
}

TEST_F(BackendsTest, NothingIsSaidOfWhatWasAskedFor) {
    struct Case {
        ox::FrameFormat format;
        Step step;
    };
    for (auto const& [format, step] :
         {Case{ox::FRAME_NV12, {"--format", "BGR24"}},
          Case{ox::FRAME_BGR24, {"--format", "YUV444"}},
          Case{ox::FRAME_I420, {"--size", "20x4", "--method", "area"}},
          Case{ox::FRAME_BGR_32F, {"--size", "20x4", "--mul", "2", "--add", "1"}},
          Case{ox::FRAME_C1_32U, {"--size", "20x4", "--method", "nearest"}},
          Case{ox::FRAME_BGR24, {"--rotate", "90"}}, Case{ox::FRAME_C1_16U, {"--size", "34x6"}}}) {
        ox::Frame const frame = randomFrame(format, {34, 6});
        EXPECT_EQ(said(frame, step, bytesOf(frame), {"--verbose"}), "") << ox::toString(format);
    }
    for (auto const& [format, size, step, remark] : fallbacks()) {
        ox::Frame const frame = randomFrame(format, size);
        EXPECT_EQ(said(frame, step, bytesOf(frame), {"--backend", "base", "--verbose"}), "");
    }
}

TEST_F(BackendsTest, WhatNeitherDoesIsAFailure) {
    struct Case {
        ox::FrameFormat format;
        std::string text;
    };
    for (auto const& [format, reason] :
         {Case{ox::FRAME_BGR_32F, "BGR_32F: the vector backend doesn't scale floats by area"},
          Case{ox::FRAME_C1_32U,
               "C1_32U: the vector backend takes channels of 32 bits for floats"}}) {
        Result const result = run(join({"convert", "-", path("out.raw"), "--verbose", "--size",
                                        "3x2", "--method", "area"},
                                       rawInput(format, {6, 4})),
                                  bytesOf(randomFrame(format, {6, 4})));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err,
                  "oxcv: standard input: --size: " + reason + ", nor does the pipeline\n");
    }
    EXPECT_EQ(files(), Words{});
}

TEST_F(BackendsTest, TheVectorBackendIsTheDefault) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {34, 6});
    for (Step const& step : {Step{"--format", "GRAY8"}, Step{"--size", "20x5"}}) {
        said(frame, step, bytesOf(frame), {});
        std::string const expected = read("out.raw");
        said(frame, step, bytesOf(frame), {"--backend", "simd"});
        EXPECT_EQ(read("out.raw"), expected);
        said(frame, step, bytesOf(frame), {"--backend", "base"});
        EXPECT_NE(read("out.raw"), expected) << step.front();
    }
}

TEST_F(BackendsTest, TheVectorBackendHasColoursOfItsOwn) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {34, 6});
    Words const input = rawInput(ox::FRAME_BGR24, {34, 6});
    for (ox::FrameFormat const format :
         {ox::FRAME_NV12, ox::FRAME_GRAY8, ox::FRAME_YUV444, ox::FRAME_BGR_PLANAR}) {
        ox::Frame expected;
        ox::colorConvert(frame, format, expected);
        EXPECT_EQ(
            converted(bytesOf(frame), join(input, {"--format", ox::toString(format)}), "out.raw"),
            bytesOf(expected));
    }
}

TEST_F(BackendsTest, TheVectorBackendLeavesNoPixelOut) {
    // Ten columns: the quick way from NV12 to BGR24 would do eight of them.
    ox::Frame const frame = randomFrame(ox::FRAME_NV12, {10, 4});
    ox::Frame expected = blankFrame(ox::FRAME_BGR24, {10, 4});
    ox::CvBackendSimd().colorCvt(frame, expected, {0, 0, 10, 4});
    EXPECT_EQ(converted(bytesOf(frame),
                        join(rawInput(ox::FRAME_NV12, {10, 4}), {"--format", "BGR24"}), "out.raw"),
              bytesOf(expected));
}

}  // namespace oxcv::test
