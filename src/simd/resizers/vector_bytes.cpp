// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/resizers/vector_bytes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

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

/// A number and a half, truncated. The sum is never rounded: whether the fraction reaches a half is
/// asked instead.
template <class D, class V>
HWY_INLINE hn::Vec<hn::RebindToSigned<D>> roundExactly(D d, V number) {
    hn::RebindToSigned<D> const integer;
    auto const whole = hn::ConvertTo(integer, number);
    auto const rest = hn::Sub(number, hn::ConvertTo(d, whole));
    auto const is_more = hn::RebindMask(integer, hn::Ge(rest, hn::Set(d, 0.5F)));
    return hn::Add(whole, hn::IfThenElseZero(is_more, hn::Set(integer, 1)));
}

void fillByteSamples(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight) {
    hn::ScalableTag<float> const d;
    hn::RebindToSigned<decltype(d)> const integer;
    auto const scale = hn::Set(d, static_cast<float>(axis.src) / static_cast<float>(axis.dst));
    auto const last = hn::Set(integer, static_cast<std::int32_t>(axis.src) - 1);
    auto const half = hn::Set(d, 0.5F);
    auto const first = hn::Iota(integer, 0);  // once, since it is slow
    std::size_t const lanes = hn::Lanes(d);
    for (std::size_t block = 0; block < axis.dst; block += lanes) {
        std::size_t const i = std::min<std::size_t>(block, axis.dst - lanes);
        auto const pixel = hn::Add(first, hn::Set(integer, static_cast<std::int32_t>(i)));
        auto const centre = hn::Add(hn::ConvertTo(d, pixel), half);
        auto const raw = hn::MulSub(scale, centre, half);
        auto const position = hn::IfThenElseZero(hn::Gt(raw, hn::Zero(d)), raw);
        auto const whole = hn::ConvertTo(integer, position);
        auto const fraction = hn::Mul(hn::Sub(position, hn::ConvertTo(d, whole)),
                                      hn::Set(d, float{byteBilinearRange}));
        auto const share = axis.exact ? roundExactly(d, fraction)
                                      : hn::ConvertTo(integer, hn::Add(fraction, half));
        auto const is_inside = hn::Lt(whole, last);
        hn::StoreU(hn::IfThenElse(is_inside, whole, hn::Sub(last, hn::Set(integer, 1))), integer,
                   index + i);
        hn::StoreU(hn::IfThenElse(is_inside, share, hn::Set(integer, byteBilinearRange)), integer,
                   weight + i);
    }
}

constexpr std::size_t pairsOfWindow = windowBytes / 2;

/// A step has a table of places, and then one of weights.
constexpr std::size_t pairTableBytes = 2 * windowBytes;

/// For a step that starts with channel `phase` of a pixel: which of its pixels each byte of the
/// pairs is of, and how far it lies behind that pixel's first byte.
struct PairTables {
    std::uint8_t pixel[windowBytes];
    std::uint8_t behind[windowBytes];
};

template <std::size_t channels>
struct alignas(64) PhaseTables {
    PairTables of[channels];
};

template <std::size_t channels>
constexpr PhaseTables<channels> phaseTables() {
    PhaseTables<channels> tables{};
    for (std::size_t phase = 0; phase < channels; ++phase) {
        for (std::size_t j = 0; j < windowBytes; ++j) {
            std::size_t const entry = phase + j / 2;
            tables.of[phase].pixel[j] = static_cast<std::uint8_t>(entry / channels);
            tables.of[phase].behind[j] =
                static_cast<std::uint8_t>(entry % channels + j % 2 * channels);
        }
    }
    return tables;
}

