// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/kernels/kernels.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "simd/kernels/half.h"
#include "simd/simd_targets.h"
#include "vector/copy.h"
#include "vector/dispatch.h"

namespace Simd::Plain {

void ScaleFloatsToBytes(float const* src, std::size_t count, float const* lower, float const* upper,
                        Bytes dst) {
    Base::ScaleFloatsToBytes(src, count, lower, upper, dst);
    for (std::size_t i = 0; i < count; ++i) {
        float x = 0;
        std::memcpy(&x, src + i, sizeof x);
        if (std::isnan(x)) {
            dst[i] = 0;
        }
    }
}

void FloatsToHalves(float const* src, std::size_t count, std::uint16_t* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = roundToHalf(std::bit_cast<std::uint32_t>(src[i]));
    }
}

void HalvesToFloats(std::uint16_t const* src, std::size_t count, float* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = std::bit_cast<float>(widenAndQuietHalf(src[i]));
    }
}

Neon::Routines routines() {
    return {
#define OX_PLAIN(name, ...) .name = Plain::name,
        OX_KERNELS(OX_PLAIN)
#undef OX_PLAIN
    };
}

}  // namespace Simd::Plain

namespace Simd::Neon {

bool KernelsEnabled = true;

namespace {

[[gnu::cold]] Routines findRoutines() {
    Routines best = Plain::routines();
#ifdef OX_WITH_HIGHWAY
    takeBgrRoutines(best);
    takeBgrToYuvRoutines(best);
    takeFloatRoutines(best);
    takeYuvToBgrRoutines(best);
#endif
    return best;
}

}  // namespace

Routines const& routines() {
    return ox::vector::RoutineTable<Routines, findRoutines>::get();
}

std::vector<char const*> CompiledTargets() {
    return ox::vector::compiledTargets();
}

std::vector<char const*> Targets() {
    return ox::vector::targets();
}

void UseTarget(char const* name) {
    ox::vector::useTarget(name);
}

}  // namespace Simd::Neon

namespace Simd {

void CopyPlaneRows(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                   std::size_t pixel_size, Bytes dst, std::size_t dst_stride) {
    std::size_t row_bytes = width * pixel_size;
    if (row_bytes == 0) {
        return;
    }
    if (src_stride == row_bytes && dst_stride == row_bytes) {
        row_bytes *= height;
        height = 1;
    }
    for (std::size_t y = 0; y < height; ++y, src += stepOf(src_stride), dst += stepOf(dst_stride)) {
        ox::vector::copyBytes(src, row_bytes, dst);
    }
}

}  // namespace Simd
