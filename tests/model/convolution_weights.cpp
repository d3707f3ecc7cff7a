// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <numeric>

#include "model/convolution.h"

namespace model {

namespace {

constexpr int null_pointer = 4;
constexpr int capacity_exceeded = 19;

constexpr std::size_t shared_rows = 16;
constexpr float integral_step = 0.0625F;

std::size_t asIndex(int value) {
    return static_cast<std::size_t>(value);
}

// The trapezoid rule over the part of a source pixel that lies under the filter's window.
class Integral {
  public:
    Integral(Filter& filter, float phase)
        : _filter(filter), _centre(std::fma(filter.aperture(), 0.5F, phase)) {}

    float over(float lower, float upper) const {
        float x = lower + integral_step;
        if (!(x < upper)) {
            return (at(upper) + at(lower)) * (upper - lower) * 0.5F;
        }
        float sum = at(lower) + at(x);
        float next = x + integral_step;
        while (upper > next) {
            sum += at(x) + at(next);
            x = next;
            next = x + integral_step;
        }
        sum *= 0.03125F;
        return std::fma((at(upper) + at(x)) * (upper - x), 0.5F, sum);
    }

  private:
    float at(float x) const { return _filter.value(x - _centre); }

    Filter& _filter;
    float _centre;
};

// The order in which weights are corrected: from the middle outwards, the middle twice where there
// is one, and up to the last weight.
std::vector<int> correctionOrder(int count) {
    int const middle = count / 2;
    std::vector<int> order;
    if (count % 2 == 1) {
        order = {middle};
        if (count == 1) {
            return order;
        }
        order.push_back(middle);
        for (int distance = 1; order.back() != count - 1; ++distance) {
            order.push_back(middle + distance);
            if (order.back() != count - 1) {
                order.push_back(middle - distance);
            }
        }
        return order;
    }
    for (int distance = 0; order.empty() || order.back() != count - 1; ++distance) {
        order.push_back(middle - 1 - distance);
        order.push_back(middle + distance);
    }
    return order;
}

// Where a tap outside the source falls if the source is reflected at both ends.
int reflected(int place, int src) {
    int const inside = (place < 0 ? -place - 1 : place) % (2 * src);
    return inside < src ? inside : 2 * src - 1 - inside;
}

void checkSizes(int src, int dst) {
    std::string const failure = "Failure in ScaleData::reuse(...), ";
    if (src < 1 || src > 8192) {
        refuse(OutOfRange, failure + "parameter 'src_size' is out of range.");
    }
    if (dst < 1 || dst > src) {
        refuse(OutOfRange, failure + "parameter 'dst_size' is out of range.");
    }
    if (src > 32 * dst) {
        refuse(OutOfRange, failure + "scale factor is out of range.");
    }
}

[[noreturn]] void refuseAperture() {
    refuse(capacity_exceeded,
           "Failure in _computeWeights(...): The kernel aperture is greater than "
           "MAX_FIXED_POINT_APERTURE");
}

[[noreturn]] void refuseFull(std::string const& operation) {
    refuse(AssertionFailed,
           "Failure in ScaleKernelBuilder::" + operation + "(...), buffer has already filled");
}

}  // namespace

float BoxFilter::value(float x) {
    float const edge = std::fma(_width, 0.5F, 0.001F);
    return -edge <= x && x <= edge ? 1.0F : 0.0F;
}

std::vector<int> const& AxisTaps::weights(Entry entry) const {
    auto const row = asIndex(entry.row);
    return row < shared_rows ? _inner[row].weights : _border[row - shared_rows];
}

void AxisTaps::make(Filter& filter, int src, int dst) {
    _entries.clear();
    checkSizes(src, dst);
    float const scale = static_cast<float>(src) / static_cast<float>(dst);
    filter.setScale(scale);
    float const aperture = filter.aperture();
    if (!(aperture <= static_cast<float>(unit()))) {
        refuseAperture();
    }
    float const capacity = std::ceil(aperture + 1.0F);
    if (capacity < 1.0F) {
        refuse(OutOfRange, "Parameter 'aperture' is out of range.");
    }
    _aperture = 0;
    _inner.clear();
    _border.clear();
    try {
        build({filter, src, dst, scale, aperture, static_cast<int>(capacity)});
    } catch (Failure const&) {
        _entries.clear();
        throw;
    }
}

// A position counts as one at the border by the row's capacity, not by its taps.
void AxisTaps::build(Axis const& axis) {
    int const period = axis.dst / std::gcd(axis.src, axis.dst);
    for (int i = 0; i < axis.dst; ++i) {
        float const pos =
            std::fma(static_cast<float>(i) + 0.5F, axis.scale, -(axis.aperture * 0.5F));
        float const floor = std::floor(pos);
        auto const start = static_cast<int>(floor);
        float const phase = pos - floor;
        if (start < 0 || start + axis.capacity > axis.src) {
            addBorder(axis, start, phase);
        } else if (period > 16) {
            addInner(axis, start, std::floor(phase * 16.0F) * 0.0625F);
        } else {
            addInner(axis, start, phase);
        }
    }
}

void AxisTaps::addInner(Axis const& axis, int start, float phase) {
    for (std::size_t row = 0; row < _inner.size(); ++row) {
        float const distance = std::fabs(_inner[row].phase - phase);
        if (static_cast<double>(distance) < 0.001) {
            _entries.push_back({start, static_cast<int>(row)});
            return;
        }
    }
    int count = 0;
    std::vector<int> const weights = weightsAt(axis, phase, count);
    if (_inner.size() == shared_rows) {
        refuseFull("addInnerKernel");
    }
    _entries.push_back({start, static_cast<int>(_inner.size())});
    _inner.push_back({phase, weights});
    _aperture = std::max(_aperture, count);
}

// Behind its own taps, a row keeps what the border row before it had there.
void AxisTaps::addBorder(Axis const& axis, int start, float phase) {
    int count = 0;
    std::vector<int> const weights = weightsAt(axis, phase, count);
    std::vector<int> border =
        _border.empty() ? std::vector<int>(asIndex(axis.capacity), 0) : _border.back();
    int const first = std::max(start + count > axis.src ? axis.src - count : start, 0);
    std::fill_n(border.begin(), count, 0);
    for (int k = 0; k < count; ++k) {
        int& folded = border.at(asIndex(reflected(start + k, axis.src) - first));
        folded = narrowed(folded + weights[asIndex(k)]);
    }
    if (_border.size() == asIndex(axis.capacity)) {
        refuseFull("addBorderKernel");
    }
    _entries.push_back({first, static_cast<int>(shared_rows + _border.size())});
    _border.push_back(border);
    _aperture = std::max(_aperture, count);
}

std::vector<int> AxisTaps::weightsAt(Axis const& axis, float phase, int& count) const {
    if (!(phase >= 0.0F && phase < 1.0F)) {
        refuse(OutOfRange, "Failure in _computeWeights(...): Parameter 'phase' is out of range.");
    }
    count = static_cast<int>(std::ceil(phase + axis.aperture));
    if (count > axis.capacity) {
        refuse(capacity_exceeded,
               "Failure in _computeWeights(...): Not enough capacity to fit the kernel.");
    }
    if (count > unit()) {
        refuseAperture();
    }
    std::vector<float> const integrals = integralsAt(axis, phase, count);
    float sum = 0.0F;
    for (float const integral : integrals) {
        sum += integral;
    }
    if (count < 1 || static_cast<double>(sum) < 0.001) {
        refuse(null_pointer, "Failure in computeWeights(...): Kernel has zero weight sum.");
    }
    float const factor = static_cast<float>(unit()) / std::fabs(sum);
    std::vector<int> weights(asIndex(axis.capacity), 0);
    std::transform(integrals.begin(), integrals.end(), weights.begin(),
                   [&](float integral) { return roundedWeight(factor * integral); });
    correctSum(weights, count);
    return weights;
}

std::vector<float> AxisTaps::integralsAt(Axis const& axis, float phase, int count) const {
    Integral const integral(axis.filter, phase);
    float const end = phase + axis.aperture;
    std::vector<float> integrals;
    for (int j = 0; j < count; ++j) {
        auto const left = static_cast<float>(j);
        integrals.push_back(integral.over(std::max(phase, left), std::min(left + 1.0F, end)));
    }
    return integrals;
}

// A single pass: a sum that is still wrong at its end stays so.
void AxisTaps::correctSum(std::vector<int>& weights, int count) const {
    int total = std::accumulate(weights.begin(), weights.begin() + count, 0);
    for (int const index : correctionOrder(count)) {
        if (total == unit()) {
            return;
        }
        int const change = total < unit() ? 1 : -1;
        weights[asIndex(index)] = narrowed(weights[asIndex(index)] + change);
        total += change;
    }
}

int AxisTaps::roundedWeight(float weight) const {
    if (!std::isfinite(weight)) {
        return 0;
    }
    // What doesn't fit into 32 bits is told by its low bits, which the remainder keeps.
    double const rest = std::fmod(static_cast<double>(std::round(weight)), 65536.0);
    return narrowed(static_cast<int>(rest));
}

int AxisTaps::narrowed(int weight) const {
    return _precision == 8 ? static_cast<int>(static_cast<std::int8_t>(weight & 0xFF))
                           : static_cast<int>(static_cast<std::int16_t>(weight & 0xFFFF));
}

}  // namespace model
