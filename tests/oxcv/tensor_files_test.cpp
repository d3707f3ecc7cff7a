// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Arrays for networks: which files go in, in which order, and what comes out beside the numbers.
#include <algorithm>
#include <csignal>

#include "program.h"

namespace oxcv::test {

namespace {

class TensorFilesTest : public ProgramTest {
  protected:
    std::string const first = frame(1);
    std::string const second = frame(2);
    std::string const third = frame(3);
    Words const size{"--size", "4x4", "--fit", "letterbox", "--bars", "9", "--type", "u8"};

    static std::string frame(unsigned seed) {
        return bytesOf(randomFrame(ox::FRAME_BGR24, {12, 8}, seed));
    }
    std::string picture(std::string const& bytes, std::string const& name) const {
        static_cast<void>(converted(bytes, rawInput(ox::FRAME_BGR24, {12, 8}), name));
        return path(name);
    }
    Words raw(std::string const& input, std::string const& output) const {
        return join(join({"tensor", input, output}, size), rawInput(ox::FRAME_BGR24, {12, 8}));
    }
    // The bytes of pictures, by themselves.
    std::string made(std::string const& frames) const {
        Result const result = run(join(raw("-", "-"), {"--raw"}), frames);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
    // The file, which is expected to be an array of so many pictures.
    void expectArray(std::string const& array, std::string const& count,
                     std::string const& pictures) const {
        EXPECT_EQ(array, npyHeader("|u1", count + ", 3, 4, 4") + pictures);
    }
};

}  // namespace

TEST_F(TensorFilesTest, AllFilesGoToOneArrayInTheirOrder) {
    Words call{"tensor", picture(second, "b.png"), picture(first, "a.png"),
               write("c.bgr24", third + first), path("out.npy")};
    call = join(join(call, size), {"--input-size", "12x8"});
    std::string const all = made(second + first + third + first);
    for (char const* const jobs : {"1", "2", "3", "64", "9223372036854775807"}) {
        Result const result = run(join(call, {"--jobs", jobs}));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        expectArray(read("out.npy"), "4", all);
    }
    EXPECT_EQ(files(), (Words{"a.png", "b.png", "c.bgr24", "out.npy"}));
}

TEST_F(TensorFilesTest, ManyJobsGiveTheSameBytes) {
    Words inputs;
    std::string all;
    for (unsigned i = 0; i < 24; ++i) {
        std::string const name = std::to_string(i) + ".png";
        inputs.push_back(picture(frame(i), name));
        all += frame(i);
    }
    Words const call = join(join(join({"tensor"}, inputs), {path("out.npy")}), size);
    for (std::string const jobs : {"1", "5"}) {
        EXPECT_EQ(run(join(call, {"--jobs", jobs, "--mapping", path(jobs + ".json")})).err, "");
        expectArray(read("out.npy"), "24", made(all));
    }
    EXPECT_EQ(read("1.json"), read("5.json"));
}

TEST_F(TensorFilesTest, AStreamIsItsFrames) {
    std::string const y4m_frame(12 * 8 * 3, '\x77');
    std::string const stream = "YUV4MPEG2 W12 H8 F25:1 C444\nFRAME\n" + first + "FRAME\n" + second;
    EXPECT_EQ(run(join({"tensor", "-", path("out.npy")}, size), stream).err, "");
    Words const planes =
        join(join({"tensor", "-", "-", "--raw"}, size), rawInput(ox::FRAME_YUV444_PLANAR, {12, 8}));
    expectArray(read("out.npy"), "2", run(planes, first).out + run(planes, second).out);

    EXPECT_EQ(run(raw("-", path("out.npy")), first + second + third).err, "");
    expectArray(read("out.npy"), "3", made(first) + made(second) + made(third));

    Words const array{"convert", write("in.bgr24", first + third), path("in.npy"), "--input-size",
                      "12x8"};
    EXPECT_EQ(run(array).err, "");
    EXPECT_EQ(run(join({"tensor", path("in.npy"), path("out.npy")}, size)).err, "");
    expectArray(read("out.npy"), "2", made(first + third));
}

TEST_F(TensorFilesTest, FramesAreCountedOverAllFiles) {
    std::string const two = write("two.bgr24", first + second);
    Words const call = join(join({"tensor", two, two, path("missing"), path("out.npy")}, size),
                            {"--input-size", "12x8", "--frames", "3"});
    for (char const* const jobs : {"1", "3"}) {
        EXPECT_EQ(run(join(call, {"--jobs", jobs})).err, "");
        expectArray(read("out.npy"), "3", made(first + second + first));
    }
}

TEST_F(TensorFilesTest, TheMappingTellsWherePicturesComeFrom) {
    std::string const strange = "a\"\\\n\x7f\xc3\xa9\xff\xed\xa0\x80.png";
    Words const call{"tensor",        picture(first, strange), write("c.bgr24", third + first),
                     path("out.npy"), "--input-size",          "12x8",
                     "--mapping",     path("map.json")};
    EXPECT_EQ(run(join(call, size)).err, "");
    std::string const directory = path("");
    EXPECT_EQ(
        read("map.json"),
        "[\n"
        "{\"file\": \"" +
            directory +
            "a\\\"\\\\\\u000a\\u007f\xc3\xa9\\udcff\\udced\\udca0\\udc80.png\", \"frame\": 0, "
            "\"source\": [0, 0, 12, 8], \"inner\": [0, 0, 4, 3]},\n"
            "{\"file\": \"" +
            directory +
            "c.bgr24\", \"frame\": 0, "
            "\"source\": [0, 0, 12, 8], \"inner\": [0, 0, 4, 3]},\n"
            "{\"file\": \"" +
            directory +
            "c.bgr24\", \"frame\": 1, "
            "\"source\": [0, 0, 12, 8], \"inner\": [0, 0, 4, 3]}\n"
            "]\n");
    Words const crop{"tensor", "-",     path("out.npy"), "--size",    "4x4", "--fit",
                     "crop",   "--roi", "1,2,9,5",       "--mapping", "-"};
    EXPECT_EQ(run(join(crop, rawInput(ox::FRAME_BGR24, {12, 8})), first).out,
              "[\n{\"file\": \"-\", \"frame\": 0, \"source\": [3, 2, 5, 5], "
              "\"inner\": [0, 0, 4, 4]}\n]\n");
}

TEST_F(TensorFilesTest, TheFirstFileThatFailsEndsTheCommand) {
    Words const call = join(
        join({"tensor", picture(first, "a.png"), path("no1"), path("no2"), path("out.npy")}, size),
        {"--mapping", path("map.json")});
    for (char const* const jobs : {"1", "2", "3"}) {
        Result const result = run(join(call, {"--jobs", jobs}));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: " + path("no1") + ": No such file or directory\n");
        EXPECT_EQ(files(), Words{"a.png"});
    }
    std::string const empty = write("empty.gray8", "");
    EXPECT_EQ(run(join({"tensor", empty, path("out.npy"), "--input-size", "8x8"}, size)).err,
              "oxcv: " + empty + ": there are no frames\n");
    std::string const text = write("notes.txt", "hello");
    Result const unknown = run(join({"tensor", text, path("out.npy")}, size));
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err,
              "oxcv: " + text +
                  ": of no known kind; --input-kind names it, raw frames need --input-size\n");
}

TEST_F(TensorFilesTest, FilesThatFailCanBeLeftOut) {
    std::string const cut = write("cut.bgr24", second + third.substr(5));
    std::string const text = write("notes.txt", "hello");
    std::string const good = picture(first, "a.png");
    Words const call =
        join(join({"tensor", path("no"), cut, text, good, path("out.npy"), "--input-size", "12x8",
                   "--keep-going", "--mapping", path("map.json")},
                  size),
             {"--jobs", "3"});
    Result const result = run(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: " + path("no") + ": No such file or directory\noxcv: " + cut +
                              ": frame 2 is truncated: 283 of 288 bytes\noxcv: " + text +
                              ": raw frames need --input-format\noxcv: 3 of 4 files failed\n");
    expectArray(read("out.npy"), "2", made(second + first));
    std::string const map = read("map.json");
    EXPECT_EQ(std::count(map.begin(), map.end(), '{'), 2);
    EXPECT_LT(map.find(cut), map.find(good));

    Result const none = run(join({"tensor", path("no"), path("none.npy"), "--keep-going"}, size));
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "oxcv: " + path("no") + ": No such file or directory\n" +
                            "oxcv: no file is left, so nothing is written\n");
    EXPECT_FALSE(std::filesystem::exists(path("none.npy")));
}

