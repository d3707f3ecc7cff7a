// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Blocks of YUV pixels in registers, once per instruction set.

#if defined(OX_ROWS_COLOUR_YUV_BLOCKS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_ROWS_COLOUR_YUV_BLOCKS_INL_H
#undef OX_ROWS_COLOUR_YUV_BLOCKS_INL_H
#else
#define OX_ROWS_COLOUR_YUV_BLOCKS_INL_H
#endif

#include "rows/colour/layouts.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// A block of pixels: Y, and chroma of its even and of its odd columns. The two are the same where
/// columns share chroma.
struct YuvBlock {
    vector::HWY_NAMESPACE::V8 y;
    vector::HWY_NAMESPACE::V16 u_even;
    vector::HWY_NAMESPACE::V16 v_even;
    vector::HWY_NAMESPACE::V16 u_odd;
    vector::HWY_NAMESPACE::V16 v_odd;
};

/// The block of pixels at x, which is even where pixels share chroma.
template <YuvLayout layout>
HWY_INLINE YuvBlock loadYuvBlock(YuvSamples<std::uint8_t const> src, std::size_t x) {
    using namespace vector::HWY_NAMESPACE;
    using enum YuvLayout;
    Tag8 const d;
    if constexpr (layout == HalfPlanes) {
        HalfTag8 const half;
        V16 const u = hn::PromoteTo(TagS16(), hn::LoadU(half, src.u + x / 2));
        V16 const v = hn::PromoteTo(TagS16(), hn::LoadU(half, src.v + x / 2));
        return {hn::LoadU(d, src.y + x), u, v, u, v};
    } else if constexpr (layout == PairsUv || layout == PairsVu) {
        constexpr bool u_first = layout == PairsUv;
        V8 const pairs = hn::LoadU(d, (u_first ? src.u : src.v) + x);
        V16 const first = EvenBytes(pairs);
        V16 const second = OddBytes(pairs);
        V16 const u = u_first ? first : second;
        V16 const v = u_first ? second : first;
        return {hn::LoadU(d, src.y + x), u, v, u, v};
    } else if constexpr (layout == PackedYuyv || layout == PackedUyvy) {
        constexpr bool y_first = layout == PackedYuyv;
        TwoChannels const bytes = LoadTwo((y_first ? src.y : src.u) + 2 * x);
        V8 const pairs = y_first ? bytes.c1 : bytes.c0;
        V16 const u = EvenBytes(pairs);
        V16 const v = OddBytes(pairs);
        return {y_first ? bytes.c0 : bytes.c1, u, v, u, v};
    } else if constexpr (layout == PackedYuv) {
        ThreeChannels const c = LoadThree(src.y + 3 * x);
        return {c.c0, EvenBytes(c.c1), EvenBytes(c.c2), OddBytes(c.c1), OddBytes(c.c2)};
    } else {
        V8 const u = hn::LoadU(d, src.u + x);
        V8 const v = hn::LoadU(d, src.v + x);
        return {hn::LoadU(d, src.y + x), EvenBytes(u), EvenBytes(v), OddBytes(u), OddBytes(v)};
    }
}

#endif

}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