/// The byte of the first sample of each pixel from `x` to before `end` in the window that starts at
/// `start`; behind `end` anything may be written.
template <std::uint64_t channels>
HWY_INLINE void placePixels(BytePairs const& pairs, std::uint64_t x, std::uint64_t end,
                            std::uint64_t start, std::uint8_t* bytes) {
    hn::ScalableTag<std::int32_t> const d;
    hn::Rebind<std::uint8_t, decltype(d)> const narrow;
    auto const origin = hn::Set(d, static_cast<std::int32_t>(start));
    for (; x < end; x += hn::Lanes(d), bytes += hn::Lanes(d)) {
        auto const index = hn::Max(hn::LoadU(d, pairs.index + x), hn::Zero(d));
        auto const offsets = hn::Mul(index, hn::Set(d, static_cast<std::int32_t>(channels)));
        hn::StoreU(hn::DemoteTo(narrow, hn::Sub(offsets, origin)), narrow, bytes);
    }
}

template <std::uint64_t channels>
void compilePairs(BytePairs const& pairs, BytePairProgram& program) {
    static constexpr PhaseTables<channels> phases = phaseTables<channels>();
    WindowTag const d;
    alignas(64) std::uint8_t first[windowBytes] = {};  // byte of each pixel in the step's window
    WindowPlan const plan{.window = windowBytes,
                          .row = pairs.rowBytes,
                          .width = pairs.width,
                          .channels = channels,
                          .reach = 2 * channels,
                          .step_entries = pairsOfWindow};
    // The sample before a lone pixel, which has no weight, is that of the pixel.
    auto const first_byte = [&](std::uint64_t x) {
        return static_cast<std::uint64_t>(std::max(pairs.index[x], 0)) * channels;
    };
    program.offsets.Resize(2 * plan.mostSteps(), windowBytes);
    program.tables.Resize(pairTableBytes * plan.mostSteps(), windowBytes);
    std::int32_t* offset = program.offsets.data;
    std::uint8_t* table = program.tables.data;
    program.steps = planSteps(plan, first_byte, [&](WindowStep const& step) HWY_ATTR {
        std::uint64_t const end = step.pixel + (step.channel + step.entries - 1) / channels + 1;
        placePixels<channels>(pairs, step.pixel, end, step.start, first);
        std::uint64_t const entry = step.pixel * channels + step.channel;
        *offset++ = static_cast<std::int32_t>(step.start);
        *offset++ = static_cast<std::int32_t>(entry);
        PairTables const& phase = phases.of[step.channel];
        hn::Store(hn::Add(PermuteWindow(hn::Load(d, first), hn::Load(d, phase.pixel)),
                          hn::Load(d, phase.behind)),
                  d, table);
        hn::Store(hn::LoadU(d, pairs.alpha + pairOfEntry(entry)), d, table + windowBytes);
        table += pairTableBytes;
    });
}

/// Whether the row becomes twice as long, and has a block of pixels with a neighbour. All weights
/// are 4 and 12 of 16 then, but for the outer pixels', since the positions of so few are exact.
bool isDoubled(BytePairs const& pairs) {
    std::uint64_t const width = pairs.rowBytes / pairs.channels;
    return pairs.channels <= 2 && pairs.width == 2 * width && pairs.width <= mostVectorSamples &&
           pairs.rowBytes >= doubledBytes + pairs.channels;
}

/// Each pixel between two, and a copy of the first and of the last one.
template <std::size_t channels>
void doubleRow(std::uint64_t bytes, std::uint8_t const* src, std::uint16_t* row) {
    std::uint64_t const between = bytes - channels;
    for (std::size_t c = 0; c < channels; ++c) {
        row[c] = static_cast<std::uint16_t>(byteBilinearRange * src[c]);
        row[channels + 2 * between + c] =
            static_cast<std::uint16_t>(byteBilinearRange * src[between + c]);
    }
    walkBlockPairs(between, doubledBytes, [=](std::uint64_t x) HWY_ATTR {
        StoreDoubled<channels>(src + x, row + channels + 2 * x);
    });
}

void compileBytePairs(BytePairs const& pairs, BytePairProgram& program) {
    program.rowBytes = pairs.rowBytes;
    if (isDoubled(pairs)) {
        program.doubled = pairs.channels;
        return;
    }
    if (pairs.rowBytes < windowBytes) {
        program.scratch.Resize(windowBytes, windowBytes);
        std::memset(program.scratch.data, 0, windowBytes);
    }
    constexpr CompileBytePairs* compile[] = {compilePairs<1>, compilePairs<2>, compilePairs<3>,
                                             compilePairs<4>};
    compile[pairs.channels - 1](pairs, program);
}

