// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_data.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_scale_weights.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_data"};

[[noreturn]] void refuse(char const* text) {
    here.fail({StatusOutOfRange, "reuse"}, "%s", text);
}

void checkExtents(int src_size, int dst_size, int most_samples, int most_reduction) {
    if (src_size < 1 || src_size > most_samples) {
        refuse("Failure in ScaleData::reuse(...), parameter 'src_size' is out of range.");
    }
    if (dst_size < 1 || dst_size > src_size) {
        refuse("Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.");
    }
    if (src_size > most_reduction * dst_size) {
        refuse("Failure in ScaleData::reuse(...), scale factor is out of range.");
    }
}

/// Weights that a row must have room for.
template <class Weight>
int capacityFor(float aperture) {
    if (!(aperture <= static_cast<float>(maxAperture<Weight>()))) {
        here.fail({StatusCapacityExceeded, "reuse"},
                  "Failure in _computeWeights(...): The kernel aperture is greater than "
                  "MAX_FIXED_POINT_APERTURE");
    }
    float const least = std::max(aperture, -1.0F);  // which leaves no room, as all below
    return static_cast<int>(std::ceil(least + 1.0F));
}

/// Where the taps of a destination index begin.
struct Position {
    int start;
    float phase;
};

Position positionOf(int index, float scale, float aperture) {
    float const half = aperture * 0.5F;
    float const position = std::fma(static_cast<float>(index) + 0.5F, scale, -half);
    float const whole = std::floor(position);
    return {static_cast<int>(whole), position - whole};
}

/// Rounds phases to sixteenths; for axes with more phases than there are inner rows.
float quantised(float phase) {
    constexpr float steps = 16.0F;
    return std::floor(phase * steps) * (1.0F / steps);
}

/// Scratch in which `reuse` computes a row of weights; all zero at first.
template <class Weight>
struct Scratch {
    Weight* weights;
    Weight* border;
    float* unnormalised;
    int capacity;

    Scratch(Buffer& buffer, int elements) : capacity(elements) {
        auto const count = static_cast<std::size_t>(elements);
        buffer.resize(count * (2 * sizeof(Weight) + sizeof(float)), false);
        buffer.setZero();
        // The widest elements first, so that all are aligned.
        unnormalised = reinterpret_cast<float*>(buffer.data);
        weights = static_cast<Weight*>(static_cast<void*>(unnormalised + count));
        border = weights + count;
    }
};

}  // namespace

template <class Weight>
void ScaleData<Weight>::clear() {
    _sources.clear();
    _src_size = 0;
    _dst_size = 0;
}

template <class Weight>
void ScaleData<Weight>::renew() {
    clear();
    _aperture = 0;
}

template <class Weight>
void ScaleData<Weight>::reuse(IKernel& kernel, int src_size, int dst_size) {
    clear();
    checkExtents(src_size, dst_size, mostSamples, mostReduction);
    try {
        passOnFailure("reuse", here, [&] { _build(kernel, src_size, dst_size); });
    } catch (...) {  // a filter of the caller's own may throw anything
        clear();
        throw;
    }
    _src_size = src_size;
    _dst_size = dst_size;
}

template <class Weight>
void ScaleData<Weight>::_build(IKernel& kernel, int src_size, int dst_size) {
    reserveTable(_sources, dst_size, here);
    float const scale = static_cast<float>(src_size) / static_cast<float>(dst_size);
    int const period = dst_size / std::gcd(src_size, dst_size);
    kernel.setScale(scale);
    float const aperture = kernel.aperture();
    int const capacity = capacityFor<Weight>(aperture);
    _kernels.reuse(capacity);
    _aperture = 0;
    Scratch<Weight> const scratch(_scratch, capacity);
    for (int i = 0; i < dst_size; ++i) {
        auto const [start, exact_phase] = positionOf(i, scale, aperture);
        // Compares the row's capacity, not its taps: the taps of some border positions lie inside.
        bool const border = start < 0 || start + capacity > src_size;
        bool const many_phases = period > ScaleKernelBuilder<Weight>::innerCapacity;
        float const phase = !border && many_phases ? quantised(exact_phase) : exact_phase;
        int index = border ? -1 : _kernels.findInnerKernel(phase);
        int first = start;
        if (index < 0) {
            int const count =
                _computeWeights(kernel, phase, scratch.weights, scratch.unnormalised, capacity);
            if (border) {
                first = _reflectWeights(scratch.weights, {count, start, src_size}, scratch.border,
                                        capacity);
                index = _kernels.addBorderKernel(scratch.border);
            } else {
                index = _kernels.addInnerKernel(scratch.weights, phase);
            }
            _aperture = std::max(_aperture, count);
        }
        _sources.push_back({static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(index)});
    }
}

template class ScaleData<signed char>;
template class ScaleData<short>;

}  // namespace ox::impl
