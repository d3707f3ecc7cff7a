// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Cursor over a source frame's rows.

#pragma once

#include <cstddef>
#include <cstdint>

#include "ox_cv/ox_row_producer.h"

namespace ox {

/// Holds bare addresses: the frame's pixels must outlive it. Can be read as a `RowData`.
struct OX_API RowReader {
    RowData rows{};             ///< addresses of the current row
    std::int64_t strides[4]{};  ///< bytes, per plane
    std::uint32_t masks[4]{};   ///< `rowMask` per plane
    std::int32_t row = 0;       ///< current frame row
    std::int32_t height = 0;    ///< of the frame

    /// Starts at row 0 of `frame`.
    /// @throws Exception `StatusInputNotInitialized`; the cursor is then as after `clear`
    void reuse(Frame const& frame);

    /// Moves on by a row; false behind the last one. There the addresses stand past the planes'
    /// ends and are not to be read.
    bool next();

    /// Forgets the frame, but for the addresses in `rows`.
    void clear();
};

static_assert(sizeof(RowReader) == 88 && offsetof(RowReader, rows) == 0 &&
                  offsetof(RowReader, strides) == 32 && offsetof(RowReader, masks) == 64 &&
                  offsetof(RowReader, row) == 80 && offsetof(RowReader, height) == 84,
              "fixed for the binary interface");

}  // namespace ox
