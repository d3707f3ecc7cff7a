#include "simd/resizers/byte_bilinear.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "simd/kernels/neon.h"
#include "simd/resizers/bilinear_rows.h"
#include "simd/resizers/routines.h"

namespace Simd {

namespace {

constexpr std::size_t tableAlign = 16;
constexpr std::int32_t range = byteBilinearRange;

/// How a destination index becomes a position between source samples, and the fraction of that a
/// weight. Fused operations are called for, and plain ones give the same: products are exact here,
/// in double precision for indices below 2^28.
struct SinglePrecision {
    static float position(std::int32_t i, float scale) {
        float const centre = static_cast<float>(i) + 0.5F;
        return static_cast<float>(double{scale} * double{centre} - 0.5);
    }
    static std::int32_t weight(float fraction) {
        float const raised = fraction * float{range} + 0.5F;
        return static_cast<std::int32_t>(raised);
    }
};

struct DoublePrecision {
    static float position(std::int32_t i, float scale) {
        return static_cast<float>((i + 0.5) * double{scale} - 0.5);
    }
    static std::int32_t weight(float fraction) {
        double const raised = double{fraction * float{range}} + 0.5;
        return static_cast<std::int32_t>(raised);
    }
};

/// Index and weight of each destination index along an axis, one by one.
template <class Precision>
void fillOneByOne(std::uint64_t src, std::uint64_t dst, std::int32_t* index, std::int32_t* weight) {
    float const scale = static_cast<float>(src) / static_cast<float>(dst);
    auto const last = static_cast<std::int32_t>(src) - 1;
    constexpr float limit = 2147483520.0F;  // the largest float that the conversion takes
    auto const count = static_cast<std::int32_t>(dst);
    for (std::int32_t i = 0; i < count; ++i) {
        float const position = std::min(std::max(Precision::position(i, scale), 0.0F), limit);
        auto const whole = static_cast<std::int32_t>(position);
        std::int32_t const share = Precision::weight(position - static_cast<float>(whole));
        index[i] = whole >= last ? last - 1 : whole;
        weight[i] = whole >= last ? range : share;
    }
}

template <class Precision>
void fillSamples(std::uint64_t src, std::uint64_t dst, std::int32_t* index, std::int32_t* weight) {
    FillByteSamples* const fill =
        Neon::KernelsEnabled ? Neon::resizeRoutines().fillByteSamples : nullptr;
    if (fill != nullptr && dst >= leastVectorSamples && std::max(src, dst) <= mostVectorSamples) {
        fill({src, dst, std::is_same_v<Precision, DoublePrecision>}, index, weight);
    } else {
        fillOneByOne<Precision>(src, dst, index, weight);
    }
}

}  // namespace

namespace Base {

void fillByteBilinear(std::uint64_t src, std::uint64_t dst, std::uint64_t channels,
                      std::int32_t* index, std::int32_t* weight) {
    if (channels == 0) {
        return;
    }
    fillSamples<SinglePrecision>(src, dst, index, weight);
    if (channels == 1) {
        return;
    }
    // From the end, since the entries of a pixel lie behind the pixel.
    for (std::uint64_t i = dst; i-- > 0;) {
        std::int32_t const first = index[i] * static_cast<std::int32_t>(channels);
        std::int32_t const share = weight[i];
        for (std::uint64_t c = channels; c-- > 0;) {
            index[i * channels + c] = first + static_cast<std::int32_t>(c);
            weight[i * channels + c] = share;
        }
    }
}

ResizerByteBilinear::ResizerByteBilinear(ResizerParam const& record) : Resizer(record) {
    ay.Resize(param.dstH, tableAlign);
    iy.Resize(param.dstH, tableAlign);
    fillByteBilinear(param.srcH, param.dstH, 1, iy.data, ay.data);
}

void ResizerByteBilinear::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                              std::size_t dstStride) {
    std::uint64_t const count = param.dstW * param.channels;
    if (ax.data == nullptr) {
        ax.Resize(count, tableAlign);
        ix.Resize(count, tableAlign);
        fillByteBilinear(param.srcW, param.dstW, param.channels, ix.data, ax.data);
        bx[0].Resize(count, tableAlign);
        bx[1].Resize(count, tableAlign);
    }
    auto const horizontal = [&](std::uint8_t const* row, std::int32_t* sums) {
        for (std::uint64_t k = 0; k < count; ++k) {
            std::int32_t const second = row[ix[k] + static_cast<std::int64_t>(param.channels)];
            std::int32_t const first = ix[k] < 0 ? second : row[ix[k]];
            sums[k] = first * range + (second - first) * ax[k];
        }
    };
    auto const vertical = [&](std::int32_t const* top, std::int32_t const* bottom,
                              std::int32_t weight, std::uint8_t* row) {
        for (std::uint64_t k = 0; k < count; ++k) {
            std::int32_t const sum = top[k] * range + (bottom[k] - top[k]) * weight + 128;
            row[k] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(sum) >> 8);
        }
    };
    walkBilinearRows(param, iy, ay, PlaneRows{src, srcStride}, PlaneRows{dst, dstStride}, bx,
                     horizontal, vertical);
}

}  // namespace Base

