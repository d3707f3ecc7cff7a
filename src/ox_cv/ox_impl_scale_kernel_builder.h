// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The table of an axis's rows of weights.

#pragma once

#include <cstdint>
#include <vector>

#include "ox_core/ox_buffer.h"

namespace ox::impl {

/// Rows 0 to 15 are those of inner positions, shared by phase; from row 16 on there is a row per
/// border position. A row's index is its position in the table.
/// @tparam Weight `signed char` or `short`
template <class Weight>
class ScaleKernelBuilder {
  public:
    /// The phases of inner positions are at most this many.
    static constexpr int innerCapacity = 16;

    /// Makes an empty table with room for 16 inner and `aperture` border rows, of `aperture`
    /// weights each. The table doesn't move while it is filled.
    /// @throws Exception `StatusOutOfRange` for an `aperture` below 1; `StatusCapacityExceeded`
    void reuse(int aperture);

    /// The first inner row whose phase differs by less than 0.001; -1 if there is none.
    int findInnerKernel(float phase) const;

    /// Copies a row into the table.
    /// @return its index
    /// @throws Exception `StatusAssertionFailed` if the table is full, as the other one
    int addInnerKernel(Weight const* weights, float phase);
    int addBorderKernel(Weight const* weights);

    /// The row of an index. Valid until the next `reuse`.
    Weight const* row(int index) const {
        return reinterpret_cast<Weight const*>(_data.data + offsetOf(index));
    }
    /// Bytes between rows, a multiple of 64.
    std::uint64_t rowStride() const { return _row_stride; }
    /// One past the last row that may be asked for.
    int rowCount() const { return _inner_capacity + _border_count; }

  private:
    std::uint64_t offsetOf(int index) const {
        return static_cast<std::uint64_t>(index) * _row_stride;
    }
    void store(int index, Weight const* weights);

    Buffer _data;
    std::vector<float> _phases;  ///< of the inner rows
    std::uint64_t _row_stride = 0;
    std::int32_t _inner_count = 0;
    std::int32_t _inner_capacity = 0;
    std::int32_t _border_count = 0;
    std::int32_t _border_capacity = 0;
    std::int32_t _aperture = 0;  ///< weights in a row
};

extern template class ScaleKernelBuilder<signed char>;
extern template class ScaleKernelBuilder<short>;

}  // namespace ox::impl
