// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "letterbox.h"

#include <algorithm>
#include <utility>

#include "failure.h"
#include "library_calls.h"
#include "parse.h"

namespace oxcv {

namespace {

/// The bars' samples in the order of a format.
BarColour inOrderOf(ox::FrameFormat format, BarColour bars) {
    switch (format) {
        case ox::FRAME_BGR24:
        case ox::FRAME_BGR_PLANAR:
            std::swap(bars[0], bars[2]);
            return bars;
        case ox::FRAME_RGB24:
        case ox::FRAME_RGB_PLANAR:
        case ox::FRAME_GRAY8:
            return bars;
        default:
            throw Failure("--fit: bars need gray or 8-bit red, green and blue, not " +
                          shortName(format));
    }
}

void fill(ox::Frame const& frame, BarColour const& samples) {
    for (int index = 0; index < frame.layout().planeCount; ++index) {
        ox::FramePlane const& plane = frame.layout().plane[index];
        for (std::int64_t y = 0; y < plane.height; ++y) {
            unsigned char* const row = frame.planeData(index) + y * plane.stride;
            for (std::uint64_t i = 0; i < plane.rowBytes; ++i) {
                row[i] = samples[static_cast<std::size_t>(index) + i % plane.channels];
            }
        }
    }
}

void copyInto(ox::Frame const& picture, ox::Frame const& frame, ox::Rect place) {
    for (int index = 0; index < frame.layout().planeCount; ++index) {
        ox::FramePlane const& from = picture.layout().plane[index];
        ox::FramePlane const& to = frame.layout().plane[index];
        for (std::int64_t y = 0; y < from.height; ++y) {
            unsigned char const* const row = picture.planeData(index) + y * from.stride;
            std::copy_n(row, from.rowBytes,
                        frame.planeData(index) + (place.y + y) * to.stride +
                            std::int64_t{place.x} * to.channels);
        }
    }
}

}  // namespace

ox::Frame const& Letterbox::surround(ox::Frame const& picture, ox::Size size, ox::Rect inner,
                                     BarColour const& bars) {
    BarColour const samples = inOrderOf(picture.format(), bars);
    if (_result.format() != picture.format() || _result.size() != size) {
        prepare(_result, picture.format(), size);
        fill(_result, samples);
    }
    copyInto(picture, _result, inner);
    return _result;
}

}  // namespace oxcv
