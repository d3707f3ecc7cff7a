// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Sources that the tests of RowWindow share.
#pragma once

#include <algorithm>

#include "ox_cv/ox_row_window.h"
#include "support/test_frame.h"

namespace ox::test {

// The first byte of a plane's row in the band.
inline int byteAt(RowWindow& window, int index, int plane = 0) {
    return *(*window.rowData(index))[plane];
}

// A frame whose plane p has the byte 100 p + row in its rows.
inline TestFrame rampFrame(FrameFormat format, Size size) {
    TestFrame frame(format, size);
    for (int plane = 0; plane < frame.layout().planeCount; ++plane) {
        for (int y = 0; y < frame.layout().plane[plane].height; ++y) {
            std::fill_n(frame.row(plane, y), frame.layout().plane[plane].rowBytes,
                        static_cast<unsigned char>(100 * plane + y));
        }
    }
    return frame;
}

}  // namespace ox::test
