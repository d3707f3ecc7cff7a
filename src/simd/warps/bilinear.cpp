// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/bilinear.h"

#include "simd/kernels/kernels.h"
#include "simd/parallel.h"
#include "simd/warps/columns.h"
#include "simd/warps/rows.h"

namespace Simd::Base {

namespace {

/// Columns that go through the sweeps at a time, so that what these leave for one another stays in
/// the nearest cache.
constexpr std::size_t blockColumns = 256;

/// Bytes of a pair of samples as it is moved: three channels take whole words.
constexpr std::uint64_t pairBytes(std::uint64_t channels) {
    return warpTapBytes(channels) / 2;
}

/// Bytes of the sweeps' scratch for a column: an offset, four weights, two pairs.
constexpr std::uint64_t columnBytes(std::uint64_t channels) {
    return 4 + 2 + 4 + 2 * pairBytes(channels);
}

/// The sweeps' scratch for that many columns.
WarpTaps placeTaps(std::uint8_t* slice, std::size_t columns, std::size_t channels) {
    WarpTaps taps{};
    taps.offset = reinterpret_cast<std::uint32_t*>(slice);
    taps.yWeights = taps.offset + columns;
    taps.pixels = reinterpret_cast<std::uint8_t*>(taps.yWeights + columns);
    taps.xWeights =
        reinterpret_cast<std::uint16_t*>(taps.pixels + columns * warpTapBytes(channels));
    return taps;
}

template <std::size_t moved>
void gather(WarpTaps const& taps, std::size_t count, std::uint8_t const* upper,
            std::uint8_t const* lower) {
    // In registers: what is stored here is bytes, which could be any of these.
    std::uint32_t const* const offsets = taps.offset;
    std::uint8_t* const pixels = taps.pixels;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t pairs[2 * moved];
        std::memcpy(pairs, upper + offsets[i], moved);
        std::memcpy(pairs + moved, lower + offsets[i], moved);
        std::memcpy(pixels + i * 2 * moved, pairs, 2 * moved);
    }
}

/// One row of the destination, and where its columns lie in the source.
struct RowWarp {
    WarpAffineParam const& param;
    WarpAffineByteBilinear::Row* gather;
    WarpLine line;
    std::uint8_t const* src;
    std::uint8_t* row;

    std::uint8_t* pixel(std::int32_t column) const {
        return row + static_cast<std::size_t>(column) * param.channels;
    }

    /// Whether the four samples are inside, and so are the bytes that are moved with them.
    bool isInside(std::int32_t column) const {
        std::int64_t const moved = param.channels == 3 ? 3 : 2;
        float const x = line.x.at(column);
        float const y = line.y.at(column);
        return x >= 0 && y >= 0 &&
               truncateToInt(x) <= static_cast<std::int64_t>(param.srcW) - moved &&
               truncateToInt(y) <= static_cast<std::int64_t>(param.srcH) - 2;
    }

    /// The plane's pixel, or what is taken outside of it.
    std::uint8_t const* sample(std::int64_t x, std::int64_t y, std::uint8_t const* outside) const {
        bool const inside = x >= 0 && y >= 0 && static_cast<std::uint64_t>(x) < param.srcW &&
                            static_cast<std::uint64_t>(y) < param.srcH;
        return inside ? src + static_cast<std::uint64_t>(y) * param.srcS +
                            static_cast<std::uint64_t>(x) * param.channels
                      : outside;
    }

    void blendEdge(std::int32_t column) const {
        std::uint8_t* const out = pixel(column);
        bool const transparent = (param.flags & WarpAffineFlagTransparent) != 0;
        std::uint8_t const* const outside = transparent ? out : param.border;
        float const x = line.x.at(column);
        float const y = line.y.at(column);
        std::int64_t const left = floorToInt(x);
        std::int64_t const top = floorToInt(y);
        // A weight is out of range only where all samples are the same, and the sum, which wraps,
        // is right again.
        std::uint32_t const x1 = secondWeight(x, left);
        std::uint32_t const y1 = secondWeight(y, top);
        std::uint32_t const x0 = warpRange - x1;
        std::uint32_t const y0 = warpRange - y1;
        std::uint8_t const* const t00 = sample(left, top, outside);
        std::uint8_t const* const t01 = sample(left + 1, top, outside);
        std::uint8_t const* const t10 = sample(left, top + 1, outside);
        std::uint8_t const* const t11 = sample(left + 1, top + 1, outside);
        for (std::size_t c = 0; c < param.channels; ++c) {
            std::uint32_t const sum =
                (t00[c] * x0 + t01[c] * x1) * y0 + (t10[c] * x0 + t11[c] * x1) * y1;
            out[c] = static_cast<std::uint8_t>((sum + 512) >> 10);
        }
    }

    static std::uint32_t secondWeight(float position, std::int64_t whole) {
        constexpr auto range = static_cast<float>(warpRange);
        return static_cast<std::uint32_t>(
            roundAway((position - static_cast<float>(whole)) * range));
    }

