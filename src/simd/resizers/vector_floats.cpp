// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/resizers/vector_floats.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "simd/resizers/routines.h"
#include "vector/ops-inl.h"
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using ox::vector::WindowPlan;
using ox::vector::WindowStep;

static_assert(HWY_NATIVE_FMA, "fused sums are required");

constexpr std::size_t lanes = blockBytes / sizeof(float);

template <class V>
HWY_INLINE V blend(V first, V second, V weight) {
    V const rest = hn::Sub(hn::Set(hn::DFromV<V>(), 1.0F), weight);
    return hn::MulAdd(first, rest, hn::Mul(weight, second));
}

// The two samples of an entry are neighbours in rows of one channel, and come by one load.

using PairsTag = hn::Full128<float>;
constexpr std::size_t pairsOfBlock = 4;

HWY_INLINE hn::Vec<PairsTag> blendPairs(float const* src, std::int32_t const* places,
                                        hn::Vec<PairsTag> weight) {
    PairsTag const d;
    auto const pair = [=](std::size_t i)
                          HWY_ATTR { return hn::LoadU(hn::Half<PairsTag>(), src + places[i]); };
    auto const lower = hn::Combine(d, pair(1), pair(0));
    auto const upper = hn::Combine(d, pair(3), pair(2));
    return blend(hn::ConcatEven(d, upper, lower), hn::ConcatOdd(d, upper, lower), weight);
}

void blendFloatPairs(FloatColumns columns, float const* src, float* sums) {
    PairsTag const d;
    walkShortBlocks(columns.entries, pairsOfBlock, [=](std::size_t k) HWY_ATTR {
        auto const weight = hn::LoadU(d, columns.weight + k);
        hn::StoreU(blendPairs(src, columns.first + k, weight), d, sums + k);
    });
}

void blendFloatPairRows(FloatColumns const& columns, float const* top, float const* bottom,
                        float weight, float* dst) {
    PairsTag const d;
    auto const second_weight = hn::Set(d, weight);
    std::int32_t const* const first = columns.first;
    float const* const weights = columns.weight;
    walkShortBlocks(columns.entries, pairsOfBlock, [=](std::size_t k) HWY_ATTR {
        auto const column_weight = hn::LoadU(d, weights + k);
        hn::StoreU(blend(blendPairs(top, first + k, column_weight),
                         blendPairs(bottom, first + k, column_weight), second_weight),
                   d, dst + k);
    });
}

#if HWY_TARGET == HWY_AVX3_DL

// A step takes its samples out of two registers by one permutation.

constexpr std::uint64_t windowLanes = 32;
constexpr std::uint64_t stepLanes = 16;
constexpr std::uint64_t stepOffsets = 2 + stepLanes;

bool compileFloatColumns(FloatColumns const& columns, FloatProgram& program) {
    constexpr std::uint64_t most_channels = 8;
    if (columns.entries < stepLanes || columns.rowElements < windowLanes ||
        columns.channels > most_channels) {
        return false;
    }
    constexpr std::uint64_t sparse = 3;  // pixels apart: steps have few entries then
    program.takesPairs = columns.channels == 1 && columns.rowElements / columns.entries >= sparse;
    if (program.takesPairs || program.steps != 0) {
        return true;
    }
    WindowPlan const plan{.window = windowLanes,
                          .row = columns.rowElements,
                          .width = columns.entries / columns.channels,
                          .channels = columns.channels,
                          .reach = 2 * columns.channels,
                          .step_entries = stepLanes};
    auto const first = [&](std::uint64_t x) {
        return static_cast<std::uint64_t>(columns.first[x * columns.channels]);
    };
    program.offsets.Resize(stepOffsets * plan.mostSteps(), 64);
    std::int32_t* offset = program.offsets.data;
    program.steps = planSteps(plan, first, [&](WindowStep const& step) HWY_ATTR {
        std::uint64_t const entry = step.pixel * columns.channels + step.channel;
        auto const start = static_cast<std::int32_t>(step.start);
        offset[0] = start;
        offset[1] = static_cast<std::int32_t>(entry);
        std::fill_n(offset + 2, stepLanes, 0);
        std::transform(columns.first + entry, columns.first + entry + step.entries, offset + 2,
                       [=](std::int32_t at) HWY_ATTR { return at - start; });
        offset += stepOffsets;
    });
    return true;
}

void blendFloatColumns(FloatProgram const& program, FloatColumns const& columns, float const* src,
                       float* sums) {
    if (program.takesPairs) {
        return blendFloatPairs(columns, src, sums);
    }
    BlockTagF32 const d;
    BlockTagS32 const places_tag;
    auto const pixel = hn::Set(places_tag, static_cast<std::int32_t>(columns.channels));
    std::int32_t const* step = program.offsets.data;
    for (std::uint64_t i = 0; i < program.steps; ++i, step += stepOffsets) {
        VF const lower = hn::LoadU(d, src + step[0]);
        VF const upper = hn::LoadU(d, src + step[0] + stepLanes);
        auto const places = hn::LoadU(places_tag, step + 2);
        VF const first = PermuteTwo(lower, upper, places);
        VF const second = PermuteTwo(lower, upper, hn::Add(places, pixel));
        hn::StoreU(blend(first, second, hn::LoadU(d, columns.weight + step[1])), d, sums + step[1]);
    }
}

#else

bool compileFloatColumns(FloatColumns const& columns, FloatProgram& program) {
    program.takesPairs = columns.channels == 1;
    return columns.entries >= lanes;
}

void blendFloatColumns(FloatProgram const& program, FloatColumns const& columns, float const* src,
                       float* sums) {
    if (program.takesPairs) {
        return blendFloatPairs(columns, src, sums);
    }
    BlockTagF32 const d;
    walkShortBlocks(columns.entries, lanes, [&](std::size_t k) HWY_ATTR {
        auto const places = hn::LoadU(BlockTagS32(), columns.first + k);
        VF const first = hn::GatherIndex(d, src, places);
        VF const second = hn::GatherIndex(d, src + columns.channels, places);
        hn::StoreU(blend(first, second, hn::LoadU(d, columns.weight + k)), d, sums + k);
    });
}

#endif

void blendFloatRows(float const* top, float const* bottom, float weight, std::size_t count,
                    float* dst) {
    BlockTagF32 const d;
    VF const second_weight = hn::Set(d, weight);
    walkShortBlocks(count, lanes, [&](std::size_t k) HWY_ATTR {
        hn::StoreU(blend(hn::LoadU(d, top + k), hn::LoadU(d, bottom + k), second_weight), d,
                   dst + k);
    });
}

#endif

void takeRoutines([[maybe_unused]] ResizeRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compileFloatColumns = compileFloatColumns;
    routines.blendFloatColumns = blendFloatColumns;
    routines.blendFloatPairRows = blendFloatPairRows;
    routines.blendFloatRows = blendFloatRows;
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeResizeFloatRoutines(ResizeRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
