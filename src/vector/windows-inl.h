// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What a step of a program loads: windows of the source row, and their bytes in any order.

#if defined(OX_VECTOR_WINDOWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_WINDOWS_INL_H
#undef OX_VECTOR_WINDOWS_INL_H
#else
#define OX_VECTOR_WINDOWS_INL_H
#endif

#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// A register's windows of source bytes, side by side, each of `reach` times `windowBytes`.
template <std::size_t reach>
class Windows {
  public:
    /// @param at at(i) is where window i begins
    template <class At>
    static HWY_INLINE Windows load(At const& at) {
        Tag8 const d;
        if constexpr (windowCount == 2) {
            WindowTag const half;
            V8 const windows = hn::Combine(d, hn::LoadU(half, at(1)), hn::LoadU(half, at(0)));
            return {windows, windows};
        } else {
            V8 const lower = hn::LoadU(d, at(0));
            return {lower, reach == 2 ? hn::LoadU(d, at(0) + windowBytes) : lower};
        }
    }

    /// The bytes at the given places of their own windows. An `emptyPlace` takes a zero; on AVX3_DL
    /// it may take any byte.
    HWY_INLINE V8 permute(V8 places) const {
#if HWY_TARGET == HWY_AVX2
        return hn::TableLookupBytesOr0(_lower, places);
#else
        return reach == 2 ? PermuteTwoWindows(_lower, _upper, places)
                          : PermuteWindow(_lower, places);
#endif
    }

    /// The same, but an `emptyPlace` takes the byte of `v`, which came out of `permute`.
    HWY_INLINE V8 permuteInto(V8 v, V8 places) const {
#if HWY_TARGET == HWY_AVX3_DL
        hn::RebindToSigned<Tag8> const d;
        return hn::BitCast(Tag8(), hn::IfNegativeThenElse(hn::BitCast(d, places), hn::BitCast(d, v),
                                                          hn::BitCast(d, permute(places))));
#else
        return hn::Or(v, permute(places));
#endif
    }

  private:
    HWY_INLINE Windows(V8 lower, V8 upper) : _lower(lower), _upper(upper) {}

    V8 _lower;
    V8 _upper;
};

#endif

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
