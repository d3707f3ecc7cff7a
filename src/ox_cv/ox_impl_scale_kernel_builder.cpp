// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_kernel_builder.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_kernel_builder"};

/// Phases that differ by less are the same.
constexpr double phaseTolerance = 0.001;

}  // namespace

template <class Weight>
void ScaleKernelBuilder<Weight>::reuse(int aperture) {
    if (aperture < 1) {
        here.fail(StatusOutOfRange, "Parameter 'aperture' is out of range.");
    }
    _inner_count = 0;
    _inner_capacity = innerCapacity;
    _border_count = 0;
    _border_capacity = aperture;
    _aperture = aperture;
    _phases.clear();
    auto const weights = static_cast<std::uint64_t>(aperture);
    _row_stride = roundUpBytes(weights * sizeof(Weight), defaultAlignment);
    try {
        _data.resize((weights + innerCapacity) * _row_stride, false);
    } catch (Exception const& cause) {
        here.fail(cause, "Failed to allocate kernel data due to: %s", cause.what());
    }
    reserveTable(_phases, innerCapacity, here);
}

template <class Weight>
int ScaleKernelBuilder<Weight>::findInnerKernel(float phase) const {
    auto const found = std::find_if(_phases.begin(), _phases.end(), [&](float other) {
        return double{std::fabs(other - phase)} < phaseTolerance;
    });
    return found == _phases.end() ? -1 : static_cast<int>(found - _phases.begin());
}

template <class Weight>
void ScaleKernelBuilder<Weight>::store(int index, Weight const* weights) {
    std::copy_n(weights, _aperture, reinterpret_cast<Weight*>(_data.data + offsetOf(index)));
}

template <class Weight>
int ScaleKernelBuilder<Weight>::addInnerKernel(Weight const* weights, float phase) {
    if (_inner_count >= _inner_capacity) {
        here.fail(StatusAssertionFailed,
                  "Failure in ScaleKernelBuilder::addInnerKernel(...), buffer has already filled");
    }
    int const index = _inner_count++;
    _phases.push_back(phase);
    store(index, weights);
    return index;
}

template <class Weight>
int ScaleKernelBuilder<Weight>::addBorderKernel(Weight const* weights) {
    if (_border_count >= _border_capacity) {
        here.fail(StatusAssertionFailed,
                  "Failure in ScaleKernelBuilder::addBorderKernel(...), buffer has already filled");
    }
    int const index = _inner_capacity + _border_count++;
    store(index, weights);
    return index;
}

template class ScaleKernelBuilder<signed char>;
template class ScaleKernelBuilder<short>;

}  // namespace ox::impl
