// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/blend/columns.h"

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/blend/vector.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include "vector/ops-inl.h"
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using vector::WindowStep;

/// a + ((b - a) * weight >> 16), for unsigned weights of 16 bits. The multiplication takes weights
/// as signed, so that from 2^15 on they are 2^16 too small.
template <class D, class V>
HWY_INLINE V blend(D /*words*/, V a, V b, V weight) {
    V const difference = hn::Sub(b, a);
    V const rest = hn::And(difference, hn::ShiftRight<15>(weight));
    return hn::Add(hn::Add(a, rest), hn::MulHigh(difference, weight));
}

// Weights that are whole 64ths fit bytes: (a * (64 - weight) + b * weight) >> 6. All weights of a
// picture that is enlarged exactly twice are such.

constexpr std::uint16_t of64 = 0x10000 / 64;

constexpr bool isOf64(std::uint16_t weight) {
    return weight % of64 == 0;
}

/// The bytes 64 - weight and weight.
constexpr std::uint16_t pairOf64(std::uint16_t weight) {
    return static_cast<std::uint16_t>((64 - weight / of64) | (weight / of64) << 8);
}

constexpr std::size_t windowCount = blockBytes / windowBytes;  ///< of a register
constexpr std::size_t entriesOfWindow = windowBytes / 2;

#if HWY_TARGET == HWY_AVX2

/// How many windows that follow one another a permute can reach together.
constexpr std::size_t mostReach = 1;

/// The pairs of a step: two windows, side by side.
template <std::size_t reach>
HWY_INLINE V8 gatherPairs(std::uint8_t const* src, std::uint32_t const* offsets, V8 places) {
    WindowTag const d;
    V8 const windows =
        hn::Combine(Tag8(), hn::LoadU(d, src + offsets[2]), hn::LoadU(d, src + offsets[0]));
    return hn::TableLookupBytes(windows, places);
}

/// Stores each window's entries.
/// @param to to(entry) is where an entry goes
template <class To>
HWY_INLINE void storeEntries(hn::Vec<HalfTag8> bytes, std::uint32_t const* offsets, To to) {
    hn::Half<HalfTag8> const d;
    hn::StoreU(hn::LowerHalf(d, bytes), d, to(offsets[1]));
    hn::StoreU(hn::UpperHalf(d, bytes), d, to(offsets[3]));
}

#else

constexpr std::size_t mostReach = 2;

template <std::size_t reach>
HWY_INLINE V8 gatherPairs(std::uint8_t const* src, std::uint32_t const* offsets, V8 places) {
    Tag8 const d;
    V8 const window = hn::LoadU(d, src + offsets[0]);
    if constexpr (reach == 2) {
        return PermuteTwoWindows(window, hn::LoadU(d, src + offsets[0] + windowBytes), places);
    } else {
        return PermuteWindow(window, places);
    }
}

template <class To>
HWY_INLINE void storeEntries(hn::Vec<HalfTag8> bytes, std::uint32_t const* offsets, To to) {
    hn::StoreU(bytes, HalfTag8(), to(offsets[1]));
}

#endif

/// @param blend blend(pairs, weights) gives the blended entries of gathered pairs, as words
template <std::size_t reach, class Blend>
HWY_INLINE void blendSteps(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst,
                           Blend blend) {
    std::uint32_t const* offsets = program.offsets.data();
    BlendStep const* step = program.steps.data();
    BlendStep const* const end = step + program.steps.size();
    auto const bytesOf = [&]() HWY_ATTR {
        V8 const pairs = gatherPairs<reach>(src, offsets, hn::Load(Tag8(), step->places.data()));
        V16 const words = blend(pairs, hn::Load(Tag16(), step->weights.data()));
        return hn::DemoteTo(HalfTag8(), words);
    };
    for (BlendStep const* const whole = step + program.whole_steps; step < whole; ++step) {
        storeEntries(bytesOf(), offsets, [=](std::uint32_t entry) { return dst + entry; });
        offsets += 2 * windowCount;
    }
    // The last steps would store past the row's end: they store into a copy of the end, which is
    // then copied back.
    constexpr std::size_t most = entriesOfWindow * windowCount;
    alignas(64) std::uint8_t copy[2 * most];
    std::size_t const kept = std::min(program.entries, most);
    std::size_t const first = program.entries - kept;
    std::memcpy(copy, dst + first, kept);
    for (; step < end; ++step) {
        storeEntries(bytesOf(), offsets,
                     [&](std::uint32_t entry) { return copy + (entry - first); });
        offsets += 2 * windowCount;
    }
    std::memcpy(dst + first, copy, kept);
}

template <std::size_t reach>
void runWeights(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    using Words = hn::Vec<Tag16>;
    blendSteps<reach>(program, src, dst, [](V8 pairs, Words weights) HWY_ATTR {
        TagS16 const words;
        return blend(words, EvenBytes(pairs), OddBytes(pairs), hn::BitCast(words, weights));
    });
}

template <std::size_t reach>
void run64ths(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    using Words = hn::Vec<Tag16>;
    blendSteps<reach>(program, src, dst, [](V8 pairs, Words weights) HWY_ATTR {
        Words const sums = MulAddWindowPairs(pairs, hn::BitCast(Tag8(), weights));
        return hn::BitCast(TagS16(), hn::ShiftRight<6>(sums));
    });
}

