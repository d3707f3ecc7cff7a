// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Exit statuses, messages, and what is left behind.
#include <sys/stat.h>
#include <unistd.h>

#include "program.h"

namespace oxcv::test {

namespace {

class FailuresTest : public ProgramTest {
  protected:
    std::string const gray = bytesOf(randomFrame(ox::FRAME_GRAY8, {8, 8}));
    Words const gray_input = rawInput(ox::FRAME_GRAY8, {8, 8});
};

}  // namespace

TEST_F(FailuresTest, WrongUseExitsWith2) {
    struct Case {
        Words arguments;
        std::string text;  // or how it begins
    };
    std::string const input = write("in.gray8", gray);
    auto const convert = [&](Words const& options) {
        return join({"convert", input, path("out.raw"), "--input-size", "8x8"}, options);
    };
    for (auto const& [arguments, text] :
         {Case{{}, "A subcommand is required"},
          Case{{"bake"}, "there is no command or option 'bake'; 'oxcv --help' tells the rest"},
          Case{{"--colour", "convert", "-", "-"}, "The following argument was not expected: --c"},
          Case{{"convert", input}, "output is required"},
          Case{{"convert", input, path("out.raw")}, input + ": raw frames need --input-size\n"},
          Case{{"convert", "-", "-", "--input-kind", "raw", "--input-format", "NV12"},
               "standard input: raw frames need --input-size\n"},
          Case{{"convert", "-", "-", "--input-size", "8x8"},
               "standard input: raw frames need --input-format\n"},
          Case{{"info", "-", "--input-kind", "raw"},
               "standard input: raw frames need --input-format and --input-size\n"},
          Case{{"convert", "-", path("out.raw")},
               "standard input: of no known kind; --input-kind "},
          Case{{"convert", "-", path("out.raw"), "--input-kind", "gif"},
               "--input-kind: 'gif' is none of png, jpeg, y4m, npy, raw\n"},
          Case{convert({"--size", "0x10"}), "--size: '0x10' is no size such as 640x480, 640x or "},
          Case{convert({"--size", "x"}), "--size: 'x' is no size"},
          Case{convert({"--size", "10"}), "--size: '10' is no size"},
          Case{convert({"--size", "10x-5"}), "--size: '10x-5' is no size"},
          Case{convert({"--size", "9999999999x1"}), "--size: '9999999999x1' is no size"},
          Case{convert({"--input-size", "8x"}), "--input-size"},
          Case{convert({"--roi", "1,2,3"}), "--roi: '1,2,3' is no region X,Y,W,H"},
          Case{convert({"--roi", "1,2,3,0"}), "--roi: '1,2,3,0' is no region"},
          Case{convert({"--roi", "1,2,3,4,5"}), "--roi: '1,2,3,4,5' is no region"},
          Case{convert({"--format", "NV13"}),
               "--format: there is no format 'NV13'; 'oxcv formats'"},
          Case{convert({"--format", "FORMAT_NONE"}), "--format: there is no format 'FORMAT_NONE'"},
          Case{convert({"--method", "cubic"}), "--method: there is no method 'cubic'"},
          Case{convert({"--backend", "gpu"}), "--backend: 'gpu' is none of simd, base\n"},
          Case{{"formats", "--backend", "gpu"}, "--backend: 'gpu' is none of simd, base\n"},
          Case{convert({"--rotate", "left"}),
               "--rotate: 'left' is no number of degrees such as 90"},
          Case{convert({"--rotate", "inf"}), "--rotate: 'inf' is no number of degrees"},
          Case{convert({"--rotate", "90", "--warp", "1,0,0,0,1,0"}), "--warp excludes --rotate"},
          Case{convert({"--rotate", "90", "--backend", "base"}),
               "--rotate: the pipeline backend has no warps, only simd has\n"},
          Case{convert({"--warp", "1,0,0,0,1,0", "--backend", "base"}),
               "--warp: the pipeline backend has no warps, only simd has\n"},
          Case{convert({"--warp", "1,0,0,0,1"}),
               "--warp: '1,0,0,0,1' is no matrix A,B,C,D,E,F such as 1,0,16,0,1,-8.5\n"},
          Case{convert({"--warp", "1,0,0,0,1,0,0"}), "--warp: '1,0,0,0,1,0,0' is no matrix"},
          Case{convert({"--warp", "1,0,nan,0,1,0"}), "--warp: '1,0,nan,0,1,0' is no matrix"},
          Case{convert({"--warp", "1,0,1e99,0,1,0"}), "--warp: '1,0,1e99,0,1,0' is no matrix"},
          Case{convert({"--warp", "0,0,0,0,0,0"}),
               "--warp: the matrix '0,0,0,0,0,0' can't be inverted\n"},
          Case{convert({"--warp", "1,2,5,2,4,7"}), "--warp: the matrix '1,2,5,2,4,7' can't be "},
          Case{convert({"--warp", "1e-20,0,1e30,0,1e-20,0"}), "--warp: the matrix '1e-20,0,1e30"},
          Case{convert({"--warp", "1e30,0,0,0,1e30,0"}), "--warp: the matrix '1e30,0,0,0,1e30,0' "},
          Case{convert({"--warp", "1e-20,0,0,0,1e-20,0", "--invert"}), "--warp: the matrix '1e-20"},
          Case{convert({"--invert"}), "--invert requires --warp"},
          Case{convert({"--warp-method", "area"}),
               "--warp-method: there is no warp method 'area', only nearest and bilinear\n"},
          Case{convert({"--frames", "0"}), "--frames: '0' is no positive number"},
          Case{convert({"--quality", "101"}), "--quality: '101' is no number from 1 to 100\n"},
          Case{convert({"--mul", "much"}),
               "--mul: 'much' is no finite number such as 0.0039 or -0.5\n"},
          Case{convert({"--colour"}), "The following argument was not expected: --colour"},
          Case{{"convert", input, path("out.xyz"), "--input-size", "8x8"},
               path("out.xyz") + ": the ending names no kind"}}) {
        Result const result = run(arguments);
        EXPECT_EQ(result.status, 2) << text;
        EXPECT_TRUE(result.err.starts_with("oxcv: " + text)) << result.err << "expected " << text;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    }
    EXPECT_EQ(files(), Words{"in.gray8"});
}

TEST_F(FailuresTest, FailuresExitWith1AndLeaveNothing) {
    struct Case {
        Words options;
        std::string text;
    };
    std::string const input = write("in.gray8", gray);
    std::string const no_way =
        "Failure in ImplFormatConverter::get_context(...) : unsupported format.";
    for (auto const& [options, text] :
         {Case{{"--roi", "1,0,8,8"}, "--roi: Failure in getRegion(...) : region is out of range."},
          Case{{"--mul", "2"}, "--mul: mul: Unsupported src format FRAME_GRAY8."},
          Case{{"--add", "2"}, "--add: add: Unsupported src format FRAME_GRAY8."},
          Case{{"--mul", "2", "--backend", "base"}, "--mul: MUL error, unsupported data type."},
          Case{{"--add", "2", "--backend", "base"}, "--add: ADD error, unsupported data type."},
          Case{{"--format", "C2_8U"}, "no way from GRAY8 to C2_8U: " + no_way},
          Case{{"--size", "2147483647x"}, "--size: "},
          Case{{"--roi", "0,0,8,1", "--format", "BGR24", "--output-kind", "y4m", "--backend",
                "base"},
               "BGR24 to I420: Parameter 'window_size' is out of range."},
          Case{{"--input-size", "8x7"}, "frame 2 is truncated: 8 of 56 bytes"},
          Case{{"--input-size", "80x80"}, "frame 1 is truncated: 64 of 6400 bytes"},
          Case{{"--input-size", "2147483647x2147483647", "--input-format", "BGR_32F"},
               "Size is too large."}}) {
        Words const size =
            options.front() == "--input-size" ? Words{} : Words{"--input-size", "8x8"};
        Result const result = run(join(join({"convert", input, path("out.raw")}, size), options));
        EXPECT_EQ(result.status, 1) << text;
        EXPECT_TRUE(result.err.starts_with("oxcv: " + input + ": " + text))
            << result.err << "expected " << text;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
        EXPECT_EQ(files(), Words{"in.gray8"});
    }
}

TEST_F(FailuresTest, FilesThatCantBeOpenedAreNamed) {
    EXPECT_EQ(run({"convert", path("none.png"), path("out.png")}).err,
              "oxcv: " + path("none.png") + ": No such file or directory\n");
    EXPECT_EQ(run({"info", path("")}).err, "oxcv: " + path("") + ": Is a directory\n");
    Result const result = run(join({"convert", "-", path("none/out.raw")}, gray_input), gray);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: " + path("none/out.raw") + ": No such file or directory\n");
    EXPECT_EQ(files(), Words{});
}

TEST_F(FailuresTest, AFailureKeepsTheFileThatWasThere) {
    write("out.raw", "before");
    Result const result = run(join({"convert", "-", path("out.raw")}, gray_input), gray + "rest");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: standard input: frame 2 is truncated: 4 of 64 bytes\n");
    EXPECT_EQ(files(), Words{"out.raw"});
    EXPECT_EQ(read("out.raw"), "before");
}

TEST_F(FailuresTest, SuccessReplacesTheFileButNotItsLinkOrPermissions) {
    chmod(write("out.raw", "before").c_str(), 0640);
    std::filesystem::create_symlink("out.raw", path("link.raw"));
    converted(gray, gray_input, "link.raw");
    EXPECT_EQ(read("out.raw"), gray);
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.raw")));
    EXPECT_EQ(std::filesystem::status(path("out.raw")).permissions(),
              static_cast<std::filesystem::perms>(0640));
    EXPECT_EQ(files(), (Words{"link.raw", "out.raw"}));
}

TEST_F(FailuresTest, AFileMayBeItsOwnTarget) {
    std::string const file = write("same.gray8", gray);
    Result const result =
        run({"convert", file, file, "--input-size", "8x8", "--size", "4x4", "--method", "nearest"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(read("same.gray8").size(), 16U);
}

TEST_F(FailuresTest, AReaderThatHasGoneIsNoNoise) {
    for (Words const& kind : {Words{}, Words{"--output-kind", "png", "--frames", "1"}}) {
        Program program(join(join({"convert", "-", "-"}, gray_input), kind));
        program.closeOutput();
        Result const result = program.finish(gray + gray);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(FailuresTest, AFullDiskIsReported) {
    if (access("/dev/full", W_OK) != 0) {
        return;
    }
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {200, 200}));
    for (std::string const kind : {"raw", "png", "jpeg", "y4m", "npy"}) {
        Result const result = run(join({"convert", "-", "/dev/full", "--output-kind", kind},
                                       rawInput(ox::FRAME_GRAY8, {200, 200})),
                                  frame);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: /dev/full: No space left on device\n") << kind;
    }
}

}  // namespace oxcv::test
