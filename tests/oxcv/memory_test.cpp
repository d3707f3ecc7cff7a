// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Processes that may have only so much memory (ulimit -v).
#include "program.h"

namespace oxcv::test {

namespace {

class MemoryTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (underSanitizer) {
            GTEST_SKIP() << "the sanitizers don't run within limits";
        }
    }

    static Result runWithin(long kilobytes, Words const& command) {
        return runByShell("ulimit -v " + std::to_string(kilobytes) + R"(; exec "$0" "$@")",
                          command);
    }

    // The least that the program starts with, rounded up.
    static long leastToStart() {
        static long const least = [] {
            constexpr long step = 256;
            long kilobytes = 4096;
            while (runWithin(kilobytes, {"--help"}).status != 0) {
                kilobytes += step;
            }
            return kilobytes + step;
        }();
        return least;
    }

    // Any limit from too little to enough gives a whole file or an orderly refusal.
    void sweep(Words const& command, Words const& left) const {
        constexpr long step = 320;
        constexpr long most = 1L << 20;
        long kilobytes = leastToStart();
        int refusals = 0;
        for (Result result; result.status != 0; kilobytes += step) {
            ASSERT_LT(kilobytes, most);
            result = runWithin(kilobytes, command);
            ASSERT_TRUE(result.status == 0 || result.status == 1)
                << "status " << result.status << " within " << kilobytes << " kB";
            EXPECT_EQ(result.out, "");
            if (result.status == 1) {
                ++refusals;
                EXPECT_TRUE(result.err.starts_with("oxcv: ")) << result.err;
                EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
                EXPECT_EQ(files(), left);
            }
        }
        EXPECT_GT(refusals, 0);
    }
};

}  // namespace

TEST_F(MemoryTest, StepsOfTheVectorBackendAreRefusedInOrder) {
    struct Case {
        ox::FrameFormat format;
        ox::Size size;
        Words options;
    };
    for (auto const& [format, size, options] :
         {Case{ox::FRAME_BGR24, {600, 20}, {"--size", "30000x10"}},
          Case{ox::FRAME_GRAY8, {60000, 4}, {"--size", "50000x10"}},
          Case{ox::FRAME_GRAY8, {4, 6}, {"--size", "4x60000"}},
          Case{ox::FRAME_NV12, {600, 20}, {"--size", "30000x10"}},
          Case{ox::FRAME_BGR24, {600, 20}, {"--size", "40000x10", "--method", "nearest"}},
          Case{ox::FRAME_BGR24, {3000, 4}, {"--size", "300x2", "--method", "area"}},
          Case{ox::FRAME_GRAY8, {4000, 4}, {"--size", "3000x3", "--method", "area"}},
          Case{ox::FRAME_GRAY_32F, {20000, 4}, {"--size", "30000x5"}},
          Case{ox::FRAME_GRAY8, {4, 40000}, {"--rotate", "10"}},
          Case{ox::FRAME_BGR24, {40000, 4}, {"--rotate", "1"}},
          Case{ox::FRAME_GRAY8, {40000, 4}, {"--rotate", "1", "--warp-method", "nearest"}},
          Case{ox::FRAME_BGR24, {1000, 50}, {"--format", "BGR_32F_PLANAR", "--mul", "0.5"}}}) {
        SCOPED_TRACE(std::string(ox::toString(format)) + " " + options[1] + " " + options.back());
        std::string const input = write("in.raw", bytesOf(blankFrame(format, size)));
        Words const command = join({"convert", input, path("out.raw")}, rawInput(format, size));
        sweep(join(command, options), {"in.raw"});
        EXPECT_EQ(files(), (Words{"in.raw", "out.raw"}));
        std::filesystem::remove(path("out.raw"));
    }
}

TEST_F(MemoryTest, PicturesAreRefusedInOrder) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {900, 700}));
    for (std::string const name : {"in.png", "in.jpg"}) {
        SCOPED_TRACE(name);
        converted(frame, rawInput(ox::FRAME_BGR24, {900, 700}), name);
        std::string const output = "out" + name.substr(2);
        sweep({"convert", path(name), path(output), "--format", "GRAY8"}, {name});
        EXPECT_EQ(files(), (Words{name, output}));
        std::filesystem::remove(path(name));
        std::filesystem::remove(path(output));
    }
}

TEST_F(MemoryTest, ArraysOfAnyNumberOfJobsAreRefusedInOrder) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_NV12, {900, 700}));
    std::string const input = write("in.nv12", frame + frame);
    for (std::string const jobs : {"1", "3"}) {
        SCOPED_TRACE(jobs);
        sweep({"tensor", input, input, input, path("out.npy"), "--input-size", "900x700", "--size",
               "300x300", "--mapping", path("map.json"), "--jobs", jobs},
              {"in.nv12"});
        EXPECT_EQ(files(), (Words{"in.nv12", "map.json", "out.npy"}));
        std::filesystem::remove(path("map.json"));
        std::filesystem::remove(path("out.npy"));
    }
}

TEST_F(MemoryTest, TheRefusalNamesFileAndStep) {
    std::string const input = write("in.gray8", std::string(600 * 20, 'x'));
    Result const result = runWithin(
        leastToStart() + 768,
        {"convert", input, path("out.raw"), "--input-size", "600x20", "--size", "60000x2"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.starts_with("oxcv: " + input + ": --size: ")) << result.err;
    EXPECT_TRUE(result.err.ends_with(" bytes are not available.\n")) << result.err;
}

}  // namespace oxcv::test