TEST_F(TensorFilesTest, AnArrayOnAPipeNeedsItsCount) {
    std::string const both = made(first + second);
    Result const refused = run(raw("-", "-"), first + second);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "oxcv: standard output: can't seek back to note how many pictures there are; "
              "--frames N says it, --raw leaves it out\n");
    expectArray(run(join(raw("-", "-"), {"--frames", "2"}), first + second + third).out, "2", both);
    Result const broken = run(join(raw("-", "-"), {"--frames", "3"}), first + second);
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err, "oxcv: standard output: 3 frames were announced, but there are 2\n");

    // Files tell, pictures are one each.
    Words const known =
        join(join({"tensor", picture(first, "a.png"), write("b.bgr24", second + third), "-"}, size),
             {"--input-size", "12x8"});
    expectArray(run(known).out, "3", both + made(third));
    expectArray(run(join(known, {"--frames", "2"})).out, "2", both);
    EXPECT_EQ(run(join(known, {"--raw"})).out, both + made(third));
    expectArray(run(join({"tensor", "-", "-"}, size), read("a.png")).out, "1", made(first));

    // A file on standard output is corrected at the end.
    Result const shell =
        runByShell("exec \"$0\" \"$@\" > " + path("out.npy"), raw("-", "-"), first + second);
    EXPECT_EQ(shell.err, "");
    expectArray(read("out.npy"), "2", both);
}

