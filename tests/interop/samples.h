// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where the samples of formats lie, written down once more, to be compared with what other
// libraries say of theirs.
#pragma once

#include <vector>

#include "ox_core/ox_frame.h"

namespace ox::test {

// Samples Y, U, V or R, G, B, or those there are.
struct Component {
    int plane;
    int offset;  // of the row's first sample, in bytes
    int step;    // to the next one
};

inline std::vector<Component> componentsOf(FrameFormat format) {
    switch (format) {
        case FRAME_GRAY8:
            return {{0, 0, 1}};
        case FRAME_C1_16U:
            return {{0, 0, 2}};
        case FRAME_GRAY_32F:
            return {{0, 0, 4}};
        case FRAME_RGB24:
        case FRAME_YUV444:
            return {{0, 0, 3}, {0, 1, 3}, {0, 2, 3}};
        case FRAME_BGR24:
            return {{0, 2, 3}, {0, 1, 3}, {0, 0, 3}};
        case FRAME_BGR_PLANAR:
            return {{2, 0, 1}, {1, 0, 1}, {0, 0, 1}};
        case FRAME_BGR_32F_PLANAR:
            return {{2, 0, 4}, {1, 0, 4}, {0, 0, 4}};
        case FRAME_RGB_PLANAR:
        case FRAME_I420:
        case FRAME_YUV444_PLANAR:
            return {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}};
        case FRAME_YV12:
        case FRAME_YV16:
            return {{0, 0, 1}, {2, 0, 1}, {1, 0, 1}};
        case FRAME_NV12:
        case FRAME_NV16:
            return {{0, 0, 1}, {1, 0, 2}, {1, 1, 2}};
        case FRAME_NV21:
            return {{0, 0, 1}, {1, 1, 2}, {1, 0, 2}};
        case FRAME_YUYV:
            return {{0, 0, 2}, {0, 1, 4}, {0, 3, 4}};
        case FRAME_UYVY:
            return {{0, 1, 2}, {0, 0, 4}, {0, 2, 4}};
        default:
            return {};
    }
}

inline unsigned char* firstSample(Frame const& frame, Component const& component) {
    return frame.planeData(component.plane) + component.offset;
}

}  // namespace ox::test
