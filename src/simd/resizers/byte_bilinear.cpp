// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/byte_bilinear.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "simd/kernels/kernels.h"
#include "simd/resizers/routines.h"

namespace Simd {

namespace {

/// How a destination index becomes a position between source samples, and the position's fraction a
/// weight. Plain operations give what the fused ones of the definition do, because products are
/// exact here (in double precision for indices below 2^28).
struct SinglePrecision {
    static float position(std::int32_t i, float scale) {
        float const centre = static_cast<float>(i) + 0.5F;
        return static_cast<float>(double{scale} * double{centre} - 0.5);
    }
    static std::int32_t weight(float fraction) {
        float const raised = fraction * float{byteBilinearRange} + 0.5F;
        return static_cast<std::int32_t>(raised);
    }
};

struct DoublePrecision {
    static float position(std::int32_t i, float scale) {
        return static_cast<float>((i + 0.5) * double{scale} - 0.5);
    }
    static std::int32_t weight(float fraction) {
        double const raised = double{fraction * float{byteBilinearRange}} + 0.5;
        return static_cast<std::int32_t>(raised);
    }
};

template <class Precision>
void fillSamplesIn(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight) {
    float const scale = static_cast<float>(axis.src) / static_cast<float>(axis.dst);
    auto const last = static_cast<std::int32_t>(axis.src) - 1;
    constexpr float limit = 2147483520.0F;  // the largest float that the conversion takes
    for (std::uint64_t i = 0; i < axis.dst; ++i) {
        float const centre = Precision::position(static_cast<std::int32_t>(i), scale);
        float const position = std::min(std::max(centre, 0.0F), limit);
        auto const whole = static_cast<std::int32_t>(position);
        std::int32_t const share = Precision::weight(position - static_cast<float>(whole));
        // NOLINTBEGIN(clang-analyzer-core.NullDereference): the tables have `axis.dst` entries.
        index[i] = whole >= last ? last - 1 : whole;
        weight[i] = whole >= last ? byteBilinearRange : share;
        // NOLINTEND(clang-analyzer-core.NullDereference)
    }
}

void fillSamples(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight) {
    bool const by_vectors = Neon::KernelsEnabled && axis.dst >= leastVectorSamples &&
                            std::max(axis.src, axis.dst) <= mostVectorSamples;
    auto* const fill = by_vectors ? Neon::resizeRoutines().fillByteSamples : Base::fillByteSamples;
    fill(axis, index, weight);
}

}  // namespace

namespace Base {

void fillByteSamples(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight) {
    axis.exact ? fillSamplesIn<DoublePrecision>(axis, index, weight)
               : fillSamplesIn<SinglePrecision>(axis, index, weight);
}

void fillByteBilinear(std::uint64_t src, std::uint64_t dst, std::uint64_t channels,
                      std::int32_t* index, std::int32_t* weight) {
    if (channels == 0) {
        return;
    }
    fillSamples({src, dst, false}, index, weight);
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
            sums[k] = first * byteBilinearRange + (second - first) * ax[k];
        }
    };
    auto const vertical = [&](std::int32_t const* top, std::int32_t const* bottom,
                              std::int32_t weight, std::uint8_t* row) {
        for (std::uint64_t k = 0; k < count; ++k) {
            std::int32_t const sum = top[k] * byteBilinearRange + (bottom[k] - top[k]) * weight;
            row[k] = static_cast<std::uint8_t>(
                static_cast<std::uint32_t>(sum + byteBilinearRounding) >> byteBilinearShift);
        }
    };
    walkBilinearRows(param, iy, ay, StridedRows{src, srcStride}, StridedRows{dst, dstStride}, bx,
                     horizontal, vertical);
}

}  // namespace Base

