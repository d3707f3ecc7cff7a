// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scale_kernel.h"

#include <cmath>

#include "ox_cv/ox_impl_scale_weights.h"

namespace ox {

IKernel::~IKernel() = default;

BoxKernel::~BoxKernel() = default;

void BoxKernel::setScale(float scale) {
    _width = scale;
    _aperture = scale;
}

float BoxKernel::value(float x) {
    constexpr float margin = 0.001F;
    float const last = std::fma(_width, 0.5F, margin);
    float const first = std::fma(-_width, 0.5F, -margin);
    return first <= x && x <= last ? 1.0F : 0.0F;
}

float BoxKernel::aperture() {
    return _aperture;
}

namespace impl {

template <class Weight>
int maxAperture() {
    return 1 << unitShift<Weight>;
}

template OX_API int maxAperture<signed char>();
template OX_API int maxAperture<short>();

}  // namespace impl

}  // namespace ox
