#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/taps/vector_columns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "rows/taps/axis.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Entries that are written at a time.
constexpr std::size_t lanes = blockBytes / 4;

/// A register of sums, one for each entry, from registers with `lane_sums` partial sums an entry.
/// @param sum sum(i) is register i
template <std::size_t lane_sums, class SumOfRegister>
HWY_INLINE V32 sumEntries(SumOfRegister const& sum, std::size_t first) {
    if constexpr (lane_sums == 1) {
        return sum(first);
    } else {
        V32 const sums = sumEntries<lane_sums / 2>(sum, first);
        return AddNeighbours(sums, sumEntries<lane_sums / 2>(sum, first + lane_sums / 2));
    }
}

#if HWY_TARGET == HWY_AVX3_DL

// A register holds the taps of several neighbouring entries: 4 bytes a lane, gathered out of a
// window of 64 bytes by one permutation. The farther apart entries lie, the fewer share a window,
// and the more lanes each entry has. The next step takes the taps that follow, from the same places
// of a window further on.
//
//   one channel, 3 pixels apart:     lane i has taps 3i .. 3i + 3, then 3i + 4 .. 3i + 7, ...
//   three channels, 3 pixels apart:  lane 3i + c has bytes 9i + c, + 3, + 6, + 9, then + 12, ...
//
// Source bytes are unsigned, weights signed. A weight that doesn't fit a byte is 256 * high + low,
// and the products of each part have a sum of their own.

constexpr std::size_t laneTaps = 4;

/// Enough for reductions to about a thirtieth.
constexpr std::size_t mostLaneSums = 8;

/// Where an entry of the result begins.
struct TapEntry {
    std::size_t first;    // byte of its first tap
    std::size_t weights;  // row of weights
};

TapEntry entryOf(TapAxis const& axis, std::size_t channels, std::size_t index) {
    TapStart const start = axis.starts[index / channels];
    return {start.first * channels + index % channels, start.weights};
}

/// The first entry of a register of results. The last register overlaps the one before.
HWY_INLINE std::size_t firstOfGroup(std::size_t group, std::size_t entries) {
    return entries < lanes ? 0 : std::min(group * lanes, entries - lanes);
}

/// The entries that a register sums: fewer than it has room for if the row has fewer.
struct RegisterEntries {
    std::size_t first;
    std::size_t end;

    RegisterEntries(TapProgram const& program, std::size_t index) {
        std::size_t const own = lanes / program.lane_sums;
        first = firstOfGroup(index / program.lane_sums, program.entries) +
                index % program.lane_sums * own;
        first = std::min(first, program.entries);
        end = std::min(first + own, program.entries);
    }
};

/// Bytes from the window of one step to that of the next.
HWY_INLINE std::size_t stepBytes(std::size_t lane_sums, std::size_t channels) {
    return lane_sums * laneTaps * channels;
}

std::size_t groupsOf(TapProgram const& program) {
    return (program.entries + lanes - 1) / lanes;
}

std::size_t registersOf(TapProgram const& program) {
    return groupsOf(program) * program.lane_sums;
}

/// Places the first window of each register. In two points this differs from the plans of
/// vector/windows.h. The entries of a register are given. Windows at the row's end aren't moved
/// back, because later steps use the same places; bytes behind the row are loaded as zeros.
/// @return false if a window doesn't reach the first step's taps of all its entries
bool placeWindows(TapAxis const& axis, TapProgram& program) {
    std::size_t const taps = stepBytes(program.lane_sums, program.channels) - program.channels + 1;
    program.offsets.assign(2 * registersOf(program), 0);
    for (std::size_t i = 0; i < registersOf(program); ++i) {
        RegisterEntries const own(program, i);
        std::size_t leftmost = own.first < own.end ? std::numeric_limits<std::size_t>::max() : 0;
        std::size_t rightmost = 0;
        for (std::size_t k = own.first; k < own.end; ++k) {
            std::size_t const first = entryOf(axis, program.channels, k).first;
            leftmost = std::min(leftmost, first);
            rightmost = std::max(rightmost, first);
        }
        if (rightmost - leftmost + taps > windowBytes) {
            return false;
        }
        program.offsets[2 * i] = static_cast<std::uint32_t>(leftmost);
    }
    return true;
}

struct SplitWeight {
    std::int8_t high;
    std::int8_t low;
};

constexpr int largestSplitWeight = 127 * 256 + 127;

SplitWeight splitWeight(std::int16_t weight) {
    auto const low = static_cast<std::int8_t>(weight);
    return {static_cast<std::int8_t>((weight - low) / 256), low};
}

bool fitsParts(TapAxis const& axis) {
    return std::all_of(axis.weights.begin(), axis.weights.end(),
                       [](std::int16_t weight) { return weight <= largestSplitWeight; });
}

bool needsHighParts(TapAxis const& axis) {
    return std::any_of(axis.weights.begin(), axis.weights.end(),
                       [](std::int16_t weight) { return splitWeight(weight).high != 0; });
}

