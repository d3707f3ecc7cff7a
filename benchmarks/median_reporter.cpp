#include "table_reporter.h"

#include <algorithm>
#include <cstdio>

namespace ox::benchmarks {

namespace {

double median(std::vector<double> times) {
    auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

}  // namespace

bool TableReporter::ReportContext(Context const& /*context*/) {
    return true;
}

TableReporter::Row& TableReporter::rowOf(std::string const& name) {
    auto const row =
        std::find_if(_rows.begin(), _rows.end(), [&](Row const& r) { return r.name == name; });
    if (row != _rows.end()) {
        return *row;
    }
    return _rows.emplace_back(Row{name, {}, {}});
}

void TableReporter::ReportRuns(std::vector<Run> const& runs) {
    for (Run const& run : runs) {
        if (run.run_type != Run::RT_Iteration) {
            continue;
        }
        std::string const& name = run.run_name.function_name;
        std::size_t const slash = name.rfind('/');
        Row& row = rowOf(name.substr(0, slash));
        std::string const contestant = name.substr(slash + 1);
        if (row.times[contestant].empty()) {
            row.contestants.push_back(contestant);
        }
        row.times[contestant].push_back(run.GetAdjustedRealTime());
    }
}

void TableReporter::Finalize() {
    std::sort(_rows.begin(), _rows.end(),
              [](Row const& a, Row const& b) { return a.name < b.name; });
    std::printf("%-36s %9s %9s %8s   %-22s %8s\n", "operation", "ours/us", "memcpy", "/memcpy",
                "best peer/us", "/peer");
    for (Row const& row : _rows) {
        print(row);
    }
}

void TableReporter::print(Row const& row) {
    double const ours = median(row.times.at("ours"));
    double const copy = median(row.times.at("memcpy"));
    std::string best;
    double best_time = 0.0;
    for (std::string const& contestant : row.contestants) {
        double const time = median(row.times.at(contestant));
        if (contestant != "ours" && contestant != "memcpy" && (best.empty() || time < best_time)) {
            best = contestant;
            best_time = time;
        }
    }
    std::printf("%-36s %9.1f %9.1f %8.2f   ", row.name.c_str(), ours, copy, ours / copy);
    if (best.empty()) {
        std::printf("%-22s %8s\n", "-", "-");
    } else {
        std::printf("%-12s %9.1f %8.2f\n", best.c_str(), best_time, ours / best_time);
    }
}

}  // namespace ox::benchmarks
