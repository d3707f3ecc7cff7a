// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Arithmetic of the two-axis area scaler: sums over cells in 16.16 fixed point.

#pragma once

#include <vector>

#include "rows/coordinates.h"
#include "rows/elements.h"

namespace ox::rows {

/// A source row of a cell.
struct CoveredRow {
    std::int32_t weight = 0;            ///< 16.16 part of the row that the cell covers
    std::uint8_t const* row = nullptr;  ///< null if it plays no part
};

/// The columns of a cell: [first, end) with fractions.
struct CellColumns {
    std::int64_t first;
    std::int64_t last;            ///< column of the end
    std::int32_t first_fraction;  ///< not covered, of column `first`
    std::int32_t last_fraction;   ///< covered, of column `last`
};

inline CellColumns cellColumns(std::int32_t step, std::int64_t i) {
    std::int64_t const start = i * step;
    std::int64_t const end = start + step;
    return {start >> coordinateBits, end >> coordinateBits,
            static_cast<std::int32_t>(start & coordinateMask),
            static_cast<std::int32_t>(end & coordinateMask)};
}

/// The last column that cell `i` reads.
inline std::int64_t lastOfCell(std::int32_t step, std::int64_t i) {
    CellColumns const columns = cellColumns(step, i);
    return std::max(columns.first, columns.last_fraction != 0 ? columns.last : columns.last - 1);
}

/// The cells of a frame, and the division by a cell's area as a multiplication.
class CellGrid {
  public:
    CellGrid(std::int32_t width, std::int32_t height)
        : _step_x(width),
          _area(static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height)),
          _reciprocal(~std::uint64_t{0} / _area) {}

    /// floor((sum << 32) / area). The cells are at least one sample wide and high, so that
    /// area >= 2^32 and the estimate, which errs by less than 1, is at most one too small.
    std::uint64_t average(std::uint32_t sum) const {
        std::uint64_t const estimate = (sum * _reciprocal) >> 32;
        std::uint64_t const rest = (std::uint64_t{sum} << 32) - estimate * _area;
        return rest >= _area ? estimate + 1 : estimate;
    }

    /// The columns of cell `i`.
    CellColumns columns(std::int64_t i) const { return cellColumns(_step_x, i); }

  private:
    std::int32_t _step_x;
    std::uint64_t _area;
    std::uint64_t _reciprocal;  ///< of the area, times 2^64
};

/// (sample x fraction) >> 16 in 32 bits: products of 16-bit samples are signed, those of 32-bit
/// samples unsigned, and both wrap, on purpose.
template <class Sample>
inline std::int64_t partOf(Sample sample, std::int32_t fraction) {
    std::uint32_t const product = std::uint32_t{sample} * static_cast<std::uint32_t>(fraction);
    if constexpr (sizeof(Sample) == 4) {
        return product >> coordinateBits;
    } else {
        return static_cast<std::int32_t>(product) >> coordinateBits;
    }
}

struct SumCells {
    using Function = void (*)(RowPlan const&, CellGrid const&, std::vector<CoveredRow> const&,
                              std::uint8_t* dst);

    template <class Sample, int Channels>
    static void row(RowPlan const& plan, CellGrid const& grid, std::vector<CoveredRow> const& rows,
                    std::uint8_t* dst) {
        walkRow<Sample, Channels>(plan, dst, [&](auto reader, std::int64_t i, int channel) {
            CellColumns const columns = grid.columns(i);
            // A fourth channel gets the value of the third, on purpose.
            int const c = Channels == 4 ? std::min(channel, 2) : channel;
            auto const sample = [=](std::uint8_t const* src, std::int64_t x) {
                return reader.template sample<Sample, Channels>(src, x, c);
            };
            std::uint32_t sum = 0;
            for (CoveredRow const& covered : rows) {
                if (covered.row != nullptr) {
                    sum += weighRow<Sample>(columns, covered, sample);
                }
            }
            return grid.average(sum);
        });
    }

  private:
    /// The weighted sum of a row's samples in the cell, of which 32 bits are kept.
    template <class Sample, class Reader>
    static std::uint32_t weighRow(CellColumns const& columns, CoveredRow const& covered,
                                  Reader sample) {
        std::int64_t sum = columns.first_fraction == 0
                               ? std::int64_t{sample(covered.row, columns.first)}
                               : partOf<Sample>(sample(covered.row, columns.first),
                                                coordinateOne - columns.first_fraction);
        if (columns.last_fraction != 0) {
            sum += partOf<Sample>(sample(covered.row, columns.last), columns.last_fraction);
        }
        for (std::int64_t x = columns.first + 1; x < columns.last; ++x) {
            sum += sample(covered.row, x);
        }
        return static_cast<std::uint32_t>((covered.weight * sum) >> coordinateBits);
    }
};

}  // namespace ox::rows
