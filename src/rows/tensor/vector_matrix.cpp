// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/tensor/vector_matrix.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/yuv_blocks-inl.h"
#include "rows/tensor/routines.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Y, U and V stand for the samples less their zeros. A factor of U may need 17 bits, so U comes
// twice, and a channel is the sum of two products of pairs of words:
//
//   (cy * Y + (a / 2) * U) + ((a - a / 2) * U + b * V)

HWY_INLINE V16 constant(int value) {
    return hn::Set(TagS16(), static_cast<std::int16_t>(value));
}

/// The words `even` and `odd` by turns.
HWY_INLINE V16 pairOf(int even, int odd) {
    auto const bits = static_cast<std::uint32_t>(static_cast<std::uint16_t>(even)) |
                      static_cast<std::uint32_t>(odd) << 16;
    return hn::BitCast(TagS16(), hn::Set(BlockTagS32(), static_cast<std::int32_t>(bits)));
}

/// The factors of a channel.
struct Factors {
    V16 luma_u;
    V16 u_v;
};

HWY_INLINE Factors factorsOf(int luma, ChromaFactors chroma) {
    int const half = chroma.u / 2;
    return {pairOf(luma, half), pairOf(chroma.u - half, chroma.v)};
}

/// Half of the pixels that have even columns, or odd ones, as pairs of words.
struct Pairs {
    V16 luma_u;
    V16 u_v;
};

HWY_INLINE Pairs lowerPairs(V16 y, V16 u, V16 v) {
    TagS16 const d;
    return {hn::InterleaveLower(d, y, u), hn::InterleaveLower(d, u, v)};
}

HWY_INLINE Pairs upperPairs(V16 y, V16 u, V16 v) {
    TagS16 const d;
    return {hn::InterleaveUpper(d, y, u), hn::InterleaveUpper(d, u, v)};
}

HWY_INLINE V32 sumOf(Pairs pairs, Factors factors) {
    V32 const sum = TotalOf(AddWordProducts(
        AddWordProducts(NoWordSums(), pairs.luma_u, factors.luma_u), pairs.u_v, factors.u_v));
    V32 const half = hn::Set(BlockTagS32(), 1 << (matrixBits - 1));
    return hn::ShiftRight<matrixBits>(hn::Add(sum, half));
}

/// The pixels of even columns, or of odd ones.
struct Columns {
    Pairs lower;
    Pairs upper;
};

HWY_INLINE Columns columnsOf(V16 y, V16 u, V16 v, V16 luma_zero) {
    y = hn::Sub(y, luma_zero);
    u = hn::Sub(u, constant(chromaZero));
    v = hn::Sub(v, constant(chromaZero));
    return {lowerPairs(y, u, v), upperPairs(y, u, v)};
}

HWY_INLINE V16 channelOf(Columns columns, Factors factors) {
    return hn::ReorderDemote2To(TagS16(), sumOf(columns.lower, factors),
                                sumOf(columns.upper, factors));
}

using Row = YuvSamples<std::uint8_t const>;

template <YuvLayout layout>
void convertByMatrix(Row src, std::size_t width, YuvMatrix const& matrix, std::uint8_t* bgr) {
    std::size_t const pairs = width - width % stepsOf(layout).pixels;
    std::size_t const pixels = pairs < blockBytes ? 0 : pairs;
    Factors const blue = factorsOf(matrix.luma, matrix.blue);
    Factors const green = factorsOf(matrix.luma, matrix.green);
    Factors const red = factorsOf(matrix.luma, matrix.red);
    V16 const zero = constant(matrix.luma_zero);
    walkBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        YuvBlock const block = loadYuvBlock<layout>(src, x);
        Columns const even = columnsOf(EvenBytes(block.y), block.u_even, block.v_even, zero);
        Columns const odd = columnsOf(OddBytes(block.y), block.u_odd, block.v_odd, zero);
        StoreThreePixels(bgr + 3 * x,
                         {channelOf(even, blue), channelOf(even, green), channelOf(even, red)},
                         {channelOf(odd, blue), channelOf(odd, green), channelOf(odd, red)});
    });
    if (pixels < width) {
        plainTensor.matrix_to_bgr[indexOf(layout)](samplesAt(layout, src, pixels), width - pixels,
                                                   matrix, bgr + 3 * pixels);
    }
}

#endif

void takeRoutines([[maybe_unused]] TensorRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.matrix_to_bgr = byLayout([](auto layout) { return &convertByMatrix<layout>; });
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeMatrixRoutines(TensorRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
