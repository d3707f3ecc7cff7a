// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The registers that the vector routines work on, and their walks over rows and arrays, once per
/// instruction set.
///
/// A block is a register of bytes, one pixel (or pair of chroma) each: 64 with AVX3_DL, 32 with
/// AVX2, 16 with NEON. Registers are made of lanes of 16 bytes; widening and packing stay within
/// them.

// Included once per instruction set, so the guard is a toggle.
#if defined(OX_VECTOR_BLOCK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_BLOCK_INL_H
#undef OX_VECTOR_BLOCK_INL_H
#else
#define OX_VECTOR_BLOCK_INL_H
#endif

#include <hwy/highway.h>

#include <array>
#include <cstddef>
#include <cstdint>

#if HWY_TARGET == HWY_AVX3_DL
// Highway looks for AVX512-VNNI before it takes this target, but doesn't name it to the compiler.
#undef HWY_TARGET_STR
#define HWY_TARGET_STR  \
    HWY_TARGET_STR_AVX3 \
    ",vpclmulqdq,avx512vbmi,avx512vbmi2,vaes,avxvnni,avx512vnni,avx512bitalg,avx512vpopcntdq"
#endif

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_AVX3_DL
constexpr std::size_t blockBytes = 64;
constexpr std::size_t permutePeriod = 64;  ///< bytes that one byte permute reaches
#elif HWY_TARGET == HWY_NEON
constexpr std::size_t blockBytes = 16;
#else
constexpr std::size_t blockBytes = 32;
constexpr std::size_t permutePeriod = 16;
#endif

/// Source bytes that a step of a resizing program loads: one byte permute reaches all of them.
constexpr std::size_t windowBytes = blockBytes == 64 ? 64 : 16;
constexpr std::size_t windowCount = blockBytes / windowBytes;  ///< of a register

/// Registers that follow one another in memory and that one byte permute reaches together.
constexpr std::size_t mostReach = blockBytes == 32 ? 1 : 2;

/// In a table of places: this byte of the result takes no source byte.
constexpr std::uint8_t emptyPlace = 0x80;

using ByteTable = std::array<std::uint8_t, blockBytes>;
using Tag8 = hn::CappedTag<std::uint8_t, blockBytes>;
using Tag16 = hn::RepartitionToWide<Tag8>;
using TagS16 = hn::RebindToSigned<Tag16>;
using BlockTagS32 = hn::RebindToSigned<hn::RepartitionToWide<Tag16>>;
using HalfTag8 = hn::Half<Tag8>;
using BlockTagF32 = hn::Repartition<float, Tag8>;
using WindowTag = hn::CappedTag<std::uint8_t, windowBytes>;
using WindowTag16 = hn::RepartitionToWide<WindowTag>;
using WindowTagS32 = hn::RebindToSigned<hn::RepartitionToWide<WindowTag16>>;
using V8 = hn::Vec<Tag8>;
using V16 = hn::Vec<TagS16>;
using V32 = hn::Vec<BlockTagS32>;
using VF = hn::Vec<BlockTagF32>;

/// The channels of a block of pixels.
struct ThreeChannels {
    V8 c0;
    V8 c1;
    V8 c2;
};

/// Half a block's pixels, in words.
struct ThreeWords {
    V16 c0;
    V16 c1;
    V16 c2;
};

/// The bytes at even and at odd positions.
struct TwoChannels {
    V8 c0;
    V8 c1;
};

/// The bytes at even and at odd positions, widened.
HWY_INLINE V16 EvenBytes(V8 v) {
    return hn::And(hn::BitCast(TagS16(), v), hn::Set(TagS16(), 0xff));
}

HWY_INLINE V16 OddBytes(V8 v) {
    return hn::BitCast(TagS16(), hn::ShiftRight<8>(hn::BitCast(Tag16(), v)));
}

#endif  // HWY_SCALAR

/// Turns a plane whose rows follow one another in memory into one long row.
HWY_INLINE void joinRows(std::size_t& width, std::size_t& height, bool follow) {
    if (follow) {
        width *= height;
        height = 1;
    }
}

/// How far ahead to prefetch, measured.
constexpr std::size_t aheadOfBgr = 384;
/// Beyond a page's end, where processors stop to fetch on their own.
constexpr std::size_t aheadOfFloats = 6144;

