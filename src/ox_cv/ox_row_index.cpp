// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_index.h"

#include "ox_core/ox_impl_format_facts.h"

namespace ox {

void RowIndex::reuse(FrameLayout const& layout) {
    *this = RowIndex();
    height = layout.size.height;
    planes = layout.planeCount;
    for (int i = 1; i < planes; ++i) {
        masks[i] = rowMask(height, layout.plane[i].height);
    }
}

bool RowIndex::next() {
    if (plane_row[0] >= height) {
        return false;
    }
    for (int i = 1; i < planes; ++i) {
        if (impl::movesOnAfter(plane_row[0], masks[i])) {
            ++plane_row[i];
        }
    }
    ++plane_row[0];
    return plane_row[0] < height;
}

}  // namespace ox
