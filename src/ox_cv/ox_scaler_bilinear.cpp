// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_bilinear.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_passed_rows.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/blend/columns.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler_bilinear"};

using Coordinates = std::vector<std::int32_t>;

/// Whether the last coordinate lies inside a source of that extent, in 32 bits that wrap. This
/// check refuses sides that 16.16 can't address.
bool endsInside(Coordinates const& table, std::int32_t src) {
    return table.back() < impl::toCoordinate(src);
}

/// Rows in the window of the vertical classes: two, or four if the next chroma row is two rows on.
int verticalWindowSize(FrameLayout const& layout) {
    bool const subsampled =
        layout.planeCount > 1 && layout.plane[0].height != layout.plane[1].height;
    return subsampled ? 4 : 2;
}

int limitWindowSize(int window_size, Frame const& frame) {
    return std::min(window_size, frame.height());
}

/// A producer of fewer rows than the window is refused, on purpose.
int limitWindowSize(int window_size, IRowProducer const& /*producer*/) {
    return window_size;
}

/// The upper source row of a destination row.
int upperRow(Coordinates const& table, std::int32_t dst_row) {
    return table[static_cast<std::size_t>(dst_row)] >> impl::coordinateBits;
}

/// The source rows of a destination row.
struct VerticalCut {
    int window_row = 0;        ///< of the upper row
    std::uint16_t weight = 0;  ///< of the lower row, 16 fractional bits
};

VerticalCut verticalCut(RowWindow& window, Coordinates const& table, std::int32_t dst_row) {
    impl::checkArmed(window);
    std::int32_t const coordinate = table[static_cast<std::size_t>(dst_row)];
    int const window_row = (coordinate >> impl::coordinateBits) - window.firstRow();
    int const window_size = window.windowSize();
    OX_ASSERT(0 <= window_row && window_row < window_size);
    return {window_row, static_cast<std::uint16_t>(coordinate & impl::coordinateMask)};
}

/// The row that the upper row is blended with. Planes 1 and 2 take the row two on, in every format.
/// A window of two rows has no such row, so these planes aren't blended there. Both are on purpose.
int lowerRow(RowWindow const& window, int window_row, int plane) {
    int const distance = plane == 0 ? 1 : 2;
    bool const reaches = window_row < window.windowSize() - distance;
    return reaches ? window_row + distance : window_row;
}

/// Plans the columns of all planes, which are blended by a table.
void planColumns(auto& planes, auto const& state, bool same, Coordinates const& table) {
    FrameLayout const& src = state._src_layout;
    planes.plan(
        here, src, state._dst_layout, same, [&](auto& columns, int i, rows::Element element) {
            auto const last_element = [&](std::int64_t k) -> std::int64_t {
                return rows::pixelPair(table[static_cast<std::size_t>(k)], src.plane[i].width)
                    .right;
            };
            columns.plan(impl::planRow(src, state._dst_layout, i, table.size(), last_element),
                         element, table);
        });
}

}  // namespace

struct ScalerBilinearX::State : impl::ScalerState<State> {
    impl::TableKey<std::int32_t> _tables;
    Coordinates _src_xs;
    impl::PassedRows _passed;
    impl::ScaledPlanes<rows::BlendColumns> _planes;

    [[gnu::cold]] void prepare(FrameLayout const& src_layout, int dst_width);
};

void ScalerBilinearX::State::prepare(FrameLayout const& src_layout, int dst_width) {
    Size const src_size = src_layout.size;
    bool const same = _tables.keep(src_size.width, dst_width, 0, [&] {
        _dst_layout.clear();
        impl::buildBilinearTable(src_size.width, dst_width, _src_xs);
        here.require(endsInside(_src_xs, src_size.width),
                     "_src_xs[dst_width - 1] < (src_size.width << SHIFT)");
    });
    placeLayouts(src_layout, {dst_width, src_size.height});
    _passed.plan(_src_layout, _dst_layout);
    planColumns(_planes, *this, same, _src_xs);
    _tables.finish();
}

