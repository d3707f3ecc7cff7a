#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/resizers/vector_bytes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "simd/resizers/routines.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

bool compilePixels(PixelColumns const& columns, RowProgram& program) {
    std::uint64_t const size = columns.pixelSize;
    if (size == 0 || size > windowBytes / 2 || columns.rowBytes < windowBytes ||
        columns.width == 0) {
        return false;
    }
    std::uint64_t const of_source = columns.rowBytes / (windowBytes - size + 1);
    std::uint64_t const of_pixels = columns.width / (windowBytes / size);
    program.offsets.Resize(2 * (of_source + of_pixels + 2), windowBytes);
    program.tables.Resize(windowBytes * (of_source + of_pixels + 2), windowBytes);
    program.entries = columns.width * size;
    program.scratch.Resize(program.entries + windowBytes, windowBytes);
    if (program.offsets.data == nullptr || program.tables.data == nullptr ||
        program.scratch.data == nullptr) {
        return false;
    }
    auto const last_window = static_cast<std::int32_t>(columns.rowBytes - windowBytes);
    std::int32_t* step = program.offsets.data;
    std::uint8_t* places = program.tables.data;
    std::uint64_t used = windowBytes;  // bytes of the step
    program.stepBytes = 0;
    for (std::uint64_t x = 0; x < columns.width; ++x) {
        std::int32_t const offset = columns.offset[x];
        if (used + size > windowBytes ||
            offset + static_cast<std::int32_t>(size - windowBytes) > step[0]) {
            step += x == 0 ? 0 : 2;
            places += x == 0 ? 0 : windowBytes;
            step[0] = std::min(offset, last_window);
            step[1] = static_cast<std::int32_t>(x * size);
            std::memset(places, 0, windowBytes);
            used = 0;
        }
        for (std::uint64_t i = 0; i < size; ++i) {
            places[used + i] =
                static_cast<std::uint8_t>(static_cast<std::uint64_t>(offset - step[0]) + i);
        }
        used += size;
        program.stepBytes = std::max(program.stepBytes, used);
    }
    program.steps = static_cast<std::uint64_t>(step - program.offsets.data) / 2 + 1;
    return true;
}

/// As many of a register's bytes as `d` has.
template <class D, class V>
HWY_INLINE auto lowerPart(D d, V v) {
    if constexpr (std::is_same_v<hn::DFromV<V>, D>) {
        return v;
    } else {
        return lowerPart(d, hn::LowerHalf(v));
    }
}

/// A step stores a whole register, of which the next one overwrites what isn't its own; those that
/// would reach past the row's end go through the scratch row.
/// @tparam D of the registers, which may be the lower part of a window
template <class D>
HWY_INLINE void copySteps(D d, RowProgram const& program, std::uint8_t const* src,
                          std::uint8_t* dst) {
    WindowTag const window;
    std::int32_t const* offset = program.offsets.data;
    std::int32_t const* const end = offset + 2 * program.steps;
    std::uint8_t const* table = program.tables.data;
    auto const run = [&](std::uint8_t* to) HWY_ATTR {
        auto const bytes =
            PermuteWindow(hn::LoadU(window, src + offset[0]), hn::Load(window, table));
        hn::StoreU(lowerPart(d, bytes), d, to + offset[1]);
        offset += 2;
        table += windowBytes;
    };
    std::uint64_t const entries = program.entries;
    while (offset < end && static_cast<std::uint64_t>(offset[1]) + hn::Lanes(d) <= entries) {
        run(dst);
    }
    if (offset < end) {
        auto const rest = static_cast<std::uint64_t>(offset[1]);
        while (offset < end) {
            run(program.scratch.data);
        }
        std::memcpy(dst + rest, program.scratch.data + rest, entries - rest);
    }
}

