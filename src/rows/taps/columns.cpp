// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/taps/columns.h"

#include <algorithm>
#include <array>
#include <limits>

#include "rows/colour/channels.h"
#include "rows/rows_routines.h"

namespace ox::rows {

namespace {

/// The planes of a row that share a buffer.
std::array<std::uint8_t*, 4> planesOf(std::vector<std::uint8_t>& buffer, std::size_t plane_bytes) {
    std::uint8_t* const first = buffer.data();
    return {first, first + plane_bytes, first + 2 * plane_bytes, first + 3 * plane_bytes};
}

/// The type that sums products of a sample and a weight.
template <class Sample>
using TapSum = std::conditional_t<sizeof(Sample) == 4, std::int64_t, std::int32_t>;

/// The whole part of a sum, clamped to the range of a sample. Negative sums are clamped to 0
/// anyhow, so it doesn't matter that the shift rounds them down.
template <class Sample, class Sum>
Sample unitsOf(Sum sum, int shift) {
    return static_cast<Sample>(
        std::clamp<Sum>(sum >> shift, 0, static_cast<Sum>(std::numeric_limits<Sample>::max())));
}

}  // namespace

bool ByteTaps::compile(TapAxis const& axis, TapRow row) {
    if (axis.taps == 0 || axis.starts.empty()) {
        return false;
    }
    CompileTaps* const compile_taps = routines().taps.compile_taps;
    _channels = row.channels;
    _src_pixels = row.pixels;
    _dst_pixels = axis.starts.size();
    _as_it_is =
        compile_taps(axis, row, _program) && _program.dst_bytes <= _dst_pixels * row.channels;
    if (_as_it_is) {
        return true;
    }
    if (!compile_taps(axis, {1, row.pixels}, _program)) {
        return false;
    }
    _src_planes.resize(row.pixels * row.channels);
    _dst_planes.resize(_program.dst_bytes * row.channels);
    return true;
}

void ByteTaps::runByPlanes(std::uint8_t const* src, std::uint8_t* dst) {
    auto const src_planes = planesOf(_src_planes, _src_pixels);
    auto const dst_planes = planesOf(_dst_planes, _program.dst_bytes);
    splitChannels(src, _src_pixels, _channels, src_planes.data());
    for (std::size_t channel = 0; channel < _channels; ++channel) {
        _program.run(_program, src_planes[channel], dst_planes[channel]);
    }
    mergeChannels(dst_planes.data(), _dst_pixels, _channels, dst);
}

/// The loops that define the bytes.
struct TapColumns::PlainLoops {
    using Function = TapColumns::Function;

    template <class Sample, int Channels>
    static void row(TapColumns& columns, std::uint8_t const* src, std::uint8_t* dst) {
        TapAxis const& axis = columns.axis;
        auto const most = static_cast<std::int64_t>(axis.taps);
        std::int64_t dst_sample = 0;
        for (TapStart const start : axis.starts) {
            std::int16_t const* const weights = axis.weightRow(start.weights);
            for (int channel = 0; channel < Channels; ++channel) {
                std::int64_t const first = std::int64_t{start.first} * Channels + channel;
                std::int64_t const inside =
                    (columns._src_samples - first + Channels - 1) / Channels;
                std::int64_t const taps = std::clamp<std::int64_t>(inside, 0, most);
                storeSample<Sample>(dst, dst_sample++,
                                    sum<Sample, Channels>(src, first, {weights, taps}, axis.shift));
            }
        }
    }

  private:
    struct Weights {
        std::int16_t const* weights;
        std::int64_t count;
    };

    template <class Sample, int Channels>
    static Sample sum(std::uint8_t const* src, std::int64_t first, Weights taps, int shift) {
        using Total = TapSum<Sample>;
        using Wrapping = std::make_unsigned_t<Total>;
        Wrapping total = 0;
        for (std::int64_t k = 0; k < taps.count; ++k) {
            total += static_cast<Wrapping>(Total{taps.weights[k]}) *
                     loadSample<Sample>(src, first + k * Channels);
        }
        return unitsOf<Sample>(static_cast<Total>(total), shift);
    }
};

bool TapColumns::compile(Element element) {
    auto const channels = static_cast<std::size_t>(element.channels);
    auto const samples = static_cast<std::size_t>(_src_samples);
    return element.bits == 8 && samples % channels == 0 &&
           _bytes.compile(axis, {channels, samples / channels});
}

void TapColumns::plan(Element element, std::int64_t src_samples) {
    _src_samples = src_samples;
    _routine = compile(element) ? [](TapColumns& columns, std::uint8_t const* src,
                                     std::uint8_t* dst) { columns._bytes.run(src, dst); }
                                : pickRowFunction<PlainLoops>(element);
}

}  // namespace ox::rows
