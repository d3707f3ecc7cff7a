// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/taps/vector_columns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "rows/taps/axis.h"
#include "rows/taps/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// An entry is a sample of the result. A window of source bytes holds the taps of neighbouring
// entries, and a byte permute puts them into the lanes of a register, a few taps a lane. The
// farther apart entries lie, the fewer share a window, and the more lanes each entry has; that many
// registers are then added up to one. The next step takes the taps that follow: from the same
// places of a window further on, or from places further on of a window that has all taps.
//
//   one channel, 3 pixels apart:     lane i has taps 3i, 3i + 1, ..., lane i + 1 taps 3i + 3, ...
//   three channels, 3 pixels apart:  lane 3i + c has bytes 9i + c, 9i + c + 3, ...
//
// Three channels may have gaps: each pixel is followed by an entry that isn't stored, so that
// windows hold whole pixels.

/// Entries that are stored together.
constexpr std::size_t blockEntries = windowCount * blockRegisters * windowLanes;

HWY_INLINE std::size_t blocksOf(TapProgram const& program) {
    return (program.entries + blockEntries - 1) / blockEntries;
}

struct Blocks {
    std::size_t first;
    std::size_t end;
};

/// The last block overlaps the one before.
HWY_INLINE std::size_t firstOfBlock(std::size_t block, std::size_t entries) {
    return entries < blockEntries ? 0 : std::min(block * blockEntries, entries - blockEntries);
}

std::size_t registersOf(TapProgram const& program) {
    return blocksOf(program) * blockRegisters * program.lane_sums;
}

/// Where an entry of the result begins.
struct TapEntry {
    std::size_t first;    // byte of its first tap
    std::size_t weights;  // row of weights
};

/// A gap has the taps of the channel before it, and is never stored.
TapEntry entryOf(TapAxis const& axis, TapProgram const& program, std::size_t index) {
    std::size_t const channels = program.channels;
    std::size_t const lanes = program.has_gaps ? gapLanes : channels;
    TapStart const start = axis.starts[index / lanes];
    std::size_t const channel = std::min(index % lanes, channels - 1);
    return {start.first * channels + channel, start.weights};
}

/// The entries of a window: fewer than it has room for if the row has fewer. Their order is what
/// packing and adding up registers within windows make natural.
struct WindowEntries {
    std::size_t first;
    std::size_t end;

    WindowEntries(TapProgram const& program, std::size_t index, std::size_t window) {
        std::size_t const own = windowLanes / program.lane_sums;
        std::size_t const block_sums = blockRegisters * program.lane_sums;
        first = firstOfBlock(index / block_sums, program.entries) +
                (window * block_sums + index % block_sums) * own;
        first = std::min(first, program.entries);
        end = std::min(first + own, program.entries);
    }
};

/// Bytes from the window of one step to that of the next.
HWY_INLINE std::size_t stepBytes(std::size_t lane_sums, std::size_t channels) {
    return lane_sums * laneTaps * channels;
}

/// The bytes that a window has to reach from the first tap of an entry on.
std::size_t bytesOfTaps(TapAxis const& axis, TapProgram const& program) {
    std::size_t const channels = program.channels;
    return program.moves ? stepBytes(program.lane_sums, channels) - channels + 1
                         : (axis.taps - 1) * channels + 1;
}

/// Places the first step's window for some entries. In two points this differs from the plans of
/// vector/windows.h. The entries of a register are given. Windows that move aren't moved back at
/// the row's end, because later steps use the same places; bytes behind the row are loaded as
/// zeros.
/// @return false if it doesn't reach their taps
bool placeWindow(TapAxis const& axis, TapProgram const& program, WindowEntries own,
                 std::uint32_t& offset) {
    std::size_t leftmost = std::numeric_limits<std::size_t>::max();
    std::size_t rightmost = 0;
    // A window without entries stands where the last entry does.
    std::size_t const begin = std::min(own.first, program.entries - 1);
    for (std::size_t k = begin; k < std::max(own.end, begin + 1); ++k) {
        std::size_t const first = entryOf(axis, program, k).first;
        leftmost = std::min(leftmost, first);
        rightmost = std::max(rightmost, first);
    }
    std::size_t end = rightmost + bytesOfTaps(axis, program);
    if (!program.moves && program.src_bytes >= program.window_bytes) {
        end = std::min(end, program.src_bytes);
        leftmost = std::min(leftmost, program.src_bytes - program.window_bytes);
    }
    offset = static_cast<std::uint32_t>(leftmost);
    return end <= leftmost + program.window_bytes;
}

