// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/area/rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "rows/area/axis.h"
#include "rows/rows_routines.h"

namespace ox::rows {

namespace {

/// The loop that defines the bytes. It takes few columns at a time, so that sums stay in the cache.
template <class Sample>
void sumSamples(RowCut const& cut, std::int64_t samples, std::uint8_t* dst) {
    using Sum = Accumulator<Sample>;
    constexpr std::int64_t block = 64;
    for (std::int64_t first = 0; first < samples; first += block) {
        std::int64_t const count = std::min(block, samples - first);
        std::array<Sum, std::size_t{block}> sums{};
        cut.forEach([&](std::uint8_t const* row, Sum weight) {
            for (std::int64_t j = 0; j < count; ++j) {
                sums[static_cast<std::size_t>(j)] += loadSample<Sample>(row, first + j) * weight;
            }
        });
        for (std::int64_t j = 0; j < count; ++j) {
            storeSample<Sample>(dst, first + j, sums[static_cast<std::size_t>(j)] >> cut.shift);
        }
    }
}

}  // namespace

SumRowCut* chooseSumRowCut(Element element) {
    switch (element.bits) {
        case 8:
            return [](CutTaps& taps, RowCut const& cut, std::int64_t samples, std::uint8_t* dst) {
                taps.sumBytes(cut, samples, dst);
            };
        case 16:
            return [](CutTaps& /*taps*/, RowCut const& cut, std::int64_t samples,
                      std::uint8_t* dst) { sumSamples<std::uint16_t>(cut, samples, dst); };
        default:
            return [](CutTaps& /*taps*/, RowCut const& cut, std::int64_t samples,
                      std::uint8_t* dst) { sumSamples<std::uint32_t>(cut, samples, dst); };
    }
}

void CutTaps::reserve(std::int64_t rows) {
    auto const count = static_cast<std::size_t>(rows);
    _rows.reserve(count);
    _weights.reserve(count);
    _words.resize(count);
}

/// Sums a cut by a vector routine. Rows without weight are left out.
/// @return false if a weight isn't a word, a sum might leave a byte, or the cut has more rows than
///         were reserved
bool CutTaps::sumTaps(RowCut const& cut, std::size_t bytes, std::uint8_t* dst) {
    if (std::max<std::int64_t>(cut.middle_end, 1) + 1 > static_cast<std::int64_t>(_words.size())) {
        return false;
    }
    _rows.clear();
    _weights.clear();
    std::int64_t sum = 0;
    cut.forEach([&](std::uint8_t const* row, std::uint16_t weight) {
        if (weight != 0) {
            _rows.push_back(row);
            _weights.push_back(weight);
            sum += weight;
        }
    });
    bool const is_one = sum == 1 << cut.shift;
    if (is_one && _rows.size() == 1) {
        std::memmove(dst, _rows[0], bytes);  // a frame may be scaled onto itself
        return true;
    }
    if (is_one && _rows.size() == 2) {
        routines().blend.blend_rows(_rows[0], _rows[1], blendWeight(_weights[1], cut.shift), bytes,
                                    dst);
        return true;
    }
    if (!std::all_of(_weights.begin(), _weights.end(), isTapWeight) || !staysByte(sum, cut.shift)) {
        return false;
    }
    std::copy(_weights.begin(), _weights.end(), _words.begin());
    routines().taps.sum_rows({_rows.data(), _words.data(), _rows.size(), cut.shift}, bytes, dst);
    return true;
}

void CutTaps::sumBytes(RowCut const& cut, std::int64_t samples, std::uint8_t* dst) {
    if (!sumTaps(cut, static_cast<std::size_t>(samples), dst)) {
        sumSamples<std::uint8_t>(cut, samples, dst);
    }
}

}  // namespace ox::rows
