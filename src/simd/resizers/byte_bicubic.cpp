// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/byte_bicubic.h"

#include "simd/resizers/axis.h"

namespace Simd::Base {

namespace {

constexpr std::size_t cubicTaps = 4;

/// The weights of a direction add up to -cubicRange. The product of both is positive again.
constexpr float cubicRange = 128.0F;
constexpr int productBits = 14;

/// Halves away from zero.
std::int32_t rounded(float value) {
    return static_cast<std::int32_t>(value < 0.0F ? value - 0.5F : value + 0.5F);
}

/// The cubic through four samples, at `t` of the way from the second to the third.
void cubicWeights(float t, std::int32_t* weights) {
    float const a = 1.0F - t;
    float const b = t + 1.0F;
    float const e = (t - 2.0F) * cubicRange * b;
    weights[0] = rounded((2.0F - t) * cubicRange * a * t / 6.0F);
    weights[1] = rounded(a * e * 0.5F);
    weights[2] = rounded(t * e * 0.5F);
    weights[3] = rounded(b * cubicRange * a * t / 6.0F);
}

void fillCubic(std::uint64_t src, std::uint64_t dst, std::uint64_t channels,
               AlignedArray<std::int32_t>& index, AlignedArray<std::int32_t>& weights) {
    index.Resize(dst, tableAlign);
    weights.Resize(cubicTaps * dst, tableAlign);
    float const scale = static_cast<float>(src) / static_cast<float>(dst);
    for (std::uint64_t i = 0; i < dst; ++i) {
        SamplePair const pair = pairAt(centredPosition(scale, i), src);
        index[i] = rowOffset(pair.first, channels);
        cubicWeights(pair.weight, weights.data + cubicTaps * i);
    }
}

/// One run over a plane.
struct Work {
    ResizerParam const& param;
    std::int32_t const* ix;
    std::int32_t const* iy;
    std::int32_t const* ax;
    std::int32_t const* ay;
    std::int32_t* ring[cubicTaps];  ///< source row k, once filtered: ring[(k + 1) % cubicTaps]
    std::uint64_t xn;
    std::uint64_t xt;
    std::uint8_t const* src;
    std::size_t srcStride;
    std::uint8_t* dst;
    std::size_t dstStride;

    /// Rows outside the source are its outermost ones.
    std::uint8_t const* sourceRow(std::int64_t row) const {
        std::int64_t const last = static_cast<std::int64_t>(param.srcH) - 1;
        return src + static_cast<std::uint64_t>(std::clamp<std::int64_t>(row, 0, last)) * srcStride;
    }
    std::int32_t* filteredRow(std::int64_t row) const {
        return ring[static_cast<std::uint64_t>(row + 1) % cubicTaps];
    }
};

/// The four samples of a column and their weights.
struct Column {
    std::int64_t offsets[cubicTaps];
    std::int32_t const* weights;

    std::int32_t sum(std::uint8_t const* row) const {
        return row[offsets[0]] * weights[0] + row[offsets[1]] * weights[1] +
               row[offsets[2]] * weights[2] + row[offsets[3]] * weights[3];
    }
};

/// Calls visit(element, channel, column) for the elements of some columns of a destination row.
/// @tparam border whether samples may lie outside the row; the row's outermost samples stand in
template <bool border, class Visit>
void forColumns(Work const& work, std::uint64_t begin, std::uint64_t end, Visit visit) {
    std::uint64_t const channels = work.param.channels;
    auto const step = static_cast<std::int64_t>(channels);
    std::int64_t const last = static_cast<std::int64_t>(work.param.srcW - 1) * step;
    for (std::uint64_t x = begin; x < end; ++x) {
        Column column{{}, work.ax + cubicTaps * x};
        std::int64_t offset = work.ix[x] - step;
        for (std::int64_t& sample : column.offsets) {
            sample = border ? std::clamp<std::int64_t>(offset, 0, last) : offset;
            offset += step;
        }
        for (std::uint64_t channel = 0; channel < channels; ++channel) {
            visit(x * channels + channel, channel, column);
        }
    }
}

template <class Visit>
void forRow(Work const& work, Visit visit) {
    forColumns<true>(work, 0, work.xn, visit);
    forColumns<false>(work, work.xn, work.xt, visit);
    forColumns<true>(work, std::max(work.xn, work.xt), work.param.dstW, visit);
}

/// The weights of a destination row, for the sums of its four source rows.
struct RowWeights {
    std::int32_t of[cubicTaps];

