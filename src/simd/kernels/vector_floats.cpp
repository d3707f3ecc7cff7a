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
    widenBytes(src, count, reinterpret_cast<Bytes>(dst),
               [&](VF32 numbers) HWY_ATTR { return hn::MulAdd(scale, numbers, offset); });
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
    ByteRange const range(*lower, *upper);
    walkShortTracks(count, blockBytes, [&](std::size_t i) HWY_ATTR {
        prefetch<4 * blockBytes, aheadOfFloats>(src + i);
        hn::StoreU(range.bytesOf(src + i), Tag8(), dst + i);
    });
}

/// Two registers a turn, because they take few instructions.
HWY_INLINE std::size_t twoRegisters() {
    return 2 * lanes();
}

void FloatsToHalves(float const* src, std::size_t count, std::uint16_t* dst) {
    if (count < twoRegisters()) {
        return Plain::FloatsToHalves(src, count, dst);
    }
    auto const halves = [=](std::size_t i) HWY_ATTR {
        return hn::BitCast(TagU16(), hn::DemoteTo(TagF16(), hn::LoadU(TagF32(), src + i)));
    };
    walkShortTracks(count, twoRegisters(), [&](std::size_t i) HWY_ATTR {
        auto const first = halves(i);
        auto const second = halves(i + lanes());
        hn::StoreU(first, TagU16(), dst + i);
        hn::StoreU(second, TagU16(), dst + i + lanes());
    });
}

void HalvesToFloats(std::uint16_t const* src, std::size_t count, float* dst) {
    if (count < twoRegisters()) {
        return Plain::HalvesToFloats(src, count, dst);
    }
    auto const floats = [=](std::size_t i) HWY_ATTR {
        return hn::PromoteTo(TagF32(), hn::BitCast(TagF16(), hn::LoadU(TagU16(), src + i)));
    };
    walkShortTracks(count, twoRegisters(), [&](std::size_t i) HWY_ATTR {
        VF32 const first = floats(i);
        VF32 const second = floats(i + lanes());
        hn::StoreU(first, TagF32(), dst + i);
        hn::StoreU(second, TagF32(), dst + i + lanes());
    });
}

// These kernels work in place, so no element may be computed twice: blocks must not overlap.

template <class Step>
HWY_INLINE std::size_t changeWholeBlocks(float* data, std::size_t count, Step step) {
    TagF32 const d;
    std::size_t i = 0;
    for (; i + twoRegisters() <= count; i += twoRegisters()) {
        prefetch<2 * hn::MaxLanes(d) * sizeof(float), aheadOfFloats>(data + i);
        VF32 const first = step(i, hn::LoadU(d, data + i));
        VF32 const second = step(i + lanes(), hn::LoadU(d, data + i + lanes()));
        hn::StoreU(first, d, data + i);
        hn::StoreU(second, d, data + i + lanes());
    }
    if (i + lanes() <= count) {
        hn::StoreU(step(i, hn::LoadU(d, data + i)), d, data + i);
        i += lanes();
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
