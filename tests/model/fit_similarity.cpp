// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/fit_similarity.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace model {

namespace {

using Number = long double;
constexpr std::size_t unknown_count = 4;  // a, b, x, y

// The normal equations, with the right side as the last column.
using Equations = std::array<std::array<Number, unknown_count + 1>, unknown_count>;

void addObservation(Equations& sums, std::array<Number, unknown_count + 1> const& observation) {
    for (std::size_t i = 0; i < unknown_count; ++i) {
        for (std::size_t j = 0; j <= unknown_count; ++j) {
            sums[i][j] += observation[i] * observation[j];
        }
    }
}

// By elimination of each unknown from all other equations.
std::array<Number, unknown_count> solved(Equations equations) {
    for (std::size_t k = 0; k < unknown_count; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i < unknown_count; ++i) {
            if (std::abs(equations[i][k]) > std::abs(equations[pivot][k])) {
                pivot = i;
            }
        }
        std::swap(equations[k], equations[pivot]);
        for (std::size_t i = 0; i < unknown_count; ++i) {
            Number const factor = i == k ? 0 : equations[i][k] / equations[k][k];
            for (std::size_t j = 0; j <= unknown_count; ++j) {
                equations[i][j] -= factor * equations[k][j];
            }
        }
    }
    std::array<Number, unknown_count> result{};
    for (std::size_t k = 0; k < unknown_count; ++k) {
        result[k] = equations[k][unknown_count] / equations[k][k];
    }
    return result;
}

bool determineSimilarity(std::vector<Correspondence> const& points) {
    bool many_from = false;
    bool many_to = false;
    for (Correspondence const& p : points) {
        if (!std::isfinite(p.from_x) || !std::isfinite(p.from_y) || !std::isfinite(p.to_x) ||
            !std::isfinite(p.to_y)) {
            return false;
        }
        many_from |= p.from_x != points[0].from_x || p.from_y != points[0].from_y;
        many_to |= p.to_x != points[0].to_x || p.to_y != points[0].to_y;
    }
    return many_from && many_to;
}

}  // namespace

std::optional<std::array<double, 6>> fitSimilarity(std::vector<Correspondence> const& points) {
    if (!determineSimilarity(points)) {
        return std::nullopt;
    }
    // Around the first point, so that far points lose no digits, and in units of the largest
    // distance, so that equations are alike in size.
    Correspondence const& first = points[0];
    Number unit = 0;
    for (Correspondence const& p : points) {
        unit = std::max({unit, std::abs(Number{p.from_x} - first.from_x),
                         std::abs(Number{p.from_y} - first.from_y)});
    }
    Equations sums{};
    for (Correspondence const& p : points) {
        Number const x = (Number{p.from_x} - first.from_x) / unit;
        Number const y = (Number{p.from_y} - first.from_y) / unit;
        addObservation(sums, {x, -y, 1, 0, Number{p.to_x} - first.to_x});
        addObservation(sums, {y, x, 0, 1, Number{p.to_y} - first.to_y});
    }
    auto const [a_units, b_units, x, y] = solved(sums);
    Number const a = a_units / unit;
    Number const b = b_units / unit;
    Number const shift_x = first.to_x + x - (a * first.from_x - b * first.from_y);
    Number const shift_y = first.to_y + y - (b * first.from_x + a * first.from_y);
    return std::array{static_cast<double>(a),       static_cast<double>(-b),
                      static_cast<double>(shift_x), static_cast<double>(b),
                      static_cast<double>(a),       static_cast<double>(shift_y)};
}

}  // namespace model
