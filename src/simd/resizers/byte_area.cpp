// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/byte_area.h"

#include <algorithm>
#include <limits>

#include "simd/resizers/axis.h"
#include "simd/resizers/nearest.h"
#include "simd/resizers/routines.h"

namespace Simd {

namespace {

constexpr std::int32_t sumOfFourRange = byteAreaRange / 2;  // the sums have two bits more

/// The source as it is.
struct SingleRows {
    ResizerParam const& param;
    std::uint8_t const* src;
    std::size_t stride;

    /// Calls put(k, sample) for each element of a row.
    template <std::uint64_t channels, class Put>
    void visit(std::uint64_t row, Put put) const {
        std::uint8_t const* const p = src + row * stride;
        std::uint64_t const count = param.srcW * channels;
        for (std::uint64_t k = 0; k < count; ++k) {
            put(k, std::uint32_t{p[k]});
        }
    }
};

/// Sums of 2x2 blocks. The last column and the last row of odd sides count twice.
struct PairedRows {
    ResizerParam const& param;
    std::uint8_t const* src;
    std::size_t stride;

    template <std::uint64_t channels, class Put>
    void visit(std::uint64_t row, Put put) const {
        std::uint8_t const* const a = src + 2 * row * stride;
        std::uint8_t const* const b = 2 * row + 1 < param.srcH ? a + stride : a;
        std::uint64_t const whole = param.srcW / 2;
        for (std::uint64_t x = 0; x < whole; ++x) {
            for (std::uint64_t c = 0; c < channels; ++c) {
                std::uint64_t const k = 2 * x * channels + c;
                put(x * channels + c,
                    std::uint32_t{a[k]} + a[k + channels] + b[k] + b[k + channels]);
            }
        }
        if (param.srcW % 2 != 0) {
            for (std::uint64_t c = 0; c < channels; ++c) {
                std::uint64_t const k = 2 * whole * channels + c;
                put(whole * channels + c, 2 * (std::uint32_t{a[k]} + b[k]));
            }
        }
    }
};

/// The difference of weights, modulo 2^32.
constexpr std::int32_t difference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

/// How the scalar classes weight rows and store sums.
struct ScalarRule {
    static std::uint32_t factor(std::int32_t weight) { return static_cast<std::uint32_t>(weight); }
    template <std::uint64_t channels>
    static std::uint8_t store(std::int32_t mean) {
        return static_cast<std::uint8_t>(mean);
    }
};

/// How the vector class weights rows and stores sums.
struct VectorRule {
    static std::uint32_t factor(std::int32_t weight) {
        return static_cast<std::uint32_t>(static_cast<std::int16_t>(weight));
    }
    template <std::uint64_t channels>
    static std::uint8_t store(std::int32_t mean) {
        return static_cast<std::uint8_t>(channels >= 3 ? std::clamp(mean, 0, 255) : mean);
    }
};

struct AreaTables {
    std::int32_t const* ax;
    std::int32_t const* ix;
    std::int32_t const* ay;
    std::int32_t const* iy;
    std::uint32_t* by;
};

/// The weight of the source row `j` rows behind that at the upper boundary of destination row `r`.
std::int32_t rowWeight(std::int32_t const* ay, std::uint64_t r, std::int32_t j, std::int32_t rows) {
    std::int32_t const whole = j == 0 ? ay[r] : ay[0];
    return j == rows ? difference(whole, ay[r + 1]) : whole;
}

template <class Rule, std::uint64_t channels>
void averageColumns(ResizerParam const& param, AreaTables const& tables, std::uint8_t* dst) {
    auto const* const ax = tables.ax;
    auto const weight = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
    for (std::uint64_t x = 0; x < param.dstW; ++x) {
        std::uint32_t const* const first =
            tables.by + static_cast<std::uint64_t>(tables.ix[x]) * channels;
        auto const columns = static_cast<std::uint64_t>(tables.ix[x + 1] - tables.ix[x]);
        for (std::uint64_t c = 0; c < channels; ++c) {
            std::uint32_t sum = first[c] * weight(ax[x]);
            for (std::uint64_t j = 1; j <= columns; ++j) {
                sum += first[j * channels + c] * weight(ax[0]);
            }
            sum -= first[columns * channels + c] * weight(ax[x + 1]);
            auto const rounded = static_cast<std::int32_t>(sum + byteAreaRounding);
            dst[x * channels + c] = Rule::template store<channels>(rounded >> byteAreaShift);
        }
    }
}

template <class Rule, class Rows, std::uint64_t channels>
void averagePlane(ResizerParam const& param, AreaTables const& tables, Rows source,
                  std::uint8_t* dst, std::size_t dst_stride) {
    std::uint32_t* const by = tables.by;
    for (std::uint64_t r = 0; r < param.dstH; ++r, dst += dst_stride) {
        auto const first = static_cast<std::uint64_t>(tables.iy[r]);
        std::int32_t const rows = tables.iy[r + 1] - tables.iy[r];
        for (std::int32_t j = 0; j <= rows; ++j) {
            std::uint32_t const weight = Rule::factor(rowWeight(tables.ay, r, j, rows));
            std::uint64_t const row = first + static_cast<std::uint64_t>(j);
            if (j == 0) {
                source.template visit<channels>(
                    row, [=](std::uint64_t k, std::uint32_t sample) { by[k] = sample * weight; });
            } else if (weight != 0) {
                source.template visit<channels>(
                    row, [=](std::uint64_t k, std::uint32_t sample) { by[k] += sample * weight; });
            }
        }
        averageColumns<Rule, channels>(param, tables, dst);
    }
}

template <class Rule, class Rows>
void average(ResizerParam const& param, AreaTables const& tables, Rows source, std::uint8_t* dst,
             std::size_t dst_stride) {
    if (param.srcW == 0 || param.srcH == 0 || param.dstW == 0) {
        return;
    }
    withChannels(param.channels, [&](auto channels) {
        averagePlane<Rule, Rows, channels>(param, tables, source, dst, dst_stride);
    });
}

}  // namespace

namespace Base {

namespace {

/// Truncates towards zero. Weights saturate where a side grows 2^20 times and more.
std::int32_t saturatedWeight(float weight) {
    constexpr float beyond = 2147483648.0F;
    return weight < beyond ? static_cast<std::int32_t>(weight)
                           : std::numeric_limits<std::int32_t>::max();
}

}  // namespace

void fillArea(std::uint64_t src, std::uint64_t dst, std::int32_t range, std::int32_t* alpha,
              std::int32_t* index) {
    if (dst == 0) {
        return;
    }
    float const scale = static_cast<float>(src) / static_cast<float>(dst);
    for (std::uint64_t i = 0; i <= dst; ++i) {
        float const position = static_cast<float>(i) * scale;
        auto const whole = static_cast<std::uint64_t>(position);
        if (whole >= src) {
            alpha[i] = 0;
            index[i] = static_cast<std::int32_t>(src - 1);
            continue;
        }
        float const rest = 1.0F - (position - static_cast<float>(whole));
        alpha[i] = saturatedWeight(rest * static_cast<float>(range) / scale);
        index[i] = static_cast<std::int32_t>(whole);
    }
}

void ResizerByteArea::buildTables(std::uint64_t width, std::uint64_t height, std::int32_t range) {
    auto const fill = [range](std::uint64_t src, std::uint64_t dst,
                              AlignedArray<std::int32_t>& alpha,
                              AlignedArray<std::int32_t>& index) {
        std::uint64_t const boundaries = dst + 1;
        if (boundaries > 1) {
            alpha.Resize(boundaries, tableAlign);
            index.Resize(boundaries, tableAlign);
            fillArea(src, dst, range, alpha.data, index.data);
        }
    };
    fill(height, param.dstH, ay, iy);
    fill(width, param.dstW, ax, ix);
}

ResizerByteArea1x1::ResizerByteArea1x1(ResizerParam const& record) : ResizerByteArea(record) {
    buildTables(param.srcW, param.srcH, byteAreaRange);
    by.Resize(roundedUp(param.srcW * param.channels, param.align), param.align);
}

void ResizerByteArea1x1::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                             std::size_t dstStride) {
    average<ScalarRule>(param, {ax.data, ix.data, ay.data, iy.data, by.data},
                        SingleRows{param, src, srcStride}, dst, dstStride);
}

ResizerByteArea2x2::ResizerByteArea2x2(ResizerParam const& record) : ResizerByteArea(record) {
    std::uint64_t const width = halfOf(param.srcW);
    buildTables(width, halfOf(param.srcH), sumOfFourRange);
    by.Resize(roundedUp(width * param.channels, param.align) + 16, param.align);
}

void ResizerByteArea2x2::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                             std::size_t dstStride) {
    average<ScalarRule>(param, {ax.data, ix.data, ay.data, iy.data, by.data},
                        PairedRows{param, src, srcStride}, dst, dstStride);
}

}  // namespace Base