ScalerBilinearX::ScalerBilinearX() : _state(impl::makeState<State>(here)) {}

ScalerBilinearX::~ScalerBilinearX() = default;

bool ScalerBilinearX::initialized() const {
    return _state->_window.initialized();
}

void ScalerBilinearX::renew() {
    _state->renew();
}

void ScalerBilinearX::reuse(Frame const& src_frame, int dst_width) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(0 < dst_width);
    _state->arm(here, src_frame, dst_width);
}

void ScalerBilinearX::reuse(IRowProducer& src_producer, int dst_width) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_width);
    _state->arm(here, src_producer, dst_width);
}

FrameLayout const& ScalerBilinearX::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearX::produce(RowData& dst) {
    State& state = *_state;
    RowData const& src = *state._window.rowData(0);
    if (state._src_layout.plane[0].width == state._dst_layout.plane[0].width) {
        state._passed.copy(src, dst);
        return;
    }
    impl::requireScalable(here, state._dst_layout.format, "ScalerBilinearX");
    state._planes.forEach(dst,
                          [&](auto& columns, int i) { columns.run(src.plane[i], dst.plane[i]); });
}

bool ScalerBilinearX::next() {
    return _state->_window.next();
}

struct ScalerBilinearY::State : impl::ScalerState<State> {
    impl::TableKey<std::int32_t> _tables;
    struct Plane {
        rows::BlendRows* blend_rows;
        std::int64_t samples;  ///< of a row
    };

    Coordinates _src_ys;
    impl::ScaledPlanes<Plane> _planes;

    [[gnu::cold]] void prepare(FrameLayout const& src_layout, int dst_height);
    int windowSize(auto const& source) const {
        return limitWindowSize(verticalWindowSize(_dst_layout), source);
    }
    int firstRow() const { return upperRow(_src_ys, _dst_row); }
};

void ScalerBilinearY::State::prepare(FrameLayout const& src_layout, int dst_height) {
    Size const src_size = src_layout.size;
    bool const same = _tables.keep(src_size.height, dst_height, 0, [&] {
        _dst_layout.clear();
        impl::buildBilinearTable(src_size.height, dst_height, _src_ys);
        here.require(endsInside(_src_ys, src_size.height),
                     "_src_ys[dst_height - 1] < (src_layout.size.height << SHIFT)");
    });
    placeLayouts(src_layout, {src_size.width, dst_height});
    _planes.plan(here, _src_layout, _dst_layout, same,
                 [this](Plane& plane, int i, rows::Element element) {
                     plane = {rows::chooseBlendRows(element),
                              impl::coveredSamples(_dst_layout.plane[i], element)};
                 });
    _tables.finish();
}

ScalerBilinearY::ScalerBilinearY() : _state(impl::makeState<State>(here)) {}

ScalerBilinearY::~ScalerBilinearY() = default;

bool ScalerBilinearY::initialized() const {
    return _state->_window.initialized();
}

void ScalerBilinearY::renew() {
    _state->renew();
}

void ScalerBilinearY::reuse(Frame const& src_frame, int dst_height) {
    OX_ASSERT(!src_frame.size().empty());
    OX_ASSERT(0 < dst_height);
    _state->arm(here, src_frame, dst_height);
}

void ScalerBilinearY::reuse(IRowProducer& src_producer, int dst_height) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_height);
    _state->arm(here, src_producer, dst_height);
}