enum class For { reading, writing };

/// Prefetches `bytes` bytes that lie `ahead` bytes further on. It pays where the time goes into
/// memory, not arithmetic. Past the row's end it is harmless: a prefetch can't fault. On NEON it
/// does nothing: blocks are a quarter of a cache line, and each would ask for it.
template <std::size_t bytes, std::size_t ahead, For purpose = For::reading>
HWY_INLINE void prefetch([[maybe_unused]] void const* at) {
#if HWY_TARGET != HWY_NEON
    auto const address = reinterpret_cast<std::uintptr_t>(at) + ahead;
    for (std::size_t line = 0; line < bytes; line += 64) {
        // An integer, because a pointer may not be moved past the row's end.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        auto const* const target = reinterpret_cast<void const*>(address + line);
        __builtin_prefetch(target, purpose == For::writing ? 1 : 0);
    }
#endif
}

/// Calls block(x) for the blocks of a row of at least one block. The last block overlaps the one
/// before if `length` isn't a multiple of `block_length`.
template <class Block>
HWY_INLINE void walkBlocks(std::size_t length, std::size_t block_length, Block block) {
    // A single call, so that the block's code is inlined once.
    for (std::size_t x = 0; x < length; x += block_length) {
        block(HWY_MIN(x, length - block_length));
    }
}

/// The same for blocks so cheap that the loop itself costs time: their code is inlined twice.
template <class Block>
HWY_INLINE void walkShortBlocks(std::size_t length, std::size_t block_length, Block block) {
    std::size_t x = 0;
    for (; x + block_length <= length; x += block_length) {
        block(x);
    }
    if (x < length) {
        block(length - block_length);
    }
}

/// The same, two blocks at a time, for those that take few instructions.
template <class Block>
HWY_INLINE void walkBlockPairs(std::size_t length, std::size_t block_length, Block block) {
    std::size_t x = 0;
    for (; x + 2 * block_length <= length; x += 2 * block_length) {
        block(x);
        block(x + block_length);
    }
    for (; x < length; x += block_length) {
        block(HWY_MIN(x, length - block_length));
    }
}

/// A row of packed pixels, and the place in it that a walk has reached.
template <class T, std::size_t channels>
struct Track {
    T* row;
    T* at = row;

    HWY_INLINE T* of(std::size_t x) const { return row + channels * x; }
    HWY_INLINE void step(std::size_t pixels) { at += channels * pixels; }
};

template <std::size_t channels, class T>
HWY_INLINE Track<T, channels> along(T* row) {
    return {row};
}

/// Of a lambda that is long, and yet to be inlined wherever it is called.
#undef OX_LONG_BLOCK
#define OX_LONG_BLOCK HWY_ATTR __attribute__((always_inline))

/// As `walkBlocks`, calls block(x, places...) with where x is in rows of packed pixels.
#if HWY_TARGET == HWY_NEON

/// Instructions that load or store packed pixels move their pointers for nothing, but don't take an
/// index. The block's code is inlined twice.
template <class Block, class... Tracks>
HWY_INLINE void walkTracks(std::size_t length, std::size_t block_length, Block block,
                           Tracks... tracks) {
    std::size_t const last = length - block_length;
    std::size_t x = 0;
    do {
        block(x, tracks.at...);
        (tracks.step(block_length), ...);
        x += block_length;
    } while (x <= last);
    if (x != length) {
        block(last, tracks.of(last)...);
    }
}

/// The same as `walkShortBlocks`.
template <class Block, class... Tracks>
HWY_INLINE void walkShortTracks(std::size_t length, std::size_t block_length, Block block,
                                Tracks... tracks) {
    walkTracks(length, block_length, block, tracks...);
}

#else

template <class Block, class... Tracks>
HWY_INLINE void walkTracks(std::size_t length, std::size_t block_length, Block block,
                           Tracks... tracks) {
    walkBlocks(length, block_length, [&](std::size_t x) HWY_ATTR { block(x, tracks.of(x)...); });
}

template <class Block, class... Tracks>
HWY_INLINE void walkShortTracks(std::size_t length, std::size_t block_length, Block block,
                                Tracks... tracks) {
    walkShortBlocks(length, block_length,
                    [&](std::size_t x) HWY_ATTR { block(x, tracks.of(x)...); });
}

#endif

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
