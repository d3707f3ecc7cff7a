// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where an output goes, and what becomes of it when something happens on the way.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "program.h"

namespace oxcv::test {

namespace {

class OutputsTest : public ProgramTest {
  protected:
    std::string const gray = bytesOf(randomFrame(ox::FRAME_GRAY8, {8, 8}));
    Words const gray_input = rawInput(ox::FRAME_GRAY8, {8, 8});

    Words writing(std::string const& output, Words const& options = {}) const {
        return join(join({"convert", "-", output, "--output-kind", "raw"}, gray_input), options);
    }

    void expectRefusal(std::string const& output, std::string const& reason) const {
        Result const result = run(writing(output), gray);
        EXPECT_EQ(result.status, 1) << output;
        EXPECT_EQ(result.err, "oxcv: " + output + ": " + reason + "\n");
    }
};

}  // namespace

TEST_F(OutputsTest, ASignalRemovesWhatIsHalfMade) {
    std::vector<int> numbers{SIGHUP,  SIGINT,  SIGQUIT,   SIGABRT, SIGUSR1, SIGUSR2,  SIGALRM,
                             SIGTERM, SIGXCPU, SIGVTALRM, SIGPROF, SIGIO,   SIGRTMIN, SIGRTMAX};
    if (!underSanitizer) {
        numbers.insert(numbers.end(), {SIGILL, SIGBUS, SIGFPE, SIGSEGV, SIGSYS});
    }
    for (int const number : numbers) {
        Program program("ulimit -c 0; exec \"$0\" \"$@\"", writing(path("out.raw")));
        ASSERT_TRUE(somethingAppears());  // it waits for its first frame
        kill(program.id(), number);
        Result const result = program.finish("");
        EXPECT_EQ(result.status, -number);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(files(), Words{}) << "signal " << number;
    }
}

TEST_F(OutputsTest, SignalsThatTheCallerIgnoresStayIgnored) {
    Program program("trap '' HUP USR1; exec \"$0\" \"$@\"", writing(path("out.raw")));
    ASSERT_TRUE(somethingAppears());
    kill(program.id(), SIGHUP);
    kill(program.id(), SIGUSR1);
    EXPECT_EQ(program.finish(gray).status, 0);
    EXPECT_EQ(read("out.raw"), gray);
}

TEST_F(OutputsTest, HarmlessSignalsDoNothing) {
    Program program(writing(path("out.raw")));
    ASSERT_TRUE(somethingAppears());
    for (int const number : {SIGCHLD, SIGURG, SIGWINCH, SIGTSTP, SIGCONT, SIGXFSZ, SIGPIPE}) {
        kill(program.id(), number);
    }
    EXPECT_EQ(program.finish(gray).status, 0);
    EXPECT_EQ(read("out.raw"), gray);
}

TEST_F(OutputsTest, AFileThatMayNotGrowIsRemoved) {
    std::string const frame(64 * 64, 'x');
    Words const options{"--input-kind", "raw",   "--input-format", "GRAY8",
                        "--input-size", "64x64", "--output-kind",  "raw"};
    Result const result = runByShell(R"(ulimit -f 1; exec "$0" "$@")",
                                     join({"convert", "-", path("out.raw")}, options), frame);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: " + path("out.raw") + ": File too large\n");
    EXPECT_EQ(files(), Words{});
}

TEST_F(OutputsTest, EmptyNamesAreRefused) {
    Result const no_output = run(writing(""), gray);
    EXPECT_EQ(no_output.status, 2);
    EXPECT_EQ(no_output.err, "oxcv: output: the name is empty\n");
    for (Words const& command : {Words{"convert", "", "-"}, Words{"info", ""}}) {
        Result const no_input = run(join(command, gray_input));
        EXPECT_EQ(no_input.status, 2);
        EXPECT_EQ(no_input.err, "oxcv: input: the name is empty\n");
    }
}

TEST_F(OutputsTest, NamesMayBeAsLongAsTheSystemTakes) {
    for (std::size_t bytes = 246; bytes <= 255; ++bytes) {
        std::string const name(bytes, 'n');
        EXPECT_EQ(run(writing(path(name)), gray).status, 0) << bytes;
        EXPECT_EQ(files(), Words{name});
        EXPECT_EQ(read(name), gray);
        std::filesystem::remove(path(name));
    }
    std::string umlauts = "n";
    for (int i = 0; i < 127; ++i) {
        umlauts += "\xc3\xbc";
    }
    Program program(writing(path(umlauts)));
    ASSERT_TRUE(somethingAppears());
    EXPECT_EQ(files().front().substr(0, 247), umlauts.substr(0, 247));  // no half of a character
    EXPECT_EQ(program.finish(gray).status, 0);
    EXPECT_EQ(files(), Words{umlauts});
    std::filesystem::remove(path(umlauts));

    expectRefusal(path(std::string(256, 'n')), "File name too long");
    EXPECT_EQ(files(), Words{});
}

TEST_F(OutputsTest, LinksKeepPointing) {
    std::filesystem::create_directory(path("there"));
    write("there/out.raw", "before");
    std::filesystem::create_symlink("there/out.raw", path("relative.raw"));
    std::filesystem::create_symlink(path("relative.raw"), path("chain.raw"));
    EXPECT_EQ(run(writing(path("chain.raw")), gray).status, 0);
    EXPECT_EQ(read("there/out.raw"), gray);
    EXPECT_EQ(std::filesystem::read_symlink(path("chain.raw")), path("relative.raw"));
    EXPECT_EQ(std::filesystem::read_symlink(path("relative.raw")), "there/out.raw");

    std::filesystem::create_symlink("there/new.raw", path("dangling.raw"));
    EXPECT_EQ(run(writing(path("dangling.raw")), gray).status, 0);
    EXPECT_EQ(read("there/new.raw"), gray);
    EXPECT_EQ(std::filesystem::read_symlink(path("dangling.raw")), "there/new.raw");

    EXPECT_EQ(runByShell("cd " + path("") + R"(; exec "$0" "$@")",
                         writing("dangling.raw", {"--size", "4x4"}), gray)
                  .status,
              0);
    EXPECT_EQ(read("there/new.raw").size(), 16U);
}

TEST_F(OutputsTest, LinksThatLeadNowhereAreRefused) {
    std::filesystem::create_symlink("loop.raw", path("loop.raw"));
    expectRefusal(path("loop.raw"), "Too many levels of symbolic links");
    std::filesystem::create_symlink("none/out.raw", path("far.raw"));
    expectRefusal(path("far.raw"), "No such file or directory");
    EXPECT_EQ(files(), (Words{"far.raw", "loop.raw"}));
}

// By links like those of /dev, which a program that replaces them had better not meet.
TEST_F(OutputsTest, DescriptorsAreWrittenNotReplaced) {
    std::filesystem::create_symlink("/proc/self/fd/1", path("stdout"));
    std::filesystem::create_symlink("/proc/self/fd/2", path("stderr"));
    std::filesystem::create_symlink("stdout", path("link"));
    std::filesystem::create_symlink("/proc/self/fd", path("fd"));
    std::string const to_file =
        "exec 3>" + path("out.raw") + R"(; printf head >&3; exec "$0" "$@" )";
    for (std::string const& name :
         {path("stdout"), path("link"), path("fd/1"), std::string("/proc/self/fd/1")}) {
        EXPECT_EQ(run(writing(name), gray).out, gray) << name;
        // Behind what is there already, and into the same file.
        Result const result = runByShell(to_file + ">&3", writing(name), gray);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(read("out.raw"), "head" + gray) << name;
    }
    for (std::string const& name : {path("fd/3"), std::string("/proc/thread-self/fd/3")}) {
        EXPECT_EQ(runByShell(to_file, writing(name), gray).status, 0);
        EXPECT_EQ(read("out.raw"), "head" + gray) << name;
    }
    EXPECT_EQ(run(writing(path("stderr")), gray).err, gray);
    EXPECT_EQ(files(), (Words{"fd", "link", "out.raw", "stderr", "stdout"}));
}

TEST_F(OutputsTest, DescriptorsThatCantBeWrittenAreRefused) {
    expectRefusal("/proc/self/fd/17", "Bad file descriptor");
    std::filesystem::create_symlink("/proc/self/fd/1", path("stdout"));
    Result const result = runByShell(R"(exec "$0" "$@" >&-)", writing(path("stdout")), gray);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "oxcv: " + path("stdout") + ": Bad file descriptor\n");
}

TEST_F(OutputsTest, AReadOnlyFileStays) {
    chmod(write("out.raw", "before").c_str(), 0444);
    std::filesystem::create_symlink("out.raw", path("link.raw"));
    for (std::string const name : {"out.raw", "link.raw"}) {
        expectRefusal(path(name), "Permission denied");
    }
    EXPECT_EQ(read("out.raw"), "before");
    EXPECT_EQ(files(), (Words{"link.raw", "out.raw"}));
}

TEST_F(OutputsTest, PipesAreWritten) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    Result const result =
        runByShell("cat " + path("pipe") + R"( & exec "$0" "$@")", writing(path("pipe")), gray);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, gray);
    EXPECT_EQ(files(), Words{"pipe"});
}

TEST_F(OutputsTest, DirectoriesAreRefused) {
    expectRefusal(path(""), "Is a directory");
}

}  // namespace oxcv::test