/// Tables of a register: its places, then for each step low weights and, if need be, high ones.
HWY_INLINE std::size_t tablesOf(std::size_t steps, bool has_high) {
    return 1 + steps * (has_high ? 2 : 1);
}

void fillTables(TapAxis const& axis, TapProgram const& program, std::size_t index,
                RegisterBytes* tables) {
    std::size_t const entry_taps = program.lane_sums * laneTaps;
    RegisterEntries const own(program, index);
    for (std::size_t k = own.first; k < own.end; ++k) {
        TapEntry const entry = entryOf(axis, program.channels, k);
        std::int16_t const* const weights = axis.weightRow(entry.weights);
        for (std::size_t i = 0; i < entry_taps; ++i) {
            std::size_t const byte = (k - own.first) * entry_taps + i;
            tables[0].bytes[byte] = static_cast<std::uint8_t>(
                entry.first - program.offsets[2 * index] + i * program.channels);
            RegisterBytes* table = tables + 1;
            for (std::size_t tap = i; tap < axis.taps; tap += entry_taps) {
                SplitWeight const split = splitWeight(weights[tap]);
                table++->bytes[byte] = static_cast<std::uint8_t>(split.low);
                if (program.has_high) {
                    table++->bytes[byte] = static_cast<std::uint8_t>(split.high);
                }
            }
        }
    }
}

/// Appends the tables of all registers. Equal tables are shared: at usual ratios they repeat after
/// a few registers, and fewer tables stay in a nearer cache.
void appendTables(TapAxis const& axis, TapProgram& program) {
    constexpr std::size_t most_looked_at = 16;
    std::size_t const count = tablesOf(program.steps, program.has_high);
    std::size_t const bytes = count * sizeof(RegisterBytes);
    program.tables.clear();
    for (std::size_t i = 0; i < registersOf(program); ++i) {
        std::size_t const own = program.tables.size();
        program.tables.resize(own + count, RegisterBytes{});
        fillTables(axis, program, i, program.tables.data() + own);
        std::size_t same = own - std::min(own, most_looked_at * count);
        while (std::memcmp(&program.tables[same], &program.tables[own], bytes) != 0) {
            same += count;
        }
        program.offsets[2 * i + 1] = static_cast<std::uint32_t>(same);
        program.tables.resize(same == own ? own + count : own);
    }
}

/// How many full registers of results come before the first one that needs bytes behind the row.
std::size_t wholeGroups(TapProgram const& program) {
    std::size_t const reach =
        (program.steps - 1) * stepBytes(program.lane_sums, program.channels) + windowBytes;
    std::size_t i = 0;
    while (i < registersOf(program) && program.offsets[2 * i] + reach <= program.src_bytes) {
        ++i;
    }
    return std::min(i / program.lane_sums, program.entries / lanes);
}

/// A window that may reach past the row's end, with zeros there.
HWY_INLINE V8 loadCutWindow(std::uint8_t const* src, std::size_t at, std::size_t src_bytes) {
    if (at >= src_bytes) {
        return hn::Zero(Tag8());
    }
    std::size_t const inside = std::min(src_bytes - at, windowBytes);
    return hn::MaskedLoad(hn::FirstN(Tag8(), inside), Tag8(), src + at);
}

/// @tparam known_steps the number of steps; 0 takes the program's
template <std::size_t lane_sums, bool has_high, std::size_t known_steps>
void sumTapsBy(TapProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    // Read into locals: for the compiler, a store to `dst` could change the program.
    std::size_t const steps = known_steps == 0 ? program.steps : known_steps;
    std::size_t const step_bytes = stepBytes(lane_sums, program.channels);
    std::uint32_t const* const offsets = program.offsets.data();
    RegisterBytes const* const tables = program.tables.data();
    int const shift = program.shift;
    auto const sumGroup = [=](std::size_t group, std::uint8_t* to, auto const& window) HWY_ATTR {
        V32 const sums = sumEntries<lane_sums>(
            [=](std::size_t i) HWY_ATTR {
                Tag8 const d;
                RegisterBytes const* table = tables + offsets[2 * i + 1];
                std::size_t at = offsets[2 * i];
                V8 const places = hn::Load(d, table++->bytes.data());
                V32 low = hn::Zero(BlockTagS32());
                V32 high = hn::Zero(BlockTagS32());
                for (std::size_t k = 0; k < steps; ++k, at += step_bytes) {
                    V8 const taps = PermuteWindow(window(at), places);
                    low = AddByteProducts(low, taps, hn::Load(d, table++->bytes.data()));
                    if (has_high) {
                        high = AddByteProducts(high, taps, hn::Load(d, table++->bytes.data()));
                    }
                }
                return has_high ? hn::Add(low, hn::ShiftLeft<8>(high)) : low;
            },
            group * lane_sums);
        StoreLaneBytes(hn::ShiftRightSame(sums, shift), to);
    };
    std::size_t group = 0;
    for (std::size_t const end = program.whole_groups; group < end; ++group) {
        sumGroup(group, dst + group * lanes,
                 [=](std::size_t at) HWY_ATTR { return hn::LoadU(Tag8(), src + at); });
    }
    std::size_t const src_bytes = program.src_bytes;
    for (std::size_t const end = groupsOf(program); group < end; ++group) {
        sumGroup(group, dst + firstOfGroup(group, program.entries),
                 [=](std::size_t at) HWY_ATTR { return loadCutWindow(src, at, src_bytes); });
    }
}

