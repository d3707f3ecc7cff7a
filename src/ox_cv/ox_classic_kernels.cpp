// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_classic_kernels.h"

#include <algorithm>
#include <cmath>

namespace ox {

namespace {

/// sin(pi u) for u from 0 to 1, within 1e-15. The last bits of `std::sin` differ between systems,
/// and so would the weights.
double sineOfPi(double u) {
    constexpr double pi = 3.14159265358979323846;
    constexpr int terms = 11;
    double const x = pi * std::min(u, 1.0 - u);
    double const square = x * x;
    // The Taylor series, from its last term on.
    double sum = 0.0;
    for (int k = terms; k > 0; --k) {
        sum = (1.0 - sum) * square / (2.0 * k * (2.0 * k + 1.0));
    }
    return x * (1.0 - sum);
}

}  // namespace

StretchedKernel::~StretchedKernel() = default;

void StretchedKernel::setScale(float scale) {
    _scale = scale;
}

float StretchedKernel::value(float x) {
    double const t = std::fabs(double{x}) / double{_scale};
    return t < double{_radius} ? static_cast<float>(shape(t)) : 0.0F;
}

float StretchedKernel::aperture() {
    return 2.0F * _radius * _scale;
}

TriangleKernel::~TriangleKernel() = default;

double TriangleKernel::shape(double t) const {
    return 1.0 - t;
}

CubicKernel::~CubicKernel() = default;

double CubicKernel::shape(double t) const {
    double const b = _b;
    double const c = _c;
    if (t < 1.0) {
        return ((12.0 - 9.0 * b - 6.0 * c) * t * t * t +  //
                (-18.0 + 12.0 * b + 6.0 * c) * t * t +    //
                (6.0 - 2.0 * b)) /
               6.0;
    }
    return ((-b - 6.0 * c) * t * t * t +    //
            (6.0 * b + 30.0 * c) * t * t +  //
            (-12.0 * b - 48.0 * c) * t +    //
            (8.0 * b + 24.0 * c)) /
           6.0;
}

MitchellNetravaliKernel::MitchellNetravaliKernel() : CubicKernel(1.0 / 3.0, 1.0 / 3.0) {}

MitchellNetravaliKernel::~MitchellNetravaliKernel() = default;

CatmullRomKernel::CatmullRomKernel() : CubicKernel(0.0, 0.5) {}

CatmullRomKernel::~CatmullRomKernel() = default;

Lanczos3Kernel::~Lanczos3Kernel() = default;

/// With s = sin(pi t/3), sin(pi t) is 3 s - 4 s^3.
double Lanczos3Kernel::shape(double t) const {
    constexpr double square_of_pi = 9.86960440108935861883;
    constexpr double centre = 1e-6;  // the filter is 1 there, to the last bit of a float
    if (t < centre) {
        return 1.0;
    }
    double const s = sineOfPi(t / 3.0);
    return 3.0 * (3.0 * s - 4.0 * s * s * s) * s / (square_of_pi * t * t);
}

}  // namespace ox
