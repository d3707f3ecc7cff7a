#include "ox_cv/ox_scaler_bilinear.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_bilinear_rows.h"
#include "ox_cv/ox_impl_blend_planes.h"
#include "ox_cv/ox_impl_passed_rows.h"
#include "ox_cv/ox_impl_scale_tables.h"
#include "ox_cv/ox_impl_state.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler_bilinear"};

using Coordinates = std::vector<std::int32_t>;

/// Whether the last coordinate lies inside a source of that extent, in 32 bits that wrap: this is
/// what refuses sides that 16.16 can't address.
bool endsInside(Coordinates const& table, std::int32_t src) {
    return table.back() < impl::toCoordinate(src);
}

/// Rows that the vertical classes keep: two, or four where the next chroma row is two rows on.
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

/// The source rows of a destination row.
struct VerticalCut {
    int window_row = 0;        ///< of the upper row
    std::uint32_t weight = 0;  ///< of the lower row, 16 fractional bits
};

VerticalCut verticalCut(RowWindow& window, Coordinates const& table, std::int32_t dst_row) {
    impl::checkArmed(window);
    std::int32_t const coordinate = table[static_cast<std::size_t>(dst_row)];
    int const window_row = (coordinate >> impl::coordinateBits) - window.firstRow();
    int const window_size = window.windowSize();
    OX_ASSERT(0 <= window_row && window_row < window_size);
    return {window_row, static_cast<std::uint32_t>(coordinate & impl::coordinateMask)};
}

/// The row that planes blend with. Planes 1 and 2 take the row two on whatever their format is; a
/// window of two has none, so they aren't blended there. On purpose.
int lowerRow(RowWindow const& window, int window_row, int plane) {
    int const distance = plane == 0 ? 1 : 2;
    bool const reaches = window_row < window.windowSize() - distance;
    return reaches ? window_row + distance : window_row;
}

[[noreturn]] void throwUnsupported(char const* name) {
    here.fail({StatusNotSupported, "produce"},
              "Failure in %s::produce(...) : unsupported frame format.", name);
}

/// The planes whose columns vector code blends; the others are done by plain loops.
class BlendPlanes {
  public:
    /// Plans anew unless nothing has changed.
    void plan(FrameLayout const& src, FrameLayout const& dst, Coordinates const& table,
              bool same_table, auto const& planes) {
        if (same_table && impl::sameRows(_src, src)) {
            return;
        }
        _src.clear();
        rows::BlendAxis axis;
        for (int i = 0; i < 3; ++i) {
            bool const is_blend = impl::withMemory(here, [&] {
                return impl::describeBilinearBlend(planes[static_cast<std::size_t>(i)].plan,
                                                   impl::scaleElement(dst.format, i), table.data(),
                                                   axis);
            });
            _has[i] = is_blend && _planes[i].plan(axis, here);
        }
        _src = src;
    }

    /// Before another picture.
    void restart() {
        for (impl::BlendPlane& plane : _planes) {
            plane.restart();
        }
    }

    /// Null if there is none.
    impl::BlendPlane* find(int plane) { return _has[plane] ? &_planes[plane] : nullptr; }

  private:
    impl::BlendPlane _planes[3];
    bool _has[3] = {};
    FrameLayout _src;
};

/// Where the elements of a destination row end in the source.
auto lastElements(FrameLayout const& src, Coordinates const& table) {
    return [&](int plane, std::int64_t i) {
        return impl::columnCut(table[static_cast<std::size_t>(i)], src.plane[plane].width).right;
    };
}

/// Destination rows from the first to the last; the window follows.
bool nextRow(std::int32_t& dst_row, FrameLayout const& dst_layout, Coordinates const& table,
             RowWindow& window) {
    if (dst_row >= dst_layout.size.height - 1) {
        return false;
    }
    ++dst_row;
    window.moveTo(table[static_cast<std::size_t>(dst_row)] >> impl::coordinateBits);
    return true;
}

}  // namespace

struct ScalerBilinearX::State {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    Coordinates _src_xs;
    RowWindow _window;
    impl::PassedRows _passed;
    impl::PlaneRows<impl::BlendColumns> _planes;
    BlendPlanes _blends;
    std::int32_t _table_width = 0;  ///< that all was made for; 0 while it doesn't stand

    void renew();
    void prepare(FrameLayout const& src_layout, int dst_width);

    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, int dst_width) {
        impl::prepareTables(_window, [&] { prepare(src_layout, dst_width); });
        impl::armWindow(_window, source, 1, here);
    }
};

