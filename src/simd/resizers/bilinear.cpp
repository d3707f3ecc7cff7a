// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/bilinear.h"

#include <cmath>
#include <cstring>

#include "simd/resizers/axis.h"
#include "simd/resizers/routines.h"

namespace Simd::Base {

namespace {

float axisScale(ResizerMethod method, std::uint64_t src, std::uint64_t dst) {
    if (method != ResizerMethodBilinearCorners) {
        return static_cast<float>(src) / static_cast<float>(dst);
    }
    return dst < 2 ? 0.0F : static_cast<float>(src - 1) / static_cast<float>(dst - 1);
}

/// The sample comes from the rounded product, its weight from the exact one. So a weight may be
/// slightly below 0.
SamplePair cornersPair(float scale, std::uint64_t src, std::uint64_t i) {
    float const step = static_cast<float>(i);
    std::int64_t const first = truncatedPosition(std::floor(step * scale));
    if (first >= static_cast<std::int64_t>(src) - 1) {
        return lastPair(src);
    }
    return {first, std::fma(step, scale, -static_cast<float>(first))};
}

SamplePair pairOf(ResizerMethod method, float scale, std::uint64_t src, std::uint64_t i) {
    switch (method) {
        case ResizerMethodBilinearCorners:
            return cornersPair(scale, src, i);
        case ResizerMethodBilinearTopLeft:
            return pairAt(static_cast<float>(i) * scale, src);
        default:
            return pairAt(centredPosition(scale, i), src);
    }
}

// Rows of wrapped frames needn't be aligned.

template <class T>
float load(T const* at) {
    T element{};
    std::memcpy(&element, at, sizeof element);
    return static_cast<float>(element);
}

void storeBlend(float* at, float value) {
    std::memcpy(at, &value, sizeof value);
}

/// Rounds halves up. No weight of 16-bit elements is negative, so `value` is in their range.
void storeBlend(std::uint16_t* at, float value) {
    float const raised = value + 0.5F;
    std::uint16_t const element = static_cast<std::uint16_t>(raised);
    std::memcpy(at, &element, sizeof element);
}

float blend(float first, float second, float weight) {
    return std::fma(first, 1.0F - weight, weight * second);
}

/// In a row of one pixel the first sample lies before the row and counts as 0.
template <bool one_pixel, class T>
float blendPair(T const* row, FloatColumns const& columns, std::uint64_t entry) {
    T const* const second =
        row + (columns.first[entry] + static_cast<std::int64_t>(columns.channels));
    float const first = one_pixel ? 0.0F : load(row + columns.first[entry]);
    return blend(first, load(second), columns.weight[entry]);
}

template <bool one_pixel, class T>
void horizontalPass(T const* row, FloatColumns columns, float* sums) {
    for (std::uint64_t i = 0; i < columns.entries; ++i) {
        sums[i] = blendPair<one_pixel>(row, columns, i);
    }
}

template <class T>
void verticalPass(float const* top, float const* bottom, float weight, std::uint64_t entries,
                  T* row) {
    for (std::uint64_t i = 0; i < entries; ++i) {
        storeBlend(row + i, blend(top[i], bottom[i], weight));
    }
}

/// Both passes at once.
template <bool one_pixel, class T>
void directRow(T const* top, T const* bottom, FloatColumns columns, float weight, T* row) {
    for (std::uint64_t i = 0; i < columns.entries; ++i) {
        storeBlend(row + i, blend(blendPair<one_pixel>(top, columns, i),
                                  blendPair<one_pixel>(bottom, columns, i), weight));
    }
}

template <class T>
void resizeBuffered(ResizerParam const& param, FloatColumns columns,
                    AlignedArray<std::int32_t> const& iy, AlignedArray<float> const& ay,
                    AlignedArray<float> const (&bx)[2], StridedRows<T const> src,
                    StridedRows<T> dst) {
    auto* const horizontal = param.srcW == 1 ? horizontalPass<true, T> : horizontalPass<false, T>;
    walkBilinearRows(
        param, iy, ay, src, dst, bx,
        [=](T const* row, float* sums) { horizontal(row, columns, sums); },
        [=](float const* top, float const* bottom, float weight, T* row) {
            verticalPass(top, bottom, weight, columns.entries, row);
        });
}

/// For sources of two rows or more.
template <class T>
void resizeDirect(ResizerParam const& param, FloatColumns columns,
                  AlignedArray<std::int32_t> const& iy, AlignedArray<float> const& ay,
                  StridedRows<T const> src, StridedRows<T> dst) {
    auto* const blend_row = param.srcW == 1 ? directRow<true, T> : directRow<false, T>;
    for (std::uint64_t row = 0; row < param.dstH; ++row) {
        std::uint64_t const first = static_cast<std::uint64_t>(iy[row]);
        blend_row(src[first], src[first + 1], columns, ay[row], dst[row]);
    }
}

}  // namespace

void fillBilinear(ResizerMethod method, std::uint64_t src, std::uint64_t dst,
                  std::uint64_t channels, std::int32_t* index, float* weight) {
    float const scale = axisScale(method, src, dst);
    for (std::uint64_t i = 0; i < dst; ++i) {
        SamplePair const pair = pairOf(method, scale, src, i);
        for (std::uint64_t channel = 0; channel < channels; ++channel) {
            *index++ = rowOffset(pair.first, channels, channel);
            *weight++ = pair.weight;
        }
    }
}

template <class T>
ResizerBilinear<T>::ResizerBilinear(ResizerParam const& record) : Resizer(record) {
    std::uint64_t const entries = param.dstW * param.channels + slack;
    iy.Resize(param.dstH, param.align);
    ay.Resize(param.dstH, param.align);
    ix.Resize(entries, param.align);
    ax.Resize(entries, param.align);
    bx[0].Resize(entries, param.align);
    bx[1].Resize(entries, param.align);
    fillBilinear(param.method, param.srcH, param.dstH, 1, iy.data, ay.data);
    fillBilinear(param.method, param.srcW, param.dstW, param.channels, ix.data, ax.data);
}

template <class T>
void ResizerBilinear<T>::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                             std::size_t dstStride) {
    Run(static_cast<T const*>(static_cast<void const*>(src)), srcStride / sizeof(T),
        static_cast<T*>(static_cast<void*>(dst)), dstStride / sizeof(T));
}

