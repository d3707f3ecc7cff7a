// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Counts rows per plane where a producer needs only numbers.

#pragma once

#include <cstddef>
#include <cstdint>

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame_layout.h"

namespace ox {

struct OX_API RowIndex {
    std::int32_t plane_row[4]{};  ///< row of each plane that belongs to the current frame row
    std::uint32_t masks[4]{};     ///< `rowMask` per plane; plane 0's stays 0
    std::int32_t height = 0;      ///< of the frame
    std::int32_t planes = 0;      ///< number of planes

    /// Starts at row 0.
    void reuse(FrameLayout const& layout);

    /// Moves on by a row; false behind the last one.
    bool next();
};

static_assert(sizeof(RowIndex) == 40 && offsetof(RowIndex, masks) == 16 &&
                  offsetof(RowIndex, height) == 32 && offsetof(RowIndex, planes) == 36,
              "fixed for the binary interface");

}  // namespace ox