/// The table stays, and `_src_layout`, which it is known by; so with the other two.
void ScalerBilinearX::State::renew() {
    _dst_layout.clear();
    _window.renew();
}

void ScalerBilinearX::State::prepare(FrameLayout const& src_layout, int dst_width) {
    Size const src_size = src_layout.size;
    bool const same_table = src_size.width == _src_layout.size.width && dst_width == _table_width;
    if (!same_table) {
        _dst_layout.clear();
        _table_width = 0;  // until all is made, no later call may take it as such
        impl::buildBilinearTable(src_size.width, dst_width, _src_xs);
        here.require(endsInside(_src_xs, src_size.width),
                     "_src_xs[dst_width - 1] < (src_size.width << SHIFT)");
    }
    _src_layout = src_layout;
    _dst_layout =
        FrameLayout(src_layout.format, {dst_width, src_size.height}, impl::defaultAlignment);
    _passed.plan(_src_layout, _dst_layout);
    _planes.plan(_src_layout, _dst_layout, _src_xs.size(), lastElements(_src_layout, _src_xs));
    _blends.plan(_src_layout, _dst_layout, _src_xs, same_table, _planes.planes);
    _table_width = dst_width;
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
    _state->arm(src_frame, src_frame.layout(), dst_width);
}

void ScalerBilinearX::reuse(IRowProducer& src_producer, int dst_width) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_width);
    _state->arm(src_producer, src_producer.layout(), dst_width);
}

FrameLayout const& ScalerBilinearX::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearX::produce(RowData& dst) {
    RowData const& src = *_state->_window.rowData(0);
    if (_state->_src_layout.plane[0].width == _state->_dst_layout.plane[0].width) {
        _state->_passed.copy(src, dst);
        return;
    }
    if (!impl::isScalable(_state->_dst_layout.format)) {
        throwUnsupported("ScalerBilinearX");
    }
    _state->_planes.forEach(dst, [&](int i, auto const& plane) {
        if (impl::BlendPlane* const blend = _state->_blends.find(i)) {
            blend->columns(src[i], dst[i]);
        } else {
            plane.function(plane.plan, _state->_src_xs.data(), src[i], dst[i]);
        }
    });
}

bool ScalerBilinearX::next() {
    return _state->_window.next();
}

struct ScalerBilinearY::State {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    Coordinates _src_ys;
    std::int32_t _dst_row = 0;
    impl::PlaneRows<impl::BlendRows> _planes;
    std::int32_t _table_height = 0;  ///< that all was made for; 0 while it doesn't stand

    void renew();
    void prepare(FrameLayout const& src_layout, int dst_height);

    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, int dst_height) {
        impl::prepareTables(_window, [&] { prepare(src_layout, dst_height); });
        int const window_size = limitWindowSize(verticalWindowSize(_dst_layout), source);
        impl::armWindow(_window, source, window_size, here);
        _window.moveTo(_src_ys.front() >> impl::coordinateBits);
    }
};

void ScalerBilinearY::State::renew() {
    _dst_layout.clear();
    _window.renew();
    _dst_row = 0;
}

void ScalerBilinearY::State::prepare(FrameLayout const& src_layout, int dst_height) {
    Size const src_size = src_layout.size;
    if (src_size.height != _src_layout.size.height || dst_height != _table_height) {
        _dst_layout.clear();
        _table_height = 0;  // until all is made, no later call may take it as such
        impl::buildBilinearTable(src_size.height, dst_height, _src_ys);
        here.require(endsInside(_src_ys, src_size.height),
                     "_src_ys[dst_height - 1] < (src_layout.size.height << SHIFT)");
    }
    _src_layout = src_layout;
    _dst_layout =
        FrameLayout(src_layout.format, {src_size.width, dst_height}, impl::defaultAlignment);
    _dst_row = 0;
    _planes.plan(_src_layout, _dst_layout, 0, [](int, std::int64_t) { return 0; });
    _table_height = dst_height;
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
    _state->arm(src_frame, src_frame.layout(), dst_height);
}

void ScalerBilinearY::reuse(IRowProducer& src_producer, int dst_height) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_height);
    _state->arm(src_producer, src_producer.layout(), dst_height);
}

