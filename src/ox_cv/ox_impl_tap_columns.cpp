#include "ox_cv/ox_impl_tap_columns.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_scale_weights.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr char file[] = "src/ox_cv/ox_impl_scale_conv_x";

/// Where the products of a sample and a weight are summed.
template <class Sample>
using TapSum = std::conditional_t<sizeof(Sample) == 4, std::int64_t, std::int32_t>;

/// Whole units of a sum, clamped to the range of a sample. What is below 0 is clamped in any case,
/// so that the shift may round it down.
template <class Sample, class Sum>
Sample unitsOf(Sum sum, int shift) {
    return static_cast<Sample>(
        std::clamp<Sum>(sum >> shift, 0, static_cast<Sum>(std::numeric_limits<Sample>::max())));
}

/// Pixels that the last ones are at least, so that what a vector loop overwrites behind the pixels
/// before them still lies in the row.
constexpr std::size_t leastTail = 2;
constexpr std::uint64_t overwrittenBytes = 4;

}  // namespace

template <class Weight>
void TapColumns<Weight>::clear() {
    _data = nullptr;
    _sum = nullptr;
    _row_bytes = 0;
}

/// The loops that define the bytes.
template <class Weight>
struct TapColumns<Weight>::PlainLoops {
    using Function = Sum;

    template <class Sample, int Channels>
    static void row(TapColumns& columns, unsigned char const* src, unsigned char* dst) {
        ScaleData<Weight> const& data = *columns._data;
        auto const samples = static_cast<std::int64_t>(columns._row_bytes / sizeof(Sample));
        std::int64_t dst_sample = 0;
        for (ScaleSource const& source : data.sources()) {
            Weight const* const weights = data.kernels().row(source.kernel_index);
            for (int channel = 0; channel < Channels; ++channel) {
                std::int64_t const first = std::int64_t{source.src_start} * Channels + channel;
                std::int64_t const inside = (samples - first + Channels - 1) / Channels;
                std::int64_t const taps = std::clamp<std::int64_t>(inside, 0, data.aperture());
                storeSample<Sample>(dst, dst_sample++,
                                    sum<Sample, Channels>(src, first, weights, taps));
            }
        }
    }

    template <class Sample, int Channels>
    static Sample sum(unsigned char const* src, std::int64_t first, Weight const* weights,
                      std::int64_t taps) {
        using Total = TapSum<Sample>;
        using Wrapping = std::make_unsigned_t<Total>;
        Wrapping total = 0;
        for (std::int64_t k = 0; k < taps; ++k) {
            total += static_cast<Wrapping>(Total{weights[k]}) *
                     loadSample<Sample>(src, first + k * Channels);
        }
        return unitsOf<Sample>(static_cast<Total>(total), unitShift<Weight>);
    }
};

template <class Weight>
void TapColumns<Weight>::sumByVectors(TapColumns& columns, unsigned char const* src,
                                      unsigned char* dst) {
    rows::SumColumns* const sum = columns._shape.sum;
    rows::ColumnTaps taps = columns._taps;
    taps.count = columns._whole;
    sum(taps, src, dst);
    std::memcpy(columns._tail_src.data, src + columns._tail_begin, columns._tail_copied);
    taps.starts = columns._starts.data() + columns._whole;
    taps.count = columns._starts.size() - columns._whole;
    sum(taps, columns._tail_src.data, columns._tail_dst.data);
    std::memcpy(dst + columns._whole_dst_bytes, columns._tail_dst.data, columns._tail_dst_bytes);
}

template <class Weight>
void TapColumns<Weight>::plan(ScaleData<Weight> const& data, ScaleElement element,
                              std::uint64_t row_bytes) {
    clear();
    if (element.channels == 0) {
        return;
    }
    _data = &data;
    _row_bytes = row_bytes;
    auto const channels = static_cast<std::uint32_t>(element.channels);
    _shape = element.bits == 8 ? rows::routines().columns[channels - 1] : rows::TapShape{};
    if (_shape.sum != nullptr && data.aperture() > 0) {
        planVectors(channels);
        _sum = sumByVectors;
    } else {
        _sum = pickRowFunction<PlainLoops>(element);
    }
}

