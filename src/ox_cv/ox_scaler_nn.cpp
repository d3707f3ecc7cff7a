#include "ox_cv/ox_scaler_nn.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_impl_scale_tables.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler_nn"};

struct Gather {
    using Function = void (*)(impl::RowPlan const&, std::uint16_t const* table,
                              unsigned char const* src, unsigned char* dst);

    template <class Sample, int Channels>
    static void row(impl::RowPlan const& plan, std::uint16_t const* table, unsigned char const* src,
                    unsigned char* dst) {
        impl::walkRow<Sample, Channels>(plan, dst, [=](auto reader, std::int64_t i, int c) {
            return reader.template sample<Sample, Channels>(src, table[reader.entry(i)], c);
        });
    }
};

/// The vector loop of a plane, all of whose elements lie in the row.
class GatherProgram {
  public:
    /// @return false if there is none; then the plain loop does it
    bool plan(impl::RowPlan const& row, impl::ScaleElement element,
              std::vector<std::uint16_t> const& table) {
        rows::Routines const& routines = rows::routines();
        auto const pixel_bytes = static_cast<std::size_t>(element.channels * element.bits / 8);
        if (routines.compile_pixels == nullptr || element.channels == 0 ||
            row.whole * element.channels != row.dst_samples ||
            !std::is_sorted(table.begin(), table.end())) {
            return false;
        }
        impl::resizeTable(_offsets, row.whole, here);
        std::transform(table.begin(), table.begin() + row.whole, _offsets.begin(),
                       [=](std::uint16_t x) { return static_cast<std::int32_t>(x * pixel_bytes); });
        auto const row_bytes = static_cast<std::uint64_t>(row.src_samples * element.bits / 8);
        return routines.compile_pixels(
            {_offsets.data(), static_cast<std::uint64_t>(row.whole), pixel_bytes, row_bytes},
            _program);
    }

    void copy(unsigned char const* src, unsigned char* dst) {
        rows::routines().copy_pixels(_program, src, dst);
    }

  private:
    std::vector<std::int32_t> _offsets;
    Simd::RowProgram _program;
};

}  // namespace

struct ScalerNearestNeighbor::State {
    FrameLayout _dst_layout;
    RowWindow _window;
    std::vector<std::uint16_t> _src_xs;
    std::vector<std::uint16_t> _src_ys;
    std::int32_t _dst_row = 0;
    std::int32_t _src_width = 0;
    std::int32_t _src_height = 0;
    impl::PlaneRows<Gather> _planes;
    GatherProgram _programs[3];
    bool _has_program[3] = {};
    FrameLayout _programs_layout;  ///< of the source that they were made for
    Size _tables_size;             ///< that all was made for; empty while it doesn't stand

    void renew();
    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, Size dst_size);
    void prepare(FrameLayout const& src_layout, Size dst_size);
    void buildTables(Size src_size, Size dst_size);
    void planPrograms(FrameLayout const& src_layout);
};

/// The tables stay, and `_src_width` and `_src_height`, which they are known by.
void ScalerNearestNeighbor::State::renew() {
    _dst_layout.clear();
    _window.renew();
    _dst_row = 0;
}

void ScalerNearestNeighbor::State::buildTables(Size src_size, Size dst_size) {
    _dst_layout.clear();
    _tables_size = {};  // until all is made, no later call may take it as such
    impl::buildNearestTable(src_size.width, dst_size.width, _src_xs);
    here.require(_src_xs.back() < src_size.width, "_src_xs[dst_size.width - 1] < src_size.width");
    impl::buildNearestTable(src_size.height, dst_size.height, _src_ys);
    here.require(_src_ys.back() < src_size.height,
                 "_src_ys[dst_size.height - 1] < src_size.height");
}

void ScalerNearestNeighbor::State::planPrograms(FrameLayout const& src_layout) {
    _programs_layout.clear();
    for (int i = 0; i < 3; ++i) {
        _has_program[i] = _programs[i].plan(_planes.planes[static_cast<std::size_t>(i)].plan,
                                            impl::scaleElement(_dst_layout.format, i), _src_xs);
    }
    _programs_layout = src_layout;
}

void ScalerNearestNeighbor::State::prepare(FrameLayout const& src_layout, Size dst_size) {
    bool const same_tables =
        src_layout.size == Size{_src_width, _src_height} && dst_size == _tables_size;
    if (!same_tables) {
        buildTables(src_layout.size, dst_size);
    }
    _dst_layout = FrameLayout(src_layout.format, dst_size, impl::defaultAlignment);
    _planes.plan(src_layout, _dst_layout, _src_xs.size(),
                 [this](int, std::int64_t i) -> std::int64_t {
                     return _src_xs[static_cast<std::size_t>(i)];
                 });
    if (!same_tables || !impl::sameRows(_programs_layout, src_layout)) {
        planPrograms(src_layout);
    }
    _dst_row = 0;
    _src_width = src_layout.size.width;
    _src_height = src_layout.size.height;
    _tables_size = dst_size;
}

template <class Source>
void ScalerNearestNeighbor::State::arm(Source& source, FrameLayout const& src_layout,
                                       Size dst_size) {
    impl::prepareTables(_window, [&] { prepare(src_layout, dst_size); });
    impl::armWindow(_window, source, 1, here);
    _window.moveTo(_src_ys.front());
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
    _state->arm(src_frame, src_frame.layout(), dst_size);
}

void ScalerNearestNeighbor::reuse(IRowProducer& src_producer, Size dst_size) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(!dst_size.empty());
    _state->arm(src_producer, src_producer.layout(), dst_size);
}

FrameLayout const& ScalerNearestNeighbor::layout() {
    return _state->_dst_layout;
}

void ScalerNearestNeighbor::produce(RowData& dst) {
    RowData const& src = *_state->_window.rowData(0);
    FrameLayout const& layout = _state->_dst_layout;
    // Before any look at the format: rows whose width stays pass in every format.
    if (_state->_src_width == layout.plane[0].width) {
        copyRowData(layout, src, dst);
        return;
    }
    if (!impl::isScalable(layout.format)) {
        here.fail(StatusNotSupported,
                  "Failure in ScalerNearestNeighbor::produce(...) : unsupported frame format.");
    }
    _state->_planes.forEach(dst, [&](int i, auto const& plane) {
        if (_state->_has_program[i]) {
            _state->_programs[i].copy(src[i], dst[i]);
        } else {
            plane.function(plane.plan, _state->_src_xs.data(), src[i], dst[i]);
        }
    });
}

bool ScalerNearestNeighbor::next() {
    if (_state->_dst_row >= _state->_dst_layout.size.height - 1) {
        return false;
    }
    ++_state->_dst_row;
    _state->_window.moveTo(_state->_src_ys[static_cast<std::size_t>(_state->_dst_row)]);
    return true;
}

}  // namespace ox
