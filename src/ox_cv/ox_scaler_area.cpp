#include "ox_cv/ox_scaler_area.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_area_checks.h"
#include "ox_cv/ox_impl_area_rows.h"
#include "ox_cv/ox_impl_area_taps.h"
#include "ox_cv/ox_impl_blend_planes.h"
#include "ox_cv/ox_impl_passed_rows.h"
#include "ox_cv/ox_impl_scale_tables.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_impl_tap_planes.h"

namespace ox {

namespace {

constexpr impl::Place here = impl::areaPlace;

/// The constructors' value, which no `reuse` keeps.
constexpr int initialShift = 16;

/// Fractional bits of a weight: one bit is the sign.
int shiftOf(ScalerPrecision precision) {
    return static_cast<int>(precision) - 1;
}

/// What a table of weights was built for. It serves again while the sides stay, on purpose also
/// under another precision; but not where a new object would build one for that precision.
struct TableKey {
    std::int32_t src = 0;
    std::int32_t dst = 0;  ///< 0 while the table, or what is made by it, doesn't stand
    int shift = 0;
    bool is_new = true;  ///< whether the object hasn't been armed yet, or not since `renew`

    bool fits(std::int32_t src_side, std::int32_t dst_side, int wanted_shift) const {
        return src == src_side && dst == dst_side && (!is_new || shift == wanted_shift);
    }
};

}  // namespace

struct ScalerAreaX::State {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    std::vector<impl::AreaWeight> _weights;
    std::int32_t _shift = initialShift;
    std::uint16_t _full_weight = 0;
    impl::PassedRows _passed;
    impl::PlaneRows<impl::SumColumns<impl::AreaDown>> _planes;
    enum class Way { Loop, Taps, Blend };
    Way _ways[3] = {};            ///< of each plane
    impl::TapPlanes _taps[3];     ///< of the planes that vector code sums
    impl::BlendPlane _blends[3];  ///< and of those that it blends
    FrameLayout _ways_layout;     ///< of the source that they were made for
    int _ways_shift = 0;
    TableKey _key;  ///< of all that was made

    void renew();
    impl::AreaAxis axis() const { return {_weights.data(), _full_weight, _shift}; }
    void prepare(FrameLayout const& src_layout, int dst_width, ScalerPrecision precision);
    bool scalesUp(int plane) const {
        return _dst_layout.plane[plane].width >= _src_layout.plane[0].width;
    }
    void planPlanes();
    void chooseWays();
    Way chooseWay(int plane);
    bool planTaps(int plane, impl::AreaRow8 const& row, int channels);
    bool planBlend(int plane, impl::AreaRow8 const& row, int channels);
    void produce(int plane, unsigned char const* src, unsigned char* dst);

    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, int dst_width,
             ScalerPrecision precision) {
        impl::prepareTables(_window, [&] { prepare(src_layout, dst_width, precision); });
        impl::armWindow(_window, source, 1, here);
    }
};

void ScalerAreaX::State::renew() {
    _src_layout.clear();
    _dst_layout.clear();
    _window.renew();
    _key.is_new = true;
}

/// Each plane is up-scaled or down-scaled by its own width against that of luma, chroma too.
void ScalerAreaX::State::planPlanes() {
    using Down = impl::SumColumns<impl::AreaDown>;
    using Up = impl::SumColumns<impl::AreaUp>;
    _planes.plan(_src_layout, _dst_layout, _weights.size(), [&](int plane, std::int64_t i) {
        return scalesUp(plane) ? Up::lastElement(axis(), i) : Down::lastElement(axis(), i);
    });
    for (int i = 0; i < 3; ++i) {
        if (scalesUp(i)) {
            _planes.planes[static_cast<std::size_t>(i)].function =
                impl::pickRowFunction<Up>(impl::scaleElement(_dst_layout.format, i));
        }
    }
}

bool ScalerAreaX::State::planTaps(int plane, impl::AreaRow8 const& row, int channels) {
    rows::TapAxis axis;
    return impl::withMemory(here,
                            [&] { return impl::describeAreaTaps(this->axis(), row, axis); }) &&
           _taps[plane].plan(axis, static_cast<std::size_t>(channels),
                             static_cast<std::uint64_t>(row.last_pixel + 1), here);
}

bool ScalerAreaX::State::planBlend(int plane, impl::AreaRow8 const& row, int channels) {
    rows::BlendAxis axis;
    axis.channels = static_cast<std::size_t>(channels);
    axis.row_bytes = static_cast<std::size_t>((row.last_pixel + 1) * channels);
    return impl::withMemory(
               here, [&] { return impl::describeAreaBlend(this->axis(), row, axis.pixels); }) &&
           _blends[plane].plan(axis, here);
}

