// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows of interleaved channels, taken apart and put together, once per instruction set. All but
/// `swapRedBlueRow` take at least a block of pixels.

#if defined(OX_VECTOR_CHANNELS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_CHANNELS_INL_H
#undef OX_VECTOR_CHANNELS_INL_H
#else
#define OX_VECTOR_CHANNELS_INL_H
#endif

#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

using Byte = std::uint8_t;

HWY_INLINE void splitTwoRow(Byte const* row, std::size_t pixels, Byte* first, Byte* second) {
    Tag8 const d;
    walkShortTracks(
        pixels, blockBytes,
        [=](std::size_t x, Byte const* pairs) HWY_ATTR {
            TwoChannels const v = LoadTwo(pairs);
            hn::StoreU(v.c0, d, first + x);
            hn::StoreU(v.c1, d, second + x);
        },
        along<2>(row));
}

HWY_INLINE void splitThreeRow(Byte const* row, std::size_t pixels, Byte* first, Byte* second,
                              Byte* third) {
    Tag8 const d;
    walkShortTracks(
        pixels, blockBytes,
        [=](std::size_t x, Byte const* packed) HWY_ATTR {
            ThreeChannels const v = LoadThree(packed);
            hn::StoreU(v.c0, d, first + x);
            hn::StoreU(v.c1, d, second + x);
            hn::StoreU(v.c2, d, third + x);
        },
        along<3>(row));
}

HWY_INLINE void mergeTwoRow(Byte const* first, Byte const* second, std::size_t pixels, Byte* row) {
    Tag8 const d;
    walkShortTracks(
        pixels, blockBytes,
        [=](std::size_t x, Byte* pairs) HWY_ATTR {
            hn::StoreInterleaved2(hn::LoadU(d, first + x), hn::LoadU(d, second + x), d, pairs);
        },
        along<2>(row));
}

HWY_INLINE void mergeThreeRow(Byte const* first, Byte const* second, Byte const* third,
                              std::size_t pixels, Byte* row) {
    Tag8 const d;
    walkShortTracks(
        pixels, blockBytes,
        [=](std::size_t x, Byte* packed) HWY_ATTR {
            StoreThree(packed, {hn::LoadU(d, first + x), hn::LoadU(d, second + x),
                                hn::LoadU(d, third + x)});
        },
        along<3>(row));
}

/// Each sample three times.
HWY_INLINE void repeatThriceRow(Byte const* src, std::size_t pixels, Byte* row) {
    // Not by tracks: on NEON that takes an instruction more.
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 3072, For::writing>(row + 3 * x);
        StoreThreeSame(row + 3 * x, hn::LoadU(Tag8(), src + x));
    });
}

HWY_INLINE void swapRedBlueAlone(Byte const* src, std::size_t pixels, Byte* dst) {
    for (std::size_t i = 0; i < 3 * pixels; i += 3) {
        Byte const red = src[i + 2];
        dst[i + 2] = src[i];
        dst[i + 1] = src[i + 1];
        dst[i] = red;
    }
}

#if HWY_TARGET == HWY_NEON

HWY_INLINE void swapRedBlueRow(Byte const* src, std::size_t pixels, Byte* dst) {
    if (pixels < blockBytes) {
        return swapRedBlueAlone(src, pixels, dst);
    }
    walkShortTracks(
        pixels, blockBytes,
        [](std::size_t /*x*/, Byte const* from, Byte* to) {
            ThreeChannels const v = LoadThree(from);
            StoreThree(to, {v.c2, v.c1, v.c0});
        },
        along<3>(src), along<3>(dst));
}

#else

/// Exchanges the outer bytes of the whole pixels of each period; its last byte stays.
constexpr ByteTable exchangeTable() {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes; ++j) {
        std::size_t const k = j % permutePeriod;
        table[j] = static_cast<Byte>(k + 1 == permutePeriod ? k : k / 3 * 3 + 2 - k % 3);
    }
    return table;
}

alignas(64) constexpr ByteTable exchange = exchangeTable();

/// A period holds whole pixels and one byte more. The next store overwrites that byte.
HWY_INLINE void swapRedBlueRow(Byte const* src, std::size_t pixels, Byte* dst) {
    constexpr std::size_t step = blockBytes / permutePeriod * (permutePeriod - 1);
    std::size_t const bytes = 3 * pixels;
    std::size_t i = 0;
    for (; i + step < bytes; i += step) {
        StorePeriods(dst + i, Permute(LoadPeriods(src + i), exchange));
    }
#if HWY_TARGET == HWY_AVX3_DL
    Tag8 const d;
    auto const rest = hn::FirstN(d, bytes - i);
    hn::BlendedStore(Permute(hn::MaskedLoad(rest, d, src + i), exchange), rest, d, dst + i);
#else
    swapRedBlueAlone(src + i, (bytes - i) / 3, dst + i);
#endif
}

#endif

#endif

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
