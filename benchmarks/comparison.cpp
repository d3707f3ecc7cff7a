// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "limits.h"

namespace ox::benchmarks {

namespace {

constexpr char const* roadNames[]{vectorRoad, pipelineRoad};

template <class... Arguments>
std::string formatted(char const* format, Arguments... arguments) {
    char text[512];
    int const length = std::snprintf(text, sizeof text, format, arguments...);
    return {text,
            std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), sizeof text - 1)};
}

Row rowOf(Measurement const& measurement, Family family, Unit unit) {
    Row row;
    row.operation = measurement.operation;
    row.size = measurement.size;
    row.is_chain = family == Family::Camera;
    for (auto const& [name, time] : measurement.medians) {
        bool const own = name == vectorRoad || name == pipelineRoad;
        if (own) {
            row.roads[name] = {time, std::nullopt,
                               unit == Unit::Time ? limitOf(family, row.operation, name)
                                                  : instructionLimitOf(name)};
        } else if (name == "memcpy") {
            row.memcpy_time = time;
        } else {
            row.peers[name] = time;
        }
    }
    auto const best = std::min_element(row.peers.begin(), row.peers.end(),
                                       [](auto& a, auto& b) { return a.second < b.second; });
    if (best != row.peers.end()) {
        row.best_peer = best->first;
        for (auto& [name, road] : row.roads) {
            road.over_peer = road.time / best->second;
        }
    }
    return row;
}

/// A number of a road, or a dash.
template <class Value>
std::string cell(Row const& row, char const* road, char const* format, Value value) {
    auto const found = row.roads.find(road);
    std::optional<double> const number =
        found != row.roads.end() ? value(found->second) : std::nullopt;
    return number ? formatted(format, *number) : std::string("-");
}

char const* formatOf(Unit unit) {
    return unit == Unit::Time ? "%.1f" : "%.2f";
}

std::string timeOf(Row const& row, char const* road, Unit unit) {
    return cell(row, road, formatOf(unit),
                [](RoadResult const& r) { return std::optional(r.time); });
}

std::string ratioOf(Row const& row, char const* road) {
    return cell(row, road, "%.2f", [](RoadResult const& r) { return r.over_peer; });
}

std::string limitTextOf(Row const& row, char const* road) {
    return cell(row, road, "%.2f", [](RoadResult const& r) { return r.limit; });
}

bool misses(Row const& row, char const* road) {
    auto const found = row.roads.find(road);
    return found != row.roads.end() && found->second.misses();
}

/// The ratio, with a mark if it misses its limit.
std::string marked(Row const& row, char const* road) {
    return ratioOf(row, road) + (misses(row, road) ? "!" : " ");
}

std::string peerTime(Row const& row, Unit unit) {
    return row.best_peer.empty() ? "-" : formatted(formatOf(unit), row.peers.at(row.best_peer));
}

/// Over the rows in which the road meets another library.
struct Summary {
    double logarithms = 0;
    int rows = 0;
    int misses = 0;

    double geometricMean() const { return std::exp(logarithms / rows); }
};

/// @param chains of chains into tensors, or of everything else
Summary summaryOf(std::vector<Row> const& rows, char const* road, bool chains) {
    Summary summary;
    for (Row const& row : rows) {
        auto const found = row.roads.find(road);
        if (row.is_chain == chains && found != row.roads.end() && found->second.over_peer) {
            summary.logarithms += std::log(*found->second.over_peer);
            ++summary.rows;
            summary.misses += found->second.misses() ? 1 : 0;
        }
    }
    return summary;
}

std::string summaryText(std::vector<Row> const& rows, char const* road, Unit unit) {
    double const limit = unit == Unit::Time ? meanLimitOf(road) : meanInstructionLimitOf(road);
    std::string text;
    for (bool const chains : {false, true}) {
        Summary const summary = summaryOf(rows, road, chains);
        if (summary.rows == 0) {
            continue;
        }
        text +=
            formatted("%s, %s: geometric mean over the best peer %.2f%s; ", road,
                      chains ? "chains into tensors" : "single operations", summary.geometricMean(),
                      chains ? "" : formatted(" (limit %.2f)", limit).c_str());
        text += formatted("%d of %d rows miss their limit\n", summary.misses, summary.rows);
    }
    return text;
}

}  // namespace

std::vector<Row> compare(std::vector<Measurement> const& measurements,
                         std::map<std::string, Family> const& families, Unit unit) {
    std::vector<Row> rows;
    for (Measurement const& measurement : measurements) {
        rows.push_back(rowOf(measurement, families.at(measurement.operation), unit));
    }
    return rows;
}

std::string asText(std::vector<Row> const& rows, Unit unit) {
    bool const copies = unit == Unit::Time;
    std::string text =
        formatted("%-38s %-10s %9s %6s  %9s %6s  %9s   %s\n", "operation", "size", "vectors",
                  "/peer", "pipeline", "/peer", copies ? "memcpy" : "", "best peer");
    for (Row const& row : rows) {
        text += formatted("%-38s %-10s %9s %7s %9s %7s %9s   %s %s\n", row.operation.c_str(),
                          row.size.c_str(), timeOf(row, vectorRoad, unit).c_str(),
                          marked(row, vectorRoad).c_str(), timeOf(row, pipelineRoad, unit).c_str(),
                          marked(row, pipelineRoad).c_str(),
                          copies ? formatted("%.1f", row.memcpy_time).c_str() : "",
                          row.best_peer.c_str(), peerTime(row, unit).c_str());
    }
    for (char const* const road : roadNames) {
        text += summaryText(rows, road, unit);
    }
    return text;
}

std::string asMarkdown(std::vector<Row> const& rows, Unit unit) {
    bool const copies = unit == Unit::Time;
    std::string text =
        copies
            ? "| operation | size | vectors | over peer | pipeline | over peer | memcpy | best "
              "peer | its time |\n|---|---|---|---|---|---|---|---|---|\n"
            : "| operation | size | vectors | over peer | pipeline | over peer | best peer | its "
              "instructions |\n|---|---|---|---|---|---|---|---|\n";
    for (Row const& row : rows) {
        text += "| " + row.operation + " | " + row.size + " | " + timeOf(row, vectorRoad, unit) +
                " | " + ratioOf(row, vectorRoad) + " | " + timeOf(row, pipelineRoad, unit) + " | " +
                ratioOf(row, pipelineRoad) + " | " +
                (copies ? formatted("%.1f", row.memcpy_time) + " | " : std::string()) +
                (row.best_peer.empty() ? "-" : row.best_peer) + " | " + peerTime(row, unit) +
                " |\n";
    }
    return text;
}

std::string asCsv(std::vector<Row> const& rows) {
    std::string text = "operation,size,contestant,microseconds,over_best_peer,limit\n";
    for (Row const& row : rows) {
        std::string const start = "\"" + row.operation + "\"," + row.size + ",";
        for (char const* const road : roadNames) {
            if (row.roads.count(road) != 0) {
                text += start + road + "," + timeOf(row, road, Unit::Time) + "," +
                        ratioOf(row, road) + "," + limitTextOf(row, road) + "\n";
            }
        }
        text += start + "memcpy," + formatted("%.1f", row.memcpy_time) + ",,\n";
        for (auto const& [peer, time] : row.peers) {
            text += start + peer + "," + formatted("%.1f", time) + ",,\n";
        }
    }
    return text;
}

}  // namespace ox::benchmarks
