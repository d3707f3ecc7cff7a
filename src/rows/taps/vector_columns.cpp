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
#include <utility>

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
// registers are then added up to one. The next step takes the taps that follow, from the same
// places of a window further on.
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

/// Places the first step's window for some entries. In two points this differs from the plans of
/// vector/windows.h. The entries of a register are given. Windows at the row's end aren't moved
/// back, because later steps use the same places; bytes behind the row are loaded as zeros.
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
    offset = static_cast<std::uint32_t>(leftmost);
    std::size_t const taps = stepBytes(program.lane_sums, program.channels) - program.channels + 1;
    return rightmost - leftmost + taps <= windowBytes;
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

/// How an entry is laid out.
struct EntryLanes {
    std::size_t sums;
    bool gaps;
};

void setLanes(TapAxis const& axis, EntryLanes lanes, TapProgram& program) {
    program.lane_sums = lanes.sums;
    program.has_gaps = lanes.gaps;
    program.entries = axis.starts.size() * (lanes.gaps ? gapLanes : program.channels);
    program.steps = (axis.taps - 1) / (lanes.sums * laneTaps) + 1;
}

/// Chooses what takes the fewest steps.
/// @return false if no window reaches the taps of its entries
bool chooseLanes(TapAxis const& axis, TapProgram& program) {
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    EntryLanes best{};
    for (bool const gaps : {false, true}) {
        for (std::size_t sums = 1; sums <= mostLaneSums; sums *= 2) {
            setLanes(axis, {sums, gaps}, program);
            std::size_t const steps = registersOf(program) * program.steps;
            if (steps < fewest && (!gaps || program.channels == 3) && placeWindows(axis, program)) {
                fewest = steps;
                best = {sums, gaps};
            }
        }
    }
    if (best.sums == 0) {
        return false;
    }
    setLanes(axis, best, program);
    return placeWindows(axis, program);
}

/// Bytes of a step's weights. A register's tables are its places, then weights for each step.
HWY_INLINE std::size_t weightBytes(bool has_high) {
    return (has_high ? 2 : 1) * blockBytes;
}

