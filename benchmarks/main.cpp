// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Prints the library's times beside those of other libraries and of a plain copy, from interleaved
// runs in one process, and writes them to files. The first argument is the directory for these.
// Others hold all libraries to an instruction set (--target=AVX2), name sizes of frames
// (--size=1536x864), or are Google Benchmark's, such as --benchmark_filter=NV12.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <utility>

#include "comparison.h"
#include "median_reporter.h"
#include "operation.h"
#include "options.h"
#include "peer_target.h"
#include "pictures.h"
#include "vector/dispatch.h"

#ifdef OX_PEER_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace ox::benchmarks;

constexpr int repetitions = 11;
constexpr double secondsPerRun = 0.03;

/// @param before what is to be done once, and only if a filter doesn't leave the benchmark out
void add(std::string const& name, std::function<void()> const& before,
         std::function<void()> const& run) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [once = before, run](benchmark::State& state) mutable {
                                     if (once) {
                                         std::exchange(once, nullptr)();
                                     }
                                     for (auto _ : state) {
                                         run();
                                     }
                                 })
        ->Repetitions(repetitions)
        ->MinTime(secondsPerRun)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

void check(std::string const& operation, Road const& road) {
    road.run();
    if (!road.is_right()) {
        std::fprintf(stderr, "%s: the output by the %s is wrong\n", operation.c_str(), road.name);
        std::exit(1);
    }
}

void add(Operation const& operation, std::string const& size) {
    std::string const name = operation.name + "/" + size + "/";
    for (Road const& road : operation.roads) {
        auto const checked = [=] { check(operation.name, road); };
        add(name + road.name, checked, road.run);
    }
    auto const copy = copyOf(operation.bytes);
    add(name + "memcpy", copy, copy);
    for (Contestant const& peer : operation.peers) {
        add(name + peer.name, {}, peer.run);
    }
}

/// Registers everything.
/// @return the families of the operations
std::map<std::string, Family> addAll(std::vector<ox::Size> const& sizes) {
    std::map<std::string, Family> families;
    auto const addOf = [&](ox::Size size, std::vector<Operation> const& operations) {
        std::string const label = std::to_string(size.width) + "x" + std::to_string(size.height);
        for (Operation const& operation : operations) {
            families[operation.name] = operation.family;
            add(operation, label);
        }
    };
    for (ox::Size const size : sizes) {
        addOf(size, allOperations(size));
    }
    if (sizes.empty()) {
        for (ox::Size const size : {ox::Size{1920, 1080}, ox::Size{320, 240}}) {
            addOf(size, allOperations(size));
        }
        // A usual size of cameras, for what people do with their frames.
        constexpr ox::Size camera{1280, 720};
        addOf(camera, cameraOperations(camera));
    }
    return families;
}

void write(std::string const& path, std::string const& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        std::fprintf(stderr, "%s: can't be written\n", path.c_str());
        std::exit(1);
    }
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    if (!readOptions(count, arguments, options)) {
        return 2;
    }
    if (!options.target.empty()) {
        ox::vector::useTarget(options.target.c_str());
        holdPeers(options.target);
    }
#ifdef OX_PEER_OPENCV
    cv::setNumThreads(1);
#endif
    // Random order, so that no contestant always runs behind the same one.
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    options.rest.push_back(interleaving);
    auto rest_count = static_cast<int>(options.rest.size());
    benchmark::Initialize(&rest_count, options.rest.data());
    if (benchmark::ReportUnrecognizedArguments(rest_count, options.rest.data())) {
        return 1;
    }
    std::map<std::string, Family> const families = addAll(options.sizes);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::vector<Row> const rows = compare(reporter.measurements(), families);
    std::fputs(asText(rows).c_str(), stdout);
    write(options.directory + "/times.md", asMarkdown(rows));
    write(options.directory + "/times.csv", asCsv(rows));
    write(options.directory + "/times.svg", asSvg(rows));
    return 0;
}
