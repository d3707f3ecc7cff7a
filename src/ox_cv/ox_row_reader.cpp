// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_reader.h"

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"

namespace ox {

void RowReader::clear() {
    RowData const kept = rows;
    *this = RowReader();
    rows = kept;
}

void RowReader::reuse(Frame const& frame) {
    clear();
    if (!frame.initialized()) {
        // The text names the writer on purpose: callers match it.
        impl::Place{"src/ox_cv/ox_row_reader"}.fail(
            StatusInputNotInitialized,
            "Failure in RowWriter::RowWriter(...) : frame is not initialized.");
    }
    FrameLayout const& layout = frame.layout();
    height = layout.size.height;
    for (int i = 0; i < layout.planeCount; ++i) {
        masks[i] = rowMask(height, layout.plane[i].height);
        strides[i] = layout.plane[i].stride;
        rows.plane[i] = frame.planeData(i);
    }
}

bool RowReader::next() {
    if (row >= height) {
        return false;
    }
    // Planes that aren't there come last and have no addresses.
    for (int i = 0; i < 4 && rows.plane[i] != nullptr; ++i) {
        rows.plane[i] += impl::movesOnAfter(row, masks[i]) ? strides[i] : 0;
    }
    ++row;
    return row < height;
}

}  // namespace ox
