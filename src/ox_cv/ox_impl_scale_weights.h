// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How a continuous filter becomes weights of fixed point.

#pragma once

#include <cstdint>

#include "ox_cv/ox_scale_kernel.h"

namespace ox::impl {

/// log2 of the sum of a filter's weights. A weight has one bit more, and a sign.
template <class Weight>
constexpr int unitShift = 8 * static_cast<int>(sizeof(Weight)) - 2;

/// The integral of the filter over [lower, upper] by the trapezoid rule in sixteenths of a pixel,
/// in single precision. The filter's window begins at `phase`.
/// @throws Exception `StatusNullPointer`
float _computeIntegral(IKernel* _p_kernel, float phase, float lower, float upper);

/// The weights of the source pixels under a window that begins `phase` behind the edge of the first
/// pixel. A weight is the filter's mean over its pixel, scaled so that the sum is `maxAperture`,
/// and rounded. Then weights are changed by 1, from the middle outwards, in a single pass, to
/// correct the sum.
/// @param p_weights, p_weight_buffer `weight_capacity` elements each; those past the taps become 0
/// @return how many taps there are
/// @throws Exception `StatusNullPointer`, also for a filter without weight; `StatusOutOfRange`;
///         `StatusCapacityExceeded` for more taps than fit
template <class Weight>
int _computeWeights(IKernel& kernel, float phase, Weight* p_weights, float* p_weight_buffer,
                    int weight_capacity);

/// Taps of which some lie outside the source.
struct BorderTaps {
    std::int32_t count;     ///< at most `maxAperture`
    std::int32_t start;     ///< source index of the first, any
    std::int32_t src_size;  ///< positive
};

/// Folds the taps outside the source back into it, by half-sample symmetry at both ends.
///
/// Only the first `taps.count` elements of `p_borderWieghts` are cleared before. What an earlier
/// row left in the elements behind stays and counts, on purpose.
/// @param p_borderWieghts `capacity` elements
/// @return the source index that the folded taps begin at, never negative
/// @throws Exception `StatusNullPointer`, `StatusOutOfRange`
template <class Weight>
std::int32_t _reflectWeights(Weight const* weights, BorderTaps taps, Weight* p_borderWieghts,
                             int capacity);

extern template int _computeWeights(IKernel&, float, signed char*, float*, int);
extern template int _computeWeights(IKernel&, float, short*, float*, int);
extern template std::int32_t _reflectWeights(signed char const*, BorderTaps, signed char*, int);
extern template std::int32_t _reflectWeights(short const*, BorderTaps, short*, int);

}  // namespace ox::impl
