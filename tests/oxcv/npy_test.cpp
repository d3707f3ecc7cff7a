// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// NumPy arrays.
#include "program.h"

namespace oxcv::test {

namespace {

class NpyTest : public ProgramTest {};

struct Case {
    ox::FrameFormat format;
    char const* type;
    char const* shape;  // of frames of 5 x 4
};

Words npyFrom(ox::FrameFormat format, std::string const& output) {
    return join({"convert", "-", output, "--output-kind", "npy"}, rawInput(format, {5, 4}));
}

}  // namespace

TEST_F(NpyTest, FramesComeBack) {
    for (auto const& [format, type, shape] :
         {Case{ox::FRAME_GRAY8, "|u1", "4, 5"}, Case{ox::FRAME_BGR24, "|u1", "4, 5, 3"},
          Case{ox::FRAME_BGR_PLANAR, "|u1", "3, 4, 5"}, Case{ox::FRAME_C4_8U, "|u1", "4, 5, 4"},
          Case{ox::FRAME_C1_16U, "<u2", "4, 5"}, Case{ox::FRAME_C1_32U, "<u4", "4, 5"},
          Case{ox::FRAME_GRAY_32F, "<f4", "4, 5"}, Case{ox::FRAME_BGR_32F, "<f4", "4, 5, 3"},
          Case{ox::FRAME_BGR_32F_PLANAR, "<f4", "3, 4, 5"}}) {
        std::string const first = bytesOf(randomFrame(format, {5, 4}, 1));
        std::string const second = bytesOf(randomFrame(format, {5, 4}, 2));
        Result const one = run(npyFrom(format, "-"), first);
        EXPECT_EQ(one.out, npyHeader(type, shape) + first) << one.err;
        EXPECT_EQ(run({"convert", "-", "-", "--output-kind", "raw"}, one.out).out, first);

        // The pipe doesn't tell how many there are, the file is corrected at the end.
        Result const two = run(npyFrom(format, path("two.npy")), first + second);
        EXPECT_EQ(two.status, 0) << two.err;
        EXPECT_EQ(read("two.npy"), npyHeader(type, "2, " + std::string(shape)) + first + second);
        EXPECT_EQ(run({"convert", path("two.npy"), "-", "--output-kind", "raw"}).out,
                  first + second);
    }
}

TEST_F(NpyTest, FormatsWithHalfSizePlanesAreStoredAsBgr24) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_NV12, {5, 4}));
    EXPECT_TRUE(
        run(npyFrom(ox::FRAME_NV12, "-"), frame).out.starts_with(npyHeader("|u1", "4, 5, 3")));
}

TEST_F(NpyTest, APipeNeedsTheCountInFront) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {5, 4}));
    Result const refused = run(npyFrom(ox::FRAME_GRAY8, "-"), frame + frame);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(
        refused.err,
        "oxcv: standard output: can't seek back to note how many frames there are; --frames N "
        "says it\n");

    Words const promise = join(npyFrom(ox::FRAME_GRAY8, "-"), {"--frames", "2"});
    EXPECT_EQ(run(promise, frame + frame + frame).out, npyHeader("|u1", "2, 4, 5") + frame + frame);
    Result const broken = run(promise, frame);
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err, "oxcv: standard output: 2 frames were announced, but there are 1\n");

    // A file tells by its length.
    Words const three{"convert", write("three.gray8", frame + frame + frame),
                      "-",       "--output-kind",
                      "npy",     "--input-size",
                      "5x4"};
    std::string const all = npyHeader("|u1", "3, 4, 5") + frame + frame + frame;
    EXPECT_EQ(run(three).out, all);
    EXPECT_EQ(run(join(three, {"--frames", "9"})).out, all);
    EXPECT_EQ(run(join(three, {"--frames", "2"})).out, npyHeader("|u1", "2, 4, 5") + frame + frame);
}

TEST_F(NpyTest, AskedForFormatsDecideBetweenReadings) {
    std::string const bytes(std::size_t{3} * 4 * 3 * 4, '\x3f');
    std::string const array = npyHeader("<f4", "3, 4, 3") + bytes;
    auto const sizeAs = [&](Words const& options) {
        return run(join({"info", "-"}, options), array).out;
    };
    EXPECT_NE(sizeAs({}).find("BGR_32F\nsize     4x3\nframes   1"), std::string::npos);
    EXPECT_NE(sizeAs({"--input-format", "GRAY_32F"}).find("GRAY_32F\nsize     3x4\nframes   3"),
              std::string::npos);
    EXPECT_NE(sizeAs({"--input-format", "BGR_32F_PLANAR"}).find("size     3x4\nframes   1"),
              std::string::npos);
    std::string const rgb = npyHeader("|u1", "1, 2, 3") + "123456";
    EXPECT_EQ(run({"convert", "-", "-", "--output-kind", "raw", "--input-format", "RGB24",
                   "--format", "BGR24"},
                  rgb)
                  .out,
              "321654");
}

