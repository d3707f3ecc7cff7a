#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/resizers/vector_area.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "simd/resizers/routines.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// What is still to be placed of an entry of a row: neighbouring samples, `channels` bytes apart.
struct AreaTaps {
    std::uint64_t at;    // the byte of the next one
    std::uint64_t left;  // how many
    std::int32_t next;   // weight of the next one
    std::int32_t last;   // weight of the last one, if it isn't the next
};

/// No weight is more than `ax[0]`.
AreaTaps tapsOf(AreaColumns const& columns, std::uint64_t x, std::uint64_t channel) {
    std::int32_t const* const ax = columns.ax;
    auto const more = static_cast<std::uint64_t>(columns.ix[x + 1] - columns.ix[x]);
    std::uint64_t const at = static_cast<std::uint64_t>(columns.ix[x]) * columns.channels + channel;
    if (more == 0) {
        return {at, 1, ax[x] - ax[x + 1], 0};
    }
    std::int32_t const last = ax[0] - ax[x + 1];
    return {at, last == 0 ? more : more + 1, ax[x], last == 0 ? ax[0] : last};
}

using Window = hn::Vec<WindowTag>;
using Sums = hn::Vec<WindowTagS32>;
constexpr std::size_t entriesOfWindow = windowBytes / 4;

// A step adds a few samples to each entry, all out of one window. It has a table of their places,
// and of their weights. Where entries lie so far apart that a window has too few for a register,
// each of them takes two of its lanes, and a block two registers.

#if HWY_TARGET == HWY_AVX3_DL

/// Bytes by weights in two parts, 256 * high + low.
struct StepSums {
    static constexpr std::size_t samples = 4;
    static constexpr std::size_t mostLanes = 2;
    static constexpr std::size_t tableBytes = 3 * windowBytes;
    static constexpr std::int32_t mostWeight = 127 * 256 + 127;

    Sums low;
    Sums high;

    static HWY_INLINE StepSums none() {
        return {hn::Zero(WindowTagS32()), hn::Zero(WindowTagS32())};
    }

    static void clear(std::uint8_t* table) { std::memset(table, 0, tableBytes); }

    static void put(std::uint8_t* table, std::size_t sample, std::size_t place,
                    std::int32_t weight) {
        auto const rest = static_cast<std::int8_t>(weight);
        table[sample] = static_cast<std::uint8_t>(place);
        table[windowBytes + sample] = static_cast<std::uint8_t>(rest);
        table[2 * windowBytes + sample] = static_cast<std::uint8_t>((weight - rest) / 256);
    }

    HWY_INLINE void add(Window window, std::uint8_t const* table) {
        WindowTag const d;
        auto const bytes = PermuteWindow(window, hn::Load(d, table));
        low = AddByteProducts(low, bytes, hn::Load(d, table + windowBytes));
        high = AddByteProducts(high, bytes, hn::Load(d, table + 2 * windowBytes));
    }

    HWY_INLINE Sums total() const { return hn::Add(low, hn::ShiftLeft<8>(high)); }
};

#else

struct StepSums {
    static constexpr std::size_t samples = 2;
    static constexpr std::size_t mostLanes = 1;
    static constexpr std::size_t tableBytes = 2 * windowBytes;
    static constexpr std::int32_t mostWeight = std::numeric_limits<std::int16_t>::max();

    Sums sum;

    static HWY_INLINE StepSums none() { return {hn::Zero(WindowTagS32())}; }

    static void clear(std::uint8_t* table) {
        std::memset(table, emptyPlace, windowBytes);
        std::memset(table + windowBytes, 0, windowBytes);
    }

    static void put(std::uint8_t* table, std::size_t sample, std::size_t place,
                    std::int32_t weight) {
        auto const word = static_cast<std::int16_t>(weight);
        table[2 * sample] = static_cast<std::uint8_t>(place);
        std::memcpy(table + windowBytes + 2 * sample, &word, sizeof word);
    }

    HWY_INLINE void add(Window window, std::uint8_t const* table) {
        WindowTag const d;
        auto const words = PermuteToWords(window, hn::Load(d, table));
        sum = hn::Add(sum, MulAddWords(words, hn::Load(d, table + windowBytes)));
    }

    HWY_INLINE Sums total() const { return sum; }
};

#endif

