// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/taps/vector_columns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "rows/taps/axis.h"
#include "rows/taps/lanes-inl.h"
#include "rows/taps/plan-inl.h"
#include "vector/windows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Bytes of a row, from byte `first` on.
struct RowPart {
    std::uint8_t const* bytes;
    std::size_t first;
    Blocks blocks;  ///< that read it
};

/// A register of sums, one for each entry, from registers with `lane_sums` partial sums an entry.
/// @param sum sum(i) is register i
template <std::size_t lane_sums, class SumOfRegister>
HWY_INLINE V32 sumEntries(SumOfRegister const& sum, std::size_t first) {
    if constexpr (lane_sums == 1) {
        return sum(first);
    } else {
        V32 const sums = sumEntries<lane_sums / 2>(sum, first);
        return AddPairs(sums, sumEntries<lane_sums / 2>(sum, first + lane_sums / 2));
    }
}

/// The source windows and the tables of a register.
struct RegisterSteps {
    std::array<std::uint8_t const*, windowCount> at;
    std::uint8_t const* tables;  ///< places, then the weights of each step
    std::size_t step_bytes;
};

/// Adds the `count` steps from step `first` on, which share a window.
template <std::size_t reach, bool has_high>
HWY_INLINE void addSteps(RegisterSteps const& steps, std::size_t first, std::size_t count,
                         Sums<has_high>& sums) {
    Tag8 const d;
    auto const windows =
        Windows<reach>::load([&](std::size_t i) { return steps.at[i] + first * steps.step_bytes; });
    V8 places = hn::Load(d, steps.tables);
    std::uint8_t const* weights = steps.tables + blockBytes + first * weightBytes(has_high);
    sums.add(windows.permute(places), weights);
    for (std::size_t k = 1; k < count; ++k) {
        places = hn::Add(places, hn::Set(d, static_cast<std::uint8_t>(steps.step_bytes)));
        sums.add(windows.permute(places), weights + k * weightBytes(has_high));
    }
}

/// The sums of the lanes of a register.
template <class Shape, bool has_high>
HWY_INLINE V32 sumRegister(RegisterSteps const& steps, std::size_t any_count) {
    constexpr std::size_t window_steps = Shape::window_steps;
    std::size_t const count = Shape::steps == 0 ? any_count : Shape::steps;
    auto sums = Sums<has_high>::none();
    if constexpr (window_steps == 0) {
        addSteps<Shape::reach, has_high>(steps, 0, count, sums);
    } else {
        std::size_t const whole = count - count % window_steps;
        for (std::size_t k = 0; k < whole; k += window_steps) {
            addSteps<Shape::reach, has_high>(steps, k, window_steps, sums);
        }
        if (window_steps > 1 && whole != count) {
            addSteps<Shape::reach, has_high>(steps, whole, count - whole, sums);
        }
    }
    return sums.total();
}

/// The sums of a block whose registers have the same weights: each is loaded once.
template <bool has_high>
HWY_INLINE void sumSharing(RegisterSteps (&steps)[blockRegisters], std::size_t count,
                           V32 (&totals)[blockRegisters]) {
    using Sum = Sums<has_high>;
    Sum sums[] = {Sum::none(), Sum::none(), Sum::none(), Sum::none()};
    V8 places[blockRegisters];
    for (std::size_t k = 0; k < blockRegisters; ++k) {
        places[k] = hn::Load(Tag8(), steps[k].tables);
    }
    std::uint8_t const* weights = steps[0].tables + blockBytes;
    for (std::size_t i = 0; i < count; ++i, weights += weightBytes(has_high)) {
        for (std::size_t k = 0; k < blockRegisters; ++k) {
            auto const windows = Windows<1>::load([&](std::size_t w) { return steps[k].at[w]; });
            sums[k].add(windows.permute(places[k]), weights);
            for (std::uint8_t const*& at : steps[k].at) {
                at += steps[k].step_bytes;
            }
        }
    }
    for (std::size_t k = 0; k < blockRegisters; ++k) {
        totals[k] = sums[k].total();
    }
}

