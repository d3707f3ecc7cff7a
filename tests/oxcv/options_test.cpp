// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What options take for a number, and what is told of the program itself.
#include "program.h"

namespace oxcv::test {

namespace {

class OptionsTest : public ProgramTest {
  protected:
    std::string const floats = bytesOf(randomFrame(ox::FRAME_GRAY_32F, {4, 4}));
    Words const float_input = rawInput(ox::FRAME_GRAY_32F, {4, 4});

    Result tryValue(std::string const& option, std::string const& value) const {
        return run(join({"convert", "-", path("out.raw"), option, value}, float_input), floats);
    }
};

}  // namespace

TEST_F(OptionsTest, OnlyFiniteNumbersAreNumbers) {
    for (std::string const option : {"--mul", "--add"}) {
        for (std::string const value :
             {"nan", "-nan", "inf", "-inf", "infinity", "1e999", "-1e999", "3.5e38", "", " ", "1 ",
              " 1", "1,5", "0x10", "1e", "--1", "+-1", "1f"}) {
            Result const result = tryValue(option, value);
            EXPECT_EQ(result.status, 2) << option << " '" << value << "'";
            EXPECT_EQ(result.err, "oxcv: " + option + ": '" + value +
                                      "' is no finite number such as 0.0039 or -0.5\n");
        }
    }
    for (std::string const value : {"nan", "inf", "1e999", ""}) {
        EXPECT_EQ(tryValue("--rotate", value).status, 2) << value;
        EXPECT_EQ(tryValue("--warp", "1,0," + value + ",0,1,0").status, 2) << value;
    }
    EXPECT_EQ(files(), Words{});
}

TEST_F(OptionsTest, NumbersMayHaveSignsAndExponents) {
    std::string const half = converted(floats, join(float_input, {"--mul", "0.5"}), "half.raw");
    for (std::string const value : {".5", "+0.5", "5e-1", "0.50", "00.5", "+5E-1"}) {
        EXPECT_EQ(converted(floats, join(float_input, {"--mul", value}), "out.raw"), half) << value;
    }
    EXPECT_NE(converted(floats, join(float_input, {"--mul", "-0.5"}), "out.raw"), half);
}

TEST_F(OptionsTest, LeadingZerosAreNoOctalNumbers) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {32, 32}));
    Words const input = rawInput(ox::FRAME_BGR24, {32, 32});
    auto const ofQuality = [&](std::string const& quality) {
        return converted(frame, join(input, {"--quality", quality}), "out.jpg");
    };
    EXPECT_EQ(ofQuality("010"), ofQuality("10"));
    EXPECT_NE(ofQuality("010"), ofQuality("8"));
    EXPECT_EQ(ofQuality("0100"), ofQuality("100"));
    EXPECT_EQ(converted(frame, join(input, {"--size", "010x09"}), "out.raw").size(),
              std::size_t{10 * 9 * 3});
    EXPECT_EQ(converted(frame, join(input, {"--roi", "00,01,010,011"}), "out.raw").size(),
              std::size_t{10 * 11 * 3});
    std::string const many = frame + frame + frame + frame + frame + frame + frame + frame + frame;
    EXPECT_EQ(converted(many, join(input, {"--frames", "08"}), "out.raw").size(), 8 * frame.size());
}

TEST_F(OptionsTest, WholeNumbersAreWholeAndInRange) {
    for (std::string const option : {"--quality", "--frames", "--max-pixels"}) {
        for (std::string const value :
             {"", "0", "-1", "1.5", "0x10", "1e2", "99999999999999999999", "ten"}) {
            Result const result = tryValue(option, value);
            EXPECT_EQ(result.status, 2) << option << " '" << value << "'";
            EXPECT_TRUE(result.err.starts_with("oxcv: " + option + ": '" + value + "' is no "))
                << result.err;
        }
    }
}

TEST_F(OptionsTest, EmptyWordsAreNone) {
    for (std::string const option :
         {"--input-kind", "--input-format", "--input-size", "--output-kind", "--roi", "--size",
          "--method", "--kernel", "--precision", "--warp", "--warp-method", "--format",
          "--backend"}) {
        Result const result = run({"convert", "-", path("out.raw"), option, ""});
        EXPECT_EQ(result.status, 2) << option;
        EXPECT_TRUE(result.err.starts_with("oxcv: " + option + ": ")) << result.err;
        EXPECT_NE(result.err.find("''"), std::string::npos) << result.err;
    }
}

TEST_F(OptionsTest, ChoicesTakeAnyCase) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {32, 32}));
    Words const input = rawInput(ox::FRAME_BGR24, {32, 32});
    EXPECT_EQ(converted(frame, join(input, {"--size", "8x8", "--kernel", "LanCzos3"}), "out.raw"),
              converted(frame, join(input, {"--size", "8x8", "--kernel", "lanczos3"}), "out.raw"));
    EXPECT_EQ(converted(frame, join(input, {"--output-kind", "RAW"}), "out.x"), frame);
}

TEST_F(OptionsTest, TheVersionIsTheProjects) {
    Result const result = run({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "oxcv " OXCV_VERSION "\n");
    EXPECT_EQ(result.err, "");
}

}  // namespace oxcv::test
