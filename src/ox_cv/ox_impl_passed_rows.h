// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows that a scaler passes on as they are.

#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "ox_core/ox_frame_layout.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::impl {

/// The bytes that a source row is sure to have. A caller's own producer may claim fewer than its
/// format and size need; the window's new ring then has zeros behind them.
/// @param claimed the source's plane
/// @param usual the same plane of `FrameLayout(format, size, ...)`
inline std::uint64_t heldRowBytes(FramePlane const& claimed, FramePlane const& usual) {
    return std::max(claimed.rowBytes, usual.rowBytes);
}

/// Copies source rows into destination rows of the same width. A caller's own producer may have
/// claimed that width for shorter rows; the missing bytes become zeros.
class PassedRows {
  public:
    void plan(FrameLayout const& src, FrameLayout const& dst) {
        // The layout of a single row: the bytes of all rows might be too many to count.
        FrameLayout const usual(src.format, {src.size.width, 1}, 1);
        _copied = dst;
        for (int i = 0; i < dst.planeCount; ++i) {
            std::uint64_t& bytes = _copied.plane[i].rowBytes;
            bytes = std::min(bytes, heldRowBytes(src.plane[i], usual.plane[i]));
            _zeros[i] = dst.plane[i].rowBytes - bytes;
        }
    }

    void copy(RowData const& src, RowData& dst) const {
        copyRowData(_copied, src, dst);
        for (int i = 0; i < _copied.planeCount; ++i) {
            if (_zeros[i] != 0 && dst[i] != nullptr) {
                std::memset(dst[i] + _copied.plane[i].rowBytes, 0, _zeros[i]);
            }
        }
    }

  private:
    FrameLayout _copied;        ///< the destination's, with the bytes that a source row has
    std::uint64_t _zeros[4]{};  ///< bytes of a destination row behind those
};

}  // namespace ox::impl
