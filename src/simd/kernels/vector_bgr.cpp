// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/kernels/vector_bgr.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "simd/kernels/formulas.h"
#include "simd/kernels/kernels.h"
#include "vector/channels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

void SwapRedBlue(ConstBytes src, std::size_t width, std::size_t height, std::size_t src_stride,
                 Bytes dst, std::size_t dst_stride) {
    joinRows(width, height, src_stride == 3 * width && dst_stride == 3 * width);
    for (std::size_t y = 0; y < height; ++y, src += stepOf(src_stride), dst += stepOf(dst_stride)) {
        swapRedBlueRow(src, width, dst);
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
    for (std::size_t y = 0; y < height; ++y, src += stepOf(src_stride), dst0 += stepOf(dst0_stride),
                     dst1 += stepOf(dst1_stride), dst2 += stepOf(dst2_stride)) {
        splitThreeRow(src, width, dst0, dst1, dst2);
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
    for (std::size_t y = 0; y < height; ++y, src0 += stepOf(src0_stride),
                     src1 += stepOf(src1_stride), src2 += stepOf(src2_stride),
                     dst += stepOf(dst_stride)) {
        mergeThreeRow(src0, src1, src2, width, dst);
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
    for (std::size_t y = 0; y < height;
         ++y, src += stepOf(src_stride), dst0 += stepOf(dst0_stride), dst1 += stepOf(dst1_stride)) {
        splitTwoRow(src, width, dst0, dst1);
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
    for (std::size_t y = 0; y < height;
         ++y, src0 += stepOf(src0_stride), src1 += stepOf(src1_stride), dst += stepOf(dst_stride)) {
        mergeTwoRow(src0, src1, width, dst);
    }
}

void ConvertBgrToGray(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes gray, std::size_t gray_stride) {
    joinRows(width, height, bgr_stride == 3 * width && gray_stride == width);
    if (width < blockBytes) {
        return Base::ConvertBgrToGray(bgr, width, height, bgr_stride, gray, gray_stride);
    }
    for (std::size_t y = 0; y < height;
         ++y, bgr += stepOf(bgr_stride), gray += stepOf(gray_stride)) {
        walkShortTracks(
            width, blockBytes,
            [=](std::size_t x, ConstBytes pixels) HWY_ATTR {
                prefetch<3 * blockBytes, aheadOfBgr>(pixels);
                hn::StoreU(WeightedBytes<grayWeights>(LoadThree(pixels)), Tag8(), gray + x);
            },
            along<3>(bgr));
    }
}

void ExpandGrayToBgr(ConstBytes gray, std::size_t width, std::size_t height,
                     std::size_t gray_stride, Bytes bgr, std::size_t bgr_stride) {
    joinRows(width, height, gray_stride == width && bgr_stride == 3 * width);
    if (width < blockBytes) {
        return Base::ExpandGrayToBgr(gray, width, height, gray_stride, bgr, bgr_stride);
    }
    for (std::size_t y = 0; y < height;
         ++y, gray += stepOf(gray_stride), bgr += stepOf(bgr_stride)) {
        repeatThriceRow(gray, width, bgr);
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
