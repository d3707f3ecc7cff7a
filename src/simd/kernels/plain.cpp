#include "simd/kernels/plain.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "simd/kernels/base.h"
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
        .swapRedBlue = Base::SwapRedBlue,
        .splitThreePlanes = Base::SplitThreePlanes,
        .mergeThreePlanes = Base::MergeThreePlanes,
        .splitTwoPlanes = Base::SplitTwoPlanes,
        .mergeTwoPlanes = Base::MergeTwoPlanes,
        .convertBgrToGray = Base::ConvertBgrToGray,
        .expandGrayToBgr = Base::ExpandGrayToBgr,
        .scaleBytesToFloats = Base::ScaleBytesToFloats,
        .scaleFloatsToBytes = ScaleFloatsToBytes,
        .convertBgrToI420 = Base::ConvertBgrToI420,
        .convertBgrToYuv444 = Base::ConvertBgrToYuv444,
        .convertI420ToBgr = Base::ConvertI420ToBgr,
        .convertI420ToRgb = Base::ConvertI420ToRgb,
        .convertYuv444ToBgr = Base::ConvertYuv444ToBgr,
        .convertNv12ToBgr = Base::ConvertNv12ToBgr,
        .convertNv12ToRgb = Base::ConvertNv12ToRgb,
        .convertNv21ToBgr = Base::ConvertNv21ToBgr,
        .convertNv21ToRgb = Base::ConvertNv21ToRgb,
        .convertNv12ToBgrDirectly = Base::ConvertNv12ToBgrDirectly,
        .convertBgrToNv12 = Base::ConvertBgrToNv12,
        .floatsToHalves = FloatsToHalves,
        .halvesToFloats = HalvesToFloats,
        .addConstantFloats = Base::AddConstantFloats,
        .accumulateScaledFloats = Base::AccumulateScaledFloats,
        .multiplyFloats = Base::MultiplyFloats,
    };
}

}  // namespace Simd::Plain