/// Small numbers of steps are compile-time constants.
template <bool has_high>
RunTaps* bySteps(std::size_t steps) {
    constexpr std::size_t known = 6;
    static constexpr RunTaps* loops[known]{sumTapsBy<1, has_high, 0>, sumTapsBy<1, has_high, 1>,
                                           sumTapsBy<1, has_high, 2>, sumTapsBy<1, has_high, 3>,
                                           sumTapsBy<1, has_high, 4>, sumTapsBy<1, has_high, 5>};
    return loops[steps < known ? steps : 0];
}

template <bool has_high>
RunTaps* byLanes(TapProgram const& program) {
    switch (program.lane_sums) {
        case 1:
            return bySteps<has_high>(program.steps);
        case 2:
            return sumTapsBy<2, has_high, 0>;
        case 4:
            return sumTapsBy<4, has_high, 0>;
        default:
            return sumTapsBy<8, has_high, 0>;
    }
}

bool compileTaps(TapAxis const& axis, TapRow row, TapProgram& program) {
    program.channels = row.channels;
    program.entries = axis.starts.size() * row.channels;
    program.lane_sums = 1;
    while (program.lane_sums <= mostLaneSums && !placeWindows(axis, program)) {
        program.lane_sums *= 2;
    }
    if (program.lane_sums > mostLaneSums || !fitsParts(axis)) {
        return false;
    }
    program.has_high = needsHighParts(axis);
    program.steps = (axis.taps - 1) / (program.lane_sums * laneTaps) + 1;
    program.src_bytes = row.pixels * row.channels;
    program.dst_bytes = std::max(program.entries, lanes);
    program.shift = axis.shift;
    program.whole_groups = wholeGroups(program);
    appendTables(axis, program);
    program.run = program.has_high ? byLanes<true>(program) : byLanes<false>(program);
    return true;
}

#else

// A register holds taps of a single pixel, as words, and is multiplied by that pixel's weights.

constexpr std::size_t registerTaps = blockBytes / 2;

void sumTaps(TapProgram const& program, std::uint8_t const* src, std::uint8_t* dst) {
    auto const sum = [&](std::size_t i) HWY_ATTR {
        std::uint8_t const* taps = src + program.offsets[2 * i];
        RegisterBytes const* table = program.tables.data() + program.offsets[2 * i + 1];
        WordSums sums = NoWordSums();
        for (std::size_t k = 0; k < program.steps; ++k, taps += registerTaps, ++table) {
            V8 const weights = hn::Load(Tag8(), table->bytes.data());
            V16 const words = hn::PromoteTo(TagS16(), hn::LoadU(HalfTag8(), taps));
            sums = AddWordProducts(sums, words, hn::BitCast(TagS16(), weights));
        }
        return TotalOf(sums);
    };
    for (std::size_t x = 0; x < program.dst_bytes; x += lanes) {
        V32 const sums = sumEntries<lanes>(sum, x);
        StoreLaneBytes(hn::ShiftRightSame(sums, program.shift), dst + x);
    }
}

/// `offsets` has, for each pixel, the source byte of its first tap and the first of its tables.
bool compileTaps(TapAxis const& axis, TapRow row, TapProgram& program) {
    if (row.channels != 1) {
        return false;
    }
    program.run = sumTaps;
    program.steps = (axis.taps - 1) / registerTaps + 1;
    program.entries = axis.starts.size();
    program.dst_bytes = (program.entries + lanes - 1) / lanes * lanes;
    program.shift = axis.shift;
    std::size_t const rows = axis.weights.size() / axis.taps;
    program.tables.assign(rows * program.steps, RegisterBytes{});
    for (std::size_t k = 0; k < rows; ++k) {
        for (std::size_t tap = 0; tap < axis.taps; tap += registerTaps) {
            std::memcpy(program.tables[k * program.steps + tap / registerTaps].bytes.data(),
                        axis.weightRow(k) + tap,
                        std::min(registerTaps, axis.taps - tap) * sizeof(std::int16_t));
        }
    }
    program.offsets.assign(2 * program.dst_bytes, 0);
    std::size_t last = 0;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        program.offsets[2 * i] = axis.starts[i].first;
        program.offsets[2 * i + 1] =
            static_cast<std::uint32_t>(axis.starts[i].weights * program.steps);
        last = std::max<std::size_t>(last, axis.starts[i].first);
    }
    program.src_bytes = last + program.steps * registerTaps;
    return true;
}

#endif

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