/// Takes the next samples of an entry that lie in the window, as many as fit `samples` from
/// `first`.
void placeTaps(AreaColumns const& columns, AreaTaps& tap, std::uint64_t start, std::size_t first,
               std::size_t samples, std::uint8_t* table) {
    for (std::size_t k = 0; k < samples; ++k) {
        if (tap.left == 0 || tap.at - start >= windowBytes) {
            return;
        }
        StepSums::put(table, first + k, static_cast<std::size_t>(tap.at - start), tap.next);
        tap.at += columns.channels;
        tap.left -= 1;
        tap.next = tap.left == 1 ? tap.last : columns.ax[0];
    }
}

/// Writes the steps of a register: of the entries from `entry`.
/// @return how many steps there are; 0 if that is more than `capacity`
template <std::size_t entry_lanes>
std::uint64_t compileEntries(AreaColumns const& columns, std::uint64_t entry,
                             std::uint64_t capacity, std::int32_t* window, std::uint8_t* table) {
    constexpr std::size_t entries = entriesOfWindow / entry_lanes;
    constexpr std::size_t samples = StepSums::samples * entry_lanes;
    AreaTaps taps[entries];
    for (std::size_t i = 0; i < entries; ++i) {
        taps[i] = tapsOf(columns, (entry + i) / columns.channels, (entry + i) % columns.channels);
    }
    auto const isLeft = [](AreaTaps const& tap) { return tap.left > 0; };
    std::uint64_t steps = 0;
    for (; std::any_of(taps, taps + entries, isLeft); ++steps, ++window) {
        if (steps == capacity) {
            return 0;
        }
        std::uint64_t start = columns.rowBytes - windowBytes;
        for (std::size_t i = 0; i < entries; ++i) {
            start = isLeft(taps[i]) ? std::min(start, taps[i].at) : start;
        }
        *window = static_cast<std::int32_t>(start);
        StepSums::clear(table);
        for (std::size_t i = 0; i < entries; ++i) {
            placeTaps(columns, taps[i], start, samples * i, samples, table);
        }
        table += StepSums::tableBytes;
    }
    return steps;
}

std::uint64_t startOfEntries(std::uint64_t block, std::uint64_t entries) {
    return std::min(block * entriesOfWindow, entries - entriesOfWindow);
}

/// @return false if the steps are more than `capacity`
template <std::size_t entry_lanes>
bool compileBlocks(AreaColumns const& columns, RowProgram& program, std::uint64_t capacity) {
    std::uint64_t const registers = program.steps * entry_lanes;
    program.offsets.Resize(registers + capacity, windowBytes);
    program.tables.Resize(StepSums::tableBytes * capacity, windowBytes);
    std::int32_t* offset = program.offsets.data;
    std::uint8_t* table = program.tables.data;
    program.singleSteps = true;
    for (std::uint64_t i = 0; i < registers; ++i) {
        std::uint64_t const first = startOfEntries(i / entry_lanes, program.entries) +
                                    i % entry_lanes * (entriesOfWindow / entry_lanes);
        std::uint64_t const steps =
            compileEntries<entry_lanes>(columns, first, capacity, offset + 1, table);
        if (steps == 0) {
            return false;
        }
        program.singleSteps = program.singleSteps && steps == 1;
        capacity -= steps;
        *offset = static_cast<std::int32_t>(steps);
        offset += steps + 1;
        table += StepSums::tableBytes * steps;
    }
    return true;
}

bool compileAreaColumns(AreaColumns const& columns, RowProgram& program) {
    std::uint64_t const entries = columns.width * columns.channels;
    if (entries < entriesOfWindow || columns.rowBytes < windowBytes ||
        columns.ax[0] > StepSums::mostWeight) {
        return false;
    }
    program.entries = entries;
    program.channels = columns.channels;
    program.steps = (entries - 1) / entriesOfWindow + 1;
    program.entryLanes =
        columns.rowBytes > entries * (windowBytes / entriesOfWindow) ? StepSums::mostLanes : 1;
    std::uint64_t const samples = columns.rowBytes / columns.channels / columns.width + 2;
    std::uint64_t capacity = program.steps * (samples / StepSums::samples + 2);
    auto* const compile =
        program.entryLanes == 1 ? compileBlocks<1> : compileBlocks<StepSums::mostLanes>;
    while (!compile(columns, program, capacity)) {
        capacity *= 2;
    }
    return true;
}

