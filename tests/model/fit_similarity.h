// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The similarity that takes points nearest to others.
#pragma once

#include <array>
#include <optional>
#include <vector>

namespace model {

struct Correspondence {
    double from_x;
    double from_y;
    double to_x;
    double to_y;
};

// Two rows of three, {a, -b, c, b, a, d} for x' = a x - b y + c and y' = b x + a y + d, of the
// least sum of squares, computed more exactly than in doubles. None where the points don't
// determine one: fewer than two, all from one place or all to one, or a coordinate that isn't
// finite.
std::optional<std::array<double, 6>> fitSimilarity(std::vector<Correspondence> const& points);

}  // namespace model
