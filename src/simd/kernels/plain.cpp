#include "simd/kernels/plain.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "simd/kernels/half.h"

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
