// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "comparison.h"

namespace ox::benchmarks {

namespace {

// Two bars a row, on an axis of ratios from 0 to 2; what is longer is cut.
constexpr int rowHeight = 22;
constexpr int barHeight = 8;
constexpr int top = 60;
constexpr int labelWidth = 400;
constexpr int chartWidth = 560;
constexpr double mostShown = 2.0;

struct RoadStyle {
    char const* road;
    char const* colour;
    int offset;  ///< of the bar in its row
};
constexpr RoadStyle styles[]{{vectorRoad, "#1b6ca8", 2}, {pipelineRoad, "#e0912f", 11}};

double xOf(double ratio) {
    return labelWidth + std::min(ratio, mostShown) / mostShown * chartWidth;
}

std::string text(double x, double y, char const* anchor, std::string const& content) {
    char start[160];
    std::snprintf(start, sizeof start, "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y,
                  anchor);
    return start + content + "</text>\n";
}

std::string rectangle(double x, double y, double width, double height, char const* colour) {
    char element[200];
    std::snprintf(element, sizeof element,
                  "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\"/>\n", x,
                  y, width, height, colour);
    return element;
}

std::string ratioText(double ratio) {
    char number[32];
    std::snprintf(number, sizeof number, "%.2f", ratio);
    return number;
}

std::string bars(Row const& row, double y) {
    std::string svg;
    for (RoadStyle const& style : styles) {
        auto const road = row.roads.find(style.road);
        if (road == row.roads.end() || !road->second.over_peer) {
            continue;
        }
        double const ratio = *road->second.over_peer;
        double const end = xOf(ratio);
        svg += rectangle(labelWidth, y + style.offset, end - labelWidth, barHeight, style.colour);
        svg += text(end + 4, y + style.offset + barHeight, "start", ratioText(ratio));
    }
    return svg;
}

std::string axis(double bottom) {
    std::string svg;
    for (double ratio = 0; ratio <= mostShown; ratio += 0.5) {
        bool const level = std::abs(ratio - 1.0) < 1e-9;
        svg += rectangle(xOf(ratio), top - 6, level ? 2 : 1, bottom - top + 6,
                         level ? "#444444" : "#cccccc");
        svg += text(xOf(ratio), top - 10, "middle", ratioText(ratio));
    }
    return svg;
}

}  // namespace

std::string asSvg(std::vector<Row> const& rows, Unit unit) {
    auto const shown = [](Row const& row) { return !row.best_peer.empty(); };
    auto const count = std::count_if(rows.begin(), rows.end(), shown);
    double const bottom = top + static_cast<double>(count) * rowHeight;
    char start[320];
    std::snprintf(start, sizeof start,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%.0f\" "
                  "font-family=\"sans-serif\" font-size=\"10\">\n",
                  labelWidth + chartWidth + 60, bottom + 20);
    std::string svg = start;
    svg += rectangle(0, 0, labelWidth + chartWidth + 60, bottom + 20, "#ffffff");
    std::string const what = unit == Unit::Time ? "Time over that" : "Instructions over those";
    svg += text(10, 20, "start",
                what + " of the best other library; shorter is faster, 1.00 is level");
    double x = 10;
    for (RoadStyle const& style : styles) {
        svg += rectangle(x, 30, 10, 10, style.colour) + text(x + 14, 39, "start", style.road);
        x += 80;
    }
    svg += axis(bottom);
    double y = top;
    for (Row const& row : rows) {
        if (shown(row)) {
            svg += text(labelWidth - 8, y + 14, "end",
                        row.operation + ", " + row.size + " (" + row.best_peer + ")");
            svg += bars(row, y);
            y += rowHeight;
        }
    }
    return svg + "</svg>\n";
}

}  // namespace ox::benchmarks
