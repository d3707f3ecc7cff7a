// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Medians out of interleaved runs.

#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "comparison.h"

namespace ox::benchmarks {

/// Takes benchmarks named "operation/size/contestant".
class MedianReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(Context const& context) override;
    void ReportRuns(std::vector<Run> const& runs) override;

    /// In the order of names.
    std::vector<Measurement> measurements() const;

  private:
    std::map<std::string, std::map<std::string, std::vector<double>>> _times;
};

}  // namespace ox::benchmarks
