/// @file
/// Area scaling of bytes as sums of weighted taps, for vector code.

#pragma once

#include <vector>

#include "ox_cv/ox_impl_area_rows.h"
#include "rows/rows_taps.h"

namespace ox::impl {

/// The taps of a row that is scaled down to `cells` elements.
/// @param axis receives them
/// @return false where they aren't words, or their sums would leave a byte, of which the plain loop
///         keeps the low bits
/// @throws std::bad_alloc
bool describeAreaTaps(AreaAxis const& area, std::int64_t cells, rows::TapAxis& axis);

/// The rows of a destination row, and their weights.
class AreaRowTaps {
  public:
    /// @param rows that a destination row takes at most
    void reserve(std::int64_t rows, char const* file);

    /// Sums bytes by vector code.
    /// @return false if it can't
    bool sum(SumRows::Cut const& cut, std::int64_t samples, unsigned char* dst);

  private:
    void add(unsigned char const* row, std::uint16_t weight);

    std::vector<unsigned char const*> _rows;
    std::vector<std::int16_t> _weights;
    std::int64_t _sum = 0;  ///< of the weights
    bool _fits = true;      ///< all are words
};

}  // namespace ox::impl
