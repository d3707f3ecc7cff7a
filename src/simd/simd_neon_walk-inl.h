/// @file
/// The walks of vector routines over rows and arrays.

#if defined(OX_SIMD_NEON_WALK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_SIMD_NEON_WALK_INL_H
#undef OX_SIMD_NEON_WALK_INL_H
#else
#define OX_SIMD_NEON_WALK_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {

/// Makes one row of rows that follow one another.
HWY_INLINE void joinRows(std::size_t& width, std::size_t& height, bool follow) {
    if (follow) {
        width *= height;
        height = 1;
    }
}

/// Calls block(x) for the whole blocks of a row that has one at least; the last block overlaps the
/// one before where the row's length isn't a multiple.
template <class Block>
HWY_INLINE void walkBlocks(std::size_t length, std::size_t block_length, Block block) {
    std::size_t x = 0;
    for (; x + block_length <= length; x += block_length) {
        block(x);
    }
    if (x < length) {
        block(length - block_length);
    }
}

}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