namespace Neon {

namespace {

template <std::uint64_t channels>
void repeatPairs(std::int32_t const* weight, std::uint64_t width, std::uint8_t* alpha) {
    for (std::uint64_t x = 0; x < width; ++x) {
        auto const second = static_cast<std::uint8_t>(weight[x]);
        auto const first = static_cast<std::uint8_t>(range - weight[x]);
        for (std::uint64_t c = 0; c < channels; ++c) {
            *alpha++ = first;
            *alpha++ = second;
        }
    }
}

void fillPairs(std::int32_t const* weight, std::uint64_t width, std::uint64_t channels,
               std::uint8_t* alpha) {
    switch (channels) {
        case 1:
            return repeatPairs<1>(weight, width, alpha);
        case 2:
            return repeatPairs<2>(weight, width, alpha);
        case 3:
            return repeatPairs<3>(weight, width, alpha);
        case 4:
            return repeatPairs<4>(weight, width, alpha);
        default:
            return;
    }
}

/// No more blocks than this: one ends when it has eight pixels, or when the next pixel lies 15 or
/// more behind its start.
std::uint64_t mostBlocks(ResizerParam const& param) {
    return param.srcW / 15 + param.dstW / 8 + 2;
}

/// @param index with eight more elements behind the last
/// @return how many blocks there are
std::uint64_t fillBlocks(ResizerParam const& param, std::int32_t const* index, GatherBlock* block) {
    constexpr std::int32_t most_pairs = 8;
    auto const last_start = static_cast<std::int32_t>(param.srcW) - 16;
    auto const width = static_cast<std::int32_t>(param.dstW);
    GatherBlock const* const first = block;
    std::int32_t start = 0;
    if (index[0] < 0) {  // nothing fits the first block
        *block++ = GatherBlock{};
        start = last_start;
    }
    for (std::int32_t x = 0; x < width; ++block) {
        block->src = start;
        block->dst = 2 * x;
        // All eight are set, though some may be the next block's.
        std::int32_t const* const pixels = index + x;
        for (std::size_t i = 0; i < most_pairs; ++i) {
            auto const place = static_cast<std::uint32_t>(pixels[i] - start);
            auto const pair = static_cast<std::uint16_t>(place * 0x0101U + 0x0100U);
            std::memcpy(block->shuffle + 2 * i, &pair, sizeof pair);
        }
        std::int32_t const end = std::min(x + most_pairs, width);
        do {
            ++x;
        } while (x < end && index[x] - start <= 14);
        start = std::min(last_start, index[x]);
    }
    return static_cast<std::uint64_t>(block - first);
}

}  // namespace

bool gathersBlocks(ResizerParam const& param) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    return param.channels == 1 && param.srcW < 4 * param.dstW && 2 * param.dstW <= most;
}

void ResizerByteBilinear::buildTables() {
    AlignedArray<std::int32_t> weight;
    AlignedArray<std::int32_t> index;
    weight.Resize(param.dstW, tableAlign);
    index.Resize(param.dstW + 8, tableAlign);
    std::fill_n(index.data + param.dstW, 8, 0);
    fillSamples<DoublePrecision>(param.srcW, param.dstW, index.data, weight.data);
    alphaX.Resize(2 * param.channels * param.dstW, param.align);
    fillPairs(weight.data, param.dstW, param.channels, alphaX.data);
    resizeRoutines().compileBytePairs(
        {index.data, alphaX.data, param.dstW, param.channels, param.srcW * param.channels},
        program);
    if (gathersBlocks(param)) {
        gather.Resize(mostBlocks(param), tableAlign);
        blocks = fillBlocks(param, index.data, gather.data);
    } else {
        ix.Resize(param.dstW, tableAlign);
        std::copy_n(index.data, param.dstW, ix.data);
    }
    std::uint64_t const rounded = (param.dstW + param.align - 1) & (~param.align + 1);
    rows[0].Resize(rounded * param.channels, param.align);
    rows[1].Resize(rounded * param.channels, param.align);
}

void ResizerByteBilinear::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                              std::size_t dstStride) {
    if (param.channels == 0 || param.channels > 4) {
        return;
    }
    if (alphaX.data == nullptr) {
        buildTables();
    }
    auto const horizontal = [&](std::uint8_t const* row, std::uint16_t* sums) {
        resizeRoutines().blendBytePairs(program, row, sums);
    };
    auto const vertical = [&](std::uint16_t const* top, std::uint16_t const* bottom,
                              std::int32_t weight, std::uint8_t* row) {
        resizeRoutines().blendByteRows(top, bottom, weight, param.dstW * param.channels, row);
    };
    walkBilinearRows(param, iy, ay, PlaneRows{src, srcStride}, PlaneRows{dst, dstStride}, rows,
                     horizontal, vertical);
}

}  // namespace Neon

}  // namespace Simd
