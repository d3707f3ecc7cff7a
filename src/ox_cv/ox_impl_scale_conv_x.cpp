// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_conv_x.h"

#include <algorithm>

#include "ox_cv/ox_impl_scale_weights.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_conv_x"};

/// The formats of the horizontal pass: fewer than the other scalers take.
constexpr bool takesColumnsOf(FrameFormat format) {
    return isScalable(format) && format != FRAME_BGR_PLANAR && factsOf(format).pixel_group == 1;
}

/// Fills an axis with the start of each pixel's taps, and with the rows of weights as words.
template <class Weight>
void fillAxis(ScaleData<Weight> const& data, rows::TapAxis& axis) {
    axis.taps = static_cast<std::size_t>(data.aperture());
    axis.shift = unitShift<Weight>;
    axis.weights.assign(static_cast<std::size_t>(data.kernels().rowCount()) * axis.taps, 0);
    axis.starts.clear();
    axis.starts.reserve(data.sources().size());
    for (ScaleSource const source : data.sources()) {
        axis.starts.push_back({source.src_start, source.kernel_index});
        std::copy_n(data.kernels().row(source.kernel_index), axis.taps,
                    axis.weightRow(source.kernel_index));
    }
}

}  // namespace

template <class Weight>
ScaleX<Weight>::ScaleX() = default;

template <class Weight>
ScaleX<Weight>::~ScaleX() = default;

template <class Weight>
void ScaleX<Weight>::reuse(IKernel& kernel, Frame const& src_frame, int dst_width) {
    arm(kernel, src_frame, dst_width);
}

template <class Weight>
void ScaleX<Weight>::reuse(IKernel& kernel, IRowProducer& src_producer, int dst_width) {
    arm(kernel, src_producer, dst_width);
}

template <class Weight>
template <class Source>
void ScaleX<Weight>::arm(IKernel& kernel, Source& source, int dst_width) {
    FrameLayout const src_layout = source.layout();
    prepareTables(_window, [&] { _prepare(kernel, src_layout, dst_width); });
    armWindow(_window, source, 1, here);
    requirePlanned(_window, src_layout, here);
}

template <class Weight>
void ScaleX<Weight>::_prepare(IKernel& kernel, FrameLayout const& src_layout, int dst_width) {
    bool const same = _reuseScaleData(kernel, src_layout, dst_width);
    // The loops depend on the source's own width too, which the weights may not know of.
    _planes.plan(here, src_layout, _dst_layout, same,
                 [&](rows::TapColumns& columns, int i, rows::Element element) {
                     fillAxis(_scale_data[i], columns.axis);
                     std::uint64_t const bytes = reachedBytes(src_layout.plane[i].rowBytes);
                     columns.plan(element, static_cast<std::int64_t>(bytes) / (element.bits / 8));
                 });
}

/// @return whether weights and layout were kept
template <class Weight>
bool ScaleX<Weight>::_reuseScaleData(IKernel& kernel, FrameLayout const& src_layout,
                                     int dst_width) {
    if (_window.initialized() && _kernel == &kernel && _format == src_layout.format &&
        _dst_layout.size.width == dst_width) {
        return true;
    }
    _kernel = &kernel;
    _format = src_layout.format;
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
    return false;
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
    if (!takesColumnsOf(_format)) {
        here.fail(StatusNotSupported, "Failure in ScaleX::produce(...) : unsupported format.");
    }
    RowData const* src = nullptr;
    _planes.forEach(dst, [&](auto& columns, int i) {
        src = src == nullptr ? _window.rowData(0) : src;
        columns.run((*src)[i], dst[i]);
    });
}

template <class Weight>
bool ScaleX<Weight>::next() {
    return _window.next();
}

template class ScaleX<signed char>;
template class ScaleX<short>;

}  // namespace ox::impl
