// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The line for those who wait at a terminal.
#include <unistd.h>

#include <chrono>
#include <thread>

#include "program.h"

namespace oxcv::test {

namespace {

class ProgressTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (access("/dev/ptmx", R_OK | W_OK) != 0) {
            GTEST_SKIP() << "this machine gives no terminals";
        }
    }

    // Two frames, the second one after the second in which nothing is shown.
    Result runSlowly(ErrorOutput error_output, Words const& options) const {
        std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {8, 8}));
        Words const call = join(
            {"convert", "-", path("out.raw"), "--input-size", "8x8", "--input-format", "GRAY8"},
            options);
        Program program(call, error_output);
        program.feed(frame);
        EXPECT_TRUE(somethingAppears());  // it has started
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        Result const result = program.finish(frame);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(read("out.raw"), frame + frame);
        return result;
    }
};

constexpr char const* wipe = "\r\x1b[K";

}  // namespace

TEST_F(ProgressTest, ALongStreamIsToldOnATerminalAndTheLineWiped) {
    std::string const text = runSlowly(ErrorOutput::Terminal, {"--frames", "2"}).err;
    EXPECT_TRUE(text.starts_with(std::string(wipe) + "2 frames, ")) << text;
    EXPECT_TRUE(text.ends_with(" frames/s, 100%, 0:00 left" + std::string(wipe))) << text;
}

TEST_F(ProgressTest, TheTimeLeftIsToldOnlyWhereItIsKnown) {
    std::string const text = runSlowly(ErrorOutput::Terminal, {}).err;
    EXPECT_TRUE(text.ends_with(" frames/s" + std::string(wipe))) << text;
}

TEST_F(ProgressTest, AnArrayIsToldAlikeAndFailuresHaveLinesOfTheirOwn) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {8, 8}));
    Program program({"tensor", "-", path("no"), path("out.npy"), "--size", "8x8", "--input-size",
                     "8x8", "--input-format", "GRAY8", "--keep-going"},
                    ErrorOutput::Terminal);
    program.feed(frame);
    EXPECT_TRUE(somethingAppears());
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    std::string const text = program.finish(frame).err;
    EXPECT_TRUE(text.starts_with(std::string(wipe) + "2 frames, ")) << text;
    EXPECT_NE(text.find(std::string(" frames/s") + wipe + "oxcv: " + path("no")), std::string::npos)
        << text;
}

TEST_F(ProgressTest, NothingIsToldElsewhere) {
    EXPECT_EQ(runSlowly(ErrorOutput::Pipe, {"--frames", "2"}).err, "");
}

}  // namespace oxcv::test
