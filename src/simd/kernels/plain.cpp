#include "simd/kernels/plain.h"

#include <algorithm>
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

namespace {

/// The offsets of both bytes of each entry.
void compileBytePairs(BytePairs const& pairs, RowProgram& program) {
    program.entries = pairs.width * pairs.channels;
    program.offsets.Resize(2 * program.entries, 16);
    program.tables.Resize(2 * program.entries, 16);
    std::copy_n(pairs.alpha, 2 * program.entries, program.tables.data);
    auto const channels = static_cast<std::int32_t>(pairs.channels);
    std::int32_t* offset = program.offsets.data;
    for (std::uint64_t x = 0; x < pairs.width; ++x) {
        std::int32_t const first = pairs.index[x] * channels;
        for (std::int32_t c = 0; c < channels; ++c) {
            *offset++ = std::max(first, 0) + c;
            *offset++ = first + channels + c;
        }
    }
}

void blendBytePairs(RowProgram& program, std::uint8_t const* src, std::uint16_t* row) {
    for (std::uint64_t k = 0; k < program.entries; ++k) {
        std::int32_t const* const offset = program.offsets.data + 2 * k;
        std::uint8_t const* const weight = program.tables.data + 2 * k;
        row[k] =
            static_cast<std::uint16_t>(src[offset[0]] * weight[0] + src[offset[1]] * weight[1]);
    }
}

void blendByteRows(std::uint16_t const* top, std::uint16_t const* bottom, std::int32_t weight,
                   std::size_t count, std::uint8_t* dst) {
    for (std::size_t k = 0; k < count; ++k) {
        dst[k] =
            static_cast<std::uint8_t>((top[k] * (16 - weight) + bottom[k] * weight + 128) >> 8);
    }
}

}  // namespace

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
        .findNearestOffsets = Base::FindNearestOffsets,
        .findBilinearPositions = Base::FindBilinearPositions,
        .blendWarpTaps = Base::BlendWarpTaps,
        .compilePixels = [](PixelColumns const&, RowProgram&) { return false; },
        .copyPixels = nullptr,
        .fillByteSamples = nullptr,
        .compileBytePairs = compileBytePairs,
        .blendBytePairs = blendBytePairs,
        .blendByteRows = blendByteRows,
        .compileAreaColumns = [](AreaColumns const&, RowProgram&) { return false; },
        .averageAreaRow = nullptr,
        .compileFloatColumns = [](FloatColumns const&, RowProgram&) { return false; },
        .blendFloatColumns = nullptr,
        .blendFloatPairRows = nullptr,
        .blendFloatRows = nullptr,
    };
}

}  // namespace Simd::Plain