namespace Neon {

namespace {

/// Whether each cell is a copy of one sample: no other sample has a weight in it.
bool takesSamples(std::int32_t const* alpha, std::int32_t const* index, std::uint64_t cells) {
    for (std::uint64_t i = 0; i < cells; ++i) {
        std::int32_t const more = index[i + 1] - index[i];
        std::int32_t const behind = more == 0 ? alpha[i + 1] : difference(alpha[i + 1], alpha[0]);
        bool const single = more == 0 || (more == 1 && behind == 0);
        if (!single || difference(alpha[i], behind) != byteAreaRange) {
            return false;
        }
    }
    return true;
}

}  // namespace

ResizerByteArea1x1::Way ResizerByteArea1x1::chooseWay() {
    std::uint64_t const row_bytes = param.srcW * param.channels;
    if (param.dstH > 0 && param.dstW > 0 && takesSamples(ax.data, ix.data, param.dstW) &&
        takesSamples(ay.data, iy.data, param.dstH)) {
        AlignedArray<std::int32_t> offsets;
        offsets.Resize(param.dstW, tableAlign);
        std::transform(ix.data, ix.data + param.dstW, offsets.data,
                       [this](std::int32_t column) { return rowOffset(column, param.channels); });
        if (resizeRoutines().gather.compile_pixels(
                {offsets.data, param.dstW, param.channels, row_bytes}, pixels)) {
            return Way::Pixels;
        }
    }
    bool const has_program = resizeRoutines().compileByteArea(
        {ax.data, ix.data, param.dstW, param.channels, row_bytes}, columns);
    return has_program ? Way::Columns : Way::Plain;
}

void ResizerByteArea1x1::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                             std::size_t dstStride) {
    if (param.srcW == 0 || param.srcH == 0 || param.channels == 0 || param.channels > 4) {
        return;
    }
    if (way == Way::Unknown) {
        way = chooseWay();
    }
    if (way == Way::Pixels) {
        return Base::copyNearestRows(iy.data, param.dstH, src, srcStride, dst, dstStride,
                                     param.dstW * param.channels,
                                     [this](std::uint8_t const* from, std::uint8_t* to) {
                                         resizeRoutines().gather.copy_pixels(pixels, from, to);
                                     });
    }
    if (way == Way::Plain) {
        average<VectorRule>(param, {ax.data, ix.data, ay.data, iy.data, by.data},
                            SingleRows{param, src, srcStride}, dst, dstStride);
        return;
    }
    auto const wrapped = [](std::int32_t weight) -> std::int32_t {
        return static_cast<std::int16_t>(weight);
    };
    for (std::uint64_t r = 0; r < param.dstH; ++r) {
        auto const first = static_cast<std::uint64_t>(iy[r]);
        std::int32_t const rows = iy[r + 1] - iy[r];
        ByteAreaRows const source{src + first * srcStride,
                                  srcStride,
                                  static_cast<std::uint64_t>(rows),
                                  wrapped(rowWeight(ay.data, r, 0, rows)),
                                  wrapped(ay[0]),
                                  rows == 0 ? 0 : wrapped(rowWeight(ay.data, r, rows, rows))};
        resizeRoutines().averageByteArea(columns, source, by.data, dst + r * dstStride);
    }
}

}  // namespace Neon

}  // namespace Simd
