#include "rows/blend/axis.h"

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/blend/vector.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "rows/blend/columns.h"
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

using WindowWords = hn::RebindToSigned<WindowTag16>;
constexpr std::size_t entriesOfWindow = windowBytes / 2;

/// The result of a step, as bytes.
/// @param blend blend(pairs, weights) gives the blended entries of gathered pairs, as words
template <class Blend>
HWY_INLINE auto blendStep(BlendStep const& step, std::uint8_t const* window, Blend blend) {
    WindowTag const d;
    auto const pairs = PermuteWindow(hn::LoadU(d, window), hn::Load(d, step.places.data()));
    auto const words = blend(pairs, hn::Load(WindowTag16(), step.weights.data()));
    return hn::DemoteTo(hn::Half<WindowTag>(), words);
}

template <class Blend>
HWY_INLINE void blendSteps(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst,
                           Blend blend) {
    hn::Half<WindowTag> const half;
    std::uint32_t const* offset = program.offsets.data();
    BlendStep const* step = program.steps.data();
    BlendStep const* const end = step + program.steps.size();
    for (BlendStep const* const whole = step + program.whole_steps; step < whole; ++step) {
        hn::StoreU(blendStep(*step, src + offset[0], blend), half, dst + offset[1]);
        offset += 2;
    }
    // The last steps would store past the row's end: they store into a copy of the end, which is
    // then copied back.
    alignas(64) std::uint8_t copy[2 * entriesOfWindow];
    std::size_t const first = program.entries - entriesOfWindow;
    hn::Store(hn::LoadU(half, dst + first), half, copy);
    for (; step < end; ++step) {
        hn::StoreU(blendStep(*step, src + offset[0], blend), half, copy + (offset[1] - first));
        offset += 2;
    }
    hn::StoreU(hn::Load(half, copy), half, dst + first);
}

void runWeights(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    using Window = hn::Vec<WindowTag>;
    using Words = hn::Vec<WindowTag16>;
    blendSteps(program, src, dst, [](Window pairs, Words weights) HWY_ATTR {
        WindowWords const words;
        Words const both = hn::BitCast(WindowTag16(), pairs);
        auto const left = hn::BitCast(words, hn::And(both, hn::Set(WindowTag16(), 0xff)));
        auto const right = hn::BitCast(words, hn::ShiftRight<8>(both));
        return blend(words, left, right, hn::BitCast(words, weights));
    });
}

void run64ths(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    using Window = hn::Vec<WindowTag>;
    using Words = hn::Vec<WindowTag16>;
    blendSteps(program, src, dst, [](Window pairs, Words weights) HWY_ATTR {
        Words const sums = MulAddWindowPairs(pairs, hn::BitCast(WindowTag(), weights));
        return hn::BitCast(WindowWords(), hn::ShiftRight<6>(sums));
    });
}

/// A step gathers the pairs of as many entries as lie in a window.
bool compileBlend(BlendAxis const& axis, BlendProgram& program) {
    auto const isLeftOf = [](PixelPair const& a, PixelPair const& b) { return a.left < b.left; };
    program.entries = axis.pixels.size() * axis.channels;
    if (axis.row_bytes < windowBytes || program.entries < entriesOfWindow ||
        !std::is_sorted(axis.pixels.begin(), axis.pixels.end(), isLeftOf)) {
        return false;
    }
    bool const of_64 = std::all_of(axis.pixels.begin(), axis.pixels.end(),
                                   [](PixelPair const& pixel) { return isOf64(pixel.weight); });
    program.run = of_64 ? run64ths : runWeights;
    program.offsets.clear();
    program.steps.clear();
    program.whole_steps = 0;
    auto const byteOf = [&](std::int32_t place) {
        return static_cast<std::size_t>(place) * axis.channels;
    };
    vector::WindowPlan const plan{.window = windowBytes,
                                  .row = axis.row_bytes,
                                  .width = axis.pixels.size(),
                                  .channels = axis.channels,
                                  .reach = 2 * axis.channels,
                                  .step_entries = entriesOfWindow};
    auto const first = [&](std::size_t x) { return byteOf(axis.pixels[x].left); };
    planSteps(plan, first, [&](WindowStep const& from) {
        std::size_t const entry = from.pixel * axis.channels + from.channel;
        program.offsets.push_back(static_cast<std::uint32_t>(from.start));
        program.offsets.push_back(static_cast<std::uint32_t>(entry));
        program.whole_steps += entry + entriesOfWindow <= program.entries ? 1 : 0;
        BlendStep& step = program.steps.emplace_back();
        std::size_t channel = from.channel;
        PixelPair const* pixel = &axis.pixels[from.pixel];
        for (std::size_t i = 0; i < from.entries; ++i) {
            std::size_t const left = byteOf(pixel->left) + channel - from.start;
            std::size_t const right = byteOf(pixel->right) + channel - from.start;
            step.places[2 * i] = static_cast<std::uint8_t>(left);
            step.places[2 * i + 1] = static_cast<std::uint8_t>(right);
            step.weights[i] = of_64 ? pairOf64(pixel->weight) : pixel->weight;
            if (++channel == axis.channels) {
                channel = 0;
                ++pixel;
            }
        }
    });
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
