#include "ox_cv/ox_impl_tap_columns.h"

#include <algorithm>
#include <limits>

#include "ox_cv/ox_impl_scale_weights.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_scale_conv_x"};

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
    columns._planes.sum(src, dst);
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
    auto const channels = static_cast<std::size_t>(element.channels);
    bool const whole_pixels = row_bytes % channels == 0;
    bool by_vectors = element.bits == 8 && whole_pixels;
    if (by_vectors) {
        withMemory(here, [&] { fillAxis(); });
        by_vectors = _planes.plan(_axis, channels, reachedBytes(row_bytes) / channels, here);
    }
    _sum = by_vectors ? sumByVectors : pickRowFunction<PlainLoops>(element);
}

/// Each row of weights that a pixel takes, as words.
template <class Weight>
void TapColumns<Weight>::fillAxis() {
    _axis.taps = static_cast<std::size_t>(_data->aperture());
    _axis.shift = unitShift<Weight>;
    _axis.weights.assign(static_cast<std::size_t>(_data->kernels().rowCount()) * _axis.taps, 0);
    _axis.starts.clear();
    _axis.starts.reserve(_data->sources().size());
    for (ScaleSource const source : _data->sources()) {
        _axis.starts.push_back({source.src_start, source.kernel_index});
        std::copy_n(_data->kernels().row(source.kernel_index), _axis.taps,
                    _axis.kernel(source.kernel_index));
    }
}

template class TapColumns<signed char>;
template class TapColumns<short>;

}  // namespace ox::impl
