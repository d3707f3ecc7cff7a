// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How an axis becomes a program: which loop it takes, its windows, its tables. Once per
/// instruction set.

#if defined(OX_ROWS_TAPS_PLAN_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_ROWS_TAPS_PLAN_INL_H
#undef OX_ROWS_TAPS_PLAN_INL_H
#else
#define OX_ROWS_TAPS_PLAN_INL_H
#endif

#include <algorithm>
#include <cstring>
#include <limits>

#include "rows/taps/axis.h"
#include "rows/taps/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {

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

inline std::size_t registersOf(TapProgram const& program) {
    return blocksOf(program) * blockRegisters * program.lane_sums;
}

/// Where an entry of the result begins.
struct TapEntry {
    std::size_t first;    // byte of its first tap
    std::size_t weights;  // row of weights
};

/// A gap has the taps of the channel before it, and is never stored.
inline TapEntry entryOf(TapAxis const& axis, TapProgram const& program, std::size_t index) {
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
inline std::size_t bytesOfTaps(TapAxis const& axis, TapProgram const& program) {
    std::size_t const channels = program.channels;
    std::size_t const bytes = program.window_steps == 0
                                  ? axis.taps * channels
                                  : program.window_steps * stepBytes(program.lane_sums, channels);
    return bytes - channels + 1;
}

/// Places the first step's window for some entries. In two points this differs from the plans of
/// vector/windows.h. The entries of a register are given. Windows that move aren't moved back at
/// the row's end, because later steps use the same places; bytes behind the row are loaded as
/// zeros.
/// @return false if it doesn't reach their taps
inline bool placeWindow(TapAxis const& axis, TapProgram const& program, WindowEntries own,
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
    if (program.window_steps == 0 && program.src_bytes >= program.window_bytes) {
        end = std::min(end, program.src_bytes);
        leftmost = std::min(leftmost, program.src_bytes - program.window_bytes);
    }
    offset = static_cast<std::uint32_t>(leftmost);
    return end <= leftmost + program.window_bytes;
}

inline bool placeWindows(TapAxis const& axis, TapProgram& program) {
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
    std::size_t window_steps;
    std::size_t steps;  ///< 0: any number
    RunTaps* run;       ///< for weights that fit a byte
    RunTaps* run_high;  ///< for others
};

inline void setLoop(TapAxis const& axis, TapLoop const& loop, bool has_gaps, TapProgram& program) {
    program.lane_sums = loop.lane_sums;
    program.window_bytes = loop.reach * windowBytes;
    program.window_steps = loop.window_steps;
    program.has_gaps = has_gaps;
    program.entries = axis.starts.size() * (has_gaps ? gapLanes : program.channels);
    program.steps = (axis.taps - 1) / (loop.lane_sums * laneTaps) + 1;
    program.run = program.has_high ? loop.run_high : loop.run;
}

/// What a row costs, in about half a processor's cycle.
inline std::size_t costOf(TapLoop const& loop, TapProgram const& program) {
    std::size_t const windows =
        loop.window_steps == 0 ? 1 : (program.steps - 1) / loop.window_steps + 1;
    std::size_t const products = program.has_high || !splitsWeights ? 4 : 2;
    std::size_t const step = products + (loop.steps == 0 ? 2 : 1);
    std::size_t const register_cost =
        step * program.steps + windows * loop.reach * 2 + (loop.lane_sums == 1 ? 1 : 4);
    return registersOf(program) * register_cost + blocksOf(program) * 6;
}

/// Chooses the cheapest way.
/// @return false if no window reaches the taps of its entries
template <std::size_t count>
[[gnu::cold]] inline bool chooseLoop(TapAxis const& axis, TapLoop const (&loops)[count],
                                     TapProgram& program) {
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
inline void fillWindowTables(TapAxis const& axis, TapProgram const& program, WindowEntries own,
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
                if (program.window_steps != 0 || entry.first + tap * channels < program.src_bytes) {
                    putWeight(axis.weightRow(entry.weights)[tap], program.has_high, weight);
                }
            }
        }
    }
}

/// Appends the tables of all registers. Equal tables are shared: where filters repeat after a few
/// registers, fewer tables stay in a nearer cache.
inline void appendTables(TapAxis const& axis, TapProgram& program) {
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

/// Marks the blocks whose registers all have the same weights, as where all pixels have one filter.
[[gnu::cold]] inline void markSharing(TapProgram& program) {
    std::size_t const registers = blockRegisters * program.lane_sums;
    std::size_t const bytes = program.steps * weightBytes(program.has_high);
    std::uint8_t const* const weights = program.tables.data()->bytes.data() + blockBytes;
    program.shares_weights.assign(blocksOf(program), 1);
    for (std::size_t i = 0; i < registersOf(program); ++i) {
        std::uint32_t const* const own = program.offsets.data() + i * registerOffsets;
        std::uint32_t const* const first = own - i % registers * registerOffsets;
        if (std::memcmp(weights + own[windowCount], weights + first[windowCount], bytes) != 0) {
            program.shares_weights[i / registers] = 0;
        }
    }
}

/// The last byte that the windows of a register reach, and one more.
inline std::size_t endOfWindows(TapProgram const& program, std::size_t index) {
    std::uint32_t const* const offsets = program.offsets.data() + index * registerOffsets;
    std::size_t const window_steps = program.window_steps;
    std::size_t const moves = window_steps == 0 ? 0 : (program.steps - 1) / window_steps;
    std::size_t const moved = moves * window_steps * stepBytes(program.lane_sums, program.channels);
    return *std::max_element(offsets, offsets + windowCount) + moved + program.window_bytes;
}

/// Finds the blocks whose windows end in the row. The others read a copy of the row's end, with
/// zeros behind it.
[[gnu::cold]] inline void placeTail(TapProgram& program) {
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

#endif

}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
