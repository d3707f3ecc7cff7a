// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_weights.h"

#include <algorithm>
#include <cmath>

#include "ox_core/ox_impl_place.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_data"};

/// Steps of the trapezoid rule, in pixels.
constexpr float integrationStep = 0.0625F;

/// A filter whose weights sum to less has no weight.
constexpr double leastSum = 0.001;

constexpr std::int32_t mostCapacity = 1073741823;

[[noreturn]] void refuse(Failure const& failure, char const* text) {
    here.fail(failure, "%s", text);
}

[[noreturn]] void refuseWeights(Status status, char const* text) {
    refuse({status, "_computeWeights"}, text);
}

/// `value` modulo 2^bits. Numbers of 2^63 and more are multiples of 2^bits, so they give 0, as do
/// NaN and infinity.
template <class Weight>
Weight narrow(float value) {
    constexpr float limit = 9223372036854775808.0F;
    return std::fabs(value) < limit ? static_cast<Weight>(static_cast<std::int64_t>(value))
                                    : Weight{0};
}

/// The number of taps of a window that ends at position `end`; 0 for positions up to 0 and NaN.
/// @param capacity room for taps
template <class Weight>
int countTaps(float end, int capacity) {
    float const taps = std::ceil(end);
    if (taps > static_cast<float>(capacity)) {
        refuseWeights(StatusCapacityExceeded,
                      "Failure in _computeWeights(...): Not enough capacity to fit the kernel.");
    }
    if (taps > static_cast<float>(maxAperture<Weight>())) {
        refuseWeights(StatusCapacityExceeded,
                      "Failure in _computeWeights(...): The kernel aperture is greater than "
                      "MAX_FIXED_POINT_APERTURE");
    }
    return taps >= 1.0F ? static_cast<int>(taps) : 0;
}

void checkBuffers(void const* p_weights, void const* p_weight_buffer, int weight_capacity) {
    if (p_weights == nullptr) {
        refuseWeights(StatusNullPointer,
                      "Failure in _computeWeights(...): Parameter 'p_weights' is null.");
    }
    if (p_weight_buffer == nullptr) {
        refuseWeights(StatusNullPointer,
                      "Failure in _computeWeights(...): Parameter 'p_weight_buffer' is null.");
    }
    if (weight_capacity < 1 || weight_capacity > mostCapacity) {
        refuseWeights(StatusOutOfRange,
                      "Failure in _computeWeights(...): Parameter 'weight_capacity' is out of "
                      "range.");
    }
}

[[noreturn]] void refuseZeroSum() {
    refuseWeights(StatusNullPointer, "Failure in computeWeights(...): Kernel has zero weight sum.");
}

/// Changes weights by 1, from the middle outwards, until the sum is `unit`. Callers depend on the
/// order: with an odd count, the middle comes twice and index 0 never. There is a single pass.
template <class Weight>
void forceSum(Weight* weights, int count, int unit) {
    int total = 0;
    for (int j = 0; j < count; ++j) {
        total += weights[j];
    }
    int const correction = total < unit ? 1 : -1;
    int const middle = count / 2;
    bool const odd = count % 2 != 0;
    // Each round changes an index on either side. With an odd count, both are the middle at first.
    for (int round = 0; total != unit; ++round) {
        int const first = odd ? middle + round : middle - 1 - round;
        int const second = odd ? middle - round : middle + round;
        for (int const index : {first, second}) {
            if (total != unit) {
                weights[index] = static_cast<Weight>(weights[index] + correction);
                total += correction;
            }
            if (index == count - 1) {
                return;
            }
        }
    }
}

}  // namespace

