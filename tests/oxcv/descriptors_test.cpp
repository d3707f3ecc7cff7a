// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Standard descriptors that the caller has closed.
#include "program.h"

namespace oxcv::test {

namespace {

class DescriptorsTest : public ProgramTest {
  protected:
    // A format that the vector backend leaves to the pipeline, which --verbose remarks on.
    std::string const frame = bytesOf(randomFrame(ox::FRAME_C1_16U, {8, 8}));
    Words const input = rawInput(ox::FRAME_C1_16U, {8, 8});
    Words const remarking{"--size", "8x4", "--verbose"};

    Words toFile(std::string const& source) const {
        return join({"convert", source, path("out.raw")}, join(input, remarking));
    }
};

}  // namespace

TEST_F(DescriptorsTest, AClosedStandardErrorOnlyLosesTheRemarks) {
    std::string const expected = converted(frame, join(input, {"--size", "8x4"}), "expected.raw");
    Result const result = runByShell(R"(exec "$0" "$@" 2>&-)", toFile("-"), frame);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(read("out.raw"), expected);
}

TEST_F(DescriptorsTest, AClosedStandardInputDoesntTurnUpInTheFile) {
    std::string const file = write("in.raw", frame);
    std::string const expected = converted(frame, join(input, {"--size", "8x4"}), "expected.raw");
    for (std::string const closed : {"<&-", "<&- 2>&-", ">&-", "<&- >&- 2>&-"}) {
        Result const result = runByShell(R"(exec "$0" "$@" )" + closed, toFile(file));
        EXPECT_EQ(result.status, 0) << closed;
        EXPECT_EQ(read("out.raw"), expected) << closed;
        std::filesystem::remove(path("out.raw"));
    }
}

TEST_F(DescriptorsTest, AClosedStandardInputCantBeRead) {
    Result const result = runByShell(R"(exec "$0" "$@" <&-)", toFile("-"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: standard input: Bad file descriptor\n");
    EXPECT_EQ(files(), Words{});
}

TEST_F(DescriptorsTest, AClosedStandardOutputCantBeWritten) {
    Words const gray = rawInput(ox::FRAME_GRAY8, {16, 8});
    Words const command = join({"convert", write("in.raw", frame), "-"}, gray);
    for (Words const& kind : {Words{}, Words{"--output-kind", "npy"}, Words{"--output-kind", "png"},
                              Words{"--output-kind", "jpeg"}, Words{"--output-kind", "y4m"}}) {
        Result const result = runByShell(R"(exec "$0" "$@" >&-)", join(command, kind));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: standard output: Bad file descriptor\n");
    }
    for (Words const& words : {Words{"formats"}, Words{"--help"}, Words{"info", path("in.raw")}}) {
        Result const result = runByShell(R"(exec "$0" "$@" >&-)",
                                         join(words, words.front() == "info" ? input : Words{}));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: standard output can't be written\n");
    }
}

}  // namespace oxcv::test