/// @param tables the bytes of the window in the first table of its register
void fillWindowTables(TapAxis const& axis, TapProgram const& program, WindowEntries own,
                      std::uint32_t offset, std::uint8_t* tables) {
    std::size_t const entry_taps = program.lane_sums * laneTaps;
    std::size_t const step_bytes = weightBytes(program.has_high);
    std::memset(tables, emptyPlace, windowBytes);
    for (std::size_t k = own.first; k < own.end; ++k) {
        TapEntry const entry = entryOf(axis, program, k);
        for (std::size_t i = 0; i < entry_taps; ++i) {
            std::size_t const lane = (k - own.first) * program.lane_sums + i / laneTaps;
            std::uint8_t* const place = tables + placeOfTap(lane, i % laneTaps);
            *place = static_cast<std::uint8_t>(entry.first - offset + i * program.channels);
            std::uint8_t* weight = place + blockBytes;
            for (std::size_t tap = i; tap < axis.taps; tap += entry_taps, weight += step_bytes) {
                putWeight(axis.weightRow(entry.weights)[tap], program.has_high, weight);
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
        program.tables.resize((own + bytes - 1) / sizeof(RegisterBytes) + 1);
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
    return *std::max_element(offsets, offsets + windowCount) + windowBytes +
           (program.steps - 1) * stepBytes(program.lane_sums, program.channels);
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

#if HWY_TARGET == HWY_AVX2

HWY_INLINE V8 loadRegister(std::uint32_t const* offsets, std::uint8_t const* src,
                           std::size_t first) {
    WindowTag const d;
    return hn::Combine(Tag8(), hn::LoadU(d, src + (offsets[1] - first)),
                       hn::LoadU(d, src + (offsets[0] - first)));
}

#else

HWY_INLINE V8 loadRegister(std::uint32_t const* offsets, std::uint8_t const* src,
                           std::size_t first) {
    return hn::LoadU(Tag8(), src + (offsets[0] - first));
}

#endif

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

/// Makes the results of a part of the row.
/// @tparam known_steps the number of steps; 0 takes the program's
template <std::size_t lane_sums, bool has_high, std::size_t known_steps>
HWY_INLINE void sumBlocks(TapProgram const& program, RowPart part, std::uint8_t* dst) {
    // Read into locals: for the compiler, a store to `dst` could change the program.
    std::size_t const steps = known_steps == 0 ? program.steps : known_steps;
    std::size_t const step_bytes = stepBytes(lane_sums, program.channels);
    std::uint32_t const* const offsets = program.offsets.data();
    std::uint8_t const* const tables = program.tables.data()->bytes.data();
    int const shift = program.shift;
    bool const has_gaps = program.has_gaps;
    auto const sumRegister = [=](std::size_t i) HWY_ATTR {
        std::uint32_t const* const own = offsets + i * registerOffsets;
        std::uint8_t const* table = tables + own[windowCount];
        V8 const places = hn::Load(Tag8(), table);
        table += blockBytes;
        auto sums = Sums<has_high>::none();
        for (std::size_t k = 0; k < steps; ++k, table += weightBytes(has_high)) {
            sums.add(loadRegister(own, part.bytes + k * step_bytes, part.first), places, table);
        }
        return sums.total();
    };
    std::size_t const block_bytes = has_gaps ? blockEntries / gapLanes * 3 : blockEntries;
    std::size_t const last = program.dst_bytes - block_bytes;
    for (std::size_t block = part.blocks.first; block < part.blocks.end; ++block) {
        auto const sum = [=](std::size_t k) HWY_ATTR {
            std::size_t const first = (block * blockRegisters + k) * lane_sums;
            return hn::ShiftRightSame(sumEntries<lane_sums>(sumRegister, first), shift);
        };
        storeBlock(sum, has_gaps, dst + std::min(block * block_bytes, last));
    }
}

template <std::size_t lane_sums, bool has_high, std::size_t known_steps>
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
        sumBlocks<lane_sums, has_high, known_steps>(program, part, dst);
    }
}

/// Small numbers of steps are compile-time constants, up to what pays.
template <std::size_t lane_sums, bool has_high, std::size_t... known_steps>
RunTaps* chooseSteps(std::size_t steps, std::index_sequence<known_steps...> /*known*/) {
    static constexpr RunTaps* loops[]{sumTapsBy<lane_sums, has_high, known_steps>...};
    return loops[steps < sizeof...(known_steps) ? steps : 0];
}

template <bool has_high>
RunTaps* chooseLoop(TapProgram const& program) {
    using Any = std::index_sequence<0>;
    switch (program.lane_sums) {
        case 1:
            return chooseSteps<1, has_high>(program.steps, std::make_index_sequence<5>());
        case 2:
            return chooseSteps<2, has_high>(program.steps, StepsOfTwoLanes());
        case 4:
            return chooseSteps<4, has_high>(program.steps, Any());
        default:
            return chooseSteps<mostLaneSums, has_high>(program.steps, Any());
    }
}

bool compileTaps(TapAxis const& axis, TapRow row, TapProgram& program) {
    program.channels = row.channels;
    if (!fitsParts(axis) || !chooseLanes(axis, program)) {
        return false;
    }
    program.has_high = needsHighParts(axis);
    program.src_bytes = row.pixels * row.channels;
    program.dst_bytes = std::max(program.entries, blockEntries);
    if (program.has_gaps) {
        program.dst_bytes = program.dst_bytes / gapLanes * 3;
    }
    program.shift = axis.shift;
    placeTail(program);
    appendTables(axis, program);
    program.run =
        program.has_high ? chooseLoop<splitsWeights>(program) : chooseLoop<false>(program);
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