bool placeWindows(TapAxis const& axis, TapProgram& program) {
    program.offsets.assign(registersOf(program) * registerOffsets, 0);
    for (std::size_t i = 0; i < registersOf(program); ++i) {
        for (std::size_t window = 0; window < windowCount; ++window) {
            if (!placeWindow(axis, program, {program, i, window},
                             program.offsets[i * registerOffsets + window])) {
                return false;
            }
        }
    }
    return true;
}

/// A routine, and the programs that it serves.
struct TapLoop {
    std::size_t lane_sums;
    std::size_t reach;  ///< registers of a window
    bool moves;
    std::size_t steps;  ///< 0: any number
    RunTaps* run;       ///< for weights that fit a byte
    RunTaps* run_high;  ///< for others
};

void setLoop(TapAxis const& axis, TapLoop const& loop, bool has_gaps, TapProgram& program) {
    program.lane_sums = loop.lane_sums;
    program.window_bytes = loop.reach * windowBytes;
    program.moves = loop.moves;
    program.has_gaps = has_gaps;
    program.entries = axis.starts.size() * (has_gaps ? gapLanes : program.channels);
    program.steps = (axis.taps - 1) / (loop.lane_sums * laneTaps) + 1;
    program.run = program.has_high ? loop.run_high : loop.run;
}

/// What a row costs, in about half a processor's cycle.
std::size_t costOf(TapLoop const& loop, TapProgram const& program) {
    std::size_t const window = loop.reach * 2;
    std::size_t const products = program.has_high || !splitsWeights ? 4 : 2;
    std::size_t const step = products + (loop.steps == 0 ? 2 : 1) + (loop.moves ? window : 0);
    std::size_t const register_cost =
        step * program.steps + (loop.moves ? 0 : window) + (loop.lane_sums == 1 ? 1 : 4);
    return registersOf(program) * register_cost + blocksOf(program) * 6;
}

/// Chooses the cheapest way.
/// @return false if no window reaches the taps of its entries
template <std::size_t count>
bool chooseLoop(TapAxis const& axis, TapLoop const (&loops)[count], TapProgram& program) {
    std::size_t least = std::numeric_limits<std::size_t>::max();
    TapLoop const* best = nullptr;
    bool best_has_gaps = false;
    for (bool const gaps : {false, true}) {
        for (TapLoop const& loop : loops) {
            setLoop(axis, loop, gaps, program);
            std::size_t const cost = costOf(loop, program);
            bool const fits = (loop.steps == 0 || loop.steps == program.steps) &&
                              (!gaps || program.channels == 3);
            if (fits && cost < least && placeWindows(axis, program)) {
                least = cost;
                best = &loop;
                best_has_gaps = gaps;
            }
        }
    }
    if (best == nullptr) {
        return false;
    }
    setLoop(axis, *best, best_has_gaps, program);
    return placeWindows(axis, program);
}

/// Bytes of a step's weights. A register's tables are its places, then weights for each step.
HWY_INLINE std::size_t weightBytes(bool has_high) {
    return (has_high ? 2 : 1) * blockBytes;
}

