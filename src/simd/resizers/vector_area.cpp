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
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// What is still to be placed of an entry of a row: neighbouring samples, `channels` bytes apart.
struct EntrySamples {
    std::uint64_t at;    // the byte of the next one
    std::uint64_t left;  // how many
    std::int32_t next;   // weight of the next one
    std::int32_t last;   // weight of the last one, if it isn't the next
};

/// No weight is more than `ax[0]`.
EntrySamples samplesOfEntry(ByteAreaColumns const& columns, std::uint64_t x,
                            std::uint64_t channel) {
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
constexpr std::size_t lanesOfWindow = windowBytes / 4;

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

/// Takes the next samples of an entry that lie in the window, as many as fit `most` from `lane` on.
void placeSamples(ByteAreaColumns const& columns, EntrySamples& entry, std::uint64_t start,
                  std::size_t lane, std::size_t most, std::uint8_t* table) {
    for (std::size_t k = 0; k < most; ++k) {
        if (entry.left == 0 || entry.at - start >= windowBytes) {
            return;
        }
        StepSums::put(table, lane + k, static_cast<std::size_t>(entry.at - start), entry.next);
        entry.at += columns.channels;
        entry.left -= 1;
        entry.next = entry.left == 1 ? entry.last : columns.ax[0];
    }
}

/// Writes the steps of a register: of the entries from `first`. Other than the plans of
/// vector/windows.h, a register has its entries from the start, and takes steps until all of their
/// samples are placed.
/// @return how many steps there are; 0 if that is more than `capacity`
template <std::size_t entry_lanes>
std::uint64_t compileEntries(ByteAreaColumns const& columns, std::uint64_t first,
                             std::uint64_t capacity, std::int32_t* window, std::uint8_t* table) {
    constexpr std::size_t count = lanesOfWindow / entry_lanes;
    constexpr std::size_t samples = StepSums::samples * entry_lanes;
    EntrySamples entries[count];
    for (std::size_t i = 0; i < count; ++i) {
        entries[i] =
            samplesOfEntry(columns, (first + i) / columns.channels, (first + i) % columns.channels);
    }
    auto const isLeft = [](EntrySamples const& entry) { return entry.left > 0; };
    std::uint64_t steps = 0;
    for (; std::any_of(entries, entries + count, isLeft); ++steps, ++window) {
        if (steps == capacity) {
            return 0;
        }
        std::uint64_t leftmost = columns.rowBytes;
        for (EntrySamples const& entry : entries) {
            leftmost = isLeft(entry) ? std::min(leftmost, entry.at) : leftmost;
        }
        std::uint64_t const start =
            ox::vector::windowStart(leftmost, windowBytes, columns.rowBytes);
        *window = static_cast<std::int32_t>(start);
        StepSums::clear(table);
        for (std::size_t i = 0; i < count; ++i) {
            placeSamples(columns, entries[i], start, samples * i, samples, table);
        }
        table += StepSums::tableBytes;
    }
    return steps;
}

std::uint64_t startOfBlock(std::uint64_t block, std::uint64_t entries) {
    return std::min(block * lanesOfWindow, entries - lanesOfWindow);
}

/// @return false if the steps are more than `capacity`
template <std::size_t entry_lanes>
bool compileBlocks(ByteAreaColumns const& columns, ByteAreaProgram& program,
                   std::uint64_t capacity) {
    std::uint64_t const registers = program.blocks * entry_lanes;
    program.offsets.Resize(registers + capacity, windowBytes);
    program.tables.Resize(StepSums::tableBytes * capacity, windowBytes);
    std::int32_t* offset = program.offsets.data;
    std::uint8_t* table = program.tables.data;
    program.singleSteps = true;
    for (std::uint64_t i = 0; i < registers; ++i) {
        std::uint64_t const first = startOfBlock(i / entry_lanes, program.entries) +
                                    i % entry_lanes * (lanesOfWindow / entry_lanes);
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

bool compileByteArea(ByteAreaColumns const& columns, ByteAreaProgram& program) {
    std::uint64_t const entries = columns.width * columns.channels;
    if (entries < lanesOfWindow || columns.rowBytes < windowBytes ||
        columns.ax[0] > StepSums::mostWeight) {
        return false;
    }
    program.entries = entries;
    program.clamps = columns.channels >= 3;
    program.blocks = (entries - 1) / lanesOfWindow + 1;
    program.entryLanes =
        columns.rowBytes > entries * (windowBytes / lanesOfWindow) ? StepSums::mostLanes : 1;
    std::uint64_t const samples = columns.rowBytes / columns.channels / columns.width + 2;
    std::uint64_t capacity = program.blocks * (samples / StepSums::samples + 2);
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
HWY_INLINE Sums sumUnweighted(RegisterSteps const& steps, std::uint8_t const* row,
                              std::size_t stride, std::uint64_t rows) {
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
HWY_INLINE Sums weighRows(RegisterSteps const& steps, ByteAreaRows const& rows,
                          std::int32_t rounding) {
    std::uint8_t const* const second = rows.first + rows.stride;
    std::uint64_t const inner = rows.more > 0 ? rows.more - 1 : 0;
    Sums sum = hn::Set(WindowTagS32(), rounding);
    if (rows.weight == rows.inner) {
        sum = hn::Add(sum,
                      times(sumUnweighted(steps, rows.first, rows.stride, inner + 1), rows.inner));
    } else {
        sum = hn::Add(sum, times(sumUnweighted(steps, rows.first, rows.stride, 1), rows.weight));
        if (inner > 0) {
            sum = hn::Add(sum, times(sumUnweighted(steps, second, rows.stride, inner), rows.inner));
        }
    }
    if (rows.more > 0 && rows.outer != 0) {
        std::uint8_t const* const last = second + inner * rows.stride;
        sum = hn::Add(sum, times(sumUnweighted(steps, last, rows.stride, 1), rows.outer));
    }
    return sum;
}

/// @tparam single each register has one step
/// @tparam entry_lanes of a register: 1 or 2
template <bool clamps, bool single, std::size_t entry_lanes>
void averageRow(ByteAreaProgram const& program, ByteAreaRows const& rows, std::uint8_t* dst) {
    WindowTagS32 const d;
    hn::Rebind<std::uint8_t, WindowTagS32> const to;
    std::int32_t const* offset = program.offsets.data;
    std::uint8_t const* table = program.tables.data;
    auto const weighRegister = [&]() HWY_ATTR {
        RegisterSteps const steps{single ? 1 : static_cast<std::uint64_t>(*offset), offset + 1,
                                  table};
        offset += steps.count + 1;
        table += StepSums::tableBytes * steps.count;
        return weighRows(steps, rows, byteAreaRounding / static_cast<std::int32_t>(entry_lanes));
    };
    for (std::uint64_t block = 0; block < program.blocks; ++block) {
        Sums sums = weighRegister();
        if constexpr (entry_lanes == 2) {
            sums = AddPairs(sums, weighRegister());
        }
        Sums const mean = hn::ShiftRight<byteAreaShift>(sums);
        std::uint8_t* const target = dst + startOfBlock(block, program.entries);
        auto const stored = clamps ? mean : hn::And(mean, hn::Set(d, 0xff));
        hn::StoreU(hn::DemoteTo(to, stored), to, target);
    }
}

template <bool clamps, bool single>
AverageByteArea* chooseByLanes(ByteAreaProgram const& program) {
    if constexpr (StepSums::mostLanes == 2) {
        if (program.entryLanes == 2) {
            return averageRow<clamps, single, 2>;
        }
    }
    return averageRow<clamps, single, 1>;
}

template <bool clamps>
AverageByteArea* chooseBySteps(ByteAreaProgram const& program) {
    return program.singleSteps ? chooseByLanes<clamps, true>(program)
                               : chooseByLanes<clamps, false>(program);
}

void averageByteArea(ByteAreaProgram const& program, ByteAreaRows const& rows, std::uint8_t* dst) {
    AverageByteArea* const average =
        program.clamps ? chooseBySteps<true>(program) : chooseBySteps<false>(program);
    average(program, rows, dst);
}

#endif

void takeRoutines([[maybe_unused]] ResizeRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compileByteArea = compileByteArea;
    routines.averageByteArea = averageByteArea;
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
