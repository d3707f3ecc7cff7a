#include "ox_cv/ox_format_converter.h"

#include <algorithm>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_format_converter.h"
#include "ox_cv/ox_impl_frame_conversion.h"
#include "ox_cv/ox_impl_state.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_format_converter"};

void checkArguments(bool initialized, char const* source, FrameFormat dst_format) {
    if (!initialized) {
        here.fail({StatusInvalidParameter, "reuse"}, "Parameter '%s' is not initialized.", source);
    }
    if (dst_format == FRAME_FORMAT_NONE) {
        here.fail({StatusUnsupportedFormat, "reuse"}, "Invalid value for parameter 'dst_format'.");
    }
}

Frame const* frameOf(Frame const& source) {
    return &source;
}

Frame const* frameOf(IRowProducer const& /*source*/) {
    return nullptr;
}

}  // namespace

FormatConverter::FormatConverter() : _context(impl::makeState<ImplFormatConverter>(here)) {}

FormatConverter::~FormatConverter() = default;

void FormatConverter::reuse(Frame const& frame, FrameFormat dst_format) {
    checkArguments(frame.initialized(), "frame", dst_format);
    _arm(frame, frame.layout(), dst_format);
}

void FormatConverter::reuse(IRowProducer& producer, FrameFormat dst_format) {
    checkArguments(producer.layout().planeCount != 0, "producer", dst_format);
    _arm(producer, producer.layout(), dst_format);
}

template <class Source>
void FormatConverter::_arm(Source& source, FrameLayout const& src_layout, FrameFormat dst_format) {
    _frame = nullptr;
    if (dst_format == src_layout.format) {
        _copier.reuse(source);
        if (!_copier.initialized()) {
            _yieldNothing(src_layout);
        }
        return;
    }
    _copier.clear();
    int window_size = 0;
    _context->reuse(src_layout.format, dst_format, src_layout.size.width, &window_size);
    try {
        _window.reuse(source, window_size);
        _dst_layout = FrameLayout(dst_format, src_layout.size, impl::defaultAlignment);
    } catch (...) {
        // `_context` is set for rows that the window doesn't have.
        _context->function = nullptr;
        throw;
    }
    _src_layout = &src_layout;
    _initialized = _context->initialized;
    _frame = frameOf(source);
    _row = 0;
}

/// For a frame without rows. Disarms an earlier conversion, which would yield its rows otherwise.
void FormatConverter::_yieldNothing(FrameLayout const& src_layout) {
    _context->function = nullptr;
    _window.clear();
    _src_layout = &src_layout;
    _dst_layout = src_layout;
}

void FormatConverter::renew() {
    _initialized = false;
    _frame = nullptr;
    _src_layout = nullptr;
    _dst_layout.clear();
    _row = 0;
    _window.renew();
    _copier.renew();
    *_context = ImplFormatConverter();
}

FrameLayout const& FormatConverter::layout() {
    return _copier.initialized() ? _copier.layout() : _dst_layout;
}

void FormatConverter::produce(RowData& row) {
    if (_copier.initialized()) {
        _copier.produce(row);
        return;
    }
    if (_src_layout == nullptr) {
        here.fail(StatusNotInitialized,
                  "FormatConverter is not initialized. Call FormatConverter::reuse(...) first.");
    }
    if (_context->function == nullptr) {
        return;
    }
    int const window_size = _window.windowSize();
    // On the frame's last row a window of two has that row first, and no second row.
    int const left = std::min(_window.layout().size.height - _row, window_size);
    if (left <= 0) {
        return;
    }
    for (int k = 0; k < 2; ++k) {
        _window_rows[k] = k < left ? _window.rowData(window_size - left + k) : nullptr;
    }
    _context->produce(_window_rows, row);
}

bool FormatConverter::produceAtOnce(Frame& dst) {
    bool const is_source = _frame != nullptr && _frame->format() == _window.layout().format &&
                           _frame->size() == _dst_layout.size;
    if (!is_source || _row != 0 || !dst.initialized() || dst.format() != _dst_layout.format ||
        dst.size() != _dst_layout.size) {
        return false;
    }
    impl::convertFrame(*_context, *_frame, dst);
    _row = _dst_layout.size.height;
    return true;
}

bool FormatConverter::next() {
    if (_copier.initialized()) {
        return _copier.next();
    }
    if (_src_layout == nullptr || _row >= _window.layout().size.height) {
        return false;
    }
    ++_row;
    _window.next();
    return true;
}

}  // namespace ox
