// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_tensor_source.h"

#include <utility>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/rows_routines.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_tensor_source"};

constexpr bool isYuv(FrameFormat format) {
    return format >= FRAME_I420 && format <= FRAME_YUV444_PLANAR;
}

/// The format that a picture is scaled in.
constexpr FrameFormat unpackedFormat(FrameFormat format) {
    switch (format) {
        case FRAME_RGB24:
        case FRAME_RGB_PLANAR:
        case FRAME_BGR_PLANAR:
            return FRAME_BGR24;
        case FRAME_YUYV:
        case FRAME_UYVY:
            return FRAME_NV16;
        default:
            return format;
    }
}

/// A frame on the same memory under the name of a format with the same planes, in that order. Red
/// and blue are scaled alike, so they may change places before the scaling or behind it.
Frame renamed(Frame const& frame) {
    FrameLayout layout = frame.layout();
    std::array<unsigned char*, 4> planes{};
    for (int i = 0; i < layout.planeCount; ++i) {
        planes[static_cast<std::size_t>(i)] = frame.planeData(i);
    }
    if (layout.format == FRAME_RGB24) {
        layout.format = FRAME_BGR24;
    } else if (layout.format == FRAME_RGB_PLANAR) {
        layout.format = FRAME_BGR_PLANAR;
        std::swap(planes[0], planes[2]);
        std::swap(layout.plane[0], layout.plane[2]);
    }
    return Frame::wrap(layout, planes.data());
}

rows::YuvSamples<std::uint8_t const> samplesOf(RowData const& row, FormatInfo const& info) {
    return {row[info.y_plane] + info.y_offset, row[info.u_plane] + info.u_offset,
            row[info.v_plane] + info.v_offset};
}

}  // namespace

bool isTensorSource(FrameFormat format) {
    return format >= FRAME_GRAY8 && format <= FRAME_YUV444_PLANAR;
}

void TensorSource::reuse(Frame const& frame, TensorScaling const& scaling, bool gray,
                         rows::YuvMatrix const* matrix) {
    FrameFormat const format = frame.format();
    _picture = renamed(frame);
    _width = scaling.size.width;
    _window.renew();
    bool const scales = scaling.kernel != nullptr || scaling.size != frame.size();
    FrameFormat const unpacked = unpackedFormat(_picture.format());
    if (scales) {
        armScaled(unpacked, scaling);
    } else {
        armWindow(_window, _picture, 1, here);
    }
    _red_first = format == FRAME_RGB24;
    _matrix = isYuv(format) && !gray ? matrix : nullptr;
    planSteps(scales ? unpacked : _picture.format(), gray);
}

void TensorSource::armScaled(FrameFormat unpacked, TensorScaling const& scaling) {
    if (unpacked == _picture.format()) {
        return armScaler(_picture, scaling);
    }
    _unpacker.renew();
    passOnFailure("reuse", here, [&] { _unpacker.reuse(_picture, unpacked); });
    if (_picture.height() > 1) {
        return armScaler(_unpacker, scaling);
    }
    // Some scalers refuse producers of a single row, but not frames.
    _single_row.reuse(unpacked, _picture.size(), DeviceContext(), 0);
    _single_row.setZero();
    produceFrame(_unpacker, _single_row);
    armScaler(_single_row, scaling);
}

template <class Source>
void TensorSource::armScaler(Source& source, TensorScaling const& scaling) {
    if (scaling.kernel != nullptr) {
        _filter.renew();
        passOnFailure("reuse", here, [&] {
            _filter.reuse(*scaling.kernel, source, scaling.size, scaling.precision);
        });
        return armWindow(_window, _filter, 1, here);
    }
    _scaler.renew();
    passOnFailure("reuse", here, [&] { _scaler.reuse(source, scaling.size, scaling.method); });
    armWindow(_window, _scaler, 1, here);
}

/// @param format of the window's rows
void TensorSource::planSteps(FrameFormat format, bool gray) {
    _step_count = 0;
    if (format == FRAME_BGR_PLANAR) {
        addStep(FRAME_BGR_PLANAR, FRAME_BGR24);
        format = FRAME_BGR24;
    } else if (_red_first && gray) {
        addStep(FRAME_RGB24, FRAME_BGR24);
    }
    FrameFormat const wanted = gray ? FRAME_GRAY8 : FRAME_BGR24;
    if (format != wanted) {
        addStep(format, wanted);
    }
}

void TensorSource::addStep(FrameFormat src, FrameFormat dst) {
    ImplFormatConverter& step = _steps[_step_count];
    step = ImplFormatConverter();
    int window_size = 0;
    step.reuse(src, dst, _width, &window_size);
    _rows[_step_count].resize(3 * static_cast<unsigned long>(_width), false);
    ++_step_count;
}

std::uint8_t const* TensorSource::row() {
    RowData current = *_window.rowData(0);
    for (std::size_t i = 0; i < _step_count; ++i) {
        RowData const* const source[]{&current, nullptr};
        RowData result{};
        result[0] = _rows[i].data;
        if (_matrix != nullptr) {
            FormatInfo const& info = _steps[i].src;
            rows::routines().tensor.matrix_to_bgr[indexOf(yuvLayoutOf(info))](
                samplesOf(current, info), static_cast<std::size_t>(_width), *_matrix, result[0]);
        } else {
            _steps[i].produce(source, result);
        }
        current = result;
    }
    return current[0];
}

}  // namespace ox::impl
