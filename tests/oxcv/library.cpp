// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "library.h"

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_helpers.h"
#include "program.h"

namespace oxcv::test {

ox::Rect whole(ox::Frame const& frame) {
    return {0, 0, frame.width(), frame.height()};
}

ox::ICvBackend& Library::first() {
    return _vectors ? static_cast<ox::ICvBackend&>(_vector) : _pipeline;
}

template <class Call>
ox::Frame Library::inTurn(Call call) {
    if (_vectors) {
        try {
            return call(_vector);
        } catch (ox::Exception const&) {
            return call(_pipeline);
        }
    }
    return call(_pipeline);
}

ox::Frame Library::inFormat(ox::Frame const& frame, ox::FrameFormat format) {
    return inTurn([&](ox::ICvBackend& backend) {
        ox::Frame result = blankFrame(format, frame.size());
        backend.colorCvt(frame, result, whole(frame));
        return result;
    });
}

bool takesFloatsForRedFirst(ox::FrameFormat src, ox::FrameFormat dst) {
    auto const is_red_first = [](ox::FrameFormat format) {
        return format == ox::FRAME_RGB24 || format == ox::FRAME_RGB_PLANAR;
    };
    auto const is_float = [](ox::FrameFormat format) {
        return format == ox::FRAME_BGR_32F || format == ox::FRAME_BGR_32F_PLANAR;
    };
    return (is_red_first(src) && is_float(dst)) || (is_float(src) && is_red_first(dst));
}

ox::Frame Library::inFormatByAnyWay(ox::Frame const& frame, ox::FrameFormat format) {
    if (takesFloatsForRedFirst(frame.format(), format)) {
        return inFormat(inFormat(frame, ox::FRAME_BGR24), format);
    }
    try {
        return inFormat(frame, format);
    } catch (ox::Exception const&) {
        return inFormat(inFormat(frame, ox::FRAME_BGR24), format);
    }
}

ox::Frame Library::scaled(ox::Frame const& frame, ox::Size size, ox::ResizeMethod method) {
    return inTurn([&](ox::ICvBackend& backend) {
        ox::Frame result = blankFrame(frame.format(), size);
        backend.setIntProperty(ox::PropertyResizeMethod, static_cast<int>(method));
        backend.resize(frame, result, ox::emptyRoi(), ox::emptyRoi());
        return result;
    });
}

ox::Frame Library::warped(ox::Frame const& frame, float const (*matrix)[3], ox::ResizeMethod method,
                          bool invert) {
    ox::Frame result = blankFrame(frame.format(), frame.size());
    _vector.setIntProperty(ox::PropertyWarpMethod, static_cast<int>(method));
    _vector.warpAffine(frame, result, matrix, ox::emptyRoi(), invert);
    return result;
}

void Library::multiply(ox::Frame& frame, float factor) {
    first().mul(frame, factor, ox::emptyRoi());
}

void Library::add(ox::Frame& frame, float summand) {
    first().add(frame, summand, ox::emptyRoi());
}

}  // namespace oxcv::test
