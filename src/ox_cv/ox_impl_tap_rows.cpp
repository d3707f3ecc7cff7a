#include "ox_cv/ox_impl_tap_rows.h"

#include <algorithm>

#include "ox_cv/ox_impl_scale_weights.h"
#include "rows/rows_routines.h"

namespace ox::impl {

namespace {

/// A few columns at a time, whose sums stay in registers.
constexpr std::uint64_t blockBytes = 64;

void sumBlock(rows::RowTaps const& taps, std::uint64_t first, std::uint64_t bytes,
              unsigned char* dst) {
    std::uint32_t sums[blockBytes]{};
    for (std::size_t k = 0; k < taps.count; ++k) {
        unsigned char const* const row = taps.rows[k] + first;
        auto const weight = static_cast<std::uint32_t>(std::int32_t{taps.weights[k]});
        for (std::uint64_t i = 0; i < bytes; ++i) {
            sums[i] += row[i] * weight;
        }
    }
    for (std::uint64_t i = 0; i < bytes; ++i) {
        // What is below 0 is clamped in any case, so that the shift may round it down.
        std::int32_t const units = static_cast<std::int32_t>(sums[i]) >> taps.shift;
        dst[first + i] = static_cast<unsigned char>(std::clamp(units, 0, 255));
    }
}

void sumPlainly(rows::RowTaps const& taps, std::uint64_t bytes, unsigned char* dst) {
    for (std::uint64_t first = 0; first < bytes; first += blockBytes) {
        sumBlock(taps, first, std::min(blockBytes, bytes - first), dst);
    }
}

void sumWords(unsigned char const* const* rows, std::int16_t const* weights, int taps, int shift,
              std::uint64_t bytes, unsigned char* dst) {
    rows::RowTaps const row_taps{rows, weights, static_cast<std::size_t>(taps), shift};
    rows::Routines const& routines = rows::routines();
    if (routines.taps.sum_rows != nullptr && taps > 0 && bytes >= routines.taps.least_row_bytes) {
        routines.taps.sum_rows(row_taps, bytes, dst);
    } else {
        sumPlainly(row_taps, bytes, dst);
    }
}

}  // namespace

void sumRows(unsigned char const* const* rows, signed char const* weights, int taps,
             std::uint64_t bytes, unsigned char* dst) {
    std::int16_t words[1 << unitShift<signed char>];
    std::copy_n(weights, taps, words);
    sumWords(rows, words, taps, unitShift<signed char>, bytes, dst);
}

void sumRows(unsigned char const* const* rows, short const* weights, int taps, std::uint64_t bytes,
             unsigned char* dst) {
    sumWords(rows, weights, taps, unitShift<short>, bytes, dst);
}

}  // namespace ox::impl
