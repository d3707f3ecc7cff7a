// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The plain model of the similarity between points, against known ones.
#include "model/fit_similarity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace ox::test::fit_similarity_model {
namespace {

using model::Correspondence;
using Matrix = std::array<double, 6>;

Correspondence moved(Matrix const& m, double x, double y) {
    return {x, y, m[0] * x + m[1] * y + m[2], m[3] * x + m[4] * y + m[5]};
}

double error(Matrix const& m, std::vector<Correspondence> const& points) {
    double sum = 0;
    for (Correspondence const& p : points) {
        Correspondence const q = moved(m, p.from_x, p.from_y);
        sum += std::pow(q.to_x - p.to_x, 2) + std::pow(q.to_y - p.to_y, 2);
    }
    return sum;
}

void expectNear(std::optional<Matrix> const& got, Matrix const& wanted, double tolerance) {
    ASSERT_TRUE(got);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_NEAR((*got)[i], wanted[i], tolerance) << i;
    }
}

TEST(FitSimilarityModel, TwoPoints) {
    // Turned to the left by a quarter, twice as large, and shifted.
    expectNear(model::fitSimilarity({{0, 0, 5, 7}, {1, 0, 5, 9}}), {0, -2, 5, 2, 0, 7}, 1e-15);
    expectNear(model::fitSimilarity({{3, 4, 3, 4}, {-1, 2, -1, 2}}), {1, 0, 0, 0, 1, 0}, 1e-15);
}

TEST(FitSimilarityModel, PointsOfAKnownSimilarity) {
    Matrix const known{0.6, -0.8, 100, 0.8, 0.6, -20};
    std::vector<Correspondence> points;
    constexpr std::pair<double, double> places[]{{1, 2}, {30, -4}, {500, 600}, {7, 7}, {-8, 900}};
    for (auto const& [x, y] : places) {
        points.push_back(moved(known, x, y));
        if (points.size() >= 2) {
            expectNear(model::fitSimilarity(points), known, 1e-12);
        }
    }
}

// The middle of three is 3 above its place: the mean shift is 1, and nothing turns.
TEST(FitSimilarityModel, ThreePointsThatDoNotFit) {
    expectNear(model::fitSimilarity({{-1, 0, -1, 0}, {0, 0, 0, 3}, {1, 0, 1, 0}}),
               {1, 0, 0, 0, 1, 1}, 1e-15);
}

// A square of which a diagonal grew by half: half of that is left, and shared by all.
TEST(FitSimilarityModel, FourPointsThatDoNotFit) {
    expectNear(
        model::fitSimilarity({{1, 0, 1.5, 0}, {-1, 0, -1.5, 0}, {0, 1, 0, 1}, {0, -1, 0, -1}}),
        {1.25, 0, 0, 0, 1.25, 0}, 1e-15);
}

TEST(FitSimilarityModel, NothingNearbyIsBetter) {
    std::vector<Correspondence> const points{{300, 200, 38.3, 51.7},
                                             {352, 207, 73.5, 51.5},
                                             {321, 239, 56.0, 71.7},
                                             {301, 268, 41.5, 92.4},
                                             {348, 274, 70.7, 92.2}};
    auto const best = model::fitSimilarity(points);
    ASSERT_TRUE(best);
    EXPECT_EQ((*best)[0], (*best)[4]);
    EXPECT_EQ((*best)[1], -(*best)[3]);
    for (double const step : {-1e-4, 1e-4}) {
        Matrix const changes[]{{step, 0, 0, 0, step, 0},
                               {0, -step, 0, step, 0, 0},
                               {0, 0, step, 0, 0, 0},
                               {0, 0, 0, 0, 0, step}};
        for (Matrix const& change : changes) {
            Matrix other = *best;
            for (std::size_t i = 0; i < other.size(); ++i) {
                other[i] += change[i];
            }
            EXPECT_LT(error(*best, points), error(other, points));
        }
    }
}

TEST(FitSimilarityModel, FarPoints) {
    expectNear(model::fitSimilarity({{1e6, 1e6, 0, 0}, {1e6 + 1, 1e6, 1, 0}, {1e6, 1e6 + 1, 0, 1}}),
               {1, 0, -1e6, 0, 1, -1e6}, 1e-9);
}

TEST(FitSimilarityModel, DegeneratePoints) {
    EXPECT_FALSE(model::fitSimilarity({}));
    EXPECT_FALSE(model::fitSimilarity({{1, 2, 3, 4}}));
    EXPECT_FALSE(model::fitSimilarity({{1, 2, 3, 4}, {1, 2, 5, 6}, {1, 2, 7, 8}}));
    EXPECT_FALSE(model::fitSimilarity({{1, 2, 3, 4}, {5, 6, 3, 4}}));
    EXPECT_FALSE(model::fitSimilarity({{1, 2, 3, 4}, {INFINITY, 6, 5, 4}}));
    EXPECT_FALSE(
        model::fitSimilarity({{1, 2, 3, 4}, {5, 6, std::numeric_limits<double>::quiet_NaN(), 4}}));
}

}  // namespace
}  // namespace ox::test::fit_similarity_model
