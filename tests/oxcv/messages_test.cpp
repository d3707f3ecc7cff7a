// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One line on standard error that names the file and can't do anything to a terminal.
#include <algorithm>

#include "program.h"

namespace oxcv::test {

namespace {

class MessagesTest : public ProgramTest {
  protected:
    Words const input = rawInput(ox::FRAME_GRAY8, {8, 8});

    std::string messageFor(Words const& options) const {
        Result const result = run(join(join({"convert", "-", path("out.raw")}, input), options));
        EXPECT_EQ(result.status, 2);
        return result.err;
    }
};

struct Escape {
    std::string bytes;
    std::string printed;
};

std::vector<Escape> const escapes{
    {"\n", R"(\x0a)"},
    {"\r", R"(\x0d)"},
    {"\t", R"(\x09)"},
    {"\x1b[31m", R"(\x1b[31m)"},
    {"\x7f", R"(\x7f)"},
    {"\xc2\x85", R"(\xc2\x85)"},                  // next line
    {"\xc2\x9b", R"(\xc2\x9b)"},                  // control sequence introducer
    {"\xe2\x80\xa8", R"(\xe2\x80\xa8)"},          // line separator
    {"\xe2\x80\xae", R"(\xe2\x80\xae)"},          // right to left from here on
    {"\xf3\xa0\x81\x81", R"(\xf3\xa0\x81\x81)"},  // a tag that can't be seen
    {"\x80", R"(\x80)"},                          // no start of a character
    {"\xff\xfe", R"(\xff\xfe)"},
    {"\xc3", R"(\xc3)"},                          // half of a character
    {"\xc0\x8a", R"(\xc0\x8a)"},                  // a line's end in two bytes
    {"\xe0\x82\x9b", R"(\xe0\x82\x9b)"},          // the introducer in three
    {"\xed\xa0\x80", R"(\xed\xa0\x80)"},          // half of a pair
    {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},  // past the last character
    {"\xc3\xbc", "\xc3\xbc"},                     // the rest is fit to be printed
    {"\xe2\x82\xac", "\xe2\x82\xac"},
    {"\xf0\x9f\x90\x88", "\xf0\x9f\x90\x88"},
    {R"(\x1b)", R"(\x1b)"},
};

}  // namespace

TEST_F(MessagesTest, WhatCantBePrintedIsEscapedInValues) {
    for (auto const& [bytes, printed] : escapes) {
        EXPECT_EQ(messageFor({"--mul", "<" + bytes + ">"}),
                  "oxcv: --mul: '<" + printed + ">' is no finite number such as 0.0039 or -0.5\n");
        EXPECT_EQ(messageFor({"--output-kind", "<" + bytes + ">"}),
                  "oxcv: --output-kind: '<" + printed + ">' is none of png, jpeg, y4m, npy, raw\n");
    }
}

TEST_F(MessagesTest, WhatCantBePrintedIsEscapedInNames) {
    for (auto const& [bytes, printed] : escapes) {
        EXPECT_EQ(run({"info", path("<" + bytes + ">")}).err,
                  "oxcv: " + path("<" + printed + ">") + ": No such file or directory\n");
    }
}

TEST_F(MessagesTest, LongValuesAreShortened) {
    std::string const sixty(60, 'a');
    EXPECT_EQ(messageFor({"--format", sixty}),
              "oxcv: --format: there is no format '" + sixty + "'; 'oxcv formats' lists them\n");
    EXPECT_EQ(messageFor({"--format", std::string(100000, 'a')}),
              "oxcv: --format: there is no format '" + sixty + "...'; 'oxcv formats' lists them\n");
    // Not within a character, nor within an escape.
    std::string umlauts;
    for (int i = 0; i < 60; ++i) {
        umlauts += "\xc3\xbc";
    }
    EXPECT_EQ(messageFor({"--format", umlauts + umlauts}), "oxcv: --format: there is no format '" +
                                                               umlauts +
                                                               "...'; 'oxcv formats' lists "
                                                               "them\n");
    std::string fifteen;
    for (int i = 0; i < 15; ++i) {
        fifteen += R"(\x07)";
    }
    EXPECT_EQ(messageFor({"--format", std::string(16, '\a')}),
              "oxcv: --format: there is no format '" + fifteen +
                  "...'; 'oxcv formats' lists "
                  "them\n");
}

TEST_F(MessagesTest, EveryOptionsMessageIsOneShortLine) {
    std::string const value = std::string(50000, '\n') + "\xc2\x9b" + std::string(50000, 'x');
    for (std::string const option :
         {"--input-kind", "--output-kind", "--input-format", "--input-size", "--quality",
          "--roi",        "--size",        "--method",       "--kernel",     "--precision",
          "--warp",       "--rotate",      "--warp-method",  "--format",     "--mul",
          "--add",        "--frames",      "--max-pixels",   "--backend",    "--fit",
          "--bars",       "--input-stride"}) {
        std::string const said = messageFor({option, value});
        EXPECT_LT(said.size(), 400U) << option;
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
    for (Words const& words :
         {Words{value}, Words{"--" + value}, Words{"convert", "a", "b", value},
          Words{"convert", "a", "b", "--" + value}, Words{"convert", "a", "b", "--invert=" + value},
          Words{"formats", value}, Words{"convert", "--verbose=" + value}}) {
        Result const result = run(words);
        EXPECT_EQ(result.status, 2);
        EXPECT_LT(result.err.size(), 400U);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    Result const name = run({"info", value});
    EXPECT_EQ(name.status, 1);
    EXPECT_LT(name.err.size(), 1100U);
    EXPECT_EQ(std::count(name.err.begin(), name.err.end(), '\n'), 1);
}

TEST_F(MessagesTest, EveryFailureNamesItsFile) {
    std::string const frame(64, 'x');
    std::string const file = write("in.gray8", frame);
    for (Words const& options :
         {Words{"--roi", "1,0,8,8"}, Words{"--mul", "2"}, Words{"--format", "C2_8U"},
          Words{"--size", "2147483647x"}, Words{"--size", "16x16", "--kernel", "box"},
          Words{"--input-size", "2147483647x2147483647"}, Words{"--input-size", "9x9"}}) {
        Words const size =
            options.front() == "--input-size" ? Words{} : Words{"--input-size", "8x8"};
        Result const result = run(join(join({"convert", file, path("out.raw")}, size), options));
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.err.starts_with("oxcv: " + file + ": ")) << result.err;
    }
    Result const info =
        run({"info", file, "--input-size", "2147483647x2147483647", "--input-format", "BGR_32F"});
    EXPECT_EQ(info.err, "oxcv: " + file + ": Size is too large.\n");
    std::string const empty = write("empty.gray8", "");
    EXPECT_EQ(run({"convert", empty, path("out.raw"), "--input-size", "8x8"}).err,
              "oxcv: " + empty + ": there are no frames\n");
}

}  // namespace oxcv::test
