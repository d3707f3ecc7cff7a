#include "pipeline.h"

#include <string>

#include "failure.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_helpers.h"
#include "routes.h"

namespace oxcv {

namespace {

/// Property of a backend that holds its `ResizeMethod`.
constexpr int methodProperty = 1;

/// A new frame is cleared: some conversions never write the second sample of the last pair of
/// pixels in rows of odd width.
void prepare(ox::Frame& frame, ox::FrameFormat format, ox::Size size) {
    if (frame.format() != format || frame.size() != size) {
        frame.reuse(format, size, ox::DeviceContext(), 0);
        frame.setZero();
    }
}

/// The region to name for a whole frame. Without one, NV12 takes the quick way to BGR24, which
/// works in blocks of eight columns and two rows and leaves the rest unwritten; with the frame's
/// own rectangle it is converted in full.
ox::Rect wholeFrame(ox::Frame const& frame, ox::FrameFormat dst_format) {
    constexpr int blockColumns = 8;
    constexpr int blockRows = 2;
    bool const quick = frame.format() == ox::FRAME_NV12 && dst_format == ox::FRAME_BGR24;
    bool const whole_blocks = frame.width() % blockColumns == 0 && frame.height() % blockRows == 0;
    return quick && !whole_blocks ? ox::Rect{0, 0, frame.width(), frame.height()} : ox::emptyRoi();
}

/// Says what the library was asked for when it refuses.
template <class Call>
void attempt(std::string const& what, Call call) {
    try {
        call();
    } catch (ox::Exception const& refusal) {
        throw Failure(what + ": " + refusal.what());
    }
}

}  // namespace

ox::Frame Conversion::run(ox::Frame const& frame, ox::FrameFormat format) {
    if (_from != frame.format() || _to != format || _size != frame.size()) {
        _route = findRoute(frame.format(), format, frame.size(), _backend.converts);
        _frames.assign(_route.size(), ox::Frame());
        _from = frame.format();
        _to = format;
        _size = frame.size();
    }
    ox::Frame current = frame;
    for (std::size_t i = 0; i < _route.size(); ++i) {
        attempt(shortName(current.format()) + " to " + shortName(_route[i]), [&] {
            prepare(_frames[i], _route[i], current.size());
            _backend.operations->colorCvt(current, _frames[i], wholeFrame(current, _route[i]));
        });
        current = _frames[i];
    }
    return current;
}

Pipeline::Pipeline(Steps const& steps, Backend const& backend,
                   ox::FrameFormat (*stored_as)(ox::FrameFormat))
    : _steps(steps),
      _backend(backend),
      _stored_as(stored_as),
      _conversion(backend),
      _output_conversion(backend) {
    _backend.operations->setIntProperty(methodProperty, static_cast<int>(steps.method));
}

ox::Frame Pipeline::run(ox::Frame& frame) {
    ox::Frame current = frame;
    if (_steps.roi) {
        attempt("--roi", [&] { current = ox::getRegion(frame, *_steps.roi); });
    }
    if (_steps.size) {
        attempt("--size", [&] { current = resized(current); });
    }
    current = _conversion.run(current, _steps.format.value_or(current.format()));
    if (_steps.mul) {
        attempt("--mul", [&] { _backend.operations->mul(current, *_steps.mul, ox::emptyRoi()); });
    }
    if (_steps.add) {
        attempt("--add", [&] { _backend.operations->add(current, *_steps.add, ox::emptyRoi()); });
    }
    return _output_conversion.run(current, _stored_as(current.format()));
}

ox::Frame Pipeline::resized(ox::Frame const& frame) {
    prepare(_resized, frame.format(), resolveSize(*_steps.size, frame.size()));
    _backend.operations->resize(frame, _resized, ox::emptyRoi(), ox::emptyRoi());
    return _resized;
}

}  // namespace oxcv