    void blendEdges(std::int32_t first, std::int32_t last) const {
        for (std::int32_t column = first; column < last; ++column) {
            blendEdge(column);
        }
    }

    /// Columns that are all inside, in sweeps over blocks of them.
    void blendInterior(std::int32_t first, std::int32_t last, std::uint8_t* slice) const {
        bool const vector = Neon::KernelsEnabled;
        auto* const find =
            vector ? Neon::warpRoutines().findBilinearPositions : FindBilinearPositions;
        auto* const blend = vector ? Neon::warpRoutines().blendTaps : BlendWarpTaps;
        WarpPlane const plane = sourcePlane(param);
        // Even parts, so that none is too short for the vector routines.
        std::size_t left = static_cast<std::size_t>(last - first);
        for (std::size_t parts = (left + blockColumns - 1) / blockColumns; parts != 0; --parts) {
            std::size_t const count = left / parts;
            WarpTaps const taps = placeTaps(slice, count, param.channels);
            find(line, plane, first, count, taps);
            gather(taps, count, src, src + param.srcS);
            blend(taps, count, param.channels, pixel(first));
            first += static_cast<std::int32_t>(count);
            left -= count;
        }
    }
};

/// Covered columns of a row, of which those of `inner` should be inside.
struct Columns {
    std::int32_t innerBeg;
    std::int32_t innerEnd;
    std::int32_t outerBeg;
    std::int32_t outerEnd;
};

/// Coordinates rise or fall throughout a row, so that columns between two that are inside are too,
/// whatever was rounded on the way.
void fillRow(RowWarp const& warp, Columns columns, std::uint8_t* slice) {
    std::int32_t first = columns.innerBeg;
    std::int32_t last = hasShortOffsets(warp.param) ? columns.innerEnd : first;
    while (first < last && !warp.isInside(first)) {
        ++first;
    }
    while (first < last && !warp.isInside(last - 1)) {
        --last;
    }
    fillBorder(warp.param, warp.row, 0, static_cast<std::uint64_t>(columns.outerBeg));
    warp.blendEdges(std::min(columns.outerBeg, columns.innerBeg), first);
    warp.blendInterior(first, last, slice);
    warp.blendEdges(last, columns.outerEnd);
    fillBorder(warp.param, warp.row, static_cast<std::uint64_t>(columns.outerEnd), warp.param.dstW);
}

}  // namespace

WarpAffineByteBilinear::WarpAffineByteBilinear(WarpAffineParam const& record) : WarpAffine(record) {
    static constexpr Row* rows[] = {gather<pairBytes(1)>, gather<pairBytes(2)>,
                                    gather<pairBytes(3)>, gather<pairBytes(4)>};
    run = rows[param.channels - 1];
}

void WarpAffineByteBilinear::Run(std::uint8_t const* src, std::uint8_t* dst) {
    if (param.dstH == 0) {
        return;
    }
    if (first) {
        Init();
    }
    Parallel(
        0, param.dstH,
        [&](std::uint64_t thread, std::uint64_t block_begin, std::uint64_t block_end) {
            // Slices start at whole words; the column that each has to spare makes up for it.
            std::uint64_t const slice = thread * size / 4 * 4;
            for (std::uint64_t y = block_begin; y < block_end; ++y) {
                RowWarp const warp{param, run, WarpLine(param.inv, y), src, dst + y * param.dstS};
                fillRow(warp, {innerBeg[y], innerEnd[y], outerBeg[y], outerEnd[y]},
                        buffer.data + slice);
            }
        },
        threads, 1);
    first = false;
}

void WarpAffineByteBilinear::Init() {
    range.Resize(arrayBytes(4, param.dstH), 16);
    innerBeg = range.data;
    innerEnd = innerBeg + param.dstH;
    outerBeg = innerEnd + param.dstH;
    outerEnd = outerBeg + param.dstH;
    size = std::max(warpSliceBytes(param, columnBytes(param.channels)),
                    arrayBytes(param.dstH, 2 * sizeof(float)));
    buffer.Resize(arrayBytes(threads, size), 16);
    auto const side = [](std::uint64_t length) { return static_cast<float>(length); };
    BuildRowRanges(warpRectangle(param.mat, {-0.9999F, -0.9999F},
                                 {side(param.srcW) - 0.0001F, side(param.srcH) - 0.0001F}),
                   nullptr, outerBeg, outerEnd);
    BuildRowRanges(warpRectangle(param.mat, {0.0001F, 0.0001F},
                                 {side(param.srcW - 1) - 0.0001F, side(param.srcH - 1) - 0.0001F}),
                   outerEnd, innerBeg, innerEnd);
}

void WarpAffineByteBilinear::BuildRowRanges(WarpPolygon const& polygon, std::int32_t const* limit,
                                            std::int32_t* beg, std::int32_t* end) {
    buildBilinearRanges(polygon, param.dstW, param.dstH,
                        static_cast<float*>(static_cast<void*>(buffer.data)), limit, beg, end);
}

}  // namespace Simd::Base
