// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_area.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_area_checks.h"
#include "ox_cv/ox_impl_passed_rows.h"
#include "ox_cv/ox_impl_rules.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/area/columns.h"
#include "rows/area/rows.h"

namespace ox {

namespace {

constexpr impl::Place here = impl::areaPlace;

/// The value before the first `reuse`.
constexpr int initialShift = 16;

/// Fractional bits of a weight: one bit is the sign.
int shiftOf(ScalerPrecision precision) {
    return static_cast<int>(precision) - 1;
}

/// What the scalers of one direction share.
template <class State>
struct AreaState : impl::ScalerState<State> {
    impl::TableKey<std::int32_t> _tables;
    std::vector<impl::AreaWeight> _weights;
    std::int32_t _shift = initialShift;
    std::uint16_t _full_weight = 0;

    void renew() {
        impl::ScalerState<State>::renew();
        _tables.renew();
    }
    /// @return whether the weights were kept
    bool keepWeights(std::int32_t src, std::int32_t dst, ScalerPrecision precision) {
        _shift = shiftOf(precision);
        return _tables.keep(src, dst, _shift, [&] {
            this->_dst_layout.clear();
            _full_weight = impl::buildAreaTable(src, dst, _shift, _weights);
        });
    }
    rows::AreaAxis axis() const { return {_weights.data(), _full_weight, _shift}; }
    impl::AreaWeight weight(std::int64_t cell) const {
        return _weights[static_cast<std::size_t>(cell)];
    }
};

}  // namespace

struct ScalerAreaX::State : AreaState<State> {
    impl::PassedRows _passed;
    impl::ScaledPlanes<rows::AreaColumns> _planes;
    int _planned_shift = 0;  ///< that the planes were planned for

    [[gnu::cold]] void prepare(FrameLayout const& src_layout, int dst_width,
                               ScalerPrecision precision);
    void planColumns(rows::AreaColumns& columns, int plane, rows::Element element) const;
};

/// Each plane is up-scaled or down-scaled by its own width against that of luma, chroma too.
void ScalerAreaX::State::planColumns(rows::AreaColumns& columns, int plane,
                                     rows::Element element) const {
    bool const up = _dst_layout.plane[plane].width >= _src_layout.plane[0].width;
    auto const last_element = [&](std::int64_t k) {
        return up ? rows::lastElement<rows::AreaUp>(axis(), k)
                  : rows::lastElement<rows::AreaDown>(axis(), k);
    };
    columns.plan(impl::planRow(_src_layout, _dst_layout, plane, _weights.size(), last_element),
                 element, axis(), up);
}

void ScalerAreaX::State::prepare(FrameLayout const& src_layout, int dst_width,
                                 ScalerPrecision precision) {
    Size const src_size = src_layout.size;
    impl::checkSide(src_size.width, "ScalerAreaX");
    bool const same = keepWeights(src_size.width, dst_width, precision) && _planned_shift == _shift;
    placeLayouts(src_layout, {dst_width, src_size.height});
    _passed.plan(_src_layout, _dst_layout);
    _planes.plan(here, _src_layout, _dst_layout, same,
                 [this](rows::AreaColumns& columns, int i, rows::Element element) {
                     planColumns(columns, i, element);
                 });
    _planned_shift = _shift;
    _tables.finish();
}

ScalerAreaX::ScalerAreaX() : _state(impl::makeState<State>(here)) {}

ScalerAreaX::~ScalerAreaX() = default;

bool ScalerAreaX::initialized() const {
    return _state->_window.initialized();
}

void ScalerAreaX::renew() {
    _state->renew();
}

void ScalerAreaX::reuse(Frame const& src_frame, int dst_width, ScalerPrecision precision) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(0 < dst_width);
    impl::checkPrecision(precision);
    _state->arm(here, src_frame, dst_width, precision);
}

void ScalerAreaX::reuse(IRowProducer& src_producer, int dst_width, ScalerPrecision precision) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_width);
    impl::checkPrecision(precision);
    _state->arm(here, src_producer, dst_width, precision);
}

FrameLayout const& ScalerAreaX::layout() {
    return _state->_dst_layout;
}

void ScalerAreaX::produce(RowData& dst) {
    State& state = *_state;
    RowData const& src = *state._window.rowData(0);
    FrameLayout const& layout = state._dst_layout;
    if (state._src_layout.plane[0].width == layout.plane[0].width) {
        state._passed.copy(src, dst);
        return;
    }
    impl::requireScalable(here, layout.format, "ScalerAreaX");
    state._planes.forEach(dst, [&](auto& columns, int i) { columns.run(src[i], dst[i]); });
    impl::refuseWritten(layout.format, "ScalerAreaX");
}

bool ScalerAreaX::next() {
    return _state->_window.next();
}

struct ScalerAreaY::State : AreaState<State> {
    struct Plane {
        rows::SumRowCut* sum;
        std::int64_t samples;  ///< of a row
    };

    std::vector<unsigned char const*> _rows;
    bool _subsampled = false;
    rows::CutTaps _taps;
    impl::ScaledPlanes<Plane> _planes;