float _computeIntegral(IKernel* _p_kernel, float phase, float lower, float upper) {
    if (_p_kernel == nullptr) {
        refuse(StatusNullPointer, "Parameter '_p_kernel' is null.");
    }
    float const centre = std::fma(_p_kernel->aperture(), 0.5F, phase);
    auto const f = [&](float x) { return _p_kernel->value(x - centre); };
    float x1 = lower + integrationStep;
    if (!(x1 < upper)) {
        return (f(upper) + f(lower)) * (upper - lower) * 0.5F;
    }
    float f1 = f(x1);
    float sum = f(lower) + f1;
    float x2 = x1 + integrationStep;
    while (upper > x2) {
        float const f2 = f(x2);
        sum += f1 + f2;
        x1 = x2;
        f1 = f2;
        x2 = x1 + integrationStep;
    }
    sum *= integrationStep / 2;
    return std::fma((f(upper) + f1) * (upper - x1), 0.5F, sum);
}

template <class Weight>
int _computeWeights(IKernel& kernel, float phase, Weight* p_weights, float* p_weight_buffer,
                    int weight_capacity) {
    float const end = phase + kernel.aperture();
    checkBuffers(p_weights, p_weight_buffer, weight_capacity);
    if (!(phase >= 0.0F && phase < 1.0F)) {
        refuseWeights(StatusOutOfRange,
                      "Failure in _computeWeights(...): Parameter 'phase' is out of range.");
    }
    int const count = countTaps<Weight>(end, weight_capacity);
    std::fill_n(p_weights, weight_capacity, Weight{0});
    std::fill_n(p_weight_buffer, weight_capacity, 0.0F);
    if (count < 1) {
        refuseZeroSum();
    }
    float sum = 0.0F;
    for (int j = 0; j < count; ++j) {
        auto const left = static_cast<float>(j);
        p_weight_buffer[j] =
            _computeIntegral(&kernel, phase, std::max(phase, left), std::min(left + 1.0F, end));
        sum += p_weight_buffer[j];
    }
    if (double{sum} < leastSum) {
        refuseZeroSum();
    }
    int const unit = maxAperture<Weight>();
    float const factor = static_cast<float>(unit) / std::fabs(sum);
    for (int j = 0; j < count; ++j) {
        float const product = factor * p_weight_buffer[j];
        p_weights[j] = narrow<Weight>(std::round(product));
    }
    forceSum(p_weights, count, unit);
    return count;
}

template <class Weight>
std::int32_t _reflectWeights(Weight const* weights, BorderTaps taps, Weight* p_borderWieghts,
                             int capacity) {
    if (p_borderWieghts == nullptr) {
        refuse(StatusNullPointer,
               "Failure in _reflectWeights(...) : Parameter 'p_borderWieghts' is null.");
    }
    if (taps.count > maxAperture<Weight>()) {
        refuse(StatusOutOfRange,
               "Failure in _reflectWeights(...) : Parameter 'aperture' is out of range.");
    }
    bool const passes_end = std::int64_t{taps.start} + taps.count > taps.src_size;
    std::int32_t const start =
        std::max(passes_end ? taps.src_size - taps.count : taps.start, std::int32_t{0});
    std::fill_n(p_borderWieghts, std::max(taps.count, std::int32_t{0}), Weight{0});
    std::int64_t const period = 2 * std::int64_t{taps.src_size};
    for (std::int32_t k = 0; k < taps.count; ++k) {
        std::int64_t const tap = std::int64_t{taps.start} + k;
        std::int64_t const place = (tap < 0 ? -tap - 1 : tap) % period;
        std::int64_t const index = std::min(place, period - 1 - place) - start;
        // A filter that changes its width while it is asked might leave the row.
        if (0 <= index && index < capacity) {
            p_borderWieghts[index] = static_cast<Weight>(p_borderWieghts[index] + weights[k]);
        }
    }
    return start;
}

template int _computeWeights(IKernel&, float, signed char*, float*, int);
template int _computeWeights(IKernel&, float, short*, float*, int);
template std::int32_t _reflectWeights(signed char const*, BorderTaps, signed char*, int);
template std::int32_t _reflectWeights(short const*, BorderTaps, short*, int);

}  // namespace ox::impl
