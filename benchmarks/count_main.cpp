// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Runs each of the library's roads once, at a small size, for callgrind to count its instructions;
// script/count-instructions is what starts it. Each count goes to a file of its own, with the
// operation and the road, as instructions.csv has them, for its trigger.
//
// Valgrind has no AVX-512 and tells every program that it runs on the same processor. So it is the
// AVX2 routines that are counted, and the C library's, whatever the machine has beside AVX2.

#include <valgrind/callgrind.h>

#include <cstdint>
#include <cstdio>
#include <thread>

#include "operation.h"
#include "simd/kernels/kernels.h"

namespace hwy::platform {

/// Takes the place of the function that Highway's library calls when it is loaded. That one reads
/// the clock by an instruction (RDTSCP) which Valgrind refuses where a hypervisor hides it.
std::uint64_t TimerResolution();

std::uint64_t TimerResolution() {
    return 1;
}

}  // namespace hwy::platform

namespace {

using namespace ox::benchmarks;

/// A fifth of full HD each way.
constexpr ox::Size countedSize{384, 216};

bool hasVectorCode() {
    return Simd::Neon::routines().SwapRedBlue != Simd::Plain::routines().SwapRedBlue;
}

void count(Road const& road, std::string const& trigger) {
    road.run();  // arms, fills caches of tables, binds symbols
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    road.run();
    CALLGRIND_DUMP_STATS_AT(trigger.c_str());
    CALLGRIND_STOP_INSTRUMENTATION;
}

void countAll() {
    for (Operation const& operation : allOperations(countedSize)) {
        for (Road const& road : operation.roads) {
            count(road, "\"" + operation.name + "\"," + road.name);
        }
    }
}

}  // namespace

int main() {
    if (RUNNING_ON_VALGRIND == 0 || !hasVectorCode()) {
        std::fputs(
            "ox_count: this is to be run by callgrind, on a processor with AVX2, and built with "
            "Highway\n",
            stderr);
        return 2;
    }
    // A thread's stack lies in the same place, however long the environment and the program's path
    // are, which the first thread's stack follows.
    std::thread(countAll).join();
    return 0;
}