FrameLayout const& ScalerBilinearY::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearY::produce(RowData& dst) {
    State& state = *_state;
    RowWindow& window = state._window;
    VerticalCut const cut = verticalCut(window, state._src_ys, state._dst_row);
    if (state._dst_layout.size.height == state._src_layout.size.height) {
        copyRowData(state._dst_layout, *window.rowData(cut.window_row), dst);
        return;
    }
    impl::requireScalable(here, state._dst_layout.format, "ScalerBilinearY");
    RowData const& upper = *window.rowData(cut.window_row);
    state._planes.forEach(dst, [&](auto const& plane, int i) {
        RowData const& lower = *window.rowData(lowerRow(window, cut.window_row, i));
        plane.blend_rows(upper.plane[i], lower.plane[i], cut.weight,
                         static_cast<std::size_t>(plane.samples), dst.plane[i]);
    });
}

bool ScalerBilinearY::next() {
    return _state->nextRow();
}

struct ScalerBilinearXY::State : impl::ScalerState<State> {
    impl::TableKey<Size> _tables;
    Coordinates _src_xs;
    Coordinates _src_ys;
    impl::ScaledPlanes<rows::BlendColumnsAndRows> _planes;

    void buildTables(Size src_size, Size dst_size);
    [[gnu::cold]] void prepare(FrameLayout const& src_layout, Size dst_size);
    int windowSize(auto const& source) const {
        return limitWindowSize(verticalWindowSize(_dst_layout), source);
    }
    int firstRow() const { return upperRow(_src_ys, _dst_row); }
};

void ScalerBilinearXY::State::buildTables(Size src_size, Size dst_size) {
    _dst_layout.clear();
    impl::buildBilinearTable(src_size.width, dst_size.width, _src_xs);
    here.require(endsInside(_src_xs, src_size.width),
                 "_src_xs[dst_size.width - 1] < (src_size.width << SHIFT)");
    impl::buildBilinearTable(src_size.height, dst_size.height, _src_ys);
    here.require(endsInside(_src_ys, src_size.height),
                 "_src_ys[dst_size.height - 1] < (src_size.height << SHIFT)");
}

void ScalerBilinearXY::State::prepare(FrameLayout const& src_layout, Size dst_size) {
    bool const same =
        _tables.keep(src_layout.size, dst_size, 0, [&] { buildTables(src_layout.size, dst_size); });
    placeLayouts(src_layout, dst_size);
    planColumns(_planes, *this, same, _src_xs);
    // From half the height on, a destination row begins behind the two source rows of the last one.
    bool const shares_rows = std::int64_t{2} * dst_size.height > src_layout.size.height;
    _planes.forAll([=](auto& plane) { plane.restart(shares_rows); });
    _tables.finish();
}

ScalerBilinearXY::ScalerBilinearXY() : _state(impl::makeState<State>(here)) {}

ScalerBilinearXY::~ScalerBilinearXY() = default;

bool ScalerBilinearXY::initialized() const {
    return _state->_window.initialized();
}

void ScalerBilinearXY::renew() {
    _state->renew();
}

void ScalerBilinearXY::reuse(Frame const& src_frame, Size dst_size) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(!dst_size.empty());
    _state->arm(here, src_frame, dst_size);
}

void ScalerBilinearXY::reuse(IRowProducer& src_producer, Size dst_size) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(!dst_size.empty());
    _state->arm(here, src_producer, dst_size);
}

FrameLayout const& ScalerBilinearXY::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearXY::produce(RowData& dst) {
    State& state = *_state;
    RowWindow& window = state._window;
    VerticalCut const cut = verticalCut(window, state._src_ys, state._dst_row);
    impl::requireScalable(here, state._dst_layout.format, "ScalerBilinearXY");
    RowData const& upper = *window.rowData(cut.window_row);
    std::int64_t const first = window.firstRow();
    state._planes.forEach(dst, [&](auto& plane, int i) {
        int const lower_row = lowerRow(window, cut.window_row, i);
        RowData const& lower = *window.rowData(lower_row);
        plane.run({upper.plane[i], first + cut.window_row}, {lower.plane[i], first + lower_row},
                  cut.weight, dst.plane[i]);
    });
}

bool ScalerBilinearXY::next() {
    return _state->nextRow();
}

}  // namespace ox
