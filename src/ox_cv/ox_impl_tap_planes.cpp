#include "ox_cv/ox_impl_tap_planes.h"

#include <algorithm>
#include <array>

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/colour/channels.h"
#include "rows/rows_routines.h"

namespace ox::impl {

namespace {

/// The planes of a buffer that they share.
std::array<unsigned char*, 4> planesOf(Buffer const& buffer, std::uint64_t plane_bytes) {
    return {buffer.data, buffer.data + plane_bytes, buffer.data + 2 * plane_bytes,
            buffer.data + 3 * plane_bytes};
}

}  // namespace

bool TapPlanes::plan(rows::TapAxis const& axis, std::size_t channels, std::uint64_t src_pixels,
                     Place here) {
    if (rows::routines().taps.compile_taps == nullptr || axis.taps == 0 || axis.starts.empty()) {
        return false;
    }
    auto const compile = [&](std::size_t interleaved) {
        return withMemory(here, [&] {
            return rows::routines().taps.compile_taps(axis, {interleaved, src_pixels}, _program);
        });
    };
    _channels = channels;
    _src_pixels = src_pixels;
    _dst_pixels = axis.starts.size();
    _as_it_is = compile(channels) && _program.src_bytes <= src_pixels * channels &&
                _program.dst_bytes <= _dst_pixels * channels;
    if (_as_it_is) {
        return true;
    }
    if (!compile(1)) {
        return false;
    }
    _src_pixels = std::min<std::uint64_t>(src_pixels, _program.src_bytes);
    _src_planes.resize(multiplyBytes(_program.src_bytes, channels), false);
    _src_planes.setZero();
    _dst_planes.resize(multiplyBytes(_program.dst_bytes, channels), false);
    return true;
}

void TapPlanes::sum(unsigned char const* src, unsigned char* dst) {
    rows::SumTaps* const sum_taps = rows::routines().taps.sum_taps;
    if (_as_it_is) {
        return sum_taps(_program, src, dst);
    }
    auto const src_planes = planesOf(_src_planes, _program.src_bytes);
    auto const dst_planes = planesOf(_dst_planes, _program.dst_bytes);
    rows::splitChannels(src, _src_pixels, _channels, src_planes.data());
    for (std::size_t channel = 0; channel < _channels; ++channel) {
        sum_taps(_program, src_planes[channel], dst_planes[channel]);
    }
    rows::mergeChannels(dst_planes.data(), _dst_pixels, _channels, dst);
}

}  // namespace ox::impl
