// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_conv_y.h"

#include <algorithm>

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_scale_weights.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/rows_routines.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_conv_y"};

/// The formats of the vertical pass: all scalable formats of bytes but `FRAME_BGR_PLANAR`. The
/// packed 4:2:2 formats are among them, though the horizontal pass refuses these.
constexpr bool takesRowsOf(FrameFormat format) {
    return isScalable(format) && format != FRAME_BGR_PLANAR && factsOf(format).planes[0].bits == 8;
}

}  // namespace

template <class Weight>
ScaleY<Weight>::ScaleY() = default;

template <class Weight>
ScaleY<Weight>::~ScaleY() = default;

template <class Weight>
void ScaleY<Weight>::reuse(IKernel& kernel, IRowProducer& src_producer, int dst_height) {
    FrameLayout const src_layout = src_producer.layout();
    prepareTables(_window, [&] {
        _reuseScaleData(kernel, src_layout, dst_height);
        _row_index.reuse(_dst_layout);
        _src_layout = src_layout;
        resizeTable(_rows, tallestKernel(), here);
        resizeTable(_weights, tallestKernel(), here);
    });
    armWindow(_window, src_producer, tallestKernel(), here);
    requirePlanned(_window, src_layout, here);
}

template <class Weight>
void ScaleY<Weight>::_reuseScaleData(IKernel& kernel, FrameLayout const& src_layout,
                                     int dst_height) {
    if (_window.initialized() && _kernel == &kernel &&
        _src_layout.size.height == src_layout.size.height &&
        _src_layout.format == src_layout.format && _dst_layout.size.height == dst_height) {
        return;
    }
    _kernel = &kernel;
    _dst_layout =
        FrameLayout(src_layout.format, {src_layout.size.width, dst_height}, defaultAlignment);
    if (src_layout.planeCount == 0) {
        here.fail(StatusNotInitialized,
                  "Failure in ScaleY::reuse(...) : source frame is not initialized.");
    }
    passOnFailure("_reuseScaleData", here, [&] {
        // A plane that the format doesn't have is refused: it has no height to be scaled to.
        for (int i = 0; i < src_layout.planeCount; ++i) {
            _scale_data[i].reuse(kernel, src_layout.plane[i].height, _dst_layout.plane[i].height);
        }
    });
}

/// The largest aperture of all planes, on purpose also of planes that only an earlier format had.
template <class Weight>
int ScaleY<Weight>::tallestKernel() const {
    int tallest = 0;
    for (auto const& data : _scale_data) {
        tallest = std::max(tallest, data.aperture());
    }
    return tallest;
}

template <class Weight>
void ScaleY<Weight>::renew() {
    _row_index = RowIndex();
    _src_row = 0;
    _kernel = nullptr;
    _src_layout.clear();
    _dst_layout.clear();
    _window.renew();
    for (auto& data : _scale_data) {
        data.renew();
    }
}

template <class Weight>
FrameLayout const& ScaleY<Weight>::layout() {
    return _dst_layout;
}

template <class Weight>
void ScaleY<Weight>::produce(RowData& dst) {
    if (!_window.initialized()) {
        here.fail(StatusNotInitialized, "The scaler is not initialized.");
    }
    if (!takesRowsOf(_dst_layout.format)) {
        here.fail(StatusNotSupported,
                  "Failure in ScaleY::produce(...) : unsupported frame format.");
    }
    for (int i = 0; i < _dst_layout.planeCount; ++i) {
        if (dst[i] != nullptr) {
            producePlane(i, dst[i]);
        }
    }
}

/// Rows behind the plane's last one repeat that row.
template <class Weight>
ScaleSource ScaleY<Weight>::sourceOf(int plane) const {
    std::vector<ScaleSource> const& sources = _scale_data[plane].sources();
    auto const row = static_cast<std::size_t>(_row_index.plane_row[plane]);
    return sources[std::min(row, sources.size() - 1)];
}

template <class Weight>
void ScaleY<Weight>::producePlane(int plane, unsigned char* dst) {
    ScaleData<Weight> const& data = _scale_data[plane];
    int const taps = data.aperture();
    for (int k = 0; k < taps; ++k) {
        _rows[static_cast<std::size_t>(k)] = (*_window.rowData(k))[plane];
    }
    std::uint64_t const bytes =
        std::min(_src_layout.plane[plane].rowBytes, _dst_layout.plane[plane].rowBytes);
    std::copy_n(data.kernels().row(sourceOf(plane).kernel_index), taps, _weights.begin());
    rows::routines().taps.sum_rows(
        {_rows.data(), _weights.data(), static_cast<std::size_t>(taps), unitShift<Weight>}, bytes,
        dst);
}

template <class Weight>
bool ScaleY<Weight>::next() {
    _row_index.next();
    if (!_window.initialized() || _row_index.plane_row[0] >= _dst_layout.size.height) {
        return false;
    }
    int const start = sourceOf(0).src_start;
    for (int step = _src_row; step < start; ++step) {
        _window.next();
    }
    _src_row = start;
    return true;
}

template class ScaleY<signed char>;
template class ScaleY<short>;

}  // namespace ox::impl
