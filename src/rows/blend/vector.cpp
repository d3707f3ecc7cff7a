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
#include "vector/windows-inl.h"
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

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

// Weights of one and three quarters are two means, each rounded down; at twice the size there are
// no others.

constexpr std::uint16_t quarter = 0x10000 / 4;

/// (3 * near + far) >> 2
HWY_INLINE V8 blendByQuarter(V8 near, V8 far) {
    return FloorMean(near, FloorMean(near, far));
}

/// Whether the row becomes twice as long, its outer pixels apart all in quarters between two.
bool isDoubled(BlendAxis const& axis) {
    std::size_t const width = axis.row_bytes / axis.channels;
    if (axis.channels > 2 || axis.pixels.size() != 2 * width ||
        axis.row_bytes < axis.channels + blockBytes) {
        return false;
    }
    auto const isCopy = [](PixelPair const& pair, std::size_t pixel) {
        return static_cast<std::size_t>(pair.left) == pixel &&
               (pair.weight == 0 || pair.right == pair.left);
    };
    bool doubled = isCopy(axis.pixels.front(), 0) && isCopy(axis.pixels.back(), width - 1);
    for (std::size_t i = 1; doubled && i + 1 < 2 * width; ++i) {
        PixelPair const& pair = axis.pixels[i];
        doubled = static_cast<std::size_t>(pair.left) == (i - 1) / 2 &&
                  pair.right == pair.left + 1 && pair.weight == (i % 2 == 1 ? 1 : 3) * quarter;
    }
    return doubled;
}

template <std::size_t channels, class Unit>
void runDoubled(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    Tag8 const d;
    hn::Repartition<Unit, Tag8> const pixels;
    static_assert(sizeof(Unit) == channels);
    std::size_t const between = program.entries / 2 - channels;
    std::memcpy(dst, src, channels);
    std::memcpy(dst + channels + 2 * between, src + between, channels);
    walkShortBlocks(between, blockBytes, [=](std::size_t x) HWY_ATTR {
        V8 const left = hn::LoadU(d, src + x);
        V8 const right = hn::LoadU(d, src + x + channels);
        hn::StoreInterleaved2(hn::BitCast(pixels, blendByQuarter(left, right)),
                              hn::BitCast(pixels, blendByQuarter(right, left)), pixels,
                              reinterpret_cast<Unit*>(dst + channels + 2 * x));
    });
}

// A block of entries, which are samples of the result, is made from a register of pairs of source
// bytes. The pairs are gathered from windows of the row: a permute takes those that lie in one
// window, and further ones add those that lie further on.

constexpr std::size_t blockEntries = blockBytes / 2;
constexpr std::size_t windowEntries = blockEntries / windowCount;  ///< of each gather

HWY_INLINE std::size_t blocksOf(BlendProgram const& program) {
    return (program.entries + blockEntries - 1) / blockEntries;
}

/// The last block overlaps the one before.
HWY_INLINE std::size_t firstOfBlock(std::size_t block, std::size_t entries) {
    return std::min(block * blockEntries, entries - blockEntries);
}

/// What is known of a program when it is compiled.
template <std::size_t reach_, std::size_t gathers_, bool of_64_ = false>
struct Shape {
    static constexpr std::size_t reach = reach_;
    static constexpr std::size_t gathers = gathers_;  ///< 0: any number
    static constexpr bool of_64 = of_64_;
};

/// The tables and windows of a block.
struct BlockSteps {
    std::uint32_t const* offsets;
    vector::RegisterBytes const* tables;  ///< places of each gather, then weights
    std::size_t gathers;
};

/// Calls block(steps, first) for the blocks of a row; `first` is the first entry.
template <class Shape, class Block>
HWY_INLINE void forEachBlock(BlendProgram const& program, Block block) {
    BlockSteps steps{program.offsets.data(), program.tables.data(),
                     Shape::gathers == 0 ? program.gathers : Shape::gathers};
    walkBlocks(program.entries, blockEntries, [&](std::size_t first) HWY_ATTR {
        block(steps, first);
        steps.offsets += steps.gathers * windowCount;
        steps.tables += steps.gathers + 1;
    });
}

