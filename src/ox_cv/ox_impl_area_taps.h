/// @file
/// Area scaling of bytes as sums of weighted taps, for vector code.

#pragma once

#include <vector>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_area_rows.h"
#include "rows/blend/axis.h"
#include "rows/taps/axis.h"

namespace ox::impl {

/// A row of bytes that vector code can do whole: elements behind its end are all its last one.
struct AreaRow8 {
    std::int64_t cells;       ///< destination elements
    std::int64_t last_pixel;  ///< of the source
    std::int64_t last_entry;  ///< of the table
};

/// The taps of a row that is scaled down.
/// @param axis receives them
/// @return false where they aren't words, or their sums would leave a byte, of which the plain loop
///         keeps the low bits
/// @throws std::bad_alloc
bool describeAreaTaps(AreaAxis const& area, AreaRow8 const& row, rows::TapAxis& axis);

/// The pixels of a row that is scaled up.
/// @return false where the two weights don't sum to one
/// @throws std::bad_alloc
bool describeAreaBlend(AreaAxis const& area, AreaRow8 const& row,
                       std::vector<rows::PixelPair>& pixels);

/// The rows of a destination row, and their weights.
class AreaRowTaps {
  public:
    /// @param rows that a destination row takes at most
    void reserve(std::int64_t rows, Place here);

    /// Sums bytes by vector code.
    /// @return false if it can't
    bool sum(SumRows::Cut const& cut, std::int64_t samples, unsigned char* dst);

  private:
    void collect(SumRows::Cut const& cut);
    void add(unsigned char const* row, std::uint16_t weight);

    std::vector<unsigned char const*> _rows;
    std::vector<std::uint16_t> _weights;
    std::vector<std::int16_t> _words;  ///< the weights, if they are such
    std::int64_t _sum = 0;             ///< of the weights
};

}  // namespace ox::impl