/// Where pixels lie far apart, steps have few bytes, and short stores seldom straddle cache lines.
void copyPixels(RowProgram& program, std::uint8_t const* src, std::uint8_t* dst) {
    hn::CappedTag<std::uint8_t, 16> const narrow;
    if (program.stepBytes <= hn::Lanes(narrow)) {
        copySteps(narrow, program, src, dst);
    } else {
        copySteps(WindowTag(), program, src, dst);
    }
}

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
    constexpr std::int32_t range = 16;
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
                                      hn::Set(d, static_cast<float>(range)));
        auto const share = axis.exact ? roundExactly(d, fraction)
                                      : hn::ConvertTo(integer, hn::Add(fraction, half));
        auto const is_inside = hn::Lt(whole, last);
        hn::StoreU(hn::IfThenElse(is_inside, whole, hn::Sub(last, hn::Set(integer, 1))), integer,
                   index + i);
        hn::StoreU(hn::IfThenElse(is_inside, share, hn::Set(integer, range)), integer, weight + i);
    }
}

constexpr std::size_t pairsOfWindow = windowBytes / 2;

/// A step has a table of places, and then one of weights.
constexpr std::size_t pairTableBytes = 2 * windowBytes;

/// Steps that `pairs` can need at most: a step ends when it has as many entries as fit, or when the
/// next pixel lies about a window behind its start.
std::uint64_t mostSteps(BytePairs const& pairs) {
    std::uint64_t const of_source = pairs.rowBytes / (windowBytes - 2 * pairs.channels + 1);
    return of_source + pairs.width * pairs.channels / pairsOfWindow + 2;
}

/// For a step that starts with channel `phase` of a pixel: which of its pixels each byte of the
/// pairs is of, and how far it lies behind that pixel's first byte.
struct PairTables {
    std::uint8_t pixel[windowBytes];
    std::uint8_t behind[windowBytes];
};

template <std::size_t channels>
struct alignas(64) PhaseTables {
    PairTables phase[channels];
};

template <std::size_t channels>
constexpr PhaseTables<channels> phaseTables() {
    PhaseTables<channels> tables{};
    for (std::size_t phase = 0; phase < channels; ++phase) {
        for (std::size_t j = 0; j < windowBytes; ++j) {
            std::size_t const entry = phase + j / 2;
            tables.phase[phase].pixel[j] = static_cast<std::uint8_t>(entry / channels);
            tables.phase[phase].behind[j] =
                static_cast<std::uint8_t>(entry % channels + j % 2 * channels);
        }
    }
    return tables;
}

/// Byte of a pixel's first sample; the one before a lone pixel, which has no weight, is the pixel.
template <std::size_t channels>
HWY_INLINE std::int32_t firstByte(BytePairs const& pairs, std::uint64_t x) {
    return std::max(pairs.index[x], 0) * static_cast<std::int32_t>(channels);
}

/// Bytes of the pixels from `x` to before `end` in the window that starts at `start`, where all of
/// them lie; behind `end` anything may be written.
template <std::size_t channels>
HWY_INLINE void placePixels(BytePairs const& pairs, std::uint64_t x, std::uint64_t end,
                            std::int32_t start, std::uint8_t* bytes) {
    hn::ScalableTag<std::int32_t> const d;
    hn::Rebind<std::uint8_t, decltype(d)> const narrow;
    auto const origin = hn::Set(d, start);
    for (; x < end; x += hn::Lanes(d), bytes += hn::Lanes(d)) {
        auto const pixels = hn::Max(hn::LoadU(d, pairs.index + x), hn::Zero(d));
        auto const offsets = hn::Mul(pixels, hn::Set(d, static_cast<std::int32_t>(channels)));
        hn::StoreU(hn::DemoteTo(narrow, hn::Sub(offsets, origin)), narrow, bytes);
    }
}