/// @param tables the bytes of the window in the first table of its register
void fillWindowTables(TapAxis const& axis, TapProgram const& program, WindowEntries own,
                      std::uint32_t offset, std::uint8_t* tables) {
    std::size_t const channels = program.channels;
    std::size_t const entry_taps = program.lane_sums * laneTaps;
    std::size_t const step_bytes = weightBytes(program.has_high);
    std::memset(tables, emptyPlace, windowBytes);
    for (std::size_t k = own.first; k < own.end; ++k) {
        TapEntry const entry = entryOf(axis, program, k);
        for (std::size_t i = 0; i < entry_taps; ++i) {
            std::size_t const lane = (k - own.first) * program.lane_sums + i / laneTaps;
            std::uint8_t* const place = tables + placeOfTap(lane, i % laneTaps);
            *place = static_cast<std::uint8_t>(entry.first - offset + i * channels);
            std::uint8_t* weight = place + blockBytes;
            for (std::size_t tap = i; tap < axis.taps; tap += entry_taps, weight += step_bytes) {
                // A window that doesn't move may have other bytes in place of those behind the row.
                if (program.moves || entry.first + tap * channels < program.src_bytes) {
                    putWeight(axis.weightRow(entry.weights)[tap], program.has_high, weight);
                }
            }
        }
    }
}

/// Appends the tables of all registers. Equal tables are shared: where filters repeat after a few
/// registers, fewer tables stay in a nearer cache.
void appendTables(TapAxis const& axis, TapProgram& program) {
    constexpr std::size_t most_looked_at = 16;
    std::size_t const bytes = blockBytes + program.steps * weightBytes(program.has_high);
    std::size_t own = 0;
    program.tables.clear();
    for (std::size_t i = 0; i < registersOf(program); ++i) {
        program.tables.resize((own + bytes - 1) / sizeof(vector::RegisterBytes) + 1);
        std::uint8_t* const tables = program.tables.data()->bytes.data();
        std::memset(tables + own, 0, bytes);
        std::uint32_t* const offsets = program.offsets.data() + i * registerOffsets;
        for (std::size_t window = 0; window < windowCount; ++window) {
            fillWindowTables(axis, program, {program, i, window}, offsets[window],
                             tables + own + window * windowBytes);
        }
        std::size_t same = own - std::min(own, most_looked_at * bytes);
        while (std::memcmp(tables + same, tables + own, bytes) != 0) {
            same += bytes;
        }
        offsets[windowCount] = static_cast<std::uint32_t>(same);
        own += same == own ? bytes : 0;
    }
}

/// The last byte that the windows of a register reach, and one more.
std::size_t endOfWindows(TapProgram const& program, std::size_t index) {
    std::uint32_t const* const offsets = program.offsets.data() + index * registerOffsets;
    std::size_t const moved =
        program.moves ? (program.steps - 1) * stepBytes(program.lane_sums, program.channels) : 0;
    return *std::max_element(offsets, offsets + windowCount) + moved + program.window_bytes;
}

/// Finds the blocks whose windows end in the row. The others read a copy of the row's end, with
/// zeros behind it.
void placeTail(TapProgram& program) {
    std::size_t const block_sums = blockRegisters * program.lane_sums;
    std::size_t const end = registersOf(program);
    std::size_t i = 0;
    while (i < end && endOfWindows(program, i) <= program.src_bytes) {
        ++i;
    }
    program.whole_blocks = i / block_sums;
    program.tail_first = program.src_bytes;
    std::size_t tail_end = program.src_bytes;
    for (i = program.whole_blocks * block_sums; i < end; ++i) {
        std::uint32_t const* const offsets = program.offsets.data() + i * registerOffsets;
        program.tail_first = std::min<std::size_t>(
            program.tail_first, *std::min_element(offsets, offsets + windowCount));
        tail_end = std::max(tail_end, endOfWindows(program, i));
    }
    program.tail.assign(tail_end - program.tail_first, 0);
}

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

/// What is known of a program when it is compiled.
template <std::size_t lane_sums_, std::size_t reach_, bool moves_, std::size_t steps_>
struct Shape {
    static constexpr std::size_t lane_sums = lane_sums_;
    static constexpr std::size_t reach = reach_;
    static constexpr bool moves = moves_;
    static constexpr std::size_t steps = steps_;  ///< 0: any number
};

