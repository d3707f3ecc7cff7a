// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Reductions by the library's filters.
#include <memory>
#include <utility>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "program.h"

namespace oxcv::test {

namespace {

class FilterTest : public ProgramTest {
  protected:
    std::string reduced(ox::Frame const& frame, Words const& options) const {
        return converted(bytesOf(frame), join(rawInput(frame.format(), frame.size()), options),
                         "out.raw");
    }
};

// What the library makes of a frame, with a scaler of its own.
std::string byLibrary(ox::Frame const& frame, ox::Size size, ox::IKernel& kernel,
                      ox::ScalerPrecision precision) {
    ox::ScalerConvolutional scaler;
    scaler.reuse(kernel, frame, size, precision);
    ox::Frame result = blankFrame(frame.format(), size);
    ox::produceFrame(scaler, result);
    return bytesOf(result);
}

ox::Frame channelsReversed(ox::Frame const& frame, ox::FrameFormat format) {
    ox::Frame result = blankFrame(format, frame.size());
    std::string bytes = bytesOf(frame);
    for (std::size_t i = 0; i + 2 < bytes.size(); i += 3) {
        std::swap(bytes[i], bytes[i + 2]);
    }
    setBytes(result, bytes);
    return result;
}

}  // namespace

TEST_F(FilterTest, EveryKernelAndPrecisionGivesTheLibrarysBytes) {
    ox::BoxKernel box;
    ox::TriangleKernel triangle;
    ox::MitchellNetravaliKernel mitchell;
    ox::CatmullRomKernel catmull_rom;
    ox::Lanczos3Kernel lanczos;
    std::pair<char const*, ox::IKernel&> const kernels[]{{"box", box},
                                                         {"Triangle", triangle},
                                                         {"mitchell", mitchell},
                                                         {"catmull-rom", catmull_rom},
                                                         {"LANCZOS3", lanczos}};
    for (auto const& [name, kernel] : kernels) {
        for (auto const format :
             {ox::FRAME_BGR24, ox::FRAME_GRAY8, ox::FRAME_NV12, ox::FRAME_I420}) {
            ox::Frame const frame = randomFrame(format, {70, 41});
            Words const options{"--size", "31x20", "--kernel", name};
            EXPECT_EQ(reduced(frame, options),
                      byLibrary(frame, {31, 20}, kernel, ox::OX_SCALER_FIXED_POINT_16S))
                << name << " " << ox::toString(format);
            EXPECT_EQ(reduced(frame, join(options, {"--precision", "8"})),
                      byLibrary(frame, {31, 20}, kernel, ox::OX_SCALER_FIXED_POINT_8S))
                << name << " " << ox::toString(format);
        }
    }
}

// A scaler that is used again loses a step.
TEST_F(FilterTest, AllFramesOfAStreamAreScaledAlike) {
    ox::Frame const frame = randomFrame(ox::FRAME_GRAY8, {24, 24});
    std::string const out = converted(
        bytesOf(frame) + bytesOf(frame),
        join(rawInput(ox::FRAME_GRAY8, {24, 24}), {"--size", "8x8", "--kernel", "box"}), "out.raw");
    ASSERT_EQ(out.size(), 128U);
    EXPECT_EQ(out.substr(0, 64), out.substr(64));
}

TEST_F(FilterTest, RedFirstFormatsGoThroughBgr) {
    ox::Frame const bgr = randomFrame(ox::FRAME_BGR24, {30, 18});
    ox::TriangleKernel kernel;
    ox::Frame small = blankFrame(ox::FRAME_BGR24, {10, 9});
    setBytes(small, byLibrary(bgr, {10, 9}, kernel, ox::OX_SCALER_FIXED_POINT_16S));
    EXPECT_EQ(
        reduced(channelsReversed(bgr, ox::FRAME_RGB24), {"--size", "10x9", "--kernel", "triangle"}),
        bytesOf(channelsReversed(small, ox::FRAME_RGB24)));
}

TEST_F(FilterTest, PackedPairsGoThroughPlanes) {
    ox::Frame const yuyv = randomFrame(ox::FRAME_YUYV, {32, 16});
    ox::Frame nv16 = blankFrame(ox::FRAME_NV16, {32, 16});
    std::string luma;
    std::string chroma;
    std::string const bytes = bytesOf(yuyv);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        (i % 2 == 0 ? luma : chroma) += bytes[i];
    }
    setBytes(nv16, luma + chroma);
    ox::BoxKernel kernel;
    std::string const planes = byLibrary(nv16, {16, 4}, kernel, ox::OX_SCALER_FIXED_POINT_16S);
    std::string expected;
    for (std::size_t i = 0; i < planes.size() / 2; ++i) {
        expected += planes[i];
        expected += planes[planes.size() / 2 + i];
    }
    EXPECT_EQ(reduced(yuyv, {"--size", "16x4", "--kernel", "box"}), expected);
}

TEST_F(FilterTest, WhatFiltersDoNotTakeIsToldInPlainWords) {
    struct Case {
        ox::FrameFormat format;
        Words options;
        char const* said;
        int status;
    };
    std::string const input = write("in.raw", bytesOf(randomFrame(ox::FRAME_GRAY_32F, {96, 96})));
    for (auto const& [format, options, said, status] :
         {Case{ox::FRAME_GRAY8,
               {"--size", "8x100", "--kernel", "box"},
               "--kernel: filters only reduce: 96x96 to 8x100\n",
               1},
          Case{ox::FRAME_GRAY_32F,
               {"--size", "8x8", "--kernel", "box"},
               "--kernel: GRAY_32F: filters take channels of 8 bits only\n",
               1},
          Case{ox::FRAME_GRAY8,
               {"--size", "2x90", "--kernel", "box"},
               "--kernel: Failure in ScaleData::reuse(...), scale factor is out of range.\n",
               1},
          Case{ox::FRAME_GRAY8,
               {"--kernel", "box"},
               "--kernel requires --size; 'oxcv --help' tells the rest\n",
               2},
          Case{ox::FRAME_GRAY8,
               {"--size", "8x8", "--precision", "8"},
               "--precision requires --kernel; 'oxcv --help' tells the rest\n",
               2},
          Case{ox::FRAME_GRAY8,
               {"--size", "8x8", "--kernel", "box", "--precision", "12"},
               "--precision: weights have 8 or 16 bits, not '12'\n",
               2},
          Case{ox::FRAME_GRAY8,
               {"--size", "8x8", "--kernel", "box", "--method", "area"},
               "--method excludes --kernel; 'oxcv --help' tells the rest\n",
               2}}) {
        Result const result = run(
            join(join({"convert", input, path("out.raw")}, rawInput(format, {96, 96})), options));
        EXPECT_EQ(result.status, status) << said;
        EXPECT_EQ(result.err, "oxcv: " + (status == 1 ? input + ": " : "") + said);
    }
    EXPECT_EQ(files(), Words{"in.raw"});
}

TEST_F(FilterTest, TheRemarkComesOnlyWhereVectorsWereAskedFor) {
    std::string const input = write("in.raw", bytesOf(randomFrame(ox::FRAME_GRAY8, {8, 8})));
    Words const command =
        join(join({"convert", input, path("out.raw")}, rawInput(ox::FRAME_GRAY8, {8, 8})),
             {"--size", "4x4", "--kernel", "box", "--verbose"});
    EXPECT_EQ(run(command).err,
              "oxcv: --kernel: done by the pipeline backend, since the vector backend has no "
              "filters\n");
    EXPECT_EQ(run(join(command, {"--backend", "base"})).err, "");
}

}  // namespace oxcv::test