FrameLayout const& ScalerBilinearY::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearY::produce(RowData& dst) {
    RowWindow& window = _state->_window;
    VerticalCut const cut = verticalCut(window, _state->_src_ys, _state->_dst_row);
    if (_state->_dst_layout.size.height == _state->_src_layout.size.height) {
        copyRowData(_state->_dst_layout, *window.rowData(cut.window_row), dst);
        return;
    }
    if (!impl::isScalable(_state->_dst_layout.format)) {
        throwUnsupported("ScalerBilinearY");
    }
    RowData const& upper = *window.rowData(cut.window_row);
    FrameLayout const& layout = _state->_dst_layout;
    _state->_planes.forEach(dst, [&](int i, auto const& plane) {
        unsigned char const* const lower =
            (*window.rowData(lowerRow(window, cut.window_row, i)))[i];
        if (layout.plane[i].bits != 8 ||
            !impl::blendRowsByVectors(upper[i], lower, cut.weight, plane.plan.dst_samples,
                                      dst[i])) {
            plane.function(plane.plan, upper[i], lower, cut.weight, dst[i]);
        }
    });
}

bool ScalerBilinearY::next() {
    return nextRow(_state->_dst_row, _state->_dst_layout, _state->_src_ys, _state->_window);
}

struct ScalerBilinearXY::State {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    Coordinates _src_xs;
    Coordinates _src_ys;
    std::int32_t _dst_row = 0;
    impl::PlaneRows<impl::BlendColumnsAndRows> _planes;
    BlendPlanes _blends;
    Size _tables_size;  ///< that all was made for; empty while it doesn't stand

    void renew();
    void buildTables(Size src_size, Size dst_size);
    void prepare(FrameLayout const& src_layout, Size dst_size);

    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, Size dst_size) {
        impl::prepareTables(_window, [&] { prepare(src_layout, dst_size); });
        int const window_size = limitWindowSize(verticalWindowSize(_dst_layout), source);
        impl::armWindow(_window, source, window_size, here);
        _window.moveTo(_src_ys.front() >> impl::coordinateBits);
    }
};

void ScalerBilinearXY::State::renew() {
    _dst_layout.clear();
    _window.renew();
    _dst_row = 0;
}

void ScalerBilinearXY::State::buildTables(Size src_size, Size dst_size) {
    _dst_layout.clear();
    _tables_size = {};  // until all is made, no later call may take it as such
    impl::buildBilinearTable(src_size.width, dst_size.width, _src_xs);
    here.require(endsInside(_src_xs, src_size.width),
                 "_src_xs[dst_size.width - 1] < (src_size.width << SHIFT)");
    impl::buildBilinearTable(src_size.height, dst_size.height, _src_ys);
    here.require(endsInside(_src_ys, src_size.height),
                 "_src_ys[dst_size.height - 1] < (src_size.height << SHIFT)");
}

void ScalerBilinearXY::State::prepare(FrameLayout const& src_layout, Size dst_size) {
    bool const same_tables = src_layout.size == _src_layout.size && dst_size == _tables_size;
    if (!same_tables) {
        buildTables(src_layout.size, dst_size);
    }
    _src_layout = src_layout;
    _dst_layout = FrameLayout(src_layout.format, dst_size, impl::defaultAlignment);
    _dst_row = 0;
    _planes.plan(_src_layout, _dst_layout, _src_xs.size(), lastElements(_src_layout, _src_xs));
    _blends.plan(_src_layout, _dst_layout, _src_xs, same_tables, _planes.planes);
    _blends.restart();
    _tables_size = dst_size;
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
    _state->arm(src_frame, src_frame.layout(), dst_size);
}

void ScalerBilinearXY::reuse(IRowProducer& src_producer, Size dst_size) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(!dst_size.empty());
    _state->arm(src_producer, src_producer.layout(), dst_size);
}

FrameLayout const& ScalerBilinearXY::layout() {
    return _state->_dst_layout;
}

void ScalerBilinearXY::produce(RowData& dst) {
    RowWindow& window = _state->_window;
    VerticalCut const cut = verticalCut(window, _state->_src_ys, _state->_dst_row);
    if (!impl::isScalable(_state->_dst_layout.format)) {
        throwUnsupported("ScalerBilinearXY");
    }
    RowData const& upper = *window.rowData(cut.window_row);
    std::int64_t const first = window.firstRow();
    _state->_planes.forEach(dst, [&](int i, auto const& plane) {
        int const lower_row = lowerRow(window, cut.window_row, i);
        unsigned char const* const lower = (*window.rowData(lower_row))[i];
        if (impl::BlendPlane* const blend = _state->_blends.find(i)) {
            blend->columnsAndRows(upper[i], first + cut.window_row, lower, first + lower_row,
                                  cut.weight, dst[i]);
        } else {
            plane.function(plane.plan, _state->_src_xs.data(), upper[i], lower, cut.weight, dst[i]);
        }
    });
}

bool ScalerBilinearXY::next() {
    return nextRow(_state->_dst_row, _state->_dst_layout, _state->_src_ys, _state->_window);
}

}  // namespace ox
