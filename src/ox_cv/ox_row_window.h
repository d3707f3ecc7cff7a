// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Random access to a band of consecutive rows of a frame or of a producer.

#pragma once

#include <cstdint>

#include "ox_core/ox_api.h"
#include "ox_core/ox_buffer.h"
#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_row_reader.h"

namespace ox {

/// The band slides down the source and stops at its bottom; rows outside the source never appear,
/// so borders are the owner's business.
///
/// Over a frame it holds addresses only. Over a producer it keeps a ring of row buffers per plane
/// and asks for each row once. Rows that the band jumps over are skipped with `next` and never
/// produced. So if the band jumps to an odd row of 4:2:0, its chroma is an older slot of the ring
/// (zeros at first). The source is not owned and must outlive the window.
///
/// The rows taken from producers are counted over all streams. A second `reuse` over a producer
/// skips no row below that count: it shows earlier rows in place of those that it should have
/// jumped to. So `renew` has to come before another picture over a producer.
class OX_API RowWindow {
  public:
    RowWindow() = default;
    RowWindow(RowWindow const&) = delete;
    RowWindow& operator=(RowWindow const&) = delete;
    ~RowWindow() = default;

    /// Starts at row 0 of a frame. Nothing is allocated if format, size and `window_size` are as
    /// before.
    /// @param window_size rows of the band, 1 to the frame's height
    /// @throws Exception, as the other `reuse`: `StatusInputNotInitialized` for a source without
    ///         planes, `StatusInvalidParameter` for a producer that has other planes than its
    ///         format, `StatusOutOfRange` for a bad `window_size`, all of which leave the window as
    ///         it was; `StatusCapacityExceeded`, which leaves it empty
    void reuse(Frame const& frame, int window_size);

    /// Starts at the row that a producer stands at. With geometry and `window_size` as before, the
    /// rings are kept as they are, contents included; `renew` before it empties them.
    void reuse(IRowProducer& producer, int window_size);

    /// Gives up everything but the count of producers' rows.
    void clear();

    /// As newly made, with a count of 0, but with the storage kept: a `reuse` of the last geometry
    /// then allocates nothing, and its rings hold zeros.
    void renew();

    /// True once a `reuse` has armed the window.
    bool initialized() const { return _rows != nullptr; }
    /// Source row at index 0 of the band.
    int firstRow() const { return _first_row; }
    /// Rows of the band; 0 before the first `reuse`.
    int windowSize() const { return _window_size; }
    /// Layout of the source.
    FrameLayout const& layout() const { return _layout; }

    /// The band's row of that index; loads what isn't loaded yet. Valid until the band moves.
    /// @throws Exception `StatusAssertionFailed` unless the index lies in the band; what the source
    ///         throws
    RowData* rowData(int row_index_in_window) {
        bool const is_inside = 0 <= row_index_in_window && row_index_in_window < _window_size;
        if (!is_inside || _loaded_end != _first_row + _window_size) {
            prepareRow(is_inside);
        }
        return _rows + row_index_in_window;
    }

    /// Moves the band down by a row unless it stands at the bottom; nothing is read yet.
    bool next() {
        if (std::int64_t{_first_row} + _window_size >= _layout.size.height) {
            return false;
        }
        ++_first_row;
        return true;
    }

    /// Moves the band down until it begins at `row` or stands at the bottom.
    void moveTo(int row) {
        while (_first_row < row && next()) {
        }
    }

  private:
    void prepareRow(bool is_inside);  // part of the interface, as `rowData` is inlined
    void _forgetSource();
    void _update();
    void _rotate(int kept);
    void _loadFromProducer(int kept);
    void _loadFromFrame(int kept);
    void _produceRow(int index);
    void _nextOfProducer();
    void _placeRows(int window_size, char const* what);
    void _placeRings(FrameLayout const& layout, int window_size);

    IRowProducer* _producer = nullptr;  ///< null if the source is a frame
    /// How often producers have been moved on. Only `renew` resets it, not `reuse` or `clear`: on
    /// purpose, a window that served a stream before doesn't skip rows below the old count.
    std::int32_t _producer_row = 0;
    RowReader _reader;
    FrameLayout _layout;
    std::int32_t _window_size = 0;
    RowData* _rows = nullptr;       ///< entry k is source row `_first_row` + k
    RowData* _rows_temp = nullptr;  ///< scratch of the same length
    std::int32_t _first_row = 0;
    std::int32_t _loaded_end = 0;      ///< one past the last row loaded into `_rows`
    Buffer _rows_buffer;               ///< `_rows`, then `_rows_temp`
    Buffer _plane_buffer[4];           ///< the rings, one per plane
    std::uint64_t _plane_stride[4]{};  ///< bytes between the slots of a ring
    std::uint32_t _ring_index[4]{};    ///< next slot of each ring
    std::uint32_t _row_mask[4]{};
};

}  // namespace ox