vector::WindowPlan planOf(BlendAxis const& axis, std::size_t reach) {
    return {.window = reach * windowBytes,
            .row = axis.row_bytes,
            .width = axis.pixels.size(),
            .channels = axis.channels,
            .reach = 2 * axis.channels,
            .step_entries = entriesOfWindow};
}

/// Whether windows that follow one another make up for their second load.
template <class First>
bool needsTwoWindows(BlendAxis const& axis, First const& first) {
    if (mostReach == 1 || axis.row_bytes < mostReach * windowBytes) {
        return false;
    }
    auto const ignore = [](WindowStep const& /*step*/) {};
    return 4 * planSteps(planOf(axis, mostReach), first, ignore) <=
           3 * planSteps(planOf(axis, 1), first, ignore);
}

/// The pairs of a window's entries, and their weights.
/// @param side of the window in its register
void fillStep(BlendAxis const& axis, WindowStep const& from, std::size_t side, bool of_64,
              BlendStep& step) {
    std::size_t channel = from.channel;
    PixelPair const* pixel = &axis.pixels[from.pixel];
    auto const placeOf = [&](std::int32_t place) {
        return static_cast<std::uint8_t>(static_cast<std::size_t>(place) * axis.channels + channel -
                                         from.start);
    };
    for (std::size_t i = side * entriesOfWindow; i < side * entriesOfWindow + from.entries; ++i) {
        step.places[2 * i] = placeOf(pixel->left);
        step.places[2 * i + 1] = placeOf(pixel->right);
        step.weights[i] = of_64 ? pairOf64(pixel->weight) : pixel->weight;
        if (++channel == axis.channels) {
            channel = 0;
            ++pixel;
        }
    }
}

/// A window has the pairs of as many entries as lie in it.
bool compileBlend(BlendAxis const& axis, BlendProgram& program) {
    auto const isLeftOf = [](PixelPair const& a, PixelPair const& b) { return a.left < b.left; };
    program.entries = axis.pixels.size() * axis.channels;
    if (axis.row_bytes < windowBytes || program.entries < entriesOfWindow ||
        !std::is_sorted(axis.pixels.begin(), axis.pixels.end(), isLeftOf)) {
        return false;
    }
    bool const of_64 = std::all_of(axis.pixels.begin(), axis.pixels.end(),
                                   [](PixelPair const& pixel) { return isOf64(pixel.weight); });
    auto const first = [&](std::size_t x) {
        return static_cast<std::size_t>(axis.pixels[x].left) * axis.channels;
    };
    bool const is_far = needsTwoWindows(axis, first);
    program.run = of_64 ? (is_far ? run64ths<mostReach> : run64ths<1>)
                        : (is_far ? runWeights<mostReach> : runWeights<1>);
    program.offsets.clear();
    program.steps.clear();
    std::size_t windows = 0;
    std::size_t whole = 0;
    auto const addWindow = [&](WindowStep const& from) {
        std::size_t const entry = from.pixel * axis.channels + from.channel;
        program.offsets.push_back(static_cast<std::uint32_t>(from.start));
        program.offsets.push_back(static_cast<std::uint32_t>(entry));
        if (windows % windowCount == 0) {
            program.steps.emplace_back();
        }
        fillStep(axis, from, windows % windowCount, of_64, program.steps.back());
        ++windows;
        whole += entry + entriesOfWindow <= program.entries ? 1 : 0;
    };
    WindowStep last{};
    planSteps(planOf(axis, is_far ? mostReach : 1), first, [&](WindowStep const& from) {
        addWindow(from);
        last = from;
    });
    program.whole_steps = whole / windowCount;
    while (windows % windowCount != 0) {
        addWindow(last);
    }
    return true;
}

void blendRows(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
               std::size_t bytes, std::uint8_t* dst) {
    if (bytes < blockBytes) {
        return blendPlainRows(upper, lower, weight, bytes, dst);
    }
    Tag8 const d;
    if (isOf64(weight)) {
        auto const part = static_cast<std::int8_t>(weight / of64);
        walkShortBlocks(bytes, blockBytes, [&](std::size_t x) HWY_ATTR {
            V8 const a = hn::LoadU(d, upper + x);
            V8 const b = hn::LoadU(d, lower + x);
            hn::StoreU(BlendBy64ths(a, b, part), d, dst + x);
        });
        return;
    }
    TagS16 const words;
    V16 const factor = hn::BitCast(words, hn::Set(Tag16(), weight));
    walkShortBlocks(bytes, blockBytes, [&](std::size_t x) HWY_ATTR {
        V8 const a = hn::LoadU(d, upper + x);
        V8 const b = hn::LoadU(d, lower + x);
        V16 const even = blend(words, EvenBytes(a), EvenBytes(b), factor);
        V16 const odd = blend(words, OddBytes(a), OddBytes(b), factor);
        hn::StoreU(hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd))), d, dst + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] BlendRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compile_blend = compileBlend;
    routines.blend_rows = blendRows;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeBlendRoutines(BlendRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
