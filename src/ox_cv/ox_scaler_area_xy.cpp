// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_area_checks.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_scaler_area.h"
#include "rows/area/cells.h"

namespace ox {

namespace {

constexpr impl::Place here = impl::areaPlace;

/// 16.16 coordinates hold no larger side.
constexpr int maxSide = 32767;

void checkSizes(Size src_size, Size dst_size) {
    if (dst_size.width > src_size.width || dst_size.height > src_size.height) {
        here.fail({StatusNotSupported, "reuse"},
                  "Failure in scaleAreaXY::reuse(...) : the area method is implemented for "
                  "down-scaling only.");
    }
    if (src_size.width > maxSide || src_size.height > maxSide) {
        here.fail({StatusOutOfRange, "reuse"},
                  "Failure in scaleAreaXY::reuse(...) : size is out of range.");
    }
}

}  // namespace

struct scaleAreaXY::State : impl::ScalerState<State> {
    struct Plane {
        rows::SumCells::Function sum;
        rows::RowPlan row;
    };

    std::int32_t _step_x = 0;       ///< 16.16 width of a cell in source columns
    std::int32_t _step_y = 0;       ///< 16.16 height of a cell in source rows
    std::int32_t _chroma_step = 0;  ///< 16.16 row step of 4:2:0 chroma, else 0
    std::vector<rows::CoveredRow> _rows;
    impl::ScaledPlanes<Plane> _planes;

    [[gnu::cold]] void prepare(FrameLayout const& src_layout, Size dst_size);
    void fillRows(int plane);
    int windowSize(Frame const& /*source*/) const {
        int const count = static_cast<int>(_rows.size());
        return _chroma_step != 0 ? 3 * count : count;
    }
    int firstRow() const {
        return _chroma_step != 0 ? 2 * (((_dst_row / 2) * _chroma_step) >> impl::coordinateBits)
                                 : (_dst_row * _step_y) >> impl::coordinateBits;
    }
};

void scaleAreaXY::State::prepare(FrameLayout const& src_layout, Size dst_size) {
    if (src_layout.size != _src_layout.size || dst_size != _dst_layout.size) {
        _chroma_step = 0;
        _step_x = impl::coordinateStep(src_layout.size.width, dst_size.width);
        _step_y = impl::coordinateStep(src_layout.size.height, dst_size.height);
    }
    placeLayouts(src_layout, dst_size);
    if (impl::isVerticallySubsampled(src_layout.format)) {
        // Other formats keep the step of an earlier 4:2:0 source of these sizes, on purpose. After
        // `renew` there is none, as there are no layouts.
        _chroma_step =
            impl::coordinateStep(_src_layout.plane[1].height, _dst_layout.plane[1].height);
    }
    bool const partial = (_step_y & impl::coordinateMask) != 0;
    impl::resizeTable(_rows, (_step_y >> impl::coordinateBits) + (partial ? 2 : 0), here);
    auto const last_element = [this](std::int64_t k) { return rows::lastOfCell(_step_x, k); };
    _planes.plan(
        here, _src_layout, _dst_layout, false, [&](Plane& plane, int i, rows::Element element) {
            plane = {rows::pickRowFunction<rows::SumCells>(element),
                     impl::planRow(_src_layout, _dst_layout, i,
                                   static_cast<std::size_t>(dst_size.width), last_element)};
        });
}

/// The source rows of the current cell, with the part of each that the cell covers.
void scaleAreaXY::State::fillRows(int plane) {
    bool const subsampled = plane > 0 && impl::isVerticallySubsampled(_dst_layout.format);
    int const distance = subsampled ? 2 : 1;
    std::int32_t const start = subsampled ? (_dst_row / 2) * _chroma_step : _dst_row * _step_y;
    std::int32_t const end = start + _step_y;
    std::int32_t const first = start >> impl::coordinateBits;
    std::int32_t const last = end >> impl::coordinateBits;
    int const window_row = distance * first - _window.firstRow();
    for (std::size_t e = 0; e < _rows.size(); ++e) {
        auto const entry = static_cast<std::int32_t>(e);
        std::int32_t const row = first + entry;
        rows::CoveredRow& covered = _rows[e];
        if (entry == 0) {
            covered.weight = impl::coordinateOne - (start & impl::coordinateMask);
        } else if (row < last) {
            covered.weight = impl::coordinateOne;
        } else {
            covered.weight = row == last ? end & impl::coordinateMask : 0;
        }
        covered.row = covered.weight != 0 ? (*_window.rowData(window_row + distance * entry))[plane]
                                          : nullptr;
    }
}

scaleAreaXY::scaleAreaXY() : _state(impl::makeState<State>(here)) {}

scaleAreaXY::~scaleAreaXY() = default;

bool scaleAreaXY::initialized() const {
    return _state->_window.initialized();
}

void scaleAreaXY::renew() {
    _state->renew();
}

void scaleAreaXY::reuse(Frame const& src_frame, Size dst_size, ScalerPrecision precision) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(!dst_size.empty());
    impl::checkPrecision(precision);
    checkSizes(src_frame.size(), dst_size);
    _state->arm(here, src_frame, dst_size);
}

FrameLayout const& scaleAreaXY::layout() {
    return _state->_dst_layout;
}

void scaleAreaXY::produce(RowData& dst) {
    State& state = *_state;
    impl::checkArmed(state._window);
    FrameFormat const format = state._dst_layout.format;
    impl::requireScalable(here, format, "scaleAreaXY");
    rows::CellGrid const grid(state._step_x, state._step_y);
    state._planes.forEach(dst, [&](auto const& plane, int i) {
        state.fillRows(i);
        plane.sum(plane.row, grid, state._rows, dst[i]);
    });
    impl::refuseWritten(format, "scaleAreaXY");
}

bool scaleAreaXY::next() {
    return _state->nextRow();
}

}  // namespace ox