namespace Neon {

namespace {

template <std::uint64_t channels>
void repeatPairs(std::int32_t const* weight, std::uint64_t width, std::uint8_t* alpha) {
    for (std::uint64_t x = 0; x < width; ++x) {
        auto const second = static_cast<std::uint8_t>(weight[x]);
        auto const first = static_cast<std::uint8_t>(byteBilinearRange - weight[x]);
        for (std::uint64_t c = 0; c < channels; ++c) {
            *alpha++ = first;  // NOLINT(clang-analyzer-core.NullDereference): it has as many pairs
            *alpha++ = second;
        }
    }
}

// Tables that no run reads. The class is defined to have them, with these contents. Runs gather by
// a program with wider windows, for any number of channels.

constexpr std::int32_t gatherBytes = sizeof GatherBlock::shuffle;
constexpr std::int32_t gatherPairs = gatherBytes / 2;

/// A block ends when it has eight pixels, or when the next pixel lies 15 or more behind its start.
std::uint64_t mostBlocks(ResizerParam const& param) {
    return param.srcW / (gatherBytes - 1) + param.dstW / gatherPairs + 2;
}

/// @return how many blocks there are
std::uint64_t fillBlocks(ResizerParam const& param, std::int32_t const* index, GatherBlock* block) {
    auto const last_start = static_cast<std::int32_t>(param.srcW) - gatherBytes;
    auto const width = static_cast<std::int32_t>(param.dstW);
    GatherBlock const* const first = block;
    std::int32_t start = 0;
    if (index[0] < 0) {  // nothing fits the first block
        *block++ = GatherBlock{};
        start = last_start;
    }
    for (std::int32_t x = 0; x < width; ++block) {
        *block = {start, 2 * x, {}};
        std::int32_t const begin = x;
        std::int32_t const end = std::min(x + gatherPairs, width);
        do {
            auto const place = static_cast<std::uint32_t>(index[x] - start);
            auto const pair = static_cast<std::uint16_t>(place * 0x0101U + 0x0100U);
            std::memcpy(block->shuffle + std::ptrdiff_t{2} * (x - begin), &pair, sizeof pair);
            ++x;
        } while (x < end && index[x] - start < gatherBytes - 1);
        start = x < width ? std::min(last_start, index[x]) : start;
    }
    return static_cast<std::uint64_t>(block - first);
}

}  // namespace

bool gathersBlocks(ResizerParam const& param) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    return param.channels == 1 && param.srcW < 4 * param.dstW && 2 * param.dstW <= most;
}

void ResizerByteBilinear::fillUnreadTables(std::int32_t const* index) {
    if (gathersBlocks(param)) {
        gather.Resize(mostBlocks(param), tableAlign);
        blocks = gather.data != nullptr ? fillBlocks(param, index, gather.data) : 0;
    } else {
        ix.Resize(param.dstW, tableAlign);
        std::copy_n(index, param.dstW, ix.data);
    }
}

bool ResizerByteBilinear::compileCopies(std::int32_t const* index, std::int32_t const* weight) {
    auto const is_zero = [](std::int32_t share) { return share == 0; };
    if (param.srcW * param.channels > std::numeric_limits<std::int32_t>::max() ||
        !std::all_of(ay.data, ay.data + param.dstH, is_zero) ||
        !std::all_of(weight, weight + param.dstW, is_zero)) {
        return false;
    }
    AlignedArray<std::int32_t> offset;
    offset.Resize(param.dstW, tableAlign);
    auto const channels = static_cast<std::int32_t>(param.channels);
    std::transform(index, index + param.dstW, offset.data,
                   [=](std::int32_t pixel) { return pixel * channels; });
    return resizeRoutines().gather.compile_pixels(
        {offset.data, param.dstW, param.channels, param.srcW * param.channels}, pixels);
}

void ResizerByteBilinear::buildTables() {
    AlignedArray<std::int32_t> weight;
    AlignedArray<std::int32_t> index;
    weight.Resize(param.dstW, tableAlign);
    index.Resize(param.dstW, tableAlign);
    fillSamples({param.srcW, param.dstW, true}, index.data, weight.data);
    alphaX.Resize(2 * param.channels * param.dstW, param.align);
    withChannels(param.channels, [&](auto channels) {
        repeatPairs<channels>(weight.data, param.dstW, alphaX.data);
    });
    resizeRoutines().compileBytePairs(
        {index.data, alphaX.data, param.dstW, param.channels, param.srcW * param.channels},
        program);
    copies = compileCopies(index.data, weight.data);
    fillUnreadTables(index.data);
    for (AlignedArray<std::uint16_t>& row : rows) {
        row.Resize(roundedUp(param.dstW, param.align) * param.channels, param.align);
    }
}

void ResizerByteBilinear::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                              std::size_t dstStride) {
    if (param.channels == 0 || param.channels > 4) {
        return;
    }
    if (alphaX.data == nullptr) {
        buildTables();
    }
    if (copies) {
        for (std::uint64_t row = 0; row < param.dstH; ++row) {
            resizeRoutines().gather.copy_pixels(
                pixels, src + static_cast<std::uint64_t>(iy.data[row]) * srcStride,
                dst + row * dstStride);
        }
        return;
    }
    auto const horizontal = [&](std::uint8_t const* row, std::uint16_t* sums) {
        resizeRoutines().blendBytePairs(program, row, sums);
    };
    auto const vertical = [&](std::uint16_t const* top, std::uint16_t const* bottom,
                              std::int32_t weight, std::uint8_t* row) {
        resizeRoutines().blendByteRows(top, bottom, weight, param.dstW * param.channels, row);
    };
    walkBilinearRows(param, iy, ay, StridedRows{src, srcStride}, StridedRows{dst, dstStride}, rows,
                     horizontal, vertical);
}

}  // namespace Neon

}  // namespace Simd
