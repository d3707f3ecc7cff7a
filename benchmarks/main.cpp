// Prints the library's times beside those of other libraries and of a plain copy, from interleaved
// runs in one process, and writes them to files. The first argument is the directory for these; the
// others are Google Benchmark's, such as --benchmark_filter=NV12.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include "comparison.h"
#include "median_reporter.h"
#include "operation.h"

#ifdef OX_PEER_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace ox::benchmarks;

constexpr int repetitions = 11;
constexpr double secondsPerRun = 0.03;

void add(std::string const& name, std::function<void()> const& run) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [run](benchmark::State& state) {
                                     for (auto _ : state) {
                                         run();
                                     }
                                 })
        ->Repetitions(repetitions)
        ->MinTime(secondsPerRun)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

std::function<void()> copyOf(std::size_t bytes) {
    auto const from = std::make_shared<std::vector<unsigned char>>(bytes / 2, 1);
    auto const to = std::make_shared<std::vector<unsigned char>>(bytes / 2, 2);
    return [from, to] {
        std::memcpy(to->data(), from->data(), from->size());
        benchmark::ClobberMemory();
    };
}

void add(Operation const& operation, std::string const& size) {
    std::string const name = operation.name + "/" + size + "/";
    for (Road const& road : operation.roads) {
        road.run();
        if (!road.is_right()) {
            std::fprintf(stderr, "%s: the output by the %s is wrong\n", operation.name.c_str(),
                         road.name);
            std::exit(1);
        }
        add(name + road.name, road.run);
    }
    add(name + "memcpy", copyOf(operation.bytes));
    for (Contestant const& peer : operation.peers) {
        add(name + peer.name, peer.run);
    }
}

/// Registers everything.
/// @return the families of the operations
std::map<std::string, Family> addAll() {
    std::map<std::string, Family> families;
    for (ox::Size const size : {ox::Size{1920, 1080}, ox::Size{320, 240}}) {
        std::string const label = std::to_string(size.width) + "x" + std::to_string(size.height);
        for (auto const& operations : {colourOperations, floatOperations, resampleOperations,
                                       convolutionOperations, tensorOperations}) {
            for (Operation const& operation : operations(size)) {
                families[operation.name] = operation.family;
                add(operation, label);
            }
        }
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
    if (count < 2) {
        std::fputs("usage: ox_benchmark DIRECTORY [--benchmark_filter=NV12 ...]\n", stderr);
        return 2;
    }
    std::string const directory = arguments[1];
#ifdef OX_PEER_OPENCV
    cv::setNumThreads(1);
#endif
    // Random order, so that no contestant always runs behind the same one.
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> all(arguments, arguments + count);
    all[1] = interleaving;
    int all_count = count;
    benchmark::Initialize(&all_count, all.data());
    if (benchmark::ReportUnrecognizedArguments(all_count, all.data())) {
        return 1;
    }
    std::map<std::string, Family> const families = addAll();
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::vector<Row> const rows = compare(reporter.measurements(), families);
    std::fputs(asText(rows).c_str(), stdout);
    write(directory + "/times.md", asMarkdown(rows));
    write(directory + "/times.csv", asCsv(rows));
    write(directory + "/times.svg", asSvg(rows));
    return 0;
}
