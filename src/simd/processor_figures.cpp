// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/processor_figures.h"

#include <stdio.h>  // popen
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

namespace Simd {

namespace {

/// The number on the last line that a shell command prints; 0 if it can't be started.
std::uint64_t numberFrom(char const* command) {
    FILE* const pipe = popen(command, "r");
    if (pipe == nullptr) {
        return 0;
    }
    char line[4096] = "";
    while (fgets(line, sizeof line, pipe) != nullptr) {
    }
    pclose(pipe);
    return static_cast<std::uint64_t>(std::strtol(line, nullptr, 10));
}

std::uint64_t cacheBytes(int name, std::uint64_t fallback) {
    long const bytes = sysconf(name);
    return bytes > 0 ? static_cast<std::uint64_t>(bytes) : fallback;
}

ProcessorFigures readFigures() {
    return {
        numberFrom("lscpu -b -p=Socket 2>/dev/null | grep -v '^#' | sort -u 2>/dev/null | "
                   "wc -l 2>/dev/null"),
        numberFrom("lscpu -b -p=Core 2>/dev/null | grep -v '^#' | sort -u 2>/dev/null | "
                   "wc -l 2>/dev/null"),
        hardwareThreads(),
        cacheBytes(_SC_LEVEL1_DCACHE_SIZE, 32768),
        cacheBytes(_SC_LEVEL2_CACHE_SIZE, 262144),
        cacheBytes(_SC_LEVEL3_CACHE_SIZE, 2097152),
    };
}

std::size_t injectedHardwareThreads = 0;
std::atomic<std::size_t> parallelThreads{1};

}  // namespace

std::size_t hardwareThreads() {
    std::size_t const count = injectedHardwareThreads != 0 ? injectedHardwareThreads
                                                           : std::thread::hardware_concurrency();
    return std::max<std::size_t>(count, 1);
}

void UseHardwareThreads(std::size_t count) {
    injectedHardwareThreads = count;
}

ProcessorFigures const& processorFigures() {
    static ProcessorFigures const figures = readFigures();
    return figures;
}

std::size_t GetParallelThreads() {
    return parallelThreads;
}

std::size_t SetParallelThreads(std::size_t wish) {
    std::size_t const count = std::max<std::size_t>(std::min(wish, hardwareThreads()), 1);
    parallelThreads = count;
    return count;
}

}  // namespace Simd
