// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the tests of CvBackendSimd share.
#pragma once

#include <string>

#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/placed_image.h"

namespace ox {

// The one look at the scratch frames.
class CvBackendSimdProbe {
  public:
    static Frame const& colorFrame(CvBackendSimd const& backend) { return backend._color_frame; }
    static Frame const& resizeFrame(CvBackendSimd const& backend) { return backend._resize_frame; }
};

}  // namespace ox

namespace ox::test {

// Rows with odd gaps, up to the last byte of a page.
constexpr PlanePlacement gapped{0, 13, Guard::AtEnd};

inline std::string unsupported(char const* operation, FrameFormat format) {
    return std::string(operation) + ": Unsupported src format " + toString(format) + ".";
}

inline std::string unsupportedConversion(FrameFormat src, FrameFormat dst) {
    return std::string("colorCvt: Unsupported conversion ") + toString(src) + " -> " +
           toString(dst) + ".";
}

}  // namespace ox::test