/// The row, or a copy of it if a window is longer; behind a lone pixel it follows once more.
std::uint8_t const* windowsOf(BytePairProgram& program, std::uint8_t const* src) {
    if (program.rowBytes >= windowBytes) {
        return src;
    }
    std::memcpy(program.scratch.data, src, program.rowBytes);
    if (2 * program.rowBytes <= windowBytes) {
        std::memcpy(program.scratch.data + program.rowBytes, src, program.rowBytes);
    }
    return program.scratch.data;
}

void blendBytePairs(BytePairProgram& program, std::uint8_t const* src, std::uint16_t* row) {
    if (program.doubled != 0) {
        return program.doubled == 1 ? doubleRow<1>(program.rowBytes, src, row)
                                    : doubleRow<2>(program.rowBytes, src, row);
    }
    src = windowsOf(program, src);
    WindowTag const d;
    std::int32_t const* offset = program.offsets.data;
    std::uint8_t const* table = program.tables.data;
    std::uint64_t const steps = program.steps;
    for (std::uint64_t i = 0; i < steps; ++i, offset += 2, table += pairTableBytes) {
        auto const bytes = PermuteWindow(hn::LoadU(d, src + offset[0]), hn::Load(d, table));
        auto const sums = MulAddWindowPairs(bytes, hn::Load(d, table + windowBytes));
        hn::StoreU(sums, WindowTag16(), row + offset[1]);
    }
}

template <class D>
HWY_INLINE void blendRowsBy(D d, std::uint16_t const* top, std::uint16_t const* bottom,
                            std::int32_t weight, std::size_t count, std::uint8_t* dst) {
    static_assert(byteBilinearRange == 16 && byteBilinearShift == 8 && byteBilinearRounding == 128);
    hn::RepartitionToWide<D> const wide;
    std::size_t const half = hn::Lanes(wide);
#if HWY_TARGET == HWY_NEON              // elsewhere two products take as long
    if (weight == 4 || weight == 12) {  // as at twice the height
        std::uint16_t const* const near = weight == 4 ? top : bottom;
        std::uint16_t const* const far = weight == 4 ? bottom : top;
        walkBlockPairs(count, 2 * half, [=](std::size_t x) HWY_ATTR {
            auto const sum = [=](std::size_t i) HWY_ATTR {
                return AddThreefold(hn::LoadU(wide, far + i), hn::LoadU(wide, near + i));
            };
            hn::StoreU(RoundedBytes<6>(d, sum(x), sum(x + half)), d, dst + x);
        });
        return;
    }
#endif
    auto const first = hn::Set(wide, static_cast<std::uint16_t>(byteBilinearRange - weight));
    auto const second = hn::Set(wide, static_cast<std::uint16_t>(weight));
    walkShortBlocks(count, 2 * half, [=](std::size_t x) HWY_ATTR {
        auto const sum = [=](std::size_t i) HWY_ATTR {
            return hn::Add(hn::Mul(hn::LoadU(wide, top + i), first),
                           hn::Mul(hn::LoadU(wide, bottom + i), second));
        };
        hn::StoreU(RoundedBytes<8>(d, sum(x), sum(x + half)), d, dst + x);
    });
}

void blendByteRows(std::uint16_t const* top, std::uint16_t const* bottom, std::int32_t weight,
                   std::size_t count, std::uint8_t* dst) {
    if (count >= blockBytes) {
        blendRowsBy(Tag8(), top, bottom, weight, count, dst);
    } else {
        blendRowsBy(hn::CappedTag<std::uint8_t, 16>(), top, bottom, weight, count, dst);
    }
}

#endif

void takeRoutines([[maybe_unused]] ResizeRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.fillByteSamples = fillByteSamples;
    routines.compileBytePairs = compileBytePairs;
    routines.blendBytePairs = blendBytePairs;
    routines.blendByteRows = blendByteRows;
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeResizeByteRoutines(ResizeRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