template <class T>
FloatColumns ResizerBilinear<T>::columns() const {
    return {ix.data, ax.data, param.dstW * param.channels, param.channels,
            param.srcW * param.channels};
}

template class ResizerBilinear<float>;
template class ResizerBilinear<std::uint16_t>;

void ResizerFloatBilinear::Run(float const* src, std::size_t srcStride, float* dst,
                               std::size_t dstStride) {
    resizeBuffered(param, columns(), iy, ay, bx, StridedRows{src, srcStride},
                   StridedRows{dst, dstStride});
}

void ResizerShortBilinear::Run(std::uint16_t const* src, std::size_t srcStride, std::uint16_t* dst,
                               std::size_t dstStride) {
    constexpr std::uint64_t most_channels = 4;
    if (param.channels > most_channels || param.srcW == 0) {
        return;
    }
    StridedRows const source{src, srcStride};
    StridedRows const target{dst, dstStride};
    // Buffered rows gain nothing where hardly any source row is used twice.
    if (param.dstH <= param.srcH / 2) {
        resizeDirect(param, columns(), iy, ay, source, target);
    } else {
        resizeBuffered(param, columns(), iy, ay, bx, source, target);
    }
}

}  // namespace Simd::Base

namespace Simd::Neon {

void ResizerFloatBilinear::Run(float const* src, std::size_t srcStride, float* dst,
                               std::size_t dstStride) {
    FloatColumns const row_columns = columns();
    if (param.srcW < 2 || !resizeRoutines().compileFloatColumns(row_columns, program)) {
        Base::ResizerFloatBilinear::Run(src, srcStride, dst, dstStride);
        return;
    }
    StridedRows const source{src, srcStride};
    StridedRows const target{dst, dstStride};
    // Buffered rows gain nothing where hardly any source row is used twice.
    if (program.takesPairs && param.dstH <= param.srcH / 2) {
        for (std::uint64_t row = 0; row < param.dstH; ++row) {
            auto const first = static_cast<std::uint64_t>(iy[row]);
            resizeRoutines().blendFloatPairRows(row_columns, source[first], source[first + 1],
                                                ay[row], target[row]);
        }
        return;
    }
    walkBilinearRows(
        param, iy, ay, source, target, bx,
        [&](float const* row, float* sums) {
            resizeRoutines().blendFloatColumns(program, row_columns, row, sums);
        },
        [&](float const* top, float const* bottom, float weight, float* row) {
            resizeRoutines().blendFloatRows(top, bottom, weight, row_columns.entries, row);
        });
}

}  // namespace Simd::Neon
