// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Counts the instructions of the library's roads and of other libraries on AArch64, by emulation
// with the plugin beside this file; script/bench --arm and script/count-instructions start it.
// With a directory and sizes (--size=642x482), it writes a table there of instructions a pixel of
// the source, and a picture. Without arguments it prints the counts of the library's own roads at a
// small size.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "comparison.h"
#include "operation.h"
#include "options.h"

#ifdef OX_PEER_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace ox::benchmarks;

/// As callgrind's.
constexpr ox::Size countedSize{384, 216};

/// The plugin's count.
std::uint64_t executed() {
    constexpr long mark_call = 7777;
    syscall(mark_call);
    std::uint64_t count = 0;
    if (!(std::ifstream(std::getenv("OX_COUNT_FILE")) >> count)) {
        std::fputs("this is to be run by qemu-aarch64 with the plugin\n", stderr);
        std::exit(2);
    }
    return count;
}

/// Of the second run: the first fills caches of tables and binds symbols. What asking takes is
/// taken off.
std::uint64_t countOf(std::function<void()> const& run) {
    run();
    std::uint64_t const first = executed();
    std::uint64_t const second = executed();
    run();
    return executed() - second - (second - first);
}

void check(Operation const& operation, Road const& road) {
    if (!road.is_right()) {
        std::fprintf(stderr, "%s: the output by the %s is wrong\n", operation.name.c_str(),
                     road.name);
        std::exit(1);
    }
}

void printCounts() {
    for (Operation const& operation : allOperations(countedSize)) {
        for (Road const& road : operation.roads) {
            std::printf("\"%s\",%s,%llu\n", operation.name.c_str(), road.name,
                        static_cast<unsigned long long>(countOf(road.run)));
        }
    }
}

Measurement measure(Operation const& operation, ox::Size size) {
    double const pixels = size.width * static_cast<double>(size.height);
    Measurement measurement{
        operation.name, std::to_string(size.width) + "x" + std::to_string(size.height), {}};
    for (Road const& road : operation.roads) {
        measurement.medians[road.name] = static_cast<double>(countOf(road.run)) / pixels;
        check(operation, road);
    }
    for (Contestant const& peer : operation.peers) {
        measurement.medians[peer.name] = static_cast<double>(countOf(peer.run)) / pixels;
    }
    return measurement;
}

bool write(std::string const& path, std::string const& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    return static_cast<bool>(file.flush());
}

int writeTable(Options const& options) {
    std::vector<Measurement> measurements;
    std::map<std::string, Family> families;
    for (ox::Size const size : options.sizes) {
        for (Operation const& operation : allOperations(size)) {
            families[operation.name] = operation.family;
            measurements.push_back(measure(operation, size));
        }
    }
    std::vector<Row> const rows = compare(measurements, families, Unit::Instructions);
    std::fputs(asText(rows, Unit::Instructions).c_str(), stdout);
    return write(options.directory + "/instructions.md", asMarkdown(rows, Unit::Instructions)) &&
                   write(options.directory + "/instructions.svg", asSvg(rows, Unit::Instructions))
               ? 0
               : 1;
}

}  // namespace

int main(int count, char** arguments) {
    executed();  // binds symbols
    if (count == 1) {
        printCounts();
        return 0;
    }
    Options options;
    if (!readOptions(count, arguments, options)) {
        return 2;
    }
#ifdef OX_PEER_OPENCV
    cv::setNumThreads(1);
#endif
    return writeTable(options);
}
