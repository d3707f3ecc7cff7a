/// @file
/// Rows that a scaler passes on as they are.

#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "ox_core/ox_frame_layout.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::impl {

/// Bytes that a source row has at least. A producer of the caller's own may claim less than its
/// format and size ask for; its rows then go on with the zeros of a new ring.
/// @param claimed the source's plane
/// @param usual the same plane of `FrameLayout(format, size, ...)`
inline std::uint64_t heldRowBytes(FramePlane const& claimed, FramePlane const& usual) {
    return std::max(claimed.rowBytes, usual.rowBytes);
}

/// Copies source rows into destination rows of the same width. A producer of the caller's own may
/// have claimed that width for rows that are shorter: what they lack is zeros.
class PassedRows {
  public:
    void plan(FrameLayout const& src, FrameLayout const& dst) {
        // A row of this width: what all rows take together may be too much to be counted.
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