    RowWeights(Work const& work, std::uint64_t y) {
        std::copy_n(work.ay + cubicTaps * y, cubicTaps, of);
    }

    std::uint8_t pixel(std::int32_t s0, std::int32_t s1, std::int32_t s2, std::int32_t s3) const {
        std::int32_t const sum = s0 * of[0] + s1 * of[1] + s2 * of[2] + s3 * of[3];
        std::int32_t const value = (sum + (1 << (productBits - 1))) >> productBits;
        return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
    }
};

void runDirect(Work const& work) {
    for (std::uint64_t y = 0; y < work.param.dstH; ++y) {
        std::uint8_t const* const r0 = work.sourceRow(work.iy[y] - std::int64_t{1});
        std::uint8_t const* const r1 = work.sourceRow(work.iy[y]);
        std::uint8_t const* const r2 = work.sourceRow(work.iy[y] + std::int64_t{1});
        std::uint8_t const* const r3 = work.sourceRow(work.iy[y] + std::int64_t{2});
        std::uint8_t* const dst = work.dst + y * work.dstStride;
        RowWeights const weights(work, y);
        forRow(work, [=](std::uint64_t element, std::uint64_t channel, Column const& at) {
            dst[element] = weights.pixel(at.sum(r0 + channel), at.sum(r1 + channel),
                                         at.sum(r2 + channel), at.sum(r3 + channel));
        });
    }
}

void filterRow(Work const& work, std::int64_t row) {
    std::uint8_t const* const src = work.sourceRow(row);
    std::int32_t* const sums = work.filteredRow(row);
    forRow(work, [=](std::uint64_t element, std::uint64_t channel, Column const& at) {
        sums[element] = at.sum(src + channel);
    });
}

void runBuffered(Work const& work) {
    std::uint64_t const entries = work.param.dstW * work.param.channels;
    std::int64_t next = -2;  // the source row behind the last filtered one
    for (std::uint64_t y = 0; y < work.param.dstH; ++y) {
        std::int64_t const top = work.iy[y] - std::int64_t{1};
        for (next = std::max(next, top); next < top + std::int64_t{cubicTaps}; ++next) {
            filterRow(work, next);
        }
        std::int32_t const* const r0 = work.filteredRow(top);
        std::int32_t const* const r1 = work.filteredRow(top + 1);
        std::int32_t const* const r2 = work.filteredRow(top + 2);
        std::int32_t const* const r3 = work.filteredRow(top + 3);
        std::uint8_t* const dst = work.dst + y * work.dstStride;
        RowWeights const weights(work, y);
        for (std::uint64_t i = 0; i < entries; ++i) {
            dst[i] = weights.pixel(r0[i], r1[i], r2[i], r3[i]);
        }
    }
}

/// Where a quarter of the rows or fewer is left, no source row is needed twice.
bool isDirect(ResizerParam const& param) {
    return param.dstH <= param.srcH / 4;
}

}  // namespace

ResizerByteBicubic::ResizerByteBicubic(ResizerParam const& record) : Resizer(record) {}

void ResizerByteBicubic::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                             std::size_t dstStride) {
    constexpr std::uint64_t most_channels = 4;
    if (param.channels < 1 || param.channels > most_channels || param.srcW == 0 ||
        param.srcH == 0) {
        return;
    }
    if (iy.data == nullptr) {
        fillCubic(param.srcH, param.dstH, 1, iy, ay);
        fillCubic(param.srcW, param.dstW, param.channels, ix, ax);
        for (AlignedArray<std::int32_t>& row : bx) {
            row.Resize(isDirect(param) ? 0 : param.dstW * param.channels, tableAlign);
        }
        sxl = (param.srcW - 2) * param.channels;
        xn = 0;
        while (xn < param.dstW && ix[xn] == 0) {
            ++xn;
        }
        xt = param.dstW;
        while (xt > 0 && static_cast<std::uint64_t>(ix[xt - 1]) == sxl) {
            --xt;
        }
    }
    Work const work{param,     ix.data, iy.data,
                    ax.data,   ay.data, {bx[0].data, bx[1].data, bx[2].data, bx[3].data},
                    xn,        xt,      src,
                    srcStride, dst,     dstStride};
    isDirect(param) ? runDirect(work) : runBuffered(work);
}

}  // namespace Simd::Base
