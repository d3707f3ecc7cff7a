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

/// Columns of a row in two sweeps: offsets, and copies.
template <std::size_t channels>
void copyColumns(WarpAffineParam const& param, WarpLine const& line, std::int32_t first,
                 std::int32_t last, std::uint8_t const* src, std::uint8_t* row,
                 std::uint32_t* offsets) {
    auto const count = static_cast<std::size_t>(last - first);
    auto* const find =
        Neon::KernelsEnabled ? Neon::warpRoutines().findNearestOffsets : FindNearestOffsets;
    find(line, sourcePlane(param), first, count, offsets);
    std::uint8_t* const dst = row + static_cast<std::size_t>(first) * channels;
    for (std::size_t i = 0; i < count; ++i) {
        copyPixel<channels>(dst + i * channels, src + offsets[i]);
    }
}

/// The same for sources with offsets of any size.
template <std::size_t channels>
void copyFarColumns(WarpAffineParam const& param, WarpLine const& line, std::int32_t first,
                    std::int32_t last, std::uint8_t const* src, std::uint8_t* row) {
    auto const index = [](float position, std::int32_t most) {
        return static_cast<std::uint64_t>(std::max(std::min(roundAway(position), most), 0));
    };
    for (std::int32_t column = first; column < last; ++column) {
        std::uint64_t const x = index(line.x.at(column), lastIndex(param.srcW));
        std::uint64_t const y = index(line.y.at(column), lastIndex(param.srcH));
        copyPixel<channels>(row + static_cast<std::size_t>(column) * channels,
                            src + y * param.srcS + x * channels);
    }
}

template <std::size_t channels>
void fillRows(WarpAffineParam const& param, std::uint64_t first, std::uint64_t last,
              std::int32_t const* beg, std::int32_t const* end, std::uint8_t const* src,
              std::uint8_t* dst, std::uint8_t* slice) {
    bool const near = hasShortOffsets(param);
    for (std::uint64_t y = first; y < last; ++y) {
        std::uint8_t* const row = dst + y * param.dstS;
        WarpLine const line(param.inv, y);
        fillBorder<channels>(param, row, 0, static_cast<std::uint64_t>(beg[y]));
        if (beg[y] < end[y] && near) {
            copyColumns<channels>(param, line, beg[y], end[y], src, row,
                                  reinterpret_cast<std::uint32_t*>(slice));
        } else if (beg[y] < end[y]) {
            copyFarColumns<channels>(param, line, beg[y], end[y], src, row);
        }
        fillBorder<channels>(param, row, static_cast<std::uint64_t>(end[y]), param.dstW);
    }
}

}  // namespace

WarpAffineNearest::WarpAffineNearest(WarpAffineParam const& record) : WarpAffine(record) {
    static constexpr Rows* rows[] = {fillRows<1>, fillRows<2>, fillRows<3>, fillRows<4>};
    run = rows[param.channels - 1];
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
            run(param, block_begin, block_end, beg.data, end.data, src, dst,
                buffer.data + thread * size);
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
