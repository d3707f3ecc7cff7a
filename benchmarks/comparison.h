// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Our times or instructions beside those of others, and their ratios.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "operation.h"

namespace ox::benchmarks {

/// What is measured: microseconds, or instructions a pixel of the source, beside which a memcpy
/// tells nothing.
enum class Unit { Time, Instructions };

/// What each contestant of an operation takes at a size; our own roads and memcpy are contestants,
/// too.
struct Measurement {
    std::string operation;
    std::string size;
    std::map<std::string, double> medians;
};

/// One of our roads in a row.
struct RoadResult {
    double time = 0;  ///< or instructions
    std::optional<double> over_peer;
    std::optional<double> limit;

    bool misses() const { return over_peer && limit && *over_peer > *limit; }
};

struct Row {
    std::string operation;
    std::string size;
    bool is_chain = false;  ///< of several calls of the others, from a camera to a tensor
    double memcpy_time = 0;
    std::map<std::string, RoadResult> roads;
    std::map<std::string, double> peers;
    std::string best_peer;  ///< empty if no other library has the operation
};

/// @param families by name of the operation
std::vector<Row> compare(std::vector<Measurement> const& measurements,
                         std::map<std::string, Family> const& families, Unit unit = Unit::Time);

/// For people to read, with what misses its limit marked, and the summaries.
std::string asText(std::vector<Row> const& rows, Unit unit = Unit::Time);
std::string asMarkdown(std::vector<Row> const& rows, Unit unit = Unit::Time);
std::string asCsv(std::vector<Row> const& rows);
/// A bar for each road and row: what it takes over what the best other library takes.
std::string asSvg(std::vector<Row> const& rows, Unit unit = Unit::Time);

}  // namespace ox::benchmarks
