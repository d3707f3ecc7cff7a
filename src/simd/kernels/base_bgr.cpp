// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cstring>

#include "simd/kernels/formulas.h"
#include "simd/kernels/kernels.h"

namespace Simd::Base {

void SwapRedBlue(ConstBytes src, std::size_t width, std::size_t height, std::size_t src_stride,
                 Bytes dst, std::size_t dst_stride) {
    for (std::size_t y = 0; y < height; ++y, src += stepOf(src_stride), dst += stepOf(dst_stride)) {
        for (std::size_t i = 0; i < 3 * width; i += 3) {
            dst[i] = src[i + 2];
            dst[i + 1] = src[i + 1];
            dst[i + 2] = src[i];
        }
    }
}

void SplitThreePlanes(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                      Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride,
                      Bytes dst2, std::size_t dst2_stride) {
    for (std::size_t y = 0; y < height; ++y, src += stepOf(src_stride), dst0 += stepOf(dst0_stride),
                     dst1 += stepOf(dst1_stride), dst2 += stepOf(dst2_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            dst0[x] = src[3 * x];
            dst1[x] = src[3 * x + 1];
            dst2[x] = src[3 * x + 2];
        }
    }
}

void MergeThreePlanes(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                      std::size_t src1_stride, ConstBytes src2, std::size_t src2_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    for (std::size_t y = 0; y < height; ++y, src0 += stepOf(src0_stride),
                     src1 += stepOf(src1_stride), src2 += stepOf(src2_stride),
                     dst += stepOf(dst_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            dst[3 * x] = src0[x];
            dst[3 * x + 1] = src1[x];
            dst[3 * x + 2] = src2[x];
        }
    }
}

void SplitTwoPlanes(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                    Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride) {
    for (std::size_t y = 0; y < height;
         ++y, src += stepOf(src_stride), dst0 += stepOf(dst0_stride), dst1 += stepOf(dst1_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            dst0[x] = src[2 * x];
            dst1[x] = src[2 * x + 1];
        }
    }
}

void MergeTwoPlanes(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                    std::size_t src1_stride, std::size_t width, std::size_t height, Bytes dst,
                    std::size_t dst_stride) {
    for (std::size_t y = 0; y < height;
         ++y, src0 += stepOf(src0_stride), src1 += stepOf(src1_stride), dst += stepOf(dst_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            dst[2 * x] = src0[x];
            dst[2 * x + 1] = src1[x];
        }
    }
}

void ConvertBgrToGray(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes gray, std::size_t gray_stride) {
    for (std::size_t y = 0; y < height;
         ++y, bgr += stepOf(bgr_stride), gray += stepOf(gray_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            gray[x] = grayOf({bgr[3 * x], bgr[3 * x + 1], bgr[3 * x + 2]});
        }
    }
}

void ExpandGrayToBgr(ConstBytes gray, std::size_t width, std::size_t height,
                     std::size_t gray_stride, Bytes bgr, std::size_t bgr_stride) {
    for (std::size_t y = 0; y < height;
         ++y, gray += stepOf(gray_stride), bgr += stepOf(bgr_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            std::memset(bgr + 3 * x, gray[x], 3);
        }
    }
}

}  // namespace Simd::Base
