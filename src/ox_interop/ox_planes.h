// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the headers of this folder share. Each of them brings frames together with another library,
/// whose headers it includes; the library itself links none of them.
///
/// None of them copies pixels. A frame that `frameOf` puts on foreign memory doesn't keep that
/// memory alive: the caller does, as for `Frame::wrap`. All failures are thrown as `ox::Exception`.

#pragma once

#include <cstddef>
#include <cstdint>

#include "ox_core/ox_exception.h"
#include "ox_core/ox_frame.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace ox {
namespace interop {

/// How YUV is meant, for the fields `matrix` and `range` of a `TensorRecipe`. Frames don't say it:
/// their formats tell how samples lie.
struct ColourMeaning {
    TensorMatrix matrix;
    TensorRange range;
};

/// A foreign format that holds the same samples as a format.
template <class Foreign>
struct FormatPair {
    FrameFormat format;
    Foreign foreign;
    unsigned char order[3];  ///< the foreign plane that is plane 0, 1, 2 of the frame
};

/// The first pair of a format; null if there is none.
template <class Foreign, std::size_t count>
FormatPair<Foreign> const* findFormat(FormatPair<Foreign> const (&pairs)[count],
                                      FrameFormat format) {
    for (auto const& pair : pairs) {
        if (pair.format == format) {
            return &pair;
        }
    }
    return nullptr;
}

/// The first pair of a foreign format; null if there is none.
template <class Foreign, std::size_t count>
FormatPair<Foreign> const* findForeign(FormatPair<Foreign> const (&pairs)[count],
                                       Foreign const& foreign) {
    for (auto const& pair : pairs) {
        if (pair.foreign == foreign) {
            return &pair;
        }
    }
    return nullptr;
}

[[noreturn]] inline void refuse(Status status, char const* function, char const* text) {
    throw Exception(nullptr, status, function, "ox_interop", 0, "Failure in %s(...) : %s.",
                    function, text);
}

/// Bytes from a plane's first pixel to its last one.
inline std::size_t planeSpan(FramePlane const& plane) {
    return plane.height == 0 ? 0
                             : static_cast<std::size_t>(plane.height - 1) *
                                       static_cast<std::size_t>(plane.stride) +
                                   static_cast<std::size_t>(plane.rowBytes);
}

/// A frame on foreign planes.
/// @param addressOf, strideOf the start and the stride of a foreign plane, by its number
template <class Foreign, class AddressOf, class StrideOf>
Frame wrapPlanes(FormatPair<Foreign> const& pair, Size size, AddressOf const& addressOf,
                 StrideOf const& strideOf) {
    FrameLayout layout(pair.format, size, 1);
    unsigned char* planes[4]{};
    for (int i = 0; i < layout.planeCount; ++i) {
        planes[i] = static_cast<unsigned char*>(addressOf(pair.order[i]));
        layout.plane[i].stride = strideOf(pair.order[i]);
    }
    return Frame::wrap(layout, planes);
}

}  // namespace interop
}  // namespace ox
