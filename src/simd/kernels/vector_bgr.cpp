#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/kernels/vector_bgr.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "simd/kernels/base.h"
#include "simd/kernels/formulas.h"
#include "simd/kernels/neon.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_NEON

void swapRow(ConstBytes src, Bytes dst, std::size_t width) {
    walkShortBlocks(width, blockBytes, [&](std::size_t x) {
        ThreeChannels const v = LoadThree(src + 3 * x);
        StoreThree(dst + 3 * x, {v.c2, v.c1, v.c0});
    });
}

#else

/// Exchanges the outer bytes of the whole pixels of each period; its last byte stays.
constexpr ByteTable exchangeTable() {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes; ++j) {
        std::size_t const k = j % permutePeriod;
        table[j] = static_cast<std::uint8_t>(k + 1 == permutePeriod ? k : k / 3 * 3 + 2 - k % 3);
    }
    return table;
}

alignas(64) constexpr ByteTable exchange = exchangeTable();

/// A period holds whole pixels and one byte more, which the next store overwrites.
void swapRow(ConstBytes src, Bytes dst, std::size_t width) {
    constexpr std::size_t step = blockBytes / permutePeriod * (permutePeriod - 1);
    std::size_t const bytes = 3 * width;
    std::size_t i = 0;
    for (; i + step < bytes; i += step) {
        StorePeriods(dst + i, Permute(LoadPeriods(src + i), exchange));
    }
#if HWY_TARGET == HWY_AVX3_DL
    Tag8 const d;
    auto const rest = hn::FirstN(d, bytes - i);
    hn::BlendedStore(Permute(hn::MaskedLoad(rest, d, src + i), exchange), rest, d, dst + i);
#else
    Base::SwapRedBlue(src + i, (bytes - i) / 3, 1, 0, dst + i, 0);
#endif
}

#endif

void SwapRedBlue(ConstBytes src, std::size_t width, std::size_t height, std::size_t src_stride,
                 Bytes dst, std::size_t dst_stride) {
    joinRows(width, height, src_stride == 3 * width && dst_stride == 3 * width);
    for (std::size_t y = 0; y < height; ++y, src += src_stride, dst += dst_stride) {
        swapRow(src, dst, width);
    }
}

void SplitThreePlanes(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                      Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride,
                      Bytes dst2, std::size_t dst2_stride) {
    joinRows(width, height,
             src_stride == 3 * width && dst0_stride == width && dst1_stride == width &&
                 dst2_stride == width);
    if (width < blockBytes) {
        return Base::SplitThreePlanes(src, src_stride, width, height, dst0, dst0_stride, dst1,
                                      dst1_stride, dst2, dst2_stride);
    }
    Tag8 const d;
    for (std::size_t y = 0; y < height;
         ++y, src += src_stride, dst0 += dst0_stride, dst1 += dst1_stride, dst2 += dst2_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            ThreeChannels const v = LoadThree(src + 3 * x);
            hn::StoreU(v.c0, d, dst0 + x);
            hn::StoreU(v.c1, d, dst1 + x);
            hn::StoreU(v.c2, d, dst2 + x);
        });
    }
}

void MergeThreePlanes(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                      std::size_t src1_stride, ConstBytes src2, std::size_t src2_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    joinRows(width, height,
             src0_stride == width && src1_stride == width && src2_stride == width &&
                 dst_stride == 3 * width);
    if (width < blockBytes) {
        return Base::MergeThreePlanes(src0, src0_stride, src1, src1_stride, src2, src2_stride,
                                      width, height, dst, dst_stride);
    }
    Tag8 const d;
    for (std::size_t y = 0; y < height;
         ++y, src0 += src0_stride, src1 += src1_stride, src2 += src2_stride, dst += dst_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            StoreThree(dst + 3 * x,
                       {hn::LoadU(d, src0 + x), hn::LoadU(d, src1 + x), hn::LoadU(d, src2 + x)});
        });
    }
}

void SplitTwoPlanes(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                    Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride) {
    joinRows(width, height,
             src_stride == 2 * width && dst0_stride == width && dst1_stride == width);
    if (width < blockBytes) {
        return Base::SplitTwoPlanes(src, src_stride, width, height, dst0, dst0_stride, dst1,
                                    dst1_stride);
    }
    Tag8 const d;
    for (std::size_t y = 0; y < height;
         ++y, src += src_stride, dst0 += dst0_stride, dst1 += dst1_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            V8 even = hn::Zero(d);
            V8 odd = hn::Zero(d);
            hn::LoadInterleaved2(d, src + 2 * x, even, odd);
            hn::StoreU(even, d, dst0 + x);
            hn::StoreU(odd, d, dst1 + x);
        });
    }
}

void MergeTwoPlanes(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                    std::size_t src1_stride, std::size_t width, std::size_t height, Bytes dst,
                    std::size_t dst_stride) {
    joinRows(width, height,
             src0_stride == width && src1_stride == width && dst_stride == 2 * width);
    if (width < blockBytes) {
        return Base::MergeTwoPlanes(src0, src0_stride, src1, src1_stride, width, height, dst,
                                    dst_stride);
    }
    Tag8 const d;
    for (std::size_t y = 0; y < height;
         ++y, src0 += src0_stride, src1 += src1_stride, dst += dst_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            hn::StoreInterleaved2(hn::LoadU(d, src0 + x), hn::LoadU(d, src1 + x), d, dst + 2 * x);
        });
    }
}

void ConvertBgrToGray(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes gray, std::size_t gray_stride) {
    joinRows(width, height, bgr_stride == 3 * width && gray_stride == width);
    if (width < blockBytes) {
        return Base::ConvertBgrToGray(bgr, width, height, bgr_stride, gray, gray_stride);
    }
    for (std::size_t y = 0; y < height; ++y, bgr += bgr_stride, gray += gray_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            prefetch<3 * blockBytes, aheadOfBgr>(bgr + 3 * x);
            ThreeChannels const v = LoadThree(bgr + 3 * x);
            hn::StoreU(WeightedBytes<grayWeights>(LowerHalf(v), UpperHalf(v)), Tag8(), gray + x);
        });
    }
}

void ExpandGrayToBgr(ConstBytes gray, std::size_t width, std::size_t height,
                     std::size_t gray_stride, Bytes bgr, std::size_t bgr_stride) {
    joinRows(width, height, gray_stride == width && bgr_stride == 3 * width);
    if (width < blockBytes) {
        return Base::ExpandGrayToBgr(gray, width, height, gray_stride, bgr, bgr_stride);
    }
    for (std::size_t y = 0; y < height; ++y, gray += gray_stride, bgr += bgr_stride) {
        walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            prefetch<3 * blockBytes, 3072, For::writing>(bgr + 3 * x);
            StoreThreeSame(bgr + 3 * x, hn::LoadU(Tag8(), gray + x));
        });
    }
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
#define OX_TAKE(name, ...) routines.name = name;
    OX_BGR_KERNELS(OX_TAKE)
#undef OX_TAKE
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeBgrRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
