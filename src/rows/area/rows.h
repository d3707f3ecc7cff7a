// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The rows of area scaling.

#pragma once

#include <cstdint>
#include <vector>

#include "rows/elements.h"

namespace ox::rows {

/// The source rows of a destination row.
struct RowCut {
    std::uint8_t const* const* rows;
    std::int64_t count;            ///< of `rows`
    std::uint8_t const* last_row;  ///< of the plane; stands in for missing rows
    std::int64_t middle_end;       ///< rows 1 to middle_end - 1 have the full weight
    std::uint16_t first_weight;    ///< of row 0
    std::uint16_t full_weight;
    std::uint16_t rest;            ///< of `rest_row`
    std::uint8_t const* rest_row;  ///< null: left out
    int shift;

    /// Calls add(row, weight) for each source row, from the top.
    template <class Add>
    void forEach(Add add) const {
        auto const at = [this](std::int64_t k) {
            return k < count && rows[k] != nullptr ? rows[k] : last_row;
        };
        add(at(0), first_weight);
        for (std::int64_t k = 1; k < middle_end; ++k) {
            add(at(k), full_weight);
        }
        if (rest != 0 && rest_row != nullptr) {
            add(rest_row, rest);
        }
    }
};

/// The weighted rows of a cut, and room for them.
class CutTaps;

/// Sums the rows of a cut, from the top. Of a sum, only the bits of a sample are kept.
using SumRowCut = void(CutTaps& taps, RowCut const& cut, std::int64_t samples, std::uint8_t* dst);

/// The routine for rows of such elements, whatever their number of channels.
SumRowCut* chooseSumRowCut(Element element);

class CutTaps {
  public:
    /// @param rows the most source rows that a destination row takes
    /// @throws std::bad_alloc
    void reserve(std::int64_t rows);

    /// As `SumRowCut`, of bytes.
    void sumBytes(RowCut const& cut, std::int64_t samples, std::uint8_t* dst);

  private:
    bool sumTaps(RowCut const& cut, std::size_t bytes, std::uint8_t* dst);

    std::vector<std::uint8_t const*> _rows;
    std::vector<std::uint16_t> _weights;
    std::vector<std::int16_t> _words;  ///< the weights, if all of them are words
};

}  // namespace ox::rows
