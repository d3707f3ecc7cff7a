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

Row rowOf(Measurement const& measurement, Family family) {
    Row row;
    row.operation = measurement.operation;
    row.size = measurement.size;
    for (auto const& [name, time] : measurement.medians) {
        bool const own = name == vectorRoad || name == pipelineRoad;
        if (own) {
            row.roads[name] = {time, std::nullopt, limitOf(family, row.operation, name)};
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

std::string timeOf(Row const& row, char const* road) {
    return cell(row, road, "%.1f", [](RoadResult const& r) { return std::optional(r.time); });
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

std::string peerTime(Row const& row) {
    return row.best_peer.empty() ? "-" : formatted("%.1f", row.peers.at(row.best_peer));
}

}  // namespace

std::vector<Row> compare(std::vector<Measurement> const& measurements,
                         std::map<std::string, Family> const& families) {
    std::vector<Row> rows;
    for (Measurement const& measurement : measurements) {
        rows.push_back(rowOf(measurement, families.at(measurement.operation)));
    }
    return rows;
}

Summary summarise(std::vector<Row> const& rows, std::string const& road) {
    Summary summary;
    double logarithms = 0;
    double worst = 0;
    for (Row const& row : rows) {
        auto const found = row.roads.find(road);
        if (found == row.roads.end() || !found->second.over_peer) {
            continue;
        }
        double const ratio = *found->second.over_peer;
        logarithms += std::log(ratio);
        ++summary.rows;
        summary.misses += found->second.misses() ? 1 : 0;
        if (ratio > worst) {
            worst = ratio;
            summary.worst = &row;
        }
    }
    if (summary.rows > 0) {
        summary.geometric_mean = std::exp(logarithms / summary.rows);
    }
    return summary;
}

std::string asText(std::vector<Row> const& rows) {
    std::string text = formatted("%-38s %-10s %9s %6s %9s %6s %9s   %s\n", "operation", "size",
                                 "vectors", "/peer", "pipeline", "/peer", "memcpy", "best peer");
    for (Row const& row : rows) {
        auto const marked = [&](char const* road) {
            return ratioOf(row, road) + (misses(row, road) ? "!" : " ");
        };
        text +=
            formatted("%-38s %-10s %9s %6s %9s %6s %9.1f   %s %s\n", row.operation.c_str(),
                      row.size.c_str(), timeOf(row, vectorRoad).c_str(), marked(vectorRoad).c_str(),
                      timeOf(row, pipelineRoad).c_str(), marked(pipelineRoad).c_str(),
                      row.memcpy_time, row.best_peer.c_str(), peerTime(row).c_str());
    }
    for (char const* const road : roadNames) {
        Summary const summary = summarise(rows, road);
        if (summary.worst != nullptr) {
            text += formatted(
                "%s: geometric mean over the best peer %.2f (limit %.2f), worst %s "
                "of %s, %s; %d of %d rows miss their limit\n",
                road, summary.geometric_mean, meanLimitOf(road),
                ratioOf(*summary.worst, road).c_str(), summary.worst->operation.c_str(),
                summary.worst->size.c_str(), summary.misses, summary.rows);
        }
    }
    return text;
}

std::string asMarkdown(std::vector<Row> const& rows) {
    std::string text =
        "| operation | size | vectors | over peer | pipeline | over peer | memcpy | best peer | "
        "its time |\n|---|---|---|---|---|---|---|---|---|\n";
    for (Row const& row : rows) {
        text += "| " + row.operation + " | " + row.size + " | " + timeOf(row, vectorRoad) + " | " +
                ratioOf(row, vectorRoad) + " | " + timeOf(row, pipelineRoad) + " | " +
                ratioOf(row, pipelineRoad) + " | " + formatted("%.1f", row.memcpy_time) + " | " +
                (row.best_peer.empty() ? "-" : row.best_peer) + " | " + peerTime(row) + " |\n";
    }
    return text;
}

std::string asCsv(std::vector<Row> const& rows) {
    std::string text = "operation,size,contestant,microseconds,over_best_peer,limit\n";
    for (Row const& row : rows) {
        std::string const start = "\"" + row.operation + "\"," + row.size + ",";
        for (char const* const road : roadNames) {
            if (row.roads.count(road) != 0) {
                text += start + road + "," + timeOf(row, road) + "," + ratioOf(row, road) + "," +
                        limitTextOf(row, road) + "\n";
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