/// The columns of a register's cells.
struct RegisterSteps {
    std::uint64_t count;
    std::int32_t const* offset;
    std::uint8_t const* table;
};

/// The sums of a register's cells in rows that weigh alike.
HWY_INLINE Sums sumRows(RegisterSteps const& steps, std::uint8_t const* row, std::size_t stride,
                        std::uint64_t rows) {
    StepSums sums = StepSums::none();
    std::uint8_t const* table = steps.table;
    for (std::uint64_t i = 0; i < steps.count; ++i, table += StepSums::tableBytes) {
        std::uint8_t const* at = row + steps.offset[i];
        for (std::uint64_t k = 0; k < rows; ++k, at += stride) {
            sums.add(hn::LoadU(WindowTag(), at), table);
        }
    }
    return sums.total();
}

HWY_INLINE Sums times(Sums sums, std::int32_t weight) {
    return hn::Mul(sums, hn::Set(WindowTagS32(), weight));
}

/// Rows that weigh alike are summed before they are weighted.
HWY_INLINE Sums weighRows(RegisterSteps const& steps, AreaRows const& rows, std::int32_t rounding) {
    std::uint8_t const* const second = rows.first + rows.stride;
    std::uint64_t const inner = rows.more > 0 ? rows.more - 1 : 0;
    Sums sum = hn::Set(WindowTagS32(), rounding);
    if (rows.weight == rows.inner) {
        sum = hn::Add(sum, times(sumRows(steps, rows.first, rows.stride, inner + 1), rows.inner));
    } else {
        sum = hn::Add(sum, times(sumRows(steps, rows.first, rows.stride, 1), rows.weight));
        if (inner > 0) {
            sum = hn::Add(sum, times(sumRows(steps, second, rows.stride, inner), rows.inner));
        }
    }
    if (rows.more > 0 && rows.outer != 0) {
        std::uint8_t const* const last = second + inner * rows.stride;
        sum = hn::Add(sum, times(sumRows(steps, last, rows.stride, 1), rows.outer));
    }
    return sum;
}

/// @tparam single each register has one step
/// @tparam entry_lanes of a register: 1 or 2
template <bool clamps, bool single, std::size_t entry_lanes>
void averageRow(RowProgram const& program, AreaRows const& rows, std::uint8_t* dst) {
    WindowTagS32 const d;
    hn::Rebind<std::uint8_t, WindowTagS32> const to;
    std::int32_t const* offset = program.offsets.data;
    std::uint8_t const* table = program.tables.data;
    auto const weighRegister = [&]() HWY_ATTR {
        RegisterSteps const steps{single ? 1 : static_cast<std::uint64_t>(*offset), offset + 1,
                                  table};
        offset += steps.count + 1;
        table += StepSums::tableBytes * steps.count;
        return weighRows(steps, rows, (1 << 21) / static_cast<std::int32_t>(entry_lanes));
    };
    for (std::uint64_t block = 0; block < program.steps; ++block) {
        Sums sums = weighRegister();
        if constexpr (entry_lanes == 2) {
            sums = AddNeighbours(sums, weighRegister());
        }
        Sums const mean = hn::ShiftRight<22>(sums);
        std::uint8_t* const target = dst + startOfEntries(block, program.entries);
        auto const stored = clamps ? mean : hn::And(mean, hn::Set(d, 0xff));
        hn::StoreU(hn::DemoteTo(to, stored), to, target);  // of 10 bits
    }
}

template <bool clamps, bool single>
AverageAreaRow* byLanes(RowProgram const& program) {
    if constexpr (StepSums::mostLanes == 2) {
        if (program.entryLanes == 2) {
            return averageRow<clamps, single, 2>;
        }
    }
    return averageRow<clamps, single, 1>;
}

template <bool clamps>
AverageAreaRow* bySteps(RowProgram const& program) {
    return program.singleSteps ? byLanes<clamps, true>(program) : byLanes<clamps, false>(program);
}

void averageAreaRow(RowProgram const& program, AreaRows const& rows, std::uint8_t* dst) {
    AverageAreaRow* const average =
        program.channels >= 3 ? bySteps<true>(program) : bySteps<false>(program);
    average(program, rows, dst);
}

#endif

void takeRoutines([[maybe_unused]] ResizeRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compileAreaColumns = compileAreaColumns;
    routines.averageAreaRow = averageAreaRow;
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeResizeAreaRoutines(ResizeRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
