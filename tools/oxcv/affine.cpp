// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "affine.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "ox_cv/ox_cv_helpers.h"

namespace oxcv {

namespace {

struct Direction {
    double cosine;
    double sine;
};

/// The library's sine and cosine aren't exact at whole quarters, where radians aren't.
Direction directionOf(double degrees) {
    constexpr double quarter = 90.0;
    double const turn = std::remainder(degrees, 4 * quarter);  // -180 to 180
    double const quarters = std::round(turn / quarter);
    double const rest = (turn - quarter * quarters) * std::numbers::pi / 180.0;
    double const c = std::cos(rest);
    double const s = std::sin(rest);
    switch ((static_cast<int>(quarters) + 4) % 4) {
        case 0:
            return {c, s};
        case 1:
            return {-s, c};
        case 2:
            return {-c, -s};
        default:
            return {s, -c};
    }
}

/// @return whether the result is of use: a determinant past the range of floats makes it zeros
bool invert(Matrix const& matrix, Matrix& inverse) {
    bool const nonzero = ox::invertAffineTransform(matrix.data(), inverse.data());
    bool const zeros = inverse[0] == 0 && inverse[1] == 0 && inverse[3] == 0 && inverse[4] == 0;
    return nonzero && !zeros &&
           std::all_of(inverse.begin(), inverse.end(), [](float m) { return std::isfinite(m); });
}

}  // namespace

bool isInvertible(Matrix const& matrix) {
    Matrix inverse;
    Matrix inverse_of_inverse;
    return invert(matrix, inverse) && invert(inverse, inverse_of_inverse);
}

Matrix rotation(double degrees, ox::Size size) {
    auto const [c, s] = directionOf(degrees);
    double const x = (size.width - 1) / 2.0;
    double const y = (size.height - 1) / 2.0;
    // y runs downwards, so that the signs of the sines are exchanged.
    return {static_cast<float>(c),  static_cast<float>(s), static_cast<float>(x - c * x - s * y),
            static_cast<float>(-s), static_cast<float>(c), static_cast<float>(y + s * x - c * y)};
}

}  // namespace oxcv
