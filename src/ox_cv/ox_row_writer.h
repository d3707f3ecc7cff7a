// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Cursor over a destination frame's rows.

#pragma once

#include <cstddef>
#include <cstdint>

#include "ox_cv/ox_row_producer.h"

namespace ox {

/// Holds bare addresses: the frame's pixels must outlive it.
struct OX_API RowWriter {
    RowData rows{};             ///< the row to pass to `produce`; null where a plane gets no row
    RowData planes{};           ///< current row of each plane, never null for a plane in use
    std::int64_t strides[4]{};  ///< bytes, per plane
    std::uint32_t masks[4]{};   ///< `rowMask` per plane
    std::int32_t row = 0;       ///< current frame row
    std::int32_t height = 0;    ///< of the frame

    /// Starts at row 0 of `frame`, where each plane has a row (unless the frame has none).
    /// @throws Exception `StatusInputNotInitialized`; the cursor is then as after `clear`
    void reuse(Frame& frame);

    /// Moves on by a row; false behind the last one. The call after that makes all entries of
    /// `rows` null.
    bool next();

    /// Forgets the frame, but for the addresses in `rows` and `planes`.
    void clear();
};

static_assert(sizeof(RowWriter) == 120 && offsetof(RowWriter, rows) == 0 &&
                  offsetof(RowWriter, planes) == 32 && offsetof(RowWriter, strides) == 64 &&
                  offsetof(RowWriter, masks) == 96 && offsetof(RowWriter, row) == 112 &&
                  offsetof(RowWriter, height) == 116,
              "fixed for the binary interface");

}  // namespace ox
