#include "ox_cv/ox_impl_area_taps.h"

#include <algorithm>
#include <limits>

#include "ox_cv/ox_impl_state.h"
#include "rows/rows_routines.h"

namespace ox::impl {

namespace {

constexpr bool isWord(std::int64_t weight) {
    return weight <= std::numeric_limits<std::int16_t>::max();
}

/// Whether sums of bytes with weights of that sum stay bytes.
constexpr bool staysByte(std::int64_t weight_sum, int shift) {
    constexpr std::int64_t largest = 255;
    return (largest * weight_sum) >> shift <= largest;
}

/// Weights of the elements of a cell, from its first one on.
void fillWeights(AreaCut const& cut, std::uint16_t full_weight,
                 std::vector<std::int64_t>& weights) {
    weights.assign(1, cut.first_weight);
    for (std::int64_t k = cut.first + 1; k < cut.last; ++k) {
        weights.push_back(full_weight);
    }
    if (cut.rest != 0) {
        auto const last = static_cast<std::size_t>(cut.last - cut.first);
        weights.resize(std::max(weights.size(), last + 1), 0);
        weights[last] += cut.rest;
    }
}

}  // namespace

bool describeAreaTaps(AreaAxis const& area, std::int64_t cells, rows::TapAxis& axis) {
    axis = {};
    axis.shift = area.shift;
    axis.kernels.resize(static_cast<std::size_t>(cells));
    axis.starts.reserve(static_cast<std::size_t>(cells));
    std::vector<std::int64_t> weights;
    for (std::int64_t i = 0; i < cells; ++i) {
        AreaCut const cut = AreaDown::cut(area.full_weight, area.weights[i], area.weights[i + 1]);
        if (cut.last < cut.first || cells > std::numeric_limits<std::uint16_t>::max()) {
            return false;
        }
        fillWeights(cut, area.full_weight, weights);
        std::int64_t sum = 0;
        for (std::int64_t const weight : weights) {
            if (!isWord(weight)) {
                return false;
            }
            sum += weight;
        }
        if (!staysByte(sum, area.shift)) {
            return false;
        }
        axis.starts.push_back(
            {static_cast<std::uint16_t>(cut.first), static_cast<std::uint16_t>(i)});
        axis.kernels[static_cast<std::size_t>(i)].assign(weights.begin(), weights.end());
        axis.taps = std::max(axis.taps, weights.size());
    }
    for (std::vector<std::int16_t>& kernel : axis.kernels) {
        kernel.resize(axis.taps, 0);
    }
    return true;
}

void AreaRowTaps::reserve(std::int64_t rows, char const* owner) {
    _rows.clear();
    _weights.clear();
    reserveTable(_rows, rows, owner);
    reserveTable(_weights, rows, owner);
}

void AreaRowTaps::add(unsigned char const* row, std::uint16_t weight) {
    _fits = _fits && isWord(weight) && _rows.size() < _rows.capacity();
    if (_fits) {
        _rows.push_back(row);
        _weights.push_back(static_cast<std::int16_t>(weight));
        _sum += weight;
    }
}

bool AreaRowTaps::sum(SumRows::Cut const& cut, std::int64_t samples, unsigned char* dst) {
    rows::Routines const& routines = rows::routines();
    if (routines.sum_rows == nullptr ||
        samples < static_cast<std::int64_t>(routines.least_row_bytes)) {
        return false;
    }
    _rows.clear();
    _weights.clear();
    _sum = 0;
    _fits = true;
    add(cut.at(0), cut.first_weight);
    for (std::int64_t k = 1; k < cut.middle_end; ++k) {
        add(cut.at(k), cut.full_weight);
    }
    if (cut.rest != 0 && cut.rest_row != nullptr) {
        add(cut.rest_row, cut.rest);
    }
    if (!_fits || !staysByte(_sum, cut.shift)) {
        return false;
    }
    routines.sum_rows({_rows.data(), _weights.data(), _rows.size(), cut.shift},
                      static_cast<std::size_t>(samples), dst);
    return true;
}

}  // namespace ox::impl
