#include <algorithm>
#include <cmath>

#include "ox_cv/ox_cv_helpers.h"

namespace ox {

bool invertAffineTransform(float const* matrix, float* inverse) {
    // Copied, since the two may be the same memory.
    float const m0 = matrix[0];
    float const m1 = matrix[1];
    float const m3 = matrix[3];
    float const m4 = matrix[4];
    double const m2 = matrix[2];
    double const m5 = matrix[5];

    float const determinant = std::fma(m0, m4, -(m1 * m3));
    double const scale = determinant != 0.0F ? 1.0 / double{determinant} : 0.0;
    double const a11 = double{m4} * scale;
    double const a22 = double{m0} * scale;
    double const a12 = -double{m1} * scale;
    double const a21 = -double{m3} * scale;
    double const b1 = std::fma(-a11, m2, -(m5 * a12));
    double const b2 = std::fma(-a21, m2, -(m5 * a22));

    double const result[6] = {a11, a12, b1, a21, a22, b2};
    std::transform(result, result + 6, inverse,
                   [](double number) { return static_cast<float>(number); });
    return determinant != 0.0F;
}

}  // namespace ox
