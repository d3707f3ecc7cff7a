// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/kernels/vector_floats.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <limits>

#include "simd/kernels/kernels.h"
#include "vector/floats-inl.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

static_assert(HWY_NATIVE_FMA, "fused sums are required");

using TagF32 = hn::ScalableTag<float>;
using TagF16 = hn::Rebind<hwy::float16_t, TagF32>;
using TagU16 = hn::Rebind<std::uint16_t, TagF32>;
using VF32 = hn::Vec<TagF32>;

HWY_INLINE std::size_t lanes() {
    return hn::Lanes(TagF32());
}

void ScaleBytesToFloats(ConstBytes src, std::size_t count, float const* lower, float const* upper,
                        float* dst) {
    if (count < lanes()) {
        return Base::ScaleBytesToFloats(src, count, lower, upper, dst);
    }
    TagF32 const d;
    VF32 const offset = hn::Set(d, *lower);
    VF32 const scale = hn::Set(d, (*upper - *lower) / 255.0F);
    widenBytes(src, count, [&](std::size_t i, VF32 number) HWY_ATTR {
        prefetch<64, aheadOfFloats, For::writing>(dst + i);
        hn::StoreU(hn::MulAdd(scale, number, offset), d, dst + i);
    });
}

/// Whether (x - lower) * 255 / (upper - lower) is a number from 0 to 255 for each x in the range.
bool isPlainRange(float lower, float upper) {
    float const range = upper - lower;
    return range >= 1e-30F && range <= std::numeric_limits<float>::max();
}

void ScaleFloatsToBytes(float const* src, std::size_t count, float const* lower, float const* upper,
                        Bytes dst) {
    if (count < blockBytes || !isPlainRange(*lower, *upper)) {
        return Plain::ScaleFloatsToBytes(src, count, lower, upper, dst);
    }
    BlockTagF32 const d;
    auto const first = hn::Set(d, *lower);
    auto const last = hn::Set(d, *upper);
    auto const scale = hn::Set(d, 255.0F / (*upper - *lower));
    auto const number = [&](float const* at) HWY_ATTR {
        // NaN becomes the lower bound or stays, which is 0 either way.
        return hn::Mul(hn::Sub(Clamp(hn::LoadU(d, at), first, last), first), scale);
    };
    constexpr std::size_t quarter = blockBytes / 4;
    walkShortBlocks(count, blockBytes, [&](std::size_t i) HWY_ATTR {
        float const* const x = src + i;
        prefetch<4 * blockBytes, aheadOfFloats>(x);
        hn::StoreU(TruncateFour(number(x), number(x + quarter), number(x + 2 * quarter),
                                number(x + 3 * quarter)),
                   Tag8(), dst + i);
    });
}

void FloatsToHalves(float const* src, std::size_t count, std::uint16_t* dst) {
    if (count < lanes()) {
        return Plain::FloatsToHalves(src, count, dst);
    }
    walkShortBlocks(count, lanes(), [&](std::size_t i) HWY_ATTR {
        auto const halves = hn::DemoteTo(TagF16(), hn::LoadU(TagF32(), src + i));
        hn::StoreU(hn::BitCast(TagU16(), halves), TagU16(), dst + i);
    });
}

void HalvesToFloats(std::uint16_t const* src, std::size_t count, float* dst) {
    if (count < lanes()) {
        return Plain::HalvesToFloats(src, count, dst);
    }
    walkShortBlocks(count, lanes(), [&](std::size_t i) HWY_ATTR {
        auto const halves = hn::BitCast(TagF16(), hn::LoadU(TagU16(), src + i));
        hn::StoreU(hn::PromoteTo(TagF32(), halves), TagF32(), dst + i);
    });
}

// These kernels work in place, so no element may be computed twice: blocks must not overlap.

template <class Step>
HWY_INLINE std::size_t changeWholeBlocks(float* data, std::size_t count, Step step) {
    TagF32 const d;
    std::size_t i = 0;
    for (; i + lanes() <= count; i += lanes()) {
        prefetch<64, aheadOfFloats>(data + i);
        hn::StoreU(step(i, hn::LoadU(d, data + i)), d, data + i);
    }
    return i;
}

void AddConstantFloats(float const* value, float* data, std::size_t count) {
    VF32 const addend = hn::Set(TagF32(), *value);
    std::size_t const done = changeWholeBlocks(
        data, count, [&](std::size_t, VF32 x) HWY_ATTR { return hn::Add(x, addend); });
    Base::AddConstantFloats(value, data + done, count - done);
}

void AccumulateScaledFloats(float const* src, std::size_t count, float const* value, float* dst) {
    VF32 const factor = hn::Set(TagF32(), *value);
    std::size_t const done = changeWholeBlocks(dst, count, [&](std::size_t i, VF32 sum) HWY_ATTR {
        return hn::MulAdd(factor, hn::LoadU(TagF32(), src + i), sum);
    });
    Base::AccumulateScaledFloats(src + done, count - done, value, dst + done);
}

void MultiplyFloats(float const* value, float* data, std::size_t count) {
    VF32 const factor = hn::Set(TagF32(), *value);
    std::size_t const done = changeWholeBlocks(data, count, [&](std::size_t, VF32 x) HWY_ATTR {
        return hn::MulAdd(factor, x, hn::Zero(TagF32()));
    });
    Base::MultiplyFloats(value, data + done, count - done);
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
#define OX_TAKE(name, ...) routines.name = name;
    OX_FLOAT_KERNELS(OX_TAKE)
#undef OX_TAKE
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeFloatRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
