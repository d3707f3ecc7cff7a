// Prints the library's times beside those of other libraries and of a plain copy, from interleaved
// runs in one process. Arguments are Google Benchmark's, such as --benchmark_filter=NV12.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "operation.h"
#include "table_reporter.h"

#ifdef OX_PEER_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace ox::benchmarks;

constexpr int repetitions = 15;
constexpr double secondsPerRun = 0.05;

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
    operation.ours();
    if (!operation.is_right()) {
        std::fprintf(stderr, "%s: the output is wrong\n", operation.name.c_str());
        std::exit(1);
    }
    std::string const name = operation.name + "/" + size + "/";
    add(name + "ours", operation.ours);
    add(name + "memcpy", copyOf(operation.bytes));
    for (Contestant const& peer : operation.peers) {
        add(name + peer.name, peer.run);
    }
}

}  // namespace

int main(int count, char** arguments) {
#ifdef OX_PEER_OPENCV
    cv::setNumThreads(1);
#endif
    // Random order, so that no contestant always runs behind the same one.
    std::vector<char*> all(arguments, arguments + count);
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    all.insert(all.begin() + 1, interleaving);
    int all_count = static_cast<int>(all.size());
    benchmark::Initialize(&all_count, all.data());
    if (benchmark::ReportUnrecognizedArguments(all_count, all.data())) {
        return 1;
    }
    for (ox::Size const size : {ox::Size{1920, 1080}, ox::Size{320, 240}}) {
        std::string const label = std::to_string(size.width) + "x" + std::to_string(size.height);
        for (Operation const& operation : colourOperations(size)) {
            add(operation, label);
        }
        for (Operation const& operation : floatOperations(size)) {
            add(operation, label);
        }
        for (Operation const& operation : resampleOperations(size)) {
            add(operation, label);
        }
        for (Operation const& operation : convolutionOperations(size)) {
            add(operation, label);
        }
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
