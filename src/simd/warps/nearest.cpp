// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/nearest.h"

#include "simd/kernels/kernels.h"
#include "simd/parallel.h"
#include "simd/warps/columns.h"
#include "simd/warps/rows.h"

namespace Simd::Base {

namespace {

constexpr std::uint64_t offsetBytes = sizeof(std::uint32_t);

template <std::size_t channels>
void copyPixels(std::uint8_t const* src, std::uint32_t const* offsets, std::size_t count,
                std::uint8_t* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(dst + i * channels, src + offsets[i], channels);
    }
}

/// Columns of a row from a source with offsets of any size.
void copyFarColumns(WarpAffineParam const& param, WarpLine const& line, std::int32_t first,
                    std::int32_t last, std::uint8_t const* src, std::uint8_t* row) {
    auto const index = [](float position, std::int32_t most) {
        return static_cast<std::uint64_t>(std::max(std::min(roundAway(position), most), 0));
    };
    for (std::int32_t column = first; column < last; ++column) {
        std::uint64_t const x = index(line.x.at(column), lastIndex(param.srcW));
        std::uint64_t const y = index(line.y.at(column), lastIndex(param.srcH));
        std::memcpy(row + static_cast<std::size_t>(column) * param.channels,
                    src + y * param.srcS + x * param.channels, param.channels);
    }
}

}  // namespace

WarpAffineNearest::WarpAffineNearest(WarpAffineParam const& record) : WarpAffine(record) {
    static constexpr Row* rows[] = {copyPixels<1>, copyPixels<2>, copyPixels<3>, copyPixels<4>};
    run = rows[param.channels - 1];
}

/// Near columns in two sweeps: offsets, and copies.
void WarpAffineNearest::fillRow(std::uint64_t y, std::uint8_t const* src, std::uint8_t* row,
                                std::uint8_t* slice) const {
    std::int32_t const left = beg.data[y];
    std::int32_t const right = end.data[y];
    WarpLine const line(param.inv, y);
    fillBorder(param, row, 0, static_cast<std::uint64_t>(left));
    if (left < right && hasShortOffsets(param)) {
        auto* const find =
            Neon::KernelsEnabled ? Neon::warpRoutines().findNearestOffsets : FindNearestOffsets;
        auto const count = static_cast<std::size_t>(right - left);
        auto* const offsets = reinterpret_cast<std::uint32_t*>(slice);
        find(line, sourcePlane(param), left, count, offsets);
        run(src, offsets, count, row + static_cast<std::size_t>(left) * param.channels);
    } else {
        copyFarColumns(param, line, left, right, src, row);
    }
    fillBorder(param, row, static_cast<std::uint64_t>(right), param.dstW);
}

void WarpAffineNearest::Run(std::uint8_t const* src, std::uint8_t* dst) {
    if (param.dstH == 0) {
        return;
    }
    if (first) {
        Init();
    }
    Parallel(
        0, param.dstH,
        [&](std::uint64_t thread, std::uint64_t block_begin, std::uint64_t block_end) {
            for (std::uint64_t y = block_begin; y < block_end; ++y) {
                fillRow(y, src, dst + y * param.dstS, buffer.data + thread * size);
            }
        },
        threads, 1);
    first = false;
}

void WarpAffineNearest::Init() {
    beg.Resize(param.dstH, 16);
    end.Resize(param.dstH, 16);
    size = warpSliceBytes(param, offsetBytes);
    buffer.Resize(arrayBytes(threads, size), 16);
    if (param.srcW == 0 || param.srcH == 0) {
        // There is no pixel to be near to.
        std::fill_n(beg.data, param.dstH, 0);
        std::fill_n(end.data, param.dstH, 0);
        return;
    }
    BuildRowRanges(
        warpRectangle(param.mat, {0, 0},
                      {static_cast<float>(param.srcW - 1), static_cast<float>(param.srcH - 1)}));
}

void WarpAffineNearest::BuildRowRanges(WarpPolygon const& polygon) {
    buildNearestRanges(polygon, param.dstW, param.dstH, beg.data, end.data);
}

}  // namespace Simd::Base