TEST_F(TensorFilesTest, NamesAreChecked) {
    std::string const a = picture(first, "a.png");
    std::string const b = picture(second, "b.png");
    std::string const kept = read("b.png");
    struct Case {
        Words arguments;
        std::string text;
    };
    for (auto const& [arguments, text] : {
             Case{{}, "input is required; 'oxcv --help' tells the rest"},
             Case{{a}, "output is required; 'oxcv --help' tells the rest"},
             Case{{a, b}, b + ": the array's name must end with .npy, or --raw be given"},
             Case{{a, b, "--raw"}, b + ": --raw doesn't make a file of kind png"},
             Case{{a, path("x")},
                  path("x") + ": the array's name must end with .npy, or --raw be given"},
             Case{{a, path("x.npy"), "--raw"},
                  path("x.npy") + ": --raw doesn't make a file of kind npy"},
             Case{{a, ""}, "the name is empty"},
             Case{{"-", "-", path("x.npy")}, "standard input is named twice"},
             Case{{a, path("x.npy"), "--mapping", path("x.npy")},
                  "--mapping: it is the array's own file"},
             Case{{a, "-", "--mapping", "-"}, "--mapping: it is the array's own file"},
             Case{{a, path("x.npy"), "--mapping", ""}, "--mapping: the name is empty"},
         }) {
        Result const result = run(join(join({"tensor"}, arguments), size));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "oxcv: " + text + "\n");
    }
    EXPECT_EQ(files(), (Words{"a.png", "b.png"}));
    EXPECT_EQ(read("b.png"), kept);
    EXPECT_EQ(run(join({"tensor", a, path("x.bin"), "--raw"}, size)).err, "");
    EXPECT_EQ(read("x.bin"), made(first));
}

TEST_F(TensorFilesTest, NothingIsLeftOfWhatIsHalfMade) {
    Words const call = join(raw("-", path("out.npy")), {"--mapping", path("map.json")});
    for (int const number : {SIGINT, SIGTERM}) {
        Program program(call);
        while (files().size() < 2) {
            ASSERT_TRUE(somethingAppears());
        }
        kill(program.id(), number);
        EXPECT_EQ(program.finish("").status, -number);
        EXPECT_EQ(files(), Words{});
    }
    // The mapping's directory is missing: told before any work.
    Result const result =
        run(join(raw("-", path("out.npy")), {"--mapping", path("none/map.json")}), first);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: " + path("none/map.json") + ": No such file or directory\n");
    EXPECT_EQ(files(), Words{});
}

TEST_F(TensorFilesTest, AReaderThatLeavesEndsTheCommand) {
    Program program(join(raw("-", "-"), {"--raw"}));
    program.closeOutput();
    Result const result = program.finish(first + second + third);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
}

}  // namespace oxcv::test
