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

/// Floats of a range as bytes: (x - first) * 255 / (last - first), truncated. Those beyond count as
/// the range's ends, and NaN as the first.
class ByteRange {
  public:
    HWY_INLINE ByteRange(float lower, float upper)
        : first(hn::Set(BlockTagF32(), lower)),
          scale(hn::Set(BlockTagF32(), 255.0F / (upper - lower))),
#if HWY_TARGET == HWY_NEON
          most(hn::Set(Tag8(), byteOf((upper - lower) * (255.0F / (upper - lower))))) {
    }
#else
          last(hn::Set(BlockTagF32(), upper)) {
    }
#endif

    /// Of a block.
    HWY_INLINE V8 bytesOf(float const* x) const {
        constexpr std::size_t quarter = blockBytes / 4;
        VF const a = scaled(x);
        VF const b = scaled(x + quarter);
        VF const c = scaled(x + 2 * quarter);
        VF const d = scaled(x + 3 * quarter);
#if HWY_TARGET == HWY_NEON
        return hn::Min(SaturateFour(a, b, c, d), most);
#else
        return TruncateFour(a, b, c, d);
#endif
    }

  private:
#if HWY_TARGET == HWY_NEON
    /// Bounds that are equal make it NaN, which is 0.
    static std::uint8_t byteOf(float number) {
        return static_cast<std::uint8_t>(std::min(255.0F, std::max(0.0F, number)));
    }
#endif

    HWY_INLINE VF scaled(float const* x) const {
        VF const v = hn::LoadU(BlockTagF32(), x);
#if HWY_TARGET == HWY_NEON
        return hn::Mul(hn::Sub(v, first), scale);
#else
        // NaN becomes the second operand, which is `first`.
        return hn::Mul(hn::Sub(hn::Min(hn::Max(v, first), last), first), scale);
#endif
    }

    VF first;
    VF scale;
#if HWY_TARGET == HWY_NEON
    V8 most;  ///< of the last number of the range and those beyond
#else
    VF last;
#endif
};

#endif

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
