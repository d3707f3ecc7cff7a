// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/row_ranges.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "simd/warps/columns.h"

namespace Simd::Base {

namespace {

WarpPoint warp(float const* mat, float x, float y) {
    return {std::fma(x, mat[0], y * mat[1]) + mat[2], std::fma(x, mat[3], y * mat[4]) + mat[5]};
}

/// The side of a polygon between two rows: x = slope * y + offset. Horizontal sides have none.
struct Edge {
    float lo;
    float hi;
    float slope;
    float offset;

    Edge(WarpPoint from, WarpPoint to, std::uint64_t height)
        : lo(std::min(from.y, to.y)),
          hi(std::min(std::max(from.y, to.y), static_cast<float>(height))),
          slope((to.x - from.x) / (to.y - from.y)),
          offset(std::fma(-from.y, slope, from.x)) {
        lo = lo > 0 ? lo : 0.0F;
    }

    float at(float y) const { return std::fma(slope, y, offset); }
    float limited(float y) const { return std::max(std::min(y, hi), lo); }
};

/// Calls visit(from, to) for the four sides.
template <class Visit>
void visitSides(WarpPolygon const& polygon, Visit visit) {
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        visit(polygon[i], polygon[(i + 1) % polygon.size()]);
    }
}

/// A column as an entry of a table. A column past the range of entries becomes the largest entry.
std::int32_t entry(std::uint64_t column) {
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(column, most));
}

/// The first and the last column of an edge in one row.
struct Span {
    std::int32_t first;
    std::int32_t last;
};

Span spanOf(Edge const& edge, std::int32_t y) {
    auto const middle = static_cast<float>(y);
    if (std::abs(edge.slope) <= 1) {
        std::int32_t const column = roundAway(edge.at(middle));
        return {column, column};
    }
    float const upper = edge.at(edge.limited(middle - 0.5F));
    float const lower = edge.at(edge.limited(middle + 0.5F));
    return {roundAway(std::min(upper, lower)), roundAway(std::max(upper, lower))};
}

struct NearestTable {
    std::int32_t width;
    std::uint64_t height;
    std::int32_t* beg;
    std::int32_t* end;

    void add(std::int32_t y, Span span) const {
        std::int32_t const behind = span.last < width ? span.last + 1 : width;
        beg[y] = std::min(std::max(span.first, 0), beg[y]);
        end[y] = std::max(behind, end[y]);
    }

    /// Adds the row of the lowest corner. All edges end before that row.
    void addLastRow(WarpPolygon const& polygon) const {
        float bottom = polygon[0].y;
        for (WarpPoint const& corner : polygon) {
            bottom = std::max(bottom, corner.y);
        }
        std::int32_t const row = roundAway(bottom);
        if (row < 0 || static_cast<std::uint64_t>(row) >= height) {
            return;
        }
        visitSides(polygon, [&](WarpPoint from, WarpPoint to) {
            if (roundAway(std::max(from.y, to.y)) == row) {
                add(row, lastSpan(from, to, row));
            }
        });
    }

    Span lastSpan(WarpPoint from, WarpPoint to, std::int32_t row) const {
        if (from.y == to.y) {
            return {roundAway(std::min(from.x, to.x)), roundAway(std::max(from.x, to.x))};
        }
        Edge edge(from, to, height);
        edge.lo = std::min(edge.lo, edge.hi);  // an edge above row 0 has no point on it
        return spanOf(edge, row);
    }
};

/// A row, or the plane's height if the row lies below the plane.
std::int32_t cutRow(std::int32_t y, std::uint64_t height) {
    return std::min(y, entry(height));
}

void clipToEdge(Edge const& edge, std::uint64_t width, std::uint64_t height, float* beg,
                float* end) {
    std::int32_t const last = cutRow(truncateToInt(std::ceil(edge.hi)), height);
    for (std::int32_t y = truncateToInt(std::ceil(edge.lo)); y < last; ++y) {
        float const x = edge.at(edge.limited(static_cast<float>(y)));
        beg[y] = std::min(std::max(x, 0.0F), beg[y]);
        end[y] = std::max(std::min(x, static_cast<float>(width)), end[y]);
    }
}

}  // namespace

WarpPolygon warpRectangle(float const* mat, WarpPoint top_left, WarpPoint bottom_right) {
    return {warp(mat, top_left.x, top_left.y), warp(mat, bottom_right.x, top_left.y),
            warp(mat, bottom_right.x, bottom_right.y), warp(mat, top_left.x, bottom_right.y)};
}

void buildNearestRanges(WarpPolygon const& polygon, std::uint64_t width, std::uint64_t height,
                        std::int32_t* beg, std::int32_t* end) {
    NearestTable const table{entry(width), height, beg, end};
    std::fill_n(beg, height, table.width);
    std::fill_n(end, height, 0);
    visitSides(polygon, [&](WarpPoint from, WarpPoint to) {
        if (from.y == to.y) {
            return;
        }
        Edge const edge(from, to, height);
        std::int32_t const last = cutRow(roundAway(edge.hi), height);
        for (std::int32_t y = roundAway(edge.lo); y < last; ++y) {
            table.add(y, spanOf(edge, y));
        }
    });
    table.addLastRow(polygon);
}

void buildBilinearRanges(WarpPolygon const& polygon, std::uint64_t width, std::uint64_t height,
                         float* bounds, std::int32_t const* limit, std::int32_t* beg,
                         std::int32_t* end) {
    float* const first = bounds;
    float* const behind = bounds + height;
    std::fill_n(first, height, static_cast<float>(width));
    std::fill_n(behind, height, 0.0F);
    visitSides(polygon, [&](WarpPoint from, WarpPoint to) {
        if (from.y != to.y) {
            clipToEdge(Edge(from, to, height), width, height, first, behind);
        }
    });
    for (std::uint64_t y = 0; y < height; ++y) {
        std::int32_t const most = limit != nullptr ? limit[y] : entry(width);
        std::int32_t const column = truncateToInt(std::ceil(first[y]));
        std::int32_t const last = truncateToInt(std::ceil(behind[y]));
        beg[y] = std::min(column, most);
        end[y] = std::min(std::max(last, column), most);
    }
}

}  // namespace Simd::Base