/// The blended columns of a block, as words.
template <class Shape>
HWY_INLINE V16 blendColumns(BlockSteps const& steps, std::uint8_t const* src) {
    Tag8 const d;
    auto const windows = [&](std::size_t k) HWY_ATTR {
        return Windows<Shape::reach>::load(
            [&](std::size_t i) { return src + steps.offsets[k * windowCount + i]; });
    };
    V8 pairs = windows(0).permute(hn::Load(d, steps.tables->bytes.data()));
    for (std::size_t k = 1; k < steps.gathers; ++k) {
        pairs = windows(k).permuteInto(pairs, hn::Load(d, steps.tables[k].bytes.data()));
    }
    V8 const weights = hn::Load(d, steps.tables[steps.gathers].bytes.data());
    TagS16 const words;
    if constexpr (Shape::of_64) {
        return hn::BitCast(words, hn::ShiftRight<6>(MulAddWindowPairs(pairs, weights)));
    } else {
        return blend(words, EvenBytes(pairs), OddBytes(pairs), hn::BitCast(words, weights));
    }
}

HWY_INLINE void storeEntries(V16 words, std::uint8_t* dst) {
    hn::StoreU(hn::DemoteTo(HalfTag8(), words), HalfTag8(), dst);
}

template <class Shape>
void runColumns(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    forEachBlock<Shape>(program, [=](BlockSteps const& steps, std::size_t first) HWY_ATTR {
        storeEntries(blendColumns<Shape>(steps, src), dst + first);
    });
}

template <class Shape>
void runColumnsAndRows(BlendProgram const& program, std::uint8_t const* upper,
                       std::uint8_t const* lower, std::uint16_t weight, std::uint8_t* dst) {
    TagS16 const words;
    V16 const factor = hn::BitCast(words, hn::Set(Tag16(), weight));
    forEachBlock<Shape>(program, [=](BlockSteps const& steps, std::size_t first) HWY_ATTR {
        V16 const a = blendColumns<Shape>(steps, upper);
        V16 const b = blendColumns<Shape>(steps, lower);
        storeEntries(blend(TagS16(), a, b, factor), dst + first);
    });
}

template <class Shape>
void takeLoops(BlendProgram& program) {
    program.run = runColumns<Shape>;
    program.run_rows = runColumnsAndRows<Shape>;
}

template <std::size_t reach>
void chooseLoops(BlendProgram& program) {
    switch (program.gathers) {
        case 1:
            return program.of_64 ? takeLoops<Shape<1, 1, true>>(program)
                                 : takeLoops<Shape<reach, 1>>(program);
        case 2:
            return takeLoops<Shape<reach, 2>>(program);
        default:
            return takeLoops<Shape<reach, 0>>(program);
    }
}

/// The entries of a window of a block.
struct EntryRange {
    std::size_t first;
    std::size_t end;
};

EntryRange entriesOf(BlendProgram const& program, std::size_t block, std::size_t window) {
    std::size_t const first = firstOfBlock(block, program.entries) + window * windowEntries;
    return {first, first + windowEntries};
}

/// Source bytes of an entry.
struct BytePair {
    std::size_t left;
    std::size_t right;
};

BytePair pairOf(BlendAxis const& axis, std::size_t entry) {
    PixelPair const& pixel = axis.pixels[entry / axis.channels];
    std::size_t const channel = entry % axis.channels;
    return {static_cast<std::size_t>(pixel.left) * axis.channels + channel,
            static_cast<std::size_t>(pixel.right) * axis.channels + channel};
}

/// Calls visit(range, start) for the gathers of some entries: those in `range` lie in a window that
/// begins at `start`. Each begins with a whole pixel, because enlarged pixels share their bytes.
/// @return gathers
template <class Visit>
std::size_t planGathers(BlendAxis const& axis, std::size_t window, EntryRange own, Visit visit) {
    std::size_t gathers = 0;
    for (std::size_t entry = own.first; entry < own.end; ++gathers) {
        std::size_t const first = entry;
        std::size_t const start = vector::windowStart(
            pairOf(axis, entry - entry % axis.channels).left, window, axis.row_bytes);
        while (entry < own.end && pairOf(axis, entry).right < start + window) {
            ++entry;
        }
        visit(EntryRange{first, entry}, start);
    }
    return gathers;
}

/// The most gathers that a window of a block takes.
std::size_t mostGathers(BlendAxis const& axis, BlendProgram const& program, std::size_t window) {
    std::size_t most = 0;
    for (std::size_t i = 0; i < blocksOf(program) * windowCount; ++i) {
        EntryRange const own = entriesOf(program, i / windowCount, i % windowCount);
        most = std::max(most, planGathers(axis, window, own, [](auto const&...) {}));
    }
    return most;
}