/// Vector code does planes of bytes whose rows are whole elements.
ScalerAreaX::State::Way ScalerAreaX::State::chooseWay(int plane) {
    impl::ScaleElement const element = impl::scaleElement(_dst_layout.format, plane);
    impl::RowPlan const& row = _planes.planes[static_cast<std::size_t>(plane)].plan;
    int const channels = element.channels;
    if (channels == 0 || element.bits != 8 || row.dst_samples % channels != 0 ||
        row.src_samples % channels != 0 || row.src_samples < channels) {
        return Way::Loop;
    }
    impl::AreaRow8 const whole{row.dst_samples / channels, row.src_samples / channels - 1,
                               row.entries - 1};
    if (scalesUp(plane)) {
        return planBlend(plane, whole, channels) ? Way::Blend : Way::Loop;
    }
    return planTaps(plane, whole, channels) ? Way::Taps : Way::Loop;
}

void ScalerAreaX::State::chooseWays() {
    for (int i = 0; i < 3; ++i) {
        _ways[i] = chooseWay(i);
    }
    _ways_layout = _src_layout;
    _ways_shift = _shift;
}

void ScalerAreaX::State::prepare(FrameLayout const& src_layout, int dst_width,
                                 ScalerPrecision precision) {
    Size const src_size = src_layout.size;
    impl::checkSide(src_size.width, "ScalerAreaX");
    _shift = shiftOf(precision);
    bool const same_table = _key.fits(src_size.width, dst_width, _shift);
    if (!same_table) {
        _dst_layout.clear();
        // Until all is made, no later call may take it as such.
        _key = {src_size.width, 0, _shift};
        _full_weight = impl::buildAreaTable(src_size.width, dst_width, _shift, _weights);
    }
    _src_layout = src_layout;
    _dst_layout =
        FrameLayout(src_layout.format, {dst_width, src_size.height}, impl::defaultAlignment);
    _passed.plan(_src_layout, _dst_layout);
    planPlanes();
    if (!same_table || _ways_shift != _shift || !impl::sameRows(_ways_layout, src_layout)) {
        _ways_layout.clear();
        chooseWays();
    }
    _key.dst = dst_width;
    _key.is_new = false;
}

void ScalerAreaX::State::produce(int plane, unsigned char const* src, unsigned char* dst) {
    switch (_ways[plane]) {
        case Way::Taps:
            return _taps[plane].sum(src, dst);
        case Way::Blend:
            return _blends[plane].columns(src, dst);
        default: {
            auto const& row = _planes.planes[static_cast<std::size_t>(plane)];
            return row.function(row.plan, axis(), src, dst);
        }
    }
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
    _state->arm(src_frame, src_frame.layout(), dst_width, precision);
}

void ScalerAreaX::reuse(IRowProducer& src_producer, int dst_width, ScalerPrecision precision) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_width);
    impl::checkPrecision(precision);
    _state->arm(src_producer, src_producer.layout(), dst_width, precision);
}

FrameLayout const& ScalerAreaX::layout() {
    return _state->_dst_layout;
}

void ScalerAreaX::produce(RowData& dst) {
    RowData const& src = *_state->_window.rowData(0);
    FrameLayout const& layout = _state->_dst_layout;
    if (_state->_src_layout.plane[0].width == layout.plane[0].width) {
        _state->_passed.copy(src, dst);
        return;
    }
    impl::refuseUnscalable(layout.format, "ScalerAreaX");
    _state->_planes.forEach(
        dst, [&](int i, auto const& /*plane*/) { _state->produce(i, src[i], dst[i]); });
    impl::refuseWritten(layout.format, "ScalerAreaX");
}

bool ScalerAreaX::next() {
    return _state->_window.next();
}

struct ScalerAreaY::State {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    std::int32_t _dst_row = 0;
    std::vector<unsigned char const*> _rows;
    std::vector<impl::AreaWeight> _weights;
    std::int32_t _shift = initialShift;
    std::uint16_t _full_weight = 0;
    Buffer _accumulator;
    bool _subsampled = false;
    impl::AreaRowTaps _taps;
    impl::PlaneRows<impl::SumRows> _planes;
    TableKey _key;  ///< of the table

    void renew();
    impl::AreaWeight weight(std::int64_t row) const {
        return _weights[static_cast<std::size_t>(row)];
    }
    bool shrinks() const { return _dst_layout.size.height < _src_layout.size.height; }

    void prepare(FrameLayout const& src_layout, int dst_height, ScalerPrecision precision);
    void planPlanes();
    int rowCount() const;
    impl::SumRows::Cut cutPlane(int plane);

    template <class Source>
    void arm(Source& source, FrameLayout const& src_layout, int dst_height,
             ScalerPrecision precision) {
        impl::prepareTables(_window, [&] { prepare(src_layout, dst_height, precision); });
        int const count = static_cast<int>(_rows.size());
        impl::armWindow(_window, source,
                        std::min(_subsampled ? 2 * count : count, src_layout.size.height), here);
    }
};

