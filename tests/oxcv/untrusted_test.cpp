// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Files that somebody has broken, by chance or on purpose: the tool may refuse them or make the
// best of them, but in order.
#include "program.h"
#include "support/random.h"

namespace oxcv::test {

namespace {

class UntrustedTest : public ProgramTest {
  protected:
    // A small file of a kind.
    std::string sample(std::string const& ending) const {
        ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {6, 5});
        return converted(bytesOf(frame), rawInput(ox::FRAME_BGR24, {6, 5}), "sample." + ending);
    }

    void expectOrder(std::string const& bytes) const {
        Result const result =
            run({"convert", "-", path("out.png"), "--size", "7x7", "--frames", "1"}, bytes);
        if (result.status == 0) {
            EXPECT_EQ(result.err, "");
            std::filesystem::remove(path("out.png"));
            return;
        }
        EXPECT_TRUE(result.status == 1 || result.status == 2)
            << "status " << result.status << ", " << result.err;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        EXPECT_EQ(files().size(), 1U);  // the sample
    }
};

class BrokenFile : public UntrustedTest, public ::testing::WithParamInterface<char const*> {};

}  // namespace

TEST_P(BrokenFile, IsTakenInOrder) {
    std::string const whole = sample(GetParam());
    ox::test::Random random(7);
    int const last = static_cast<int>(whole.size()) - 1;
    for (int i = 0; i < 60; ++i) {
        std::string broken = whole;
        for (int k = random.between(1, 3); k > 0; --k) {
            // Mostly in the header.
            int const place = random.between(0, std::min(last, k == 1 ? 60 : last));
            broken[static_cast<std::size_t>(place)] = static_cast<char>(random.byte());
        }
        expectOrder(broken);
    }
    for (int i = 0; i < 20; ++i) {
        expectOrder(whole.substr(0, static_cast<std::size_t>(random.between(0, last))));
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, BrokenFile, ::testing::Values("png", "jpg", "y4m", "npy"));

TEST_F(UntrustedTest, HugeSizesAreRefused) {
    std::string huge = sample("npy");
    std::string const shape = "(999999999, 999999999, 3), }";
    huge.replace(huge.find("(5, 6, 3)"), shape.size(), shape);
    for (std::string const& file :
         {std::string("YUV4MPEG2 W2147483647 H2147483647 C444\nFRAME\n123"),
          std::string("YUV4MPEG2 W999999999 H9999999 C444\nFRAME\n123"), huge}) {
        Result const result = run({"convert", "-", path("out.png")}, file);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    }
}

TEST_F(UntrustedTest, ControlCharactersDontReachTheTerminal) {
    Result const result = run({"info", "-"}, "YUV4MPEG2 W2 H2 C\x1b[31mred\x07\nFRAME\n");
    EXPECT_EQ(result.err, "oxcv: standard input: Y4M chroma '\\x1b[31mred\\x07' isn't supported\n");
}

}  // namespace oxcv::test