/// Makes the results of a part of the row.
template <class Shape, bool has_high>
HWY_INLINE void sumBlocks(TapProgram const& program, RowPart part, std::uint8_t* dst) {
    constexpr std::size_t lane_sums = Shape::lane_sums;
    // Read into locals: for the compiler, a store to `dst` could change the program.
    std::size_t const steps = program.steps;
    std::size_t const step_bytes = stepBytes(lane_sums, program.channels);
    std::uint32_t const* const offsets = program.offsets.data();
    std::uint8_t const* const tables = program.tables.data()->bytes.data();
    int const shift = program.shift;
    V32 const kept_bits = hn::Set(BlockTagS32(), program.kept_bits);
    bool const has_gaps = program.has_gaps;
    auto const stepsOf = [=](std::size_t i) HWY_ATTR {
        std::uint32_t const* const own = offsets + i * registerOffsets;
        RegisterSteps own_steps{{}, tables + own[windowCount], step_bytes};
        for (std::size_t window = 0; window < windowCount; ++window) {
            own_steps.at[window] = part.bytes + (own[window] - part.first);
        }
        return own_steps;
    };
    auto const unitsOf = [=](V32 sums) HWY_ATTR {
        return hn::And(hn::ShiftRightSame(sums, shift), kept_bits);
    };
    std::size_t const block_bytes = has_gaps ? blockEntries / gapLanes * 3 : blockEntries;
    std::size_t const last = program.dst_bytes - block_bytes;
    for (std::size_t block = part.blocks.first; block < part.blocks.end; ++block) {
        std::size_t const first = block * blockRegisters * lane_sums;
        std::uint8_t* const to = dst + std::min(block * block_bytes, last);
        auto const sum = [=](std::size_t k) HWY_ATTR {
            auto const sumOf = [=](std::size_t i) HWY_ATTR {
                return sumRegister<Shape, has_high>(stepsOf(i), steps);
            };
            return unitsOf(sumEntries<lane_sums>(sumOf, first + k * lane_sums));
        };
        if constexpr (Shape::may_share) {
            if (program.shares_weights[block] != 0) {
                RegisterSteps own_steps[] = {stepsOf(first), stepsOf(first + 1), stepsOf(first + 2),
                                             stepsOf(first + 3)};
                V32 sums[blockRegisters];
                sumSharing<has_high>(own_steps, steps, sums);
                storeBlock([&](std::size_t k) HWY_ATTR { return unitsOf(sums[k]); }, has_gaps, to);
                continue;
            }
        }
        if constexpr (lane_sums > 1) {
            // In memory, so that the code of so many registers is inlined once.
            V32 sums[blockRegisters];
            for (std::size_t k = 0; k < blockRegisters; ++k) {
                sums[k] = sum(k);
            }
            storeBlock([&](std::size_t k) HWY_ATTR { return sums[k]; }, has_gaps, to);
        } else {
            storeBlock(sum, has_gaps, to);
        }
    }
}

template <class Shape, bool has_high>
void sumTapsBy(TapProgram& program, std::uint8_t const* src, std::uint8_t* dst) {
    std::size_t const blocks = blocksOf(program);
    RowPart part{src, 0, {0, program.whole_blocks}};
    // A single call, so that its code is inlined once.
    while (true) {
        sumBlocks<Shape, has_high>(program, part, dst);
        if (part.blocks.end == blocks) {
            return;
        }
        // Not before: the row's end is in the cache by now.
        std::size_t const inside = program.src_bytes - program.tail_first;
        if (inside != 0) {
            std::memcpy(program.tail.data(), src + program.tail_first, inside);
        }
        part = {program.tail.data(), program.tail_first, {program.whole_blocks, blocks}};
    }
}

template <class... Shapes>
[[gnu::cold]] bool chooseShape(Loops<Shapes...> /*loops*/, TapAxis const& axis,
                               TapProgram& program) {
    static constexpr TapLoop loops[]{{Shapes::lane_sums, Shapes::reach, Shapes::window_steps,
                                      Shapes::steps, sumTapsBy<Shapes, false>,
                                      sumTapsBy<Shapes, splitsWeights>}...};
    return chooseLoop(axis, loops, program);
}

[[gnu::cold]] bool compileTaps(TapAxis const& axis, TapRow row, TapProgram& program) {
    program.channels = row.channels;
    program.src_bytes = row.pixels * row.channels;
    if (!fitsParts(axis)) {
        return false;
    }
    program.has_high = needsHighParts(axis);
    if (!chooseShape(CompiledLoops(), axis, program)) {
        return false;
    }
    program.dst_bytes = std::max(program.entries, blockEntries);
    if (program.has_gaps) {
        program.dst_bytes = program.dst_bytes / gapLanes * 3;
    }
    program.shift = axis.shift;
    program.kept_bits = axis.keeps_low_bytes ? 0xff : -1;
    placeTail(program);
    appendTables(axis, program);
    markSharing(program);
    return true;
}

#endif

void takeRoutines([[maybe_unused]] TapRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compile_taps = compileTaps;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeTapColumnRoutines(TapRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
