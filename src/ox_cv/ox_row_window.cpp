// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_window.h"

#include <algorithm>
#include <limits>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_passed_rows.h"
#include "ox_cv/ox_impl_same_layouts.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_row_window"};

void checkWindowSize(int window_size, FrameLayout const& layout) {
    if (window_size < 1 || window_size > layout.size.height) {
        here.fail({StatusOutOfRange, "reuse"}, "Parameter 'window_size' is out of range.");
    }
}

/// Refuses a caller's own producer that lacks planes of its format.
void checkPlanes(FrameLayout const& layout) {
    int const least = std::max(impl::factsOf(layout.format).plane_count, 1);
    if (layout.planeCount < least || layout.planeCount > 4) {
        here.fail({StatusInvalidParameter, "reuse"},
                  "Row producer's planes aren't those of its format.");
    }
}

}  // namespace

void RowWindow::_forgetSource() {
    _producer = nullptr;
    _window_size = 0;
    _rows = nullptr;
    _rows_temp = nullptr;
    _first_row = 0;
    _loaded_end = 0;
    _layout.clear();
    _reader.clear();
}

void RowWindow::clear() {
    _forgetSource();
    _rows_buffer.clear();
    for (Buffer& ring : _plane_buffer) {
        ring.clear();
    }
}

/// Without a layout, the next `reuse` places rows and rings anew, in the storage that there is.
void RowWindow::renew() {
    _forgetSource();
    _producer_row = 0;
}

void RowWindow::_placeRows(int window_size, char const* what) {
    std::uint64_t const bytes = impl::roundUpBytes(
        static_cast<std::uint64_t>(window_size) * sizeof(RowData), impl::defaultAlignment);
    try {
        _rows_buffer.resize(2 * bytes, false);
    } catch (Exception const& cause) {
        clear();
        here.fail({cause, "reuse"}, "%s allocation failure: %s", what, cause.what());
    }
    _rows = reinterpret_cast<RowData*>(_rows_buffer.data);
    _rows_temp = reinterpret_cast<RowData*>(_rows_buffer.data + bytes);
}

void RowWindow::_placeRings(FrameLayout const& layout, int window_size) {
    try {
        // A producer writes as many bytes as its layout claims; readers read what the format needs.
        FrameLayout const usual(layout.format, layout.size, 0);
        for (int i = 0; i < layout.planeCount; ++i) {
            FramePlane const& plane = layout.plane[i];
            std::uint64_t const row_bytes =
                std::max(static_cast<std::uint64_t>(std::max<std::int64_t>(plane.stride, 0)),
                         impl::heldRowBytes(plane, usual.plane[i]));
            _ring_index[i] = 0;
            _row_mask[i] = rowMask(layout.size.height, plane.height);
            _plane_stride[i] = impl::roundUpBytes(row_bytes, impl::defaultAlignment);
            _plane_buffer[i].resize(
                impl::multiplyBytes(_plane_stride[i], static_cast<std::uint64_t>(window_size)),
                false);
            _plane_buffer[i].setZero();
        }
    } catch (Exception const& cause) {
        clear();
        here.fail({cause, "reuse"}, "Data buffer allocation failure: %s", cause.what());
    }
}

void RowWindow::reuse(Frame const& frame, int window_size) {
    if (!frame.initialized()) {
        here.fail(StatusInputNotInitialized, "Frame is not initialized.");
    }
    if (!impl::sameGeometry(frame.layout(), _layout) || window_size != _window_size) {
        checkWindowSize(window_size, frame.layout());
        _placeRows(window_size, "Buffer");
        _rows_buffer.setZero();
        _layout = frame.layout();
        _window_size = window_size;
    }
    _producer = nullptr;
    _first_row = 0;
    _loaded_end = 0;
    try {
        _reader.reuse(frame);
    } catch (Exception const& cause) {
        clear();
        here.fail(cause, "%s", cause.what());
    }
}

void RowWindow::reuse(IRowProducer& producer, int window_size) {
    FrameLayout const& layout = producer.layout();
    if (layout.planeCount == 0) {
        here.fail(StatusInputNotInitialized, "Row producer is not initialized.");
    }
    checkPlanes(layout);
    bool const keeps_rings =
        impl::sameGeometry(layout, _layout) && _producer != nullptr && window_size == _window_size;
    if (!keeps_rings) {
        checkWindowSize(window_size, layout);
        _placeRows(window_size, "Data buffer");
        _placeRings(layout, window_size);
        _layout = layout;
        _window_size = window_size;
        _reader.clear();
    }
    _producer = &producer;
    _first_row = 0;
    _loaded_end = 0;
}

/// The part of `rowData` for rows that aren't loaded, and for bad indices.
void RowWindow::prepareRow(bool is_inside) {
    here.require(is_inside, "0 <= row_index_in_window && row_index_in_window < _window_size",
                 "rowData");
    _update();
}

void RowWindow::_update() {
    OX_ASSERT(initialized());
    int const kept = std::max(_loaded_end - _first_row, 0);
    _rotate(kept);
    if (_producer != nullptr) {
        _loadFromProducer(kept);
    } else {
        _loadFromFrame(kept);
    }
    _loaded_end = _first_row + _window_size;
}

/// Moves the rows that stay in the band to its front; only addresses move, not pixels.
void RowWindow::_rotate(int kept) {
    int const dropped = _window_size - kept;
    if (kept <= 0 || dropped <= 0) {
        return;
    }
    std::copy(_rows, _rows + dropped, _rows_temp);
    std::copy(_rows + dropped, _rows + _window_size, _rows);
    std::copy(_rows_temp, _rows_temp + dropped, _rows + kept);
}

void RowWindow::_loadFromProducer(int kept) {
    while (_producer_row < _first_row) {
        _nextOfProducer();
    }
    for (int index = kept; index < _window_size; ++index) {
        _produceRow(index);
    }
}

/// A half-height plane is produced on its even frame row; the odd row after it shows the same slot.
void RowWindow::_produceRow(int index) {
    int const row = _first_row + index;
    RowData destination{};
    _rows[index] = RowData{};
    for (int i = 0; i < _layout.planeCount; ++i) {
        unsigned char* const slot = _plane_buffer[i].data + _ring_index[i] * _plane_stride[i];
        _rows[index][i] = slot;
        if (impl::hasRowAt(row, _row_mask[i])) {
            destination[i] = slot;
        }
        if (impl::movesOnAfter(row, _row_mask[i])) {
            ++_ring_index[i];
            if (_ring_index[i] >= static_cast<std::uint32_t>(_window_size)) {
                _ring_index[i] = 0;
            }
        }
    }
    _producer->produce(destination);
    _nextOfProducer();
}

void RowWindow::_nextOfProducer() {
    _producer->next();
    // The count runs on over all streams. At its largest value it stays, instead of wrapping.
    if (_producer_row < std::numeric_limits<std::int32_t>::max()) {
        ++_producer_row;
    }
}

void RowWindow::_loadFromFrame(int kept) {
    while (_reader.row < _first_row) {
        _reader.next();
    }
    for (int index = kept; index < _window_size; ++index) {
        _rows[index] = _reader.rows;
        _reader.next();
    }
}

}  // namespace ox
