// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cmath>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_fit_similarity"};

using Points = float const (*)[2];

struct Point {
    double x = 0.0;
    double y = 0.0;
};

Point meanOf(Points points, std::int32_t count) {
    Point sum;
    for (std::int32_t i = 0; i < count; ++i) {
        sum.x += double{points[i][0]};
        sum.y += double{points[i][1]};
    }
    return {sum.x / count, sum.y / count};
}

bool areFinite(Points points, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
        if (!std::isfinite(points[i][0]) || !std::isfinite(points[i][1])) {
            return false;
        }
    }
    return true;
}

bool differ(Points points, std::int32_t count) {
    for (std::int32_t i = 1; i < count; ++i) {
        if (points[i][0] != points[0][0] || points[i][1] != points[0][1]) {
            return true;
        }
    }
    return false;
}

void check(bool holds, Status status, char const* name, char const* text) {
    if (!holds) {
        here.fail({status, "fitSimilarity"}, "Failure in fitSimilarity(...) : '%s' %s.", name,
                  text);
    }
}

/// The direction and length that turn a point of `from`: {p, q} over s.
struct Turn {
    double p = 0.0;
    double q = 0.0;
    double s = 0.0;
    double t = 0.0;

    /// Whether {p, q} is more than what roundings leave where nothing is to be turned.
    bool exists() const {
        constexpr double least = 1e-20;
        return p * p + q * q > least * s * t;
    }
};

Turn turnOf(Points from, Point from_mean, Points to, Point to_mean, std::int32_t count) {
    Turn turn;
    for (std::int32_t i = 0; i < count; ++i) {
        double const x = double{from[i][0]} - from_mean.x;
        double const y = double{from[i][1]} - from_mean.y;
        double const u = double{to[i][0]} - to_mean.x;
        double const v = double{to[i][1]} - to_mean.y;
        turn.s += x * x + y * y;
        turn.t += u * u + v * v;
        turn.p += x * u + y * v;
        turn.q += x * v - y * u;
    }
    return turn;
}

}  // namespace

void fitSimilarity(float const (*from)[2], float const (*to)[2], std::int32_t count,
                   float (*matrix)[3]) {
    check(from != nullptr, StatusNullPointer, "from", "is null");
    check(to != nullptr, StatusNullPointer, "to", "is null");
    check(matrix != nullptr, StatusNullPointer, "matrix", "is null");
    check(count >= 2, StatusInvalidParameter, "count", "is below 2");
    check(areFinite(from, count), StatusInvalidParameter, "from", "has a number that isn't finite");
    check(areFinite(to, count), StatusInvalidParameter, "to", "has a number that isn't finite");
    check(differ(from, count), StatusInvalidParameter, "from", "has no two different points");
    check(differ(to, count), StatusInvalidParameter, "to", "has no two different points");
    Point const m = meanOf(from, count);
    Point const n = meanOf(to, count);
    Turn const turn = turnOf(from, m, to, n, count);
    double const a = turn.p / turn.s;
    double const b = turn.q / turn.s;
    float const rows[2][3]{{static_cast<float>(a), static_cast<float>(-b),
                            static_cast<float>(n.x - (a * m.x - b * m.y))},
                           {static_cast<float>(b), static_cast<float>(a),
                            static_cast<float>(n.y - (b * m.x + a * m.y))}};
    bool is_finite = true;
    for (auto const& row : rows) {
        for (float const number : row) {
            is_finite = is_finite && std::isfinite(number);
        }
    }
    check(turn.exists() && is_finite, StatusInvalidParameter, "to", "has no similarity to 'from'");
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < 3; ++k) {
            matrix[i][k] = rows[i][k];
        }
    }
}

}  // namespace ox
