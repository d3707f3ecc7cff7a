/// @file
/// The table of medians and ratios.

#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace ox::benchmarks {

/// Takes benchmarks named "operation/size/contestant", of which "ours" and "memcpy" are two.
class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(Context const& context) override;
    void ReportRuns(std::vector<Run> const& runs) override;
    /// Prints the table: medians in microseconds, and ours over memcpy and over the best peer.
    void Finalize() override;

  private:
    struct Row {
        std::string name;
        std::vector<std::string> contestants;  ///< in the order of their registration
        std::map<std::string, std::vector<double>> times;
    };

    Row& rowOf(std::string const& name);
    static void print(Row const& row);

    std::vector<Row> _rows;
};

}  // namespace ox::benchmarks
