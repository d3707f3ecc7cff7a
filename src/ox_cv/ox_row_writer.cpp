// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_writer.h"

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"

namespace ox {

void RowWriter::clear() {
    RowWriter cleared;
    cleared.rows = rows;
    cleared.planes = planes;
    *this = cleared;
}

void RowWriter::reuse(Frame& frame) {
    clear();
    if (!frame.initialized()) {
        impl::Place{"src/ox_cv/ox_row_writer"}.fail(
            StatusInputNotInitialized,
            "Failure in RowWriter::RowWriter(...) : frame is not initialized.");
    }
    rows = planes = RowData{};
    FrameLayout const& layout = frame.layout();
    height = layout.size.height;
    for (int i = 0; i < layout.planeCount; ++i) {
        masks[i] = rowMask(height, layout.plane[i].height);
        strides[i] = layout.plane[i].stride;
        planes.plane[i] = frame.planeData(i);
        rows.plane[i] = height > 0 ? planes.plane[i] : nullptr;
    }
}

bool RowWriter::next() {
    if (row >= height) {
        rows = RowData{};
        return false;
    }
    // Planes that aren't there come last and have no addresses.
    for (int i = 0; i < 4 && planes.plane[i] != nullptr; ++i) {
        bool const moves = impl::movesOnAfter(row, masks[i]);
        planes.plane[i] += moves ? strides[i] : 0;
        rows.plane[i] = moves ? planes.plane[i] : nullptr;
    }
    ++row;
    return row < height;
}

}  // namespace ox
