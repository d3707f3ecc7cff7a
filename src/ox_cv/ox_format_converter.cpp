// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_format_converter.h"

#include <algorithm>
#include <utility>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_format_converter.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_row_reader.h"
#include "ox_cv/ox_row_writer.h"

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

/// Rows of some planes of a frame, from the first ones on.
struct Rows {
    RowData planes;
    FrameLayout const& layout;

    /// Whether the rows follow one another in memory.
    bool follow() const {
        for (int i = 0; i < layout.planeCount; ++i) {
            FramePlane const& plane = layout.plane[i];
            if (planes[i] != nullptr && plane.stride != static_cast<std::int64_t>(plane.rowBytes)) {
                return false;
            }
        }
        return true;
    }

    void next() {
        for (int i = 0; i < layout.planeCount; ++i) {
            if (planes[i] != nullptr) {
                planes[i] += layout.plane[i].stride;
            }
        }
    }
};

/// Converts rows that don't depend on one another, as one long row if they follow one another.
void convertEach(ImplFormatConverter const& conversion, Rows src, Rows dst, std::int64_t count) {
    // Small enough that the bytes of so many pixels fit 32 bits by far.
    constexpr std::int64_t most_pixels = std::int64_t{1} << 27;
    std::int64_t width = conversion.width;
    if (width * count <= most_pixels && src.follow() && dst.follow()) {
        width *= count;
        count = 1;
    }
    for (std::int64_t row = 0; row < count; ++row, src.next(), dst.next()) {
        RowData const* const rows[]{&src.planes, nullptr};
        conversion.function(rows, dst.planes, static_cast<int>(width), &conversion);
    }
}

/// Converts luma and chroma of 4:2:0 separately.
void convertPlanes(ImplFormatConverter const& conversion, Rows src, Rows dst, std::int64_t height) {
    Rows luma{{}, dst.layout};
    std::swap(luma.planes[conversion.dst.y_plane], dst.planes[conversion.dst.y_plane]);
    Rows src_luma{{}, src.layout};
    src_luma.planes[conversion.src.y_plane] = src.planes[conversion.src.y_plane];
    convertEach(conversion, src_luma, luma, height);
    src.planes[conversion.src.y_plane] = nullptr;
    convertEach(conversion, src, dst, (height + 1) / 2);
}

/// Converts row by row; each row gets the row after it as well.
void convertInTurn(ImplFormatConverter const& conversion, RowReader& reader, RowWriter& writer) {
    RowReader below = reader;
    bool has_below = below.next();
    do {
        RowData const* const rows[]{&reader.rows, has_below ? &below.rows : nullptr};
        conversion.function(rows, writer.rows, conversion.width, &conversion);
        reader.next();
        has_below = has_below && below.next();
    } while (writer.next());
}

/// Converts `src` into `dst`, with the bytes that a conversion row by row gives.
/// @param conversion armed with the formats and the width of the frames, whose sizes are equal
void convertFrame(ImplFormatConverter const& conversion, Frame const& src, Frame& dst) {
    RowReader reader;
    RowWriter writer;
    reader.reuse(src);
    writer.reuse(dst);
    std::int64_t const height = src.height();
    if (conversion.function == nullptr || height <= 0) {
        return;
    }
    Rows const from{reader.rows, src.layout()};
    Rows const to{writer.rows, dst.layout()};
    if (conversion.joins_planes) {
        convertPlanes(conversion, from, to, height);
    } else if (conversion.joins_rows) {
        convertEach(conversion, from, to, height);
    } else {
        convertInTurn(conversion, reader, writer);
    }
}

}  // namespace

FormatConverter::FormatConverter() : _context(impl::makeState<ImplFormatConverter>(here)) {}

FormatConverter::~FormatConverter() = default;

void FormatConverter::reuse(Frame const& frame, FrameFormat dst_format) {
    checkArguments(frame.initialized(), "frame", dst_format);
    _arm(frame, dst_format);
}

void FormatConverter::reuse(IRowProducer& producer, FrameFormat dst_format) {
    checkArguments(producer.layout().planeCount != 0, "producer", dst_format);
    _arm(producer, dst_format);
}

template <class Source>
void FormatConverter::_arm(Source& source, FrameFormat dst_format) {
    FrameLayout const src_layout = source.layout();
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
        impl::requirePlanned(_window, src_layout, here);
        _dst_layout = FrameLayout(dst_format, src_layout.size, impl::defaultAlignment);
    } catch (...) {
        // `_context` is set for rows that the window doesn't have.
        _context->function = nullptr;
        throw;
    }
    _src_layout = &_window.layout();
    _initialized = _context->initialized;
    _frame = frameOf(source);
    _row = 0;
}

/// For a frame without rows. Disarms an earlier conversion, which would yield its rows otherwise.
void FormatConverter::_yieldNothing(FrameLayout const& src_layout) {
    _context->function = nullptr;
    _window.clear();
    _src_layout = &_window.layout();
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
    convertFrame(*_context, *_frame, dst);
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