TEST_F(NpyTest, OtherWritersHeadersAreRead) {
    std::string const text = "{'shape':(2,3),'fortran_order':False,'descr':'|u1'}\n";
    std::string const second_version =
        std::string("\x93NUMPY\x02\x00", 8) + static_cast<char>(text.size()) + std::string(3, '\0');
    EXPECT_EQ(
        run({"convert", "-", "-", "--output-kind", "raw"}, second_version + text + "123456").out,
        "123456");
}

TEST_F(NpyTest, HalvesAreReadAsFloatsAndWrittenOnRequest) {
    // 1, -2, the least half, infinity; 65504; 1 / 3.
    std::string const halves("\x00\x3c\x00\xc0\x01\x00\x00\x7c\xff\x7b\x55\x35", 12);
    std::string const floats(
        "\x00\x00\x80\x3f\x00\x00\x00\xc0\x00\x00\x80\x33\x00\x00\x80\x7f"
        "\x00\xe0\x7f\x47\x00\xa0\xaa\x3e",
        24);
    for (char const* const shape : {"1, 6", "2, 3", "6, 1", "2, 1, 3", "3, 1, 2", "2, 3, 1, 1"}) {
        std::string const array = npyHeader("<f2", shape) + halves;
        EXPECT_EQ(run({"convert", "-", "-", "--output-kind", "raw"}, array).out, floats) << shape;
        EXPECT_EQ(run({"convert", "-", "-", "--halves"}, array).out, array) << shape;
        EXPECT_EQ(run({"convert", "-", "-"}, array).out, npyHeader("<f4", shape) + floats) << shape;
    }
    EXPECT_NE(run({"info", "-"}, npyHeader("<f2", "2, 3")).out.find("GRAY_32F, in half precision"),
              std::string::npos);

    // Halfway between two halves: to the even one, in narrow rows as well.
    std::string const between("\x00\x10\x80\x3f\x00\x30\x80\x3f\x00\xf0\x7f\x47", 12);
    EXPECT_EQ(run({"convert", "-", "-", "--halves"}, npyHeader("<f4", "3, 1") + between).out,
              npyHeader("<f2", "3, 1") + std::string("\x00\x3c\x02\x3c\x00\x7c", 6));

    Result const cut = run({"convert", "-", path("out.raw")}, npyHeader("<f2", "2, 3") + "12345");
    EXPECT_EQ(cut.err, "oxcv: standard input: frame 1 is truncated: 5 of 12 bytes\n");
    Result const bytes =
        run({"convert", "-", path("x.npy"), "--halves"}, npyHeader("|u1", "1, 1") + "1");
    EXPECT_EQ(bytes.status, 1);
    EXPECT_EQ(bytes.err, "oxcv: " + path("x.npy") + ": --halves needs floats, not GRAY8\n");
    Result const raw =
        run({"convert", "-", path("out.raw"), "--halves"}, npyHeader("<f2", "2, 3") + halves);
    EXPECT_EQ(raw.status, 2);
    EXPECT_EQ(raw.err, "oxcv: --halves: only npy arrays hold them\n");
    EXPECT_EQ(
        run({"convert", "-", path("x.raw")}, npyHeader("<f2", "3, 2000000000, 2000000000")).status,
        1);
    EXPECT_EQ(files(), Words{});
}

TEST_F(NpyTest, BadArraysAreRefused) {
    struct Bad {
        std::string array;
        std::string text;
    };
    auto const altered = [](std::string const& from, std::string const& to) {
        std::string array = npyHeader("<f4", "2, 2");
        return array.replace(array.find(from), from.size(), to);
    };
    for (auto const& [array, text] :
         {Bad{npyHeader("<f4", "2, 2").substr(0, 60), "the NumPy header is truncated"},
          Bad{altered("False", "True "), "NumPy arrays in Fortran order aren't supported"},
          Bad{altered("descr", "dexcr"), "the NumPy header has no 'descr'"},
          Bad{altered("'<f4'", "[<f4]"), "the NumPy array isn't of plain numbers"},
          Bad{altered("2, 2", "2, x"), "bad shape of the NumPy array"},
          Bad{altered("2, 2", "-2,2"), "bad shape of the NumPy array"},
          Bad{npyHeader(">f4", "2, 2"), "the NumPy array's type and shape fit no format"},
          Bad{npyHeader("<f4", "2"), "the NumPy array's type and shape fit no format"},
          Bad{npyHeader("<f4", "4294967297, 1"), "the NumPy array's type and shape fit no format"},
          Bad{npyHeader("<f4", "99999999999999999999, 1"), "bad shape of the NumPy array"},
          Bad{npyHeader("|u1", "2, 2") + "123", "frame 1 is truncated: 3 of 4 bytes"},
          Bad{npyHeader("|u1", "2, 1, 5") + "12345", "frame 2 of 2 is missing"},
          Bad{npyHeader("|u1", "0, 1, 2"), "there are no frames"}}) {
        Result const result = run({"convert", "-", path("out.raw")}, array);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: standard input: " + text + "\n");
    }
    EXPECT_EQ(files(), Words{});
}

}  // namespace oxcv::test