/// Fills the tables of a window of a block.
/// @param side of the window in its register
void fillWindow(BlendAxis const& axis, BlendProgram& program, std::size_t window, EntryRange own,
                std::size_t side, std::uint32_t* offsets, vector::RegisterBytes* tables) {
    std::size_t k = 0;
    planGathers(axis, window, own, [&](EntryRange range, std::size_t start) {
        offsets[k * windowCount + side] = static_cast<std::uint32_t>(start);
        std::uint8_t* const places = tables[k].bytes.data() + side * windowBytes;
        for (std::size_t entry = range.first; entry < range.end; ++entry) {
            BytePair const pair = pairOf(axis, entry);
            places[2 * (entry - own.first)] = static_cast<std::uint8_t>(pair.left - start);
            places[2 * (entry - own.first) + 1] = static_cast<std::uint8_t>(pair.right - start);
        }
        ++k;
    });
    std::uint8_t* const weights = tables[program.gathers].bytes.data() + side * windowBytes;
    for (std::size_t i = 0; i < windowEntries; ++i) {
        std::uint16_t const weight = axis.pixels[(own.first + i) / axis.channels].weight;
        std::uint16_t const stored = program.of_64 ? pairOf64(weight) : weight;
        std::memcpy(weights + 2 * i, &stored, sizeof stored);
    }
}

void fillTables(BlendAxis const& axis, std::size_t window, BlendProgram& program) {
    std::size_t const blocks = blocksOf(program);
    vector::RegisterBytes empty{};
    empty.bytes.fill(emptyPlace);
    program.offsets.assign(blocks * program.gathers * windowCount, 0);
    program.tables.assign(blocks * (program.gathers + 1), empty);
    for (std::size_t block = 0; block < blocks; ++block) {
        for (std::size_t side = 0; side < windowCount; ++side) {
            fillWindow(axis, program, window, entriesOf(program, block, side), side,
                       program.offsets.data() + block * program.gathers * windowCount,
                       program.tables.data() + block * (program.gathers + 1));
        }
    }
}

[[gnu::cold]] bool compileBlend(BlendAxis const& axis, BlendProgram& program) {
    auto const isLeftOf = [](PixelPair const& a, PixelPair const& b) { return a.left < b.left; };
    program.entries = axis.pixels.size() * axis.channels;
    if (isDoubled(axis)) {
        program.run =
            axis.channels == 1 ? runDoubled<1, std::uint8_t> : runDoubled<2, std::uint16_t>;
        program.run_rows = nullptr;  // an earlier axis may have left one, for its own tables
        return true;
    }
    if (axis.row_bytes < windowBytes || program.entries < blockEntries ||
        !std::is_sorted(axis.pixels.begin(), axis.pixels.end(), isLeftOf)) {
        return false;
    }
    std::size_t const near = mostGathers(axis, program, windowBytes);
    std::size_t const far = axis.row_bytes < mostReach * windowBytes
                                ? near
                                : mostGathers(axis, program, mostReach * windowBytes);
    // Windows of two registers pay where they save a good part of the gathers.
    bool const is_far = 4 * far <= 3 * near;
    program.gathers = is_far ? far : near;
    program.of_64 = !is_far && program.gathers == 1 &&
                    std::all_of(axis.pixels.begin(), axis.pixels.end(),
                                [](PixelPair const& p) { return isOf64(p.weight); });
    is_far ? chooseLoops<mostReach>(program) : chooseLoops<1>(program);
    fillTables(axis, (is_far ? mostReach : 1) * windowBytes, program);
    return true;
}

void blendRows(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
               std::size_t bytes, std::uint8_t* dst) {
    if (bytes < blockBytes) {
        return blendPlainRows(upper, lower, weight, bytes, dst);
    }
    Tag8 const d;
    if (weight == quarter || weight == 3 * quarter) {
        std::uint8_t const* const near = weight == quarter ? upper : lower;
        std::uint8_t const* const far = weight == quarter ? lower : upper;
        walkBlockPairs(bytes, blockBytes, [&](std::size_t x) HWY_ATTR {
            V8 const a = hn::LoadU(d, near + x);
            V8 const b = hn::LoadU(d, far + x);
            hn::StoreU(blendByQuarter(a, b), d, dst + x);
        });
        return;
    }
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