/// The sums of the lanes of a register.
template <class Shape, bool has_high>
HWY_INLINE V32 sumRegister(std::size_t steps, std::size_t step_bytes, std::uint8_t const* table,
                           std::uint8_t const* const (&at)[windowCount]) {
    Tag8 const d;
    auto const windowsOf = [&](std::size_t k) HWY_ATTR {
        return Windows<Shape::reach>::load(
            [&](std::size_t i) { return at[i] + (Shape::moves ? k * step_bytes : 0); });
    };
    V8 places = hn::Load(d, table);
    table += blockBytes;
    auto windows = windowsOf(0);
    auto sums = Sums<has_high>::none();
    sums.add(windows.permute(places), table);
    for (std::size_t k = 1; k < (Shape::steps == 0 ? steps : Shape::steps); ++k) {
        table += weightBytes(has_high);
        if constexpr (Shape::moves) {
            windows = windowsOf(k);
        } else {
            places = hn::Add(places, hn::Set(d, static_cast<std::uint8_t>(step_bytes)));
        }
        sums.add(windows.permute(places), table);
    }
    return sums.total();
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
    auto const sumOf = [=](std::size_t i) HWY_ATTR {
        std::uint32_t const* const own = offsets + i * registerOffsets;
        std::uint8_t const* at[windowCount];
        for (std::size_t window = 0; window < windowCount; ++window) {
            at[window] = part.bytes + (own[window] - part.first);
        }
        return sumRegister<Shape, has_high>(steps, step_bytes, tables + own[windowCount], at);
    };
    std::size_t const block_bytes = has_gaps ? blockEntries / gapLanes * 3 : blockEntries;
    std::size_t const last = program.dst_bytes - block_bytes;
    for (std::size_t block = part.blocks.first; block < part.blocks.end; ++block) {
        auto const sum = [=](std::size_t k) HWY_ATTR {
            std::size_t const first = (block * blockRegisters + k) * lane_sums;
            return hn::And(hn::ShiftRightSame(sumEntries<lane_sums>(sumOf, first), shift),
                           kept_bits);
        };
        storeBlock(sum, has_gaps, dst + std::min(block * block_bytes, last));
    }
}

template <class Shape, bool has_high>
void sumTapsBy(TapProgram& program, std::uint8_t const* src, std::uint8_t* dst) {
    std::size_t const inside = program.src_bytes - program.tail_first;
    if (inside != 0) {
        std::memcpy(program.tail.data(), src + program.tail_first, inside);
    }
    std::size_t const whole = program.whole_blocks;
    RowPart const parts[]{{src, 0, {0, whole}},
                          {program.tail.data(), program.tail_first, {whole, blocksOf(program)}}};
    // A single call, so that its code is inlined once.
    for (RowPart const& part : parts) {
        sumBlocks<Shape, has_high>(program, part, dst);
    }
}

template <class... Shapes>
bool chooseShape(TapAxis const& axis, TapProgram& program) {
    static constexpr TapLoop loops[]{{Shapes::lane_sums, Shapes::reach, Shapes::moves,
                                      Shapes::steps, sumTapsBy<Shapes, false>,
                                      sumTapsBy<Shapes, splitsWeights>}...};
    return chooseLoop(axis, loops, program);
}

bool compileTaps(TapAxis const& axis, TapRow row, TapProgram& program) {
    program.channels = row.channels;
    program.src_bytes = row.pixels * row.channels;
    if (!fitsParts(axis)) {
        return false;
    }
    program.has_high = needsHighParts(axis);
    // In order of preference, where the cost is the same.
    bool const has_loop =
        chooseShape<Shape<1, 1, false, 1>, Shape<1, 1, false, 2>, Shape<1, mostReach, false, 2>,
                    Shape<2, 1, false, 2>, Shape<2, mostReach, false, 2>, Shape<1, 1, true, 0>,
                    Shape<1, mostReach, true, 2>, Shape<1, mostReach, true, 3>,
                    Shape<1, mostReach, true, 4>, Shape<2, 1, true, 0>, Shape<4, 1, true, 0>,
                    Shape<mostLaneSums, 1, true, 0>>(axis, program);
    if (!has_loop) {
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
