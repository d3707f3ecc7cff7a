// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "conversion.h"

#include <string>

#include "library_calls.h"
#include "ox_cv/ox_cv_helpers.h"
#include "parse.h"
#include "routes.h"

namespace oxcv {

namespace {

/// The region to name for a whole frame. Without a region, NV12 takes the quick way to BGR24, which
/// works in blocks of eight columns and two rows and leaves the rest unwritten. With the frame's
/// own rectangle every pixel is converted.
ox::Rect wholeFrame(ox::Frame const& frame, ox::FrameFormat dst_format) {
    constexpr int blockColumns = 8;
    constexpr int blockRows = 2;
    bool const quick = frame.format() == ox::FRAME_NV12 && dst_format == ox::FRAME_BGR24;
    bool const whole_blocks = frame.width() % blockColumns == 0 && frame.height() % blockRows == 0;
    return quick && !whole_blocks ? ox::Rect{0, 0, frame.width(), frame.height()} : ox::emptyRoi();
}

}  // namespace

std::string conversionName(ox::FrameFormat src, ox::FrameFormat dst) {
    return shortName(src) + " to " + shortName(dst);
}

ox::Frame Conversion::run(ox::Frame const& frame, ox::FrameFormat format) {
    if (_from != frame.format() || _to != format || _size != frame.size()) {
        plan(frame.format(), format, frame.size());
    }
    ox::Frame current = frame;
    for (Leg& leg : _legs) {
        attempt(conversionName(current.format(), leg.format), [&] {
            prepare(leg.frame, leg.format, current.size());
            leg.operations->colorCvt(current, leg.frame, wholeFrame(current, leg.format));
        });
        current = leg.frame;
    }
    return current;
}

void Conversion::plan(ox::FrameFormat from, ox::FrameFormat to, ox::Size size) {
    _legs.clear();
    ox::FrameFormat format = from;
    for (ox::FrameFormat const next : findRoute(from, to, size, _backend.offer().converts)) {
        ox::ICvBackend& operations =
            _backend.forConversion(conversionName(format, next), format, next, size);
        _legs.push_back({next, &operations, {}});
        format = next;
    }
    _from = from;
    _to = to;
    _size = size;
}

}  // namespace oxcv