template <std::size_t channels>
void compilePairs(BytePairs const& pairs, RowProgram& program) {
    constexpr auto last_start = static_cast<std::int32_t>(windowBytes - 2 * channels);
    static constexpr PhaseTables<channels> tables = phaseTables<channels>();
    WindowTag const d;
    alignas(64) std::uint8_t first[windowBytes] = {};  // byte of each pixel in the step's window
    auto const last_window =
        static_cast<std::int32_t>(pairs.rowBytes < windowBytes ? 0 : pairs.rowBytes - windowBytes);
    std::int32_t* step = program.offsets.data;
    std::uint8_t* places = program.tables.data;
    std::uint64_t x = 0;  // pixel and channel that the step starts with
    std::uint64_t phase = 0;
    while (x < pairs.width) {
        std::int32_t const start = std::min(firstByte<channels>(pairs, x), last_window);
        step[0] = start;
        std::uint64_t const entry = x * channels + phase;
        step[1] = static_cast<std::int32_t>(entry);
        std::uint64_t end = std::min(x + (phase + pairsOfWindow - 1) / channels + 1, pairs.width);
        while (firstByte<channels>(pairs, end - 1) - start > last_start) {
            --end;
        }
        placePixels<channels>(pairs, x, end, start, first);
        PairTables const& table = tables.phase[phase];
        hn::Store(hn::Add(PermuteWindow(hn::Load(d, first), hn::Load(d, table.pixel)),
                          hn::Load(d, table.behind)),
                  d, places);
        hn::Store(hn::LoadU(d, pairs.alpha + pairOfEntry(entry)), d, places + windowBytes);
        std::uint64_t const entries =
            std::min<std::uint64_t>((end - x) * channels - phase, pairsOfWindow);
        x += (phase + entries) / channels;
        phase = (phase + entries) % channels;
        step += 2;
        places += pairTableBytes;
    }
    program.steps = static_cast<std::uint64_t>(step - program.offsets.data) / 2;
}

void compileBytePairs(BytePairs const& pairs, RowProgram& program) {
    program.entries = pairs.width * pairs.channels;
    program.rowBytes = pairs.rowBytes;
    program.offsets.Resize(2 * mostSteps(pairs), windowBytes);
    program.tables.Resize(pairTableBytes * mostSteps(pairs), windowBytes);
    if (pairs.rowBytes < windowBytes) {
        program.scratch.Resize(windowBytes, windowBytes);
        std::memset(program.scratch.data, 0, windowBytes);
    }
    switch (pairs.channels) {
        case 1:
            return compilePairs<1>(pairs, program);
        case 2:
            return compilePairs<2>(pairs, program);
        case 3:
            return compilePairs<3>(pairs, program);
        default:
            return compilePairs<4>(pairs, program);
    }
}

/// The row, or a copy of it if a window is longer; behind a lone pixel it follows once more.
std::uint8_t const* windowsOf(RowProgram& program, std::uint8_t const* src) {
    if (program.rowBytes >= windowBytes) {
        return src;
    }
    std::memcpy(program.scratch.data, src, program.rowBytes);
    if (2 * program.rowBytes <= windowBytes) {
        std::memcpy(program.scratch.data + program.rowBytes, src, program.rowBytes);
    }
    return program.scratch.data;
}

void blendBytePairs(RowProgram& program, std::uint8_t const* src, std::uint16_t* row) {
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
    hn::RepartitionToWide<D> const wide;
    std::size_t const half = hn::Lanes(wide);
    auto const first = hn::Set(wide, static_cast<std::uint16_t>(16 - weight));
    auto const second = hn::Set(wide, static_cast<std::uint16_t>(weight));
    auto const rounding = hn::Set(wide, 128);
    auto const sum = [&](std::size_t x) HWY_ATTR {
        auto const products = hn::Add(hn::Mul(hn::LoadU(wide, top + x), first),
                                      hn::Mul(hn::LoadU(wide, bottom + x), second));
        return hn::BitCast(d, hn::Add(products, rounding));
    };
    walkShortBlocks(count, 2 * half, [&](std::size_t x) HWY_ATTR {
        hn::StoreU(hn::ConcatOdd(d, sum(x + half), sum(x)), d, dst + x);
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
    routines.compilePixels = compilePixels;
    routines.copyPixels = copyPixels;
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
