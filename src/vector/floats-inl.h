// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows of bytes as floats, once per instruction set.

#if defined(OX_VECTOR_FLOATS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_FLOATS_INL_H
#undef OX_VECTOR_FLOATS_INL_H
#else
#define OX_VECTOR_FLOATS_INL_H
#endif

#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// Stores change(numbers) for the registers of floats of at least one register of bytes.
template <class Change>
HWY_INLINE void widenBytes(std::uint8_t const* src, std::size_t count, std::uint8_t* floats,
                           Change change) {
    constexpr std::size_t lanes = blockBytes / sizeof(float);
    auto const widen = [&](std::size_t i, auto bytes) HWY_ATTR {
        VF const numbers = hn::ConvertTo(BlockTagF32(), hn::PromoteTo(BlockTagS32(), bytes));
        hn::StoreU(hn::BitCast(Tag8(), change(numbers)), Tag8(), floats + sizeof(float) * i);
    };
#if HWY_TARGET == HWY_NEON
    if (count >= blockBytes) {
        hn::Half<Tag16> const half;
        return walkShortBlocks(count, blockBytes, [&](std::size_t i) HWY_ATTR {
            V8 const bytes = hn::LoadU(Tag8(), src + i);
            auto const first = hn::PromoteTo(Tag16(), hn::LowerHalf(bytes));
            auto const second = hn::PromoteTo(Tag16(), hn::UpperHalf(HalfTag8(), bytes));
            widen(i, hn::LowerHalf(first));
            widen(i + lanes, hn::UpperHalf(half, first));
            widen(i + 2 * lanes, hn::LowerHalf(second));
            widen(i + 3 * lanes, hn::UpperHalf(half, second));
        });
    }
#endif
    hn::Rebind<std::uint8_t, BlockTagF32> const d;
    auto const widenOne = [&](std::size_t i) HWY_ATTR { widen(i, hn::LoadU(d, src + i)); };
    constexpr std::size_t line = 64 / sizeof(float);
    if (lanes < line && count < line) {
        return walkShortBlocks(count, lanes, widenOne);
    }
    walkShortBlocks(count, line, [&](std::size_t i) HWY_ATTR {
        prefetch<64, aheadOfFloats, For::writing>(floats + sizeof(float) * i);
        for (std::size_t k = 0; k < line; k += lanes) {
            widenOne(i + k);
        }
    });
}

#if HWY_TARGET != HWY_NEON

/// As on NEON, where it is one of the operations.
class ByteRange {
  public:
    HWY_INLINE ByteRange(float lower, float upper)
        : first(hn::Set(BlockTagF32(), lower)),
          last(hn::Set(BlockTagF32(), upper)),
          scale(hn::Set(BlockTagF32(), 255.0F / (upper - lower))) {}

    HWY_INLINE V8 bytesOf(float const* x) const {
        constexpr std::size_t quarter = blockBytes / 4;
        return BytesOfFour(scaled(x), scaled(x + quarter), scaled(x + 2 * quarter),
                           scaled(x + 3 * quarter));
    }

  private:
    HWY_INLINE V32 scaled(float const* x) const {
        // NaN becomes the second operand, which is `first`.
        VF const v = hn::Min(hn::Max(hn::LoadU(BlockTagF32(), x), first), last);
        return Truncate(hn::Mul(hn::Sub(v, first), scale));
    }

    VF first;
    VF last;
    VF scale;
};

#endif

#endif

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
