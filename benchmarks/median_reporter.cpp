// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "median_reporter.h"

#include "median.h"

namespace ox::benchmarks {

bool MedianReporter::ReportContext(Context const& /*context*/) {
    return true;
}

void MedianReporter::ReportRuns(std::vector<Run> const& runs) {
    for (Run const& run : runs) {
        if (run.run_type == Run::RT_Iteration) {
            std::string const& name = run.run_name.function_name;
            std::size_t const slash = name.rfind('/');
            _times[name.substr(0, slash)][name.substr(slash + 1)].push_back(
                run.GetAdjustedRealTime());
        }
    }
}

std::vector<Measurement> MedianReporter::measurements() const {
    std::vector<Measurement> all;
    for (auto const& [name, contestants] : _times) {
        std::size_t const slash = name.rfind('/');
        Measurement measurement{name.substr(0, slash), name.substr(slash + 1), {}};
        for (auto const& [contestant, times] : contestants) {
            measurement.medians[contestant] = median(times);
        }
        all.push_back(measurement);
    }
    return all;
}

}  // namespace ox::benchmarks
