// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "rows/taps/axis.h"

namespace ox::rows {

namespace {

/// A few columns at a time, whose sums stay in registers.
constexpr std::size_t blockBytes = 64;

void sumBlock(RowTaps const& taps, std::size_t first, std::size_t bytes, std::uint8_t* dst) {
    std::uint32_t sums[blockBytes]{};
    for (std::size_t k = 0; k < taps.count; ++k) {
        std::uint8_t const* const row = taps.rows[k] + first;
        auto const weight = static_cast<std::uint32_t>(std::int32_t{taps.weights[k]});
        for (std::size_t i = 0; i < bytes; ++i) {
            sums[i] += row[i] * weight;
        }
    }
    for (std::size_t i = 0; i < bytes; ++i) {
        // Negative sums are clamped to 0 anyhow, so it doesn't matter that the shift rounds down.
        std::int32_t const units = static_cast<std::int32_t>(sums[i]) >> taps.shift;
        dst[first + i] = static_cast<std::uint8_t>(std::clamp(units, 0, 255));
    }
}

}  // namespace

void sumPlainRows(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst) {
    for (std::size_t first = 0; first < bytes; first += blockBytes) {
        sumBlock(taps, first, std::min(blockBytes, bytes - first), dst);
    }
}

void takePlainTapRoutines(TapRoutines& routines) {
    routines.compile_taps = [](TapAxis const& /*axis*/, TapRow /*row*/, TapProgram& /*program*/) {
        return false;
    };
    routines.sum_rows = sumPlainRows;
}

}  // namespace ox::rows
