// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames that are larger than anybody asked for.
#include "program.h"

namespace oxcv::test {

namespace {

class PixelLimitTest : public ProgramTest {
  protected:
    // A file of a kind with a frame of that size, of colour.
    std::string sample(std::string const& ending, ox::Size size) const {
        ox::Frame const frame = blankFrame(ox::FRAME_BGR24, size);
        std::string const file =
            converted(bytesOf(frame), rawInput(ox::FRAME_BGR24, size), "sample." + ending);
        std::filesystem::remove(path("sample." + ending));
        return file;
    }

    Result tryFile(std::string const& file, Words const& options = {}) const {
        return run(join({"convert", "-", path("out.raw"), "--frames", "1"}, options), file);
    }

    void expectRefusal(Result const& result, std::string const& what) const {
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: standard input: frames of " + what + " of --max-pixels\n");
        EXPECT_LT(result.peak_kilobytes, 600 << 10);  // of which some are the test's own
        EXPECT_EQ(files(), Words{});
    }
};

// The same JPEG file with other sides in its header, which then claims what isn't there.
std::string withSides(std::string file, int width, int height) {
    std::size_t const sides = file.find("\xff\xc0") + 5;
    auto const put = [&](std::size_t place, int side) {
        file[place] = static_cast<char>(side >> 8);
        file[place + 1] = static_cast<char>(side & 0xff);
    };
    put(sides, height);
    put(sides + 2, width);
    return file;
}

std::string streamHeader(std::string const& sides) {
    return "YUV4MPEG2 " + sides + " F25:1 Cmono\nFRAME\n";
}

std::string arrayHeader(std::string const& shape) {
    std::string text = "{'descr': '|u1', 'fortran_order': False, 'shape': (" + shape + "), }";
    text.resize(117, ' ');
    return std::string("\x93NUMPY\x01\x00\x76\x00", 10) + text + "\n";
}

}  // namespace

TEST_F(PixelLimitTest, EveryKindOfFileIsBounded) {
    for (std::string const ending : {"png", "jpg", "y4m", "npy"}) {
        SCOPED_TRACE(ending);
        std::string const file = sample(ending, {10, 7});
        expectRefusal(tryFile(file, {"--max-pixels", "69"}),
                      "10x7 have 70 pixels, more than the 69");
        EXPECT_EQ(tryFile(file, {"--max-pixels", "70"}).status, 0);
        std::filesystem::remove(path("out.raw"));
    }
    Words const raw = rawInput(ox::FRAME_GRAY8, {10, 7});
    std::string const frame(70, 'x');
    expectRefusal(tryFile(frame, join(raw, {"--max-pixels", "69"})),
                  "10x7 have 70 pixels, more than the 69");
    EXPECT_EQ(tryFile(frame, join(raw, {"--max-pixels", "70"})).status, 0);
}

TEST_F(PixelLimitTest, TheUsualBoundIs256Million) {
    std::string const text = "more than the 256000000";
    std::string const jpeg = sample("jpg", {8, 8});
    expectRefusal(tryFile(withSides(jpeg, 20000, 20000)),
                  "20000x20000 have 400000000 pixels, " + text);
    expectRefusal(tryFile(withSides(jpeg, 65500, 65500)),
                  "65500x65500 have 4290250000 pixels, " + text);
    expectRefusal(tryFile(streamHeader("W16001 H16000")),
                  "16001x16000 have 256016000 pixels, " + text);
    expectRefusal(tryFile(arrayHeader("16000, 16001")),
                  "16001x16000 have 256016000 pixels, " + text);
    expectRefusal(tryFile("", rawInput(ox::FRAME_GRAY8, {16001, 16000})),
                  "16001x16000 have 256016000 pixels, " + text);
    // Just allowed, so that the next thing is wrong.
    std::string const file = write("in.y4m", streamHeader("W16000 H16000"));
    EXPECT_EQ(run({"convert", file, path("out.raw")}).err,
              "oxcv: " + file + ": frame 1 is truncated: 0 bytes\n");
}

TEST_F(PixelLimitTest, TheCountOfFramesIsFree) {
    std::string const file = arrayHeader("5, 7, 11") + std::string(5 * 7 * 11, 'x');
    EXPECT_EQ(converted(file, {"--max-pixels", "77"}, "out.raw").size(), std::size_t{5 * 7 * 11});
    std::filesystem::remove(path("out.raw"));
    expectRefusal(tryFile(file, {"--max-pixels", "76"}), "11x7 have 77 pixels, more than the 76");
}

TEST_F(PixelLimitTest, FilesOfAnySizeAreDescribed) {
    Result const result = run({"info", "-"}, withSides(sample("jpg", {8, 8}), 20000, 20000));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("size     20000x20000\n"), std::string::npos);
}

}  // namespace oxcv::test
