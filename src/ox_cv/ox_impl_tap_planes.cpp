#include "ox_cv/ox_impl_tap_planes.h"

#include <algorithm>
#include <array>

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/rows_channels.h"
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
                     char const* file) {
    rows::CompileTaps* const compile = rows::routines().compile_taps;
    if (compile == nullptr || axis.taps == 0 || axis.starts.empty()) {
        return false;
    }
    if (!withMemory(file, [&] { return compile(axis, _program); })) {
        return false;
    }
    _channels = channels;
    _src_pixels = std::min<std::uint64_t>(src_pixels, _program.src_bytes);
    _dst_pixels = axis.starts.size();
    _src_planes.resize(multiplyBytes(_program.src_bytes, channels), false);
    _src_planes.setZero();
    _dst_planes.resize(multiplyBytes(_program.pixels, channels), false);
    return true;
}

void TapPlanes::sum(unsigned char const* src, unsigned char* dst) {
    auto const src_planes = planesOf(_src_planes, _program.src_bytes);
    auto const dst_planes = planesOf(_dst_planes, _program.pixels);
    rows::splitChannels(src, _src_pixels, _channels, src_planes.data());
    rows::routines().sum_taps(_program, _channels, src_planes.data(), dst_planes.data());
    rows::mergeChannels(dst_planes.data(), _dst_pixels, _channels, dst);
}

}  // namespace ox::impl
