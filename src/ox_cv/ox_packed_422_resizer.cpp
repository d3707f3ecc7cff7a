// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_packed_422_resizer.h"

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_cv_helpers.h"

namespace ox {

namespace {

[[noreturn]] void refuse(Status status, char const* name, char const* text) {
    impl::Place{"src/ox_cv/ox_packed_422_resizer"}.fail(
        {status, "resize"}, "Failure in Packed422Resizer::resize(...) : '%s' %s.", name, text);
}

void checkFrame(Frame const& frame, char const* name) {
    if (!frame.initialized() || frame.size().empty()) {
        refuse(StatusInvalidParameter, name, "has no pixels");
    }
    if (frame.deviceContext() != DeviceContext::cpuContext()) {
        refuse(StatusInvalidParameter, name, "isn't on the CPU");
    }
    if (frame.format() != FRAME_YUYV && frame.format() != FRAME_UYVY) {
        refuse(StatusUnsupportedFormat, name, "is neither FRAME_YUYV nor FRAME_UYVY");
    }
}

}  // namespace

void Packed422Resizer::_convert(Frame const& src, Frame& dst) {
    _converter.renew();
    _converter.reuse(src, dst.format());
    if (!_converter.produceAtOnce(dst)) {
        produceFrame(_converter, dst);
    }
}

void Packed422Resizer::resize(ICvBackend& backend, Frame const& src, Frame& dst) {
    checkFrame(src, "src");
    checkFrame(dst, "dst");
    if (src.format() != dst.format()) {
        refuse(StatusUnsupportedFormat, "dst", "hasn't the format of 'src'");
    }
    _source.reuse(FRAME_NV16, src.size(), DeviceContext(), 0);
    _scaled.reuse(FRAME_NV16, dst.size(), DeviceContext(), 0);
    _convert(src, _source);
    backend.resize(_source, _scaled, emptyRoi(), emptyRoi());
    _convert(_scaled, dst);
}

}  // namespace ox