void ScalerAreaY::State::renew() {
    _src_layout.clear();
    _dst_layout.clear();
    _window.renew();
    _dst_row = 0;
    _key.is_new = true;
}

/// How many source rows a destination row takes at most.
int ScalerAreaY::State::rowCount() const {
    if (shrinks()) {
        impl::AreaWeight const second = weight(1);
        return second.index + (_full_weight != second.weight ? 2 : 0);
    }
    return _dst_layout.size.height > _src_layout.size.height ? 2 : 1;
}

void ScalerAreaY::State::planPlanes() {
    _planes.plan(_src_layout, _dst_layout, 0, [](int, std::int64_t) { return 0; });
    if (impl::hasShortAreaRows(_dst_layout.format)) {
        _planes.planes[0].plan.dst_samples = _dst_layout.plane[0].width;
    }
    std::int64_t longest = 0;
    for (auto const& plane : _planes.planes) {
        longest = std::max(longest, plane.plan.dst_samples);
    }
    auto const bytes = _dst_layout.plane[0].bits == 8 ? sizeof(impl::Accumulator<std::uint8_t>)
                                                      : sizeof(impl::Accumulator<std::uint16_t>);
    _accumulator.resize(static_cast<unsigned long>(longest) * bytes, false);
}

void ScalerAreaY::State::prepare(FrameLayout const& src_layout, int dst_height,
                                 ScalerPrecision precision) {
    Size const src_size = src_layout.size;
    impl::checkSide(src_size.height, "ScalerAreaY");
    _dst_row = 0;
    _shift = shiftOf(precision);
    if (!_key.fits(src_size.height, dst_height, _shift)) {
        _dst_layout.clear();
        // Until all is made, no later call may take it as such.
        _key = {src_size.height, 0, _shift};
        _full_weight = impl::buildAreaTable(src_size.height, dst_height, _shift, _weights);
    }
    _src_layout = src_layout;
    _dst_layout =
        FrameLayout(src_layout.format, {src_size.width, dst_height}, impl::defaultAlignment);
    _subsampled =
        _dst_layout.planeCount >= 2 && _dst_layout.plane[0].height != _dst_layout.plane[1].height;
    impl::resizeTable(_rows, rowCount(), here);
    _taps.reserve(rowCount() + std::int64_t{2}, here);
    planPlanes();
    _key.dst = dst_height;
    _key.is_new = false;
}

/// Planar 4:2:0 chroma goes by the weights of its own row, two frame rows apart; interleaved chroma
/// goes by luma's weights and rows. The difference is on purpose.
impl::SumRows::Cut ScalerAreaY::State::cutPlane(int plane) {
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
    impl::AreaCut const cut = shrinks() ? impl::AreaDown::cut(_full_weight, entry, following)
                                        : impl::AreaUp::cut(_full_weight, entry, following);
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
    _state->arm(src_frame, src_frame.layout(), dst_height, precision);
}

void ScalerAreaY::reuse(IRowProducer& src_producer, int dst_height, ScalerPrecision precision) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(0 < dst_height);
    impl::checkPrecision(precision);
    _state->arm(src_producer, src_producer.layout(), dst_height, precision);
}

FrameLayout const& ScalerAreaY::layout() {
    return _state->_dst_layout;
}

void ScalerAreaY::produce(RowData& dst) {
    RowWindow& window = _state->_window;
    FrameLayout const& layout = _state->_dst_layout;
    impl::checkArmed(window);
    if (layout.size.height == _state->_src_layout.size.height) {
        int const window_row = _state->weight(_state->_dst_row).index - window.firstRow();
        copyRowData(layout, *window.rowData(window_row), dst);
        return;
    }
    impl::refuseUnscalable(layout.format, "ScalerAreaY");
    window.rowData(0);  // keeps pace with a producer, whatever planes are asked for
    _state->_planes.forEach(dst, [&](int i, auto const& plane) {
        impl::SumRows::Cut const cut = _state->cutPlane(i);
        bool const bytes = layout.plane[i].bits == 8;
        if (!bytes || !_state->_taps.sum(cut, plane.plan.dst_samples, dst[i])) {
            plane.function(cut, plane.plan.dst_samples, _state->_accumulator.data, dst[i]);
        }
    });
    impl::refuseWritten(layout.format, "ScalerAreaY");
}

bool ScalerAreaY::next() {
    State& state = *_state;
    if (state._dst_row >= state._dst_layout.size.height - 1) {
        return false;
    }
    ++state._dst_row;
    state._window.moveTo(state._subsampled ? 2 * state.weight(state._dst_row / 2).index
                                           : state.weight(state._dst_row).index);
    return true;
}

}  // namespace ox