template <class Weight>
void TapColumns<Weight>::planVectors(std::uint32_t channels) {
    auto const taps = static_cast<std::size_t>(_data->aperture());
    _taps.steps = (taps - 1) / _shape.step_taps + 1;
    _taps.shift = unitShift<Weight>;
    resizeTable(_starts, std::ssize(_data->sources()), file);
    arrangeWeights();
    for (std::size_t i = 0; i < _starts.size(); ++i) {
        _starts[i].source = _data->sources()[i].src_start * channels;
    }
    planTail(channels);
    _taps.starts = _starts.data();
}

/// Only the rows that are used, in the order of their first use.
template <class Weight>
void TapColumns<Weight>::arrangeWeights() {
    constexpr std::uint32_t unplaced = std::numeric_limits<std::uint32_t>::max();
    auto const taps = static_cast<std::size_t>(_data->aperture());
    std::uint64_t const row_words = _taps.steps * _shape.step_words;
    std::vector<std::uint32_t> places;
    std::vector<std::int16_t> row;
    resizeTable(places, _data->kernels().rowCount(), file);
    resizeTable(row, _data->aperture(), file);
    std::fill(places.begin(), places.end(), unplaced);
    _weights.resize(multiplyBytes(places.size(), row_words * sizeof(std::int16_t)), false);
    auto* const arranged = reinterpret_cast<std::int16_t*>(_weights.data);
    std::uint64_t used = 0;
    for (std::size_t i = 0; i < _starts.size(); ++i) {
        std::uint32_t& place = places[_data->sources()[i].kernel_index];
        if (place == unplaced) {
            place = static_cast<std::uint32_t>(used);
            std::copy_n(_data->kernels().row(_data->sources()[i].kernel_index), taps, row.begin());
            _shape.arrange(row.data(), taps, arranged + used);
            used += row_words;
        }
        _starts[i].weights = place;
    }
    _taps.weights = arranged;
}

template <class Weight>
void TapColumns<Weight>::planTail(std::uint32_t channels) {
    std::size_t const count = _starts.size();
    std::uint64_t const reach =
        (_taps.steps - 1) * _shape.step_taps * channels + _shape.window_bytes;
    auto const leaves = [&](rows::TapStart start) { return start.source + reach > _row_bytes; };
    auto const first_to_leave = std::find_if(_starts.begin(), _starts.end(), leaves);
    auto const inside = static_cast<std::size_t>(first_to_leave - _starts.begin());
    _whole = std::min(inside, std::max(count, leastTail) - leastTail);
    _whole -= _whole % _shape.batch;
    _whole_dst_bytes = _whole * channels;
    _tail_dst_bytes = (count - _whole) * channels;

    std::uint64_t const padded = roundUpBytes(count - _whole, _shape.batch);
    resizeTable(_starts, static_cast<std::int64_t>(_whole + padded), file);
    std::fill(_starts.begin() + static_cast<std::ptrdiff_t>(count), _starts.end(),
              _starts[count - 1]);
    auto const tail = _starts.begin() + static_cast<std::ptrdiff_t>(_whole);
    auto const by_source = [](auto a, auto b) { return a.source < b.source; };
    auto const [first, last] = std::minmax_element(tail, _starts.end(), by_source);
    std::uint64_t const first_byte = first->source;
    _tail_begin = std::min(first_byte, _row_bytes);
    _tail_copied = std::min(_row_bytes - _tail_begin, last->source + reach - first_byte);
    _tail_src.resize(last->source + reach - first_byte, false);
    _tail_src.setZero();
    _tail_dst.resize(padded * channels + overwrittenBytes, false);
    std::for_each(tail, _starts.end(), [&](rows::TapStart& start) {
        start.source -= static_cast<std::uint32_t>(first_byte);
    });
}

template class TapColumns<signed char>;
template class TapColumns<short>;

}  // namespace ox::impl
