// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/band.h"

#include <algorithm>

namespace model {

void Band::arm(Source source, int size) {
    bool const same = source.geometry() == _geometry && size == _size;
    if (!same && (size < 1 || size > source.geometry().height)) {
        refuse(OutOfRange, "Parameter 'window_size' is out of range.");
    }
    bool const keep_slots = same && _source && _source->stream;
    _geometry = source.geometry();
    _planes = planesOf(_geometry);
    _size = size;
    _source = source;
    _first = 0;
    _loaded_end = 0;
    _stream_row = 0;
    _shown.clear();
    if (source.stream && !keep_slots) {
        makeSlots();
    }
}

void Band::makeSlots() {
    _slots.clear();
    for (PlaneShape const& plane : _planes) {
        _slots.push_back(
            {std::vector<std::vector<std::uint8_t>>(static_cast<std::size_t>(_size),
                                                    std::vector<std::uint8_t>(plane.row_bytes, 0)),
             0});
    }
}

void Band::advanceTo(int row) {
    _first = std::max(_first, std::min(row, _geometry.height - _size));
}

SourceRow Band::at(int place) {
    if (place < 0 || place >= _size) {
        refuseAssertion("0 <= row_index_in_window && row_index_in_window < _window_size");
    }
    if (_source->frame) {
        return _source->frame->shown(_first + place);
    }
    load();
    SourceRow row;
    for (std::size_t p = 0; p < _planes.size(); ++p) {
        row[p] = _slots[p].rows[_shown[static_cast<std::size_t>(place)][p]];
    }
    return row;
}

void Band::load() {
    int const kept = std::max(_loaded_end - _first, 0);
    while (static_cast<int>(_shown.size()) > kept) {
        _shown.pop_front();
    }
    while (_taken < _first) {
        ++_taken;
        ++_stream_row;
    }
    for (int row = _first + kept; row < _first + _size; ++row) {
        take(row);
    }
    _loaded_end = _first + _size;
}

void Band::take(int row) {
    Row out;
    Shown shown{};
    for (std::size_t p = 0; p < _planes.size(); ++p) {
        Slots& slots = _slots[p];
        bool const half = _planes[p].rows < _geometry.height;
        shown[p] = slots.next;
        if (hasRow(_geometry, _planes[p], row)) {
            out[p] = slots.rows[slots.next];
        }
        if (!half || row % 2 == 1) {
            slots.next = (slots.next + 1) % slots.rows.size();
        }
    }
    _shown.push_back(shown);
    _source->stream->read(_stream_row, out);
    ++_stream_row;
    ++_taken;
}

}  // namespace model
