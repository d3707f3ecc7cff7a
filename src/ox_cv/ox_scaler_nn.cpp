// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_nn.h"

#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_state.h"
#include "rows/pixels.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler_nn"};

}  // namespace

struct ScalerNearestNeighbor::State : impl::ScalerState<State> {
    impl::TableKey<Size> _tables;
    std::vector<std::uint16_t> _src_xs;
    std::vector<std::uint16_t> _src_ys;
    impl::ScaledPlanes<rows::NearestColumns> _planes;

    [[gnu::cold]] void prepare(FrameLayout const& src_layout, Size dst_size);
    void buildTables(Size src_size, Size dst_size);
    int firstRow() const { return _src_ys[static_cast<std::size_t>(_dst_row)]; }
};

void ScalerNearestNeighbor::State::buildTables(Size src_size, Size dst_size) {
    _dst_layout.clear();
    impl::buildNearestTable(src_size.width, dst_size.width, _src_xs);
    here.require(_src_xs.back() < src_size.width, "_src_xs[dst_size.width - 1] < src_size.width");
    impl::buildNearestTable(src_size.height, dst_size.height, _src_ys);
    here.require(_src_ys.back() < src_size.height,
                 "_src_ys[dst_size.height - 1] < src_size.height");
}

void ScalerNearestNeighbor::State::prepare(FrameLayout const& src_layout, Size dst_size) {
    bool const same =
        _tables.keep(src_layout.size, dst_size, 0, [&] { buildTables(src_layout.size, dst_size); });
    placeLayouts(src_layout, dst_size);
    auto const last_element = [this](std::int64_t k) -> std::int64_t {
        return _src_xs[static_cast<std::size_t>(k)];
    };
    _planes.plan(here, _src_layout, _dst_layout, same,
                 [&](rows::NearestColumns& columns, int i, rows::Element element) {
                     columns.plan(
                         impl::planRow(_src_layout, _dst_layout, i, _src_xs.size(), last_element),
                         element, _src_xs);
                 });
    _tables.finish();
}

ScalerNearestNeighbor::ScalerNearestNeighbor() : _state(impl::makeState<State>(here)) {}

ScalerNearestNeighbor::~ScalerNearestNeighbor() = default;

bool ScalerNearestNeighbor::initialized() const {
    return _state->_window.initialized();
}

void ScalerNearestNeighbor::renew() {
    _state->renew();
}

void ScalerNearestNeighbor::reuse(Frame const& src_frame, Size dst_size) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(!dst_size.empty());
    _state->arm(here, src_frame, dst_size);
}

void ScalerNearestNeighbor::reuse(IRowProducer& src_producer, Size dst_size) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(!dst_size.empty());
    _state->arm(here, src_producer, dst_size);
}

FrameLayout const& ScalerNearestNeighbor::layout() {
    return _state->_dst_layout;
}

void ScalerNearestNeighbor::produce(RowData& dst) {
    State& state = *_state;
    RowData const& src = *state._window.rowData(0);
    FrameLayout const& layout = state._dst_layout;
    // This comes before the check of the format: rows whose width stays pass in every format.
    if (state._src_layout.size.width == layout.plane[0].width) {
        copyRowData(layout, src, dst);
        return;
    }
    impl::requireScalable(here, layout.format, "ScalerNearestNeighbor");
    state._planes.forEach(dst, [&](auto& columns, int i) { columns.run(src[i], dst[i]); });
}

bool ScalerNearestNeighbor::next() {
    return _state->nextRow();
}

}  // namespace ox
