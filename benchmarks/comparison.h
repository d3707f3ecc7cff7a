// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Our times beside those of others, and their ratios.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "median_reporter.h"
#include "operation.h"

namespace ox::benchmarks {

/// One of our roads in a row.
struct RoadResult {
    double time = 0;  ///< microseconds
    std::optional<double> over_peer;
    std::optional<double> limit;

    bool misses() const { return over_peer && limit && *over_peer > *limit; }
};

struct Row {
    std::string operation;
    std::string size;
    double memcpy_time = 0;
    std::map<std::string, RoadResult> roads;
    std::map<std::string, double> peers;
    std::string best_peer;  ///< empty if no other library has the operation
};

/// @param families by name of the operation
std::vector<Row> compare(std::vector<Measurement> const& measurements,
                         std::map<std::string, Family> const& families);

/// Over all rows in which the road meets another library.
struct Summary {
    double geometric_mean = 0;
    Row const* worst = nullptr;
    int rows = 0;
    int misses = 0;
};

Summary summarise(std::vector<Row> const& rows, std::string const& road);

/// For people to read, with what misses its limit marked, and the summaries.
std::string asText(std::vector<Row> const& rows);
std::string asMarkdown(std::vector<Row> const& rows);
std::string asCsv(std::vector<Row> const& rows);
/// A bar for each road and row: its time over that of the best other library.
std::string asSvg(std::vector<Row> const& rows);

}  // namespace ox::benchmarks
