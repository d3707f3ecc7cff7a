// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames and texts that the tests of CvBackendBase share.
#pragma once

#include <memory>

#include "ox_cv/scaler_rows.h"

namespace ox::test {

constexpr char wrongDevice[] =
    "Assertion failed: src.deviceContext() == DeviceContext::cpuContext() && src.deviceContext() "
    "== dst.deviceContext()";

// A frame that claims to live on another device.
inline Frame deviceFrame(FrameFormat format, Size size) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(7, std::make_shared<int>(1)), 0);
    return frame;
}

// NV12 of one colour.
inline TestFrame flatNv12(Size size, int y, int u, int v, Placement placement = {3, Guard::AtEnd}) {
    TestFrame result(FRAME_NV12, size, placement);
    fill(result.frame(), static_cast<unsigned char>(y));
    Bytes pairs;
    for (int x = 0; x < (size.width + 1) / 2; ++x) {
        pairs.push_back(u);
        pairs.push_back(v);
    }
    fill(result.frame(), 1, Rows(static_cast<std::size_t>((size.height + 1) / 2), pairs));
    return result;
}

}  // namespace ox::test
