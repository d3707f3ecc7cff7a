// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/warp_affine.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "simd/processor_figures.h"
#include "simd/warps/bilinear.h"
#include "simd/warps/nearest.h"

namespace Simd {

WarpAffine::WarpAffine(WarpAffineParam const& record)
    : param(record), threads(GetParallelThreads()) {}

namespace Base {

namespace {

/// Without an inverse, the linear part of `inv` is all zeros, or NaN if numbers are infinite.
void invert(float const* mat, float* inv) {
    float const determinant = std::fma(mat[0], mat[4], -(mat[1] * mat[3]));
    double const reciprocal = determinant != 0 ? 1.0 / static_cast<double>(determinant) : 0.0;
    double const a = static_cast<double>(mat[4]) * reciprocal;
    double const b = static_cast<double>(-mat[1]) * reciprocal;
    double const c = static_cast<double>(-mat[3]) * reciprocal;
    double const e = static_cast<double>(mat[0]) * reciprocal;
    auto const x = static_cast<double>(mat[2]);
    auto const y = static_cast<double>(mat[5]);
    double const numbers[] = {a, b, std::fma(-a, x, -(b * y)), c, e, std::fma(-c, x, -(e * y))};
    std::transform(std::begin(numbers), std::end(numbers), inv,
                   [](double number) { return static_cast<float>(number); });
}

bool isSingular(float const* inv) {
    return inv[0] == 0 && inv[1] == 0 && inv[3] == 0 && inv[4] == 0;
}

bool isSupported(WarpAffineParam const& param) {
    constexpr std::uint32_t kind = WarpAffineFlagNonByte | WarpAffineFlagBilinear;
    return CanWarpSource(param.srcH, param.srcS) && !isSingular(param.inv) &&
           (param.flags & kind) != kind;
}

void fillBorder(WarpAffineParam& param, std::uint8_t const* border) {
    if (border != nullptr && (param.flags & WarpAffineFlagTransparent) == 0 &&
        (param.flags & WarpAffineFlagNonByte) == 0) {
        std::memcpy(param.border, border, param.channels);
    }
}

}  // namespace

WarpAffine* CreateWarpAffine(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t srcS,
                             std::uint64_t dstW, std::uint64_t dstH, std::uint64_t dstS,
                             std::uint64_t channels, float const* mat, std::uint32_t flags,
                             std::uint8_t const* border) {
    if (channels < 1 || channels > sizeof WarpAffineParam::border) {
        return nullptr;
    }
    WarpAffineParam param{
        .flags = flags,
        .mat = {},
        .inv = {},
        .border = {},
        .srcW = srcW,
        .srcH = srcH,
        .srcS = srcS,
        .dstW = dstW,
        .dstH = dstH,
        .dstS = dstS,
        .channels = channels,
        .align = 1,
    };
    std::copy_n(mat, 6, param.mat);
    invert(mat, param.inv);
    fillBorder(param, border);
    if (!isSupported(param)) {
        return nullptr;
    }
    if ((flags & WarpAffineFlagBilinear) != 0) {
        return new WarpAffineByteBilinear(param);
    }
    return new WarpAffineNearest(param);
}

}  // namespace Base

}  // namespace Simd
