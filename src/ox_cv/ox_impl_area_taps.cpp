#include "ox_cv/ox_impl_area_taps.h"

#include <algorithm>
#include <cstring>
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

/// A weight of less than one as blending takes it: of 2^16.
constexpr std::uint16_t blendWeight(std::uint16_t weight, int shift) {
    return static_cast<std::uint16_t>(weight << (16 - shift));
}

/// The elements of cell `i`.
template <class Direction>
AreaCut cutOf(AreaAxis const& area, AreaRow8 const& row, std::int64_t i) {
    return Direction::cut(area.full_weight, area.weights[std::min(i, row.last_entry)],
                          area.weights[std::min(i + 1, row.last_entry)]);
}

/// Calls add(tap, weight) for the elements of a cell, counted from its first one.
template <class Add>
void forEachTap(AreaCut const& cut, std::uint16_t full_weight, std::int64_t last_pixel, Add add) {
    std::int64_t const first = std::min(cut.first, last_pixel);
    auto const tapOf = [&](std::int64_t pixel) {
        return static_cast<std::size_t>(std::min(pixel, last_pixel) - first);
    };
    add(tapOf(cut.first), cut.first_weight);
    for (std::int64_t k = cut.first + 1; k < cut.last; ++k) {
        add(tapOf(k), full_weight);
    }
    if (cut.rest != 0) {
        add(tapOf(cut.last), cut.rest);
    }
}

/// Places the taps of all cells.
/// @return false where sums would leave a byte
bool placeTaps(AreaAxis const& area, AreaRow8 const& row, rows::TapAxis& axis) {
    for (std::int64_t i = 0; i < row.cells; ++i) {
        AreaCut const cut = cutOf<AreaDown>(area, row, i);
        if (cut.last < cut.first) {
            return false;
        }
        axis.starts.push_back({static_cast<std::uint16_t>(std::min(cut.first, row.last_pixel)),
                               static_cast<std::uint16_t>(i)});
        std::int64_t sum = 0;
        forEachTap(cut, area.full_weight, row.last_pixel,
                   [&](std::size_t tap, std::uint16_t weight) {
                       axis.taps = std::max(axis.taps, tap + 1);
                       sum += weight;
                   });
        if (!staysByte(sum, area.shift)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool describeAreaTaps(AreaAxis const& area, AreaRow8 const& row, rows::TapAxis& axis) {
    axis = {};
    axis.shift = area.shift;
    axis.starts.reserve(static_cast<std::size_t>(row.cells));
    if (row.cells > std::numeric_limits<std::uint16_t>::max() || !placeTaps(area, row, axis)) {
        return false;
    }
    axis.weights.assign(static_cast<std::size_t>(row.cells) * axis.taps, 0);
    bool are_words = true;
    for (std::int64_t i = 0; i < row.cells; ++i) {
        std::int16_t* const kernel = axis.kernel(static_cast<std::size_t>(i));
        forEachTap(cutOf<AreaDown>(area, row, i), area.full_weight, row.last_pixel,
                   [&](std::size_t tap, std::uint16_t weight) {
                       int const total = kernel[tap] + weight;
                       are_words = are_words && isWord(total);
                       kernel[tap] = static_cast<std::int16_t>(total);
                   });
    }
    return are_words;
}

bool describeAreaBlend(AreaAxis const& area, AreaRow8 const& row,
                       std::vector<rows::PixelPair>& pixels) {
    pixels.clear();
    pixels.reserve(static_cast<std::size_t>(row.cells));
    for (std::int64_t i = 0; i < row.cells; ++i) {
        AreaCut const cut = cutOf<AreaUp>(area, row, i);
        if (cut.first_weight + cut.rest != 1 << area.shift) {
            return false;
        }
        auto const left = static_cast<std::int32_t>(std::min(cut.first, row.last_pixel));
        auto const right = static_cast<std::int32_t>(std::min(cut.last, row.last_pixel));
        if (cut.first_weight == 0) {  // the weight of `right` is one
            pixels.push_back({right, right, 0});
        } else {
            pixels.push_back(
                {left, cut.rest != 0 ? right : left, blendWeight(cut.rest, area.shift)});
        }
    }
    return true;
}

void AreaRowTaps::reserve(std::int64_t rows, Place here) {
    _rows.clear();
    _weights.clear();
    reserveTable(_rows, rows, here);
    reserveTable(_weights, rows, here);
    resizeTable(_words, rows, here);
}

/// Rows without weight are left out.
void AreaRowTaps::add(unsigned char const* row, std::uint16_t weight) {
    if (weight != 0) {
        _rows.push_back(row);
        _weights.push_back(weight);
        _sum += weight;
    }
}

void AreaRowTaps::collect(SumRows::Cut const& cut) {
    _rows.clear();
    _weights.clear();
    _sum = 0;
    add(cut.at(0), cut.first_weight);
    for (std::int64_t k = 1; k < cut.middle_end; ++k) {
        add(cut.at(k), cut.full_weight);
    }
    if (cut.rest != 0 && cut.rest_row != nullptr) {
        add(cut.rest_row, cut.rest);
    }
}

bool AreaRowTaps::sum(SumRows::Cut const& cut, std::int64_t samples, unsigned char* dst) {
    rows::Routines const& routines = rows::routines();
    auto const bytes = static_cast<std::size_t>(samples);
    // Neither for short rows, nor for cells of more rows than there is room for.
    if (routines.taps.sum_rows == nullptr || bytes < routines.taps.least_row_bytes ||
        std::max<std::int64_t>(cut.middle_end, 1) + 1 > static_cast<std::int64_t>(_words.size())) {
        return false;
    }
    collect(cut);
    bool const is_one = _sum == 1 << cut.shift;
    if (is_one && _rows.size() == 1) {
        std::memmove(dst, _rows[0], bytes);  // a frame may be scaled onto itself
        return true;
    }
    if (is_one && _rows.size() == 2) {
        routines.blend.blend_rows(_rows[0], _rows[1], blendWeight(_weights[1], cut.shift), bytes,
                                  dst);
        return true;
    }
    if (_rows.empty() || !std::all_of(_weights.begin(), _weights.end(), isWord) ||
        !staysByte(_sum, cut.shift)) {
        return false;
    }
    std::copy(_weights.begin(), _weights.end(), _words.begin());
    routines.taps.sum_rows({_rows.data(), _words.data(), _rows.size(), cut.shift}, bytes, dst);
    return true;
}

}  // namespace ox::impl
