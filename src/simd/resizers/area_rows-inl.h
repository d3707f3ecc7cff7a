// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The sums of the source rows of a destination row of area resizing, once per instruction set.

#if defined(OX_SIMD_AREA_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_SIMD_AREA_ROWS_INL_H
#undef OX_SIMD_AREA_ROWS_INL_H
#else
#define OX_SIMD_AREA_ROWS_INL_H
#endif

#include <algorithm>

#include "simd/resizers/byte_area.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_NEON

/// The source rows of a destination row: those of a whole row's weight, and up to two others.
struct WeighedRows {
    std::uint8_t const* inner;
    std::uint8_t const* edges[2];
    std::size_t stride;
    std::size_t innerCount;
    std::size_t edgeCount;
    std::int16_t innerWeight;
    std::int16_t weights[2];
};

WeighedRows weighedRows(ByteAreaRows const& rows) {
    WeighedRows v{rows.first,  {},
                  rows.stride, rows.more > 1 ? rows.more : 1,
                  0,           static_cast<std::int16_t>(rows.inner),
                  {}};
    auto const put = [&](std::uint8_t const* row, std::int32_t weight) {
        v.edges[v.edgeCount] = row;
        v.weights[v.edgeCount++] = static_cast<std::int16_t>(weight);
    };
    if (rows.weight != rows.inner) {
        put(rows.first, rows.weight);
        v.inner += rows.stride;
        v.innerCount -= 1;
    }
    if (rows.more > 0 && rows.outer != 0) {
        put(rows.first + rows.more * rows.stride, rows.outer);
    }
    return v;
}

/// The rows of which the sum of bytes is a signed word.
constexpr std::size_t mostWordRows = 128;

/// The sums of `count` rows, of 1 to `mostWordRows`.
HWY_INLINE RowWords sumWords(std::uint8_t const* at, std::size_t stride, std::size_t count) {
    Tag8 const d;
    RowWords words = WidenRow(hn::LoadU(d, at));
    for (std::size_t k = 1; k < count; ++k) {
        at += stride;
        words = AddBytes(words, hn::LoadU(d, at));
    }
    return words;
}

constexpr std::size_t manyRows = 3;

/// @tparam inner rows of the whole weight; `manyRows` is any number from there on
template <std::size_t edges, std::size_t inner>
void sumRowsBy(WeighedRows const& rows, std::size_t bytes, std::uint32_t* by) {
    Tag8 const d;
    WeighedRows const v = rows;
    walkShortBlocks(bytes, blockBytes, [&](std::size_t x) HWY_ATTR {
        FourSums sums = NoFourSums();
        if constexpr (edges == 2) {
            sums = AddTwoRows(sums, hn::LoadU(d, v.edges[0] + x), hn::LoadU(d, v.edges[1] + x),
                              v.weights[0], v.weights[1]);
        } else if constexpr (edges == 1) {
            sums = AddRow(sums, hn::LoadU(d, v.edges[0] + x), v.weights[0]);
        }
        if constexpr (inner == manyRows) {
            std::uint8_t const* at = v.inner + x;
            for (std::size_t left = v.innerCount; left > 0;) {
                std::size_t const count = std::min(left, mostWordRows);
                sums = AddWords(sums, sumWords(at, v.stride, count), v.innerWeight);
                at += count * v.stride;
                left -= count;
            }
        } else if constexpr (inner > 0) {
            sums = AddWords(sums, sumWords(v.inner + x, v.stride, inner), v.innerWeight);
        }
        StoreSums(sums, reinterpret_cast<std::int32_t*>(by + x));
    });
}

using SumRows = void(WeighedRows const& rows, std::size_t bytes, std::uint32_t* by);

/// By the number of edges, and of inner rows.
constexpr SumRows* rowRoutines[3][manyRows + 1] = {
    {sumRowsBy<0, manyRows>, sumRowsBy<0, manyRows>, sumRowsBy<0, manyRows>,
     sumRowsBy<0, manyRows>},
    {sumRowsBy<1, 0>, sumRowsBy<1, 1>, sumRowsBy<1, manyRows>, sumRowsBy<1, manyRows>},
    {sumRowsBy<2, 0>, sumRowsBy<2, 1>, sumRowsBy<2, 2>, sumRowsBy<2, manyRows>}};

void sumRows(ByteAreaRows const& rows, std::size_t bytes, std::uint32_t* by) {
    WeighedRows const weighed = weighedRows(rows);
    rowRoutines[weighed.edgeCount][std::min(weighed.innerCount, manyRows)](weighed, bytes, by);
}

#endif

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
