// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/processor_figures.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace ox::test {
namespace {

// What processes the program has waited for costs faults; those before `main` are told from those
// that a shell left to a program in its place.
long childFaults() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_minflt;
}

long faultsAtStart = 0;

[[gnu::constructor(101)]] void rememberFaults() {
    faultsAtStart = childFaults();
}

struct BeforeTests : testing::Environment {
    void SetUp() override {
        faults = childFaults();
        had_child = waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
    }

    long faults = 0;
    bool had_child = true;
};

auto const* const beforeTests =
    static_cast<BeforeTests*>(testing::AddGlobalTestEnvironment(new BeforeTests));

TEST(ProcessorFigures, NothingIsStartedBeforeTheFirstCall) {
    EXPECT_EQ(beforeTests->faults, faultsAtStart);
    EXPECT_FALSE(beforeTests->had_child);
}

// The figures of a process of its own, which reads them for the first time with that PATH.
Simd::ProcessorFigures figuresWithPath(char const* path) {
    int ends[2]{};
    EXPECT_EQ(pipe(ends), 0);
    pid_t const child = fork();
    if (child == 0) {
        close(STDERR_FILENO);  // where the shell tells of tools that it doesn't find
        if (path != nullptr) {
            setenv("PATH", path, 1);
        }
        Simd::ProcessorFigures const figures = Simd::processorFigures();
        bool const whole = write(ends[1], &figures, sizeof figures) == sizeof figures;
        _exit(whole ? 0 : 1);
    }
    Simd::ProcessorFigures figures{99, 99, 99, 99, 99, 99};
    close(ends[1]);
    EXPECT_EQ(read(ends[0], &figures, sizeof figures), static_cast<ssize_t>(sizeof figures));
    close(ends[0]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return figures;
}

std::uint64_t cacheBytes(int name, std::uint64_t fallback) {
    long const bytes = sysconf(name);
    return bytes > 0 ? static_cast<std::uint64_t>(bytes) : fallback;
}

void expectThreadsAndCaches(Simd::ProcessorFigures const& figures) {
    EXPECT_EQ(figures.threadCount, std::thread::hardware_concurrency());
    EXPECT_EQ(figures.l1CacheBytes, cacheBytes(_SC_LEVEL1_DCACHE_SIZE, 32768));
    EXPECT_EQ(figures.l2CacheBytes, cacheBytes(_SC_LEVEL2_CACHE_SIZE, 262144));
    EXPECT_EQ(figures.l3CacheBytes, cacheBytes(_SC_LEVEL3_CACHE_SIZE, 2097152));
}

TEST(ProcessorFigures, ArePlausible) {
    Simd::ProcessorFigures const figures = figuresWithPath(nullptr);
    EXPECT_LE(figures.socketCount, figures.coreCount);
    EXPECT_LE(figures.coreCount, 4096U);
    expectThreadsAndCaches(figures);
}

TEST(ProcessorFigures, AreZeroWithoutTheTool) {
    Simd::ProcessorFigures const figures = figuresWithPath("");
    EXPECT_EQ(figures.socketCount, 0U);
    EXPECT_EQ(figures.coreCount, 0U);
    expectThreadsAndCaches(figures);
}

// A tool that knows two sockets of three cores, and shows comments and repeated lines.
TEST(ProcessorFigures, CountWhatTheToolTells) {
    std::filesystem::path const folder =
        std::filesystem::path(testing::TempDir()) / ("ox_lscpu_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    std::filesystem::path const tool = folder / "lscpu";
    std::ofstream(tool) << "#!/bin/sh\n"
                           "[ \"$1\" = -b ] || exit 1\n"
                           "case \"$2\" in\n"
                           "-p=Socket) printf '# socket\\n0\\n0\\n1\\n0\\n' ;;\n"
                           "-p=Core) printf '# core\\n0\\n1\\n2\\n0\\n1\\n2\\n' ;;\n"
                           "esac\n";
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    char const* const path = std::getenv("PATH");
    std::string const with_tool = folder.string() + ":" + (path != nullptr ? path : "");
    Simd::ProcessorFigures const figures = figuresWithPath(with_tool.c_str());
    std::filesystem::remove_all(folder);
    EXPECT_EQ(figures.socketCount, 2U);
    EXPECT_EQ(figures.coreCount, 3U);
}

TEST(ParallelThreads, AreOneAtFirst) {
    EXPECT_EQ(Simd::GetParallelThreads(), 1U);
}

TEST(ParallelThreads, AreCutToTheHardware) {
    std::size_t const hardware = std::thread::hardware_concurrency();
    EXPECT_EQ(Simd::SetParallelThreads(SIZE_MAX), hardware);
    EXPECT_EQ(Simd::GetParallelThreads(), hardware);
    EXPECT_EQ(Simd::SetParallelThreads(hardware + 1), hardware);
    EXPECT_EQ(Simd::SetParallelThreads(hardware), hardware);
    EXPECT_EQ(Simd::SetParallelThreads(0), 1U);
    EXPECT_EQ(Simd::GetParallelThreads(), 1U);
    EXPECT_EQ(Simd::SetParallelThreads(1), 1U);
    EXPECT_EQ(Simd::GetParallelThreads(), 1U);
}

}  // namespace
}  // namespace ox::test
