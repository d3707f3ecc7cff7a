#include "ox_cv/ox_impl_scale_conv_x.h"

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_conv_x"};

/// Fewer formats than the other scalers take.
constexpr bool takesFormat(FrameFormat format) {
    return isScalable(format) && format != FRAME_BGR_PLANAR && factsOf(format).pixel_group == 1;
}

}  // namespace

template <class Weight>
ScaleX<Weight>::ScaleX() = default;

template <class Weight>
ScaleX<Weight>::~ScaleX() = default;

template <class Weight>
void ScaleX<Weight>::reuse(IKernel& kernel, Frame const& src_frame, int dst_width) {
    arm(kernel, src_frame, src_frame.layout(), dst_width);
}

template <class Weight>
void ScaleX<Weight>::reuse(IKernel& kernel, IRowProducer& src_producer, int dst_width) {
    arm(kernel, src_producer, src_producer.layout(), dst_width);
}

template <class Weight>
template <class Source>
void ScaleX<Weight>::arm(IKernel& kernel, Source& source, FrameLayout const& src_layout,
                         int dst_width) {
    prepareTables(_window, [&] {
        _reuseScaleData(kernel, src_layout, dst_width);
        planColumns(src_layout);
    });
    armWindow(_window, source, 1, here);
}

template <class Weight>
void ScaleX<Weight>::_reuseScaleData(IKernel& kernel, FrameLayout const& src_layout,
                                     int dst_width) {
    if (_window.initialized() && _kernel == &kernel && _format == src_layout.format &&
        _dst_layout.size.width == dst_width) {
        return;
    }
    _kernel = &kernel;
    _format = src_layout.format;
    for (auto& columns : _columns) {
        columns.clear();
    }
    _dst_layout =
        FrameLayout(src_layout.format, {dst_width, src_layout.size.height}, defaultAlignment);
    if (src_layout.planeCount == 0) {
        here.fail(StatusNotInitialized,
                  "Failure in ScaleX::reuse(...) : source frame is not initialized.");
    }
    passOnFailure("_reuseScaleData", here, [&] {
        // A plane that the format doesn't have is refused: it has no width to be scaled to.
        for (int i = 0; i < src_layout.planeCount; ++i) {
            _scale_data[i].reuse(kernel, src_layout.plane[i].width, _dst_layout.plane[i].width);
        }
    });
}

/// The loops depend on the source's own width too, which the weights may not know of.
template <class Weight>
void ScaleX<Weight>::planColumns(FrameLayout const& src_layout) {
    for (int i = 0; i < src_layout.planeCount; ++i) {
        std::uint64_t const row_bytes = src_layout.plane[i].rowBytes;
        if (!_columns[i] || _columns[i].rowBytes() != row_bytes) {
            _columns[i].plan(_scale_data[i], scaleElement(_format, i), row_bytes);
        }
    }
}

template <class Weight>
void ScaleX<Weight>::renew() {
    _kernel = nullptr;
    _format = FRAME_FORMAT_NONE;
    _dst_layout.clear();
    _window.renew();
    for (auto& data : _scale_data) {
        data.renew();
    }
    for (auto& columns : _columns) {
        columns.clear();
    }
}

template <class Weight>
FrameLayout const& ScaleX<Weight>::layout() {
    return _dst_layout;
}

template <class Weight>
void ScaleX<Weight>::produce(RowData& dst) {
    if (!_window.initialized()) {
        here.fail(StatusNotInitialized,
                  "Failure in ScaleX::produce(...): the scaler is not initialized.");
    }
    if (!takesFormat(_format)) {
        here.fail(StatusNotSupported, "Failure in ScaleX::produce(...) : unsupported format.");
    }
    RowData const* src = nullptr;
    for (int i = 0; i < _dst_layout.planeCount; ++i) {
        if (dst[i] != nullptr) {
            src = src == nullptr ? _window.rowData(0) : src;
            _columns[i].sum((*src)[i], dst[i]);
        }
    }
}

template <class Weight>
bool ScaleX<Weight>::next() {
    return _window.next();
}

template class ScaleX<signed char>;
template class ScaleX<short>;

}  // namespace ox::impl
