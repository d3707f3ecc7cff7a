// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/kernels/vector_bgr_to_yuv.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "simd/kernels/formulas.h"
#include "simd/kernels/kernels.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

static_assert(toYuvBits == 14);  // as in `WeightedBytes`

HWY_INLINE V8 lumaOf(ThreeChannels pixels) {
    return hn::Add(WeightedBytes<lumaWeights>(pixels), hn::Set(Tag8(), lumaOffset));
}

template <ChannelWeights weights>
HWY_INLINE V8 chromaOf(PixelHalf lower, PixelHalf upper) {
    return hn::Add(WeightedBytes<weights>(lower, upper), hn::Set(Tag8(), chromaOffset));
}

template <ChannelWeights weights>
HWY_INLINE hn::Vec<HalfTag8> chromaOf(PixelHalf pixels) {
    return hn::Add(WeightedBytes<weights>(pixels), hn::Set(HalfTag8(), chromaOffset));
}

void ConvertBgrToYuv444(ConstBytes bgr, std::size_t width, std::size_t height,
                        std::size_t bgr_stride, Bytes y, std::size_t y_stride, Bytes u,
                        std::size_t u_stride, Bytes v, std::size_t v_stride) {
    joinRows(
        width, height,
        bgr_stride == 3 * width && y_stride == width && u_stride == width && v_stride == width);
    if (width < blockBytes) {
        return Base::ConvertBgrToYuv444(bgr, width, height, bgr_stride, y, y_stride, u, u_stride, v,
                                        v_stride);
    }
    for (std::size_t row = 0; row < height; ++row, bgr += stepOf(bgr_stride), y += stepOf(y_stride),
                     u += stepOf(u_stride), v += stepOf(v_stride)) {
        walkTracks(
            width, blockBytes,
            [=](std::size_t x, ConstBytes from) OX_LONG_BLOCK {
                prefetch<3 * blockBytes, aheadOfBgr>(from);
                ThreeChannels const pixels = LoadThree(from);
                PixelHalf const lower = LowerHalf(pixels);
                PixelHalf const upper = UpperHalf(pixels);
                hn::StoreU(lumaOf(pixels), Tag8(), y + x);
                hn::StoreU(chromaOf<uWeights>(lower, upper), Tag8(), u + x);
                hn::StoreU(chromaOf<vWeights>(lower, upper), Tag8(), v + x);
            },
            along<3>(bgr));
    }
}

/// Where a row of chroma at half the columns goes: two planes or pairs. store(x, pixels) takes the
/// means of the block at x.
struct PlanarChromaTarget {
    Bytes u;
    std::size_t u_stride;
    Bytes v;
    std::size_t v_stride;

    HWY_INLINE void store(std::size_t x, PixelHalf mean) const {
        hn::StoreU(chromaOf<uWeights>(mean), HalfTag8(), u + x / 2);
        hn::StoreU(chromaOf<vWeights>(mean), HalfTag8(), v + x / 2);
    }
    void next() {
        u += stepOf(u_stride);
        v += stepOf(v_stride);
    }
};

struct PairedChromaTarget {
    Bytes uv;
    std::size_t stride;

    HWY_INLINE void store(std::size_t x, PixelHalf mean) const {
        V8 const pairs = WeightedPairs<uWeights, vWeights>(mean);
        hn::StoreU(hn::Add(pairs, hn::Set(Tag8(), chromaOffset)), Tag8(), uv + x);
    }
    void next() { uv += stepOf(stride); }
};

template <class Chroma>
void convertTo420(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                  Bytes y, std::size_t y_stride, Chroma chroma) {
    Tag8 const d;
    for (std::size_t row = 0; row < height / 2; ++row) {
        Bytes const lower_y = y + stepOf(y_stride);
        walkTracks(
            width, blockBytes,
            [=](std::size_t x, ConstBytes upper, ConstBytes lower) OX_LONG_BLOCK {
                prefetch<3 * blockBytes, aheadOfBgr>(upper);
                prefetch<3 * blockBytes, aheadOfBgr>(lower);
                ThreeChannels const top = LoadThree(upper);
                ThreeChannels const bottom = LoadThree(lower);
                hn::StoreU(lumaOf(top), d, y + x);
                hn::StoreU(lumaOf(bottom), d, lower_y + x);
                chroma.store(x, Average(top, bottom));
            },
            along<3>(bgr), along<3>(bgr + stepOf(bgr_stride)));
        bgr += 2 * stepOf(bgr_stride);
        y += 2 * stepOf(y_stride);
        chroma.next();
    }
}

void ConvertBgrToI420(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes y, std::size_t y_stride, Bytes u, std::size_t u_stride, Bytes v,
                      std::size_t v_stride) {
    if (width < blockBytes) {
        return Base::ConvertBgrToI420(bgr, width, height, bgr_stride, y, y_stride, u, u_stride, v,
                                      v_stride);
    }
    convertTo420(bgr, width, height, bgr_stride, y, y_stride,
                 PlanarChromaTarget{u, u_stride, v, v_stride});
}

void ConvertBgrToNv12(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes y, std::size_t y_stride, Bytes uv, std::size_t uv_stride) {
    if (width < blockBytes) {
        return Base::ConvertBgrToNv12(bgr, width, height, bgr_stride, y, y_stride, uv, uv_stride);
    }
    convertTo420(bgr, width, height, bgr_stride, y, y_stride, PairedChromaTarget{uv, uv_stride});
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
#define OX_TAKE(name, ...) routines.name = name;
    OX_BGR_TO_YUV_KERNELS(OX_TAKE)
#undef OX_TAKE
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeBgrToYuvRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
