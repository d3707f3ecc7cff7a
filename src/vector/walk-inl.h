/// @file
/// The walks of vector routines over rows and arrays.

#if defined(OX_VECTOR_WALK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_WALK_INL_H
#undef OX_VECTOR_WALK_INL_H
#else
#define OX_VECTOR_WALK_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

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
/// memory, not arithmetic. Past the row's end it is harmless: a prefetch can't fault.
template <std::size_t bytes, std::size_t ahead, For purpose = For::reading>
HWY_INLINE void prefetch(void const* at) {
    auto const address = reinterpret_cast<std::uintptr_t>(at) + ahead;
    for (std::size_t line = 0; line < bytes; line += 64) {
        // An integer, because a pointer may not be moved past the row's end.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        auto const* const target = reinterpret_cast<void const*>(address + line);
        __builtin_prefetch(target, purpose == For::writing ? 1 : 0);
    }
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

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