    bool shrinks() const { return _dst_layout.size.height < _src_layout.size.height; }
    [[gnu::cold]] void prepare(FrameLayout const& src_layout, int dst_height,
                               ScalerPrecision precision);
    int rowCount() const;
    rows::RowCut cutPlane(int plane);
    int windowSize(auto const& /*source*/) const {
        int const count = static_cast<int>(_rows.size());
        return std::min(_subsampled ? 2 * count : count, _src_layout.size.height);
    }
    int firstRow() const {
        return _subsampled ? 2 * weight(_dst_row / 2).index : weight(_dst_row).index;
    }
};

/// How many source rows a destination row takes at most.
int ScalerAreaY::State::rowCount() const {
    if (shrinks()) {
        impl::AreaWeight const second = weight(1);
        return second.index + (_full_weight != second.weight ? 2 : 0);
    }
    return _dst_layout.size.height > _src_layout.size.height ? 2 : 1;
}

void ScalerAreaY::State::prepare(FrameLayout const& src_layout, int dst_height,
                                 ScalerPrecision precision) {
    Size const src_size = src_layout.size;
    impl::checkSide(src_size.height, "ScalerAreaY");
    bool const same = keepWeights(src_size.height, dst_height, precision);
    placeLayouts(src_layout, {src_size.width, dst_height});
    _subsampled =
        _dst_layout.planeCount >= 2 && _dst_layout.plane[0].height != _dst_layout.plane[1].height;
    impl::resizeTable(_rows, rowCount(), here);
    impl::withMemory(here, [&] { _taps.reserve(rowCount() + std::int64_t{2}); });
    _planes.plan(here, _src_layout, _dst_layout, same,
                 [this](Plane& plane, int i, rows::Element element) {
                     FramePlane const& dst = _dst_layout.plane[i];
                     bool const is_short = i == 0 && impl::hasShortAreaRows(_dst_layout.format);
                     plane = {rows::chooseSumRowCut(element),
                              is_short ? dst.width : impl::coveredSamples(dst, element)};
                 });
    _tables.finish();
}

/// Planar 4:2:0 chroma goes by the weights of its own row, two frame rows apart; interleaved chroma
/// goes by luma's weights and rows. The difference is on purpose.
rows::RowCut ScalerAreaY::State::cutPlane(int plane) {
    FrameFormat const format = _dst_layout.format;
    bool const own_rows = plane > 0 && (format == FRAME_I420 || format == FRAME_YV12);
    int const distance = own_rows ? 2 : 1;
    std::int32_t const row = _dst_row / distance;
    impl::AreaWeight const entry = weight(row);
    impl::AreaWeight const following = weight(row + 1);
    int const first = distance * entry.index - _window.firstRow();
    int const window_size = _window.windowSize();
    auto const count = static_cast<std::int64_t>(_rows.size());
    for (std::int64_t k = 0; k < count; ++k) {
        std::int64_t const index = first + distance * k;
        _rows[static_cast<std::size_t>(k)] =
            index < window_size ? (*_window.rowData(static_cast<int>(index)))[plane] : nullptr;
    }
    rows::AreaCut const cut = shrinks() ? rows::AreaDown::cut(_full_weight, entry, following)
                                        : rows::AreaUp::cut(_full_weight, entry, following);
    std::int64_t const middle_end = cut.last - cut.first;
    std::int64_t const rest = std::max<std::int64_t>(middle_end, 1);  // the row after those
    // The window ends at the bottom of the source.
    return {_rows.data(),
            count,
            (*_window.rowData(window_size - 1))[plane],
            middle_end,
            cut.first_weight,
            _full_weight,
            cut.rest,
            rest < count ? _rows[static_cast<std::size_t>(rest)] : nullptr,
            _shift};
}

ScalerAreaY::ScalerAreaY() : _state(impl::makeState<State>(here)) {}

ScalerAreaY::~ScalerAreaY() = default;

bool ScalerAreaY::initialized() const {
    return _state->_window.initialized();
}

void ScalerAreaY::renew() {
    _state->renew();
}

void ScalerAreaY::reuse(Frame const& src_frame, int dst_height, ScalerPrecision precision) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(0 < dst_height);
    impl::checkPrecision(precision);
    _state->arm(here, src_frame, dst_height, precision);
}

void ScalerAreaY::reuse(IRowProducer& src_producer, int dst_height, ScalerPrecision precision) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_height);
    impl::checkPrecision(precision);
    _state->arm(here, src_producer, dst_height, precision);
}

FrameLayout const& ScalerAreaY::layout() {
    return _state->_dst_layout;
}

void ScalerAreaY::produce(RowData& dst) {
    State& state = *_state;
    RowWindow& window = state._window;
    FrameLayout const& layout = state._dst_layout;
    impl::checkArmed(window);
    if (layout.size.height == state._src_layout.size.height) {
        int const window_row = state.weight(state._dst_row).index - window.firstRow();
        copyRowData(layout, *window.rowData(window_row), dst);
        return;
    }
    impl::requireScalable(here, layout.format, "ScalerAreaY");
    window.rowData(0);  // keeps pace with a producer, whatever planes are asked for
    state._planes.forEach(dst, [&](auto const& plane, int i) {
        plane.sum(state._taps, state.cutPlane(i), plane.samples, dst[i]);
    });
    impl::refuseWritten(layout.format, "ScalerAreaY");
}

bool ScalerAreaY::next() {
    return _state->nextRow();
}

}  // namespace ox
