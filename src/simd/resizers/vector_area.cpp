// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/resizers/vector_area.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "simd/resizers/area_columns-inl.h"
#include "simd/resizers/area_rows-inl.h"
#include "simd/resizers/routines.h"
#include "vector/ops-inl.h"
#include "vector/windows-inl.h"
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3_DL

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

constexpr std::size_t lanesOfWindow = windowBytes / 4;
constexpr std::size_t registerLanes = lanesOfWindow * windowCount;
constexpr std::size_t mostLanes = 2;  ///< of an entry

// A step adds a few samples to each entry, all out of one window. It has a table of their places,
// and of their weights. Where entries lie so far apart that a window has too few for a register,
// each of them takes two of its lanes, and a block two registers.

/// Bytes by weights in two parts, 256 * high + low.
struct StepSums {
    static constexpr std::size_t samples = 4;
    static constexpr std::size_t tableBytes = 3 * blockBytes;
    static constexpr std::int32_t mostWeight = 127 * 256 + 127;

    V32 low;
    V32 high;

    static HWY_INLINE StepSums none() { return {hn::Zero(BlockTagS32()), hn::Zero(BlockTagS32())}; }

    static void clear(std::uint8_t* table) { std::memset(table, 0, tableBytes); }

    static void put(std::uint8_t* table, std::size_t sample, std::size_t place,
                    std::int32_t weight) {
        auto const rest = static_cast<std::int8_t>(weight);
        table[sample] = static_cast<std::uint8_t>(place);
        table[blockBytes + sample] = static_cast<std::uint8_t>(rest);
        table[2 * blockBytes + sample] = static_cast<std::uint8_t>((weight - rest) / 256);
    }

    HWY_INLINE void add(Windows<1> const& windows, std::uint8_t const* table) {
        Tag8 const d;
        V8 const bytes = windows.permute(hn::Load(d, table));
        low = AddByteProducts(low, bytes, hn::Load(d, table + blockBytes));
        high = AddByteProducts(high, bytes, hn::Load(d, table + 2 * blockBytes));
    }

    HWY_INLINE V32 total() const { return hn::Add(low, hn::ShiftLeft<8>(high)); }
};

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

/// The entries of a window.
template <std::size_t count>
struct WindowEntries {
    EntrySamples entries[count];

    bool isLeft() const {
        return std::any_of(entries, entries + count,
                           [](EntrySamples const& entry) { return entry.left > 0; });
    }
    std::uint64_t leftmost() const {
        std::uint64_t at = std::numeric_limits<std::uint64_t>::max();
        for (EntrySamples const& entry : entries) {
            at = entry.left > 0 ? std::min(at, entry.at) : at;
        }
        return at;
    }
};

/// Writes the steps of a register: of the entries from `first`. Other than the plans of
/// vector/windows.h, a register has its entries from the start, and takes steps until all of their
/// samples are placed.
/// @return how many steps there are; 0 if that is more than `capacity`
template <std::size_t entry_lanes>
std::uint64_t compileEntries(ByteAreaColumns const& columns, std::uint64_t first,
                             std::uint64_t capacity, std::int32_t* offset, std::uint8_t* table) {
    constexpr std::size_t count = lanesOfWindow / entry_lanes;
    constexpr std::size_t samples = StepSums::samples * entry_lanes;
    using Window = WindowEntries<count>;
    Window windows[windowCount];
    for (std::size_t i = 0; i < count * windowCount; ++i) {
        std::uint64_t const entry = first + i / count * lanesOfWindow + i % count;
        windows[i / count].entries[i % count] =
            samplesOfEntry(columns, entry / columns.channels, entry % columns.channels);
    }
    auto const isLeft = [](Window const& window) { return window.isLeft(); };
    std::uint64_t steps = 0;
    for (; std::any_of(windows, windows + windowCount, isLeft); ++steps) {
        if (steps == capacity) {
            return 0;
        }
        StepSums::clear(table);
        for (std::size_t w = 0; w < windowCount; ++w) {
            std::uint64_t const start =
                ox::vector::windowStart(windows[w].leftmost(), windowBytes, columns.rowBytes);
            *offset++ = static_cast<std::int32_t>(start);
            for (std::size_t i = 0; i < count; ++i) {
                placeSamples(columns, windows[w].entries[i], start,
                             StepSums::samples * lanesOfWindow * w + samples * i, samples, table);
            }
        }
        table += StepSums::tableBytes;
    }
    return steps;
}

std::uint64_t startOfBlock(std::uint64_t block, std::uint64_t entries) {
    return std::min(block * registerLanes, entries - registerLanes);
}

/// @return false if the steps are more than `capacity`
template <std::size_t entry_lanes>
bool compileBlocks(ByteAreaColumns const& columns, ByteAreaProgram& program,
                   std::uint64_t capacity) {
    std::uint64_t const registers = program.blocks * entry_lanes;
    program.offsets.Resize(registers + windowCount * capacity, windowBytes);
    program.tables.Resize(StepSums::tableBytes * capacity, blockBytes);
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
        offset += windowCount * steps + 1;
        table += StepSums::tableBytes * steps;
    }
    return true;
}

bool compileByteArea(ByteAreaColumns const& columns, ByteAreaProgram& program) {
    std::uint64_t const entries = columns.width * columns.channels;
    if (entries < registerLanes || columns.rowBytes < windowBytes ||
        columns.ax[0] > StepSums::mostWeight) {
        return false;
    }
    program.entries = entries;
    program.channels = columns.channels;
    program.blocks = (entries - 1) / registerLanes + 1;
    program.entryLanes = columns.rowBytes > entries * (windowBytes / lanesOfWindow) ? mostLanes : 1;
    std::uint64_t const samples = columns.rowBytes / columns.channels / columns.width + 2;
    std::uint64_t capacity = program.blocks * (samples / StepSums::samples + 2);
    auto* const compile = program.entryLanes == 1 ? compileBlocks<1> : compileBlocks<mostLanes>;
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
HWY_INLINE V32 sumUnweighted(RegisterSteps const& steps, std::uint8_t const* row,
                             std::size_t stride, std::uint64_t rows) {
    StepSums sums = StepSums::none();
    std::uint8_t const* table = steps.table;
    std::int32_t const* offset = steps.offset;
    for (std::uint64_t i = 0; i < steps.count; ++i, table += StepSums::tableBytes) {
        std::uint8_t const* at = row;
        for (std::uint64_t k = 0; k < rows; ++k, at += stride) {
            sums.add(Windows<1>::load([&](std::size_t w) { return at + offset[w]; }), table);
        }
        offset += windowCount;
    }
    return sums.total();
}

HWY_INLINE V32 times(V32 sums, std::int32_t weight) {
    return hn::Mul(sums, hn::Set(BlockTagS32(), weight));
}

/// Rows that weigh alike are summed before they are weighted.
HWY_INLINE V32 weighRows(RegisterSteps const& steps, ByteAreaRows const& rows,
                         std::int32_t rounding) {
    std::uint8_t const* const second = rows.first + rows.stride;
    std::uint64_t const inner = rows.more > 0 ? rows.more - 1 : 0;
    V32 sum = hn::Set(BlockTagS32(), rounding);
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
    BlockTagS32 const d;
    hn::Rebind<std::uint8_t, BlockTagS32> const to;
    std::int32_t const* offset = program.offsets.data;
    std::uint8_t const* table = program.tables.data;
    auto const weighRegister = [&]() HWY_ATTR {
        RegisterSteps const steps{single ? 1 : static_cast<std::uint64_t>(*offset), offset + 1,
                                  table};
        offset += windowCount * steps.count + 1;
        table += StepSums::tableBytes * steps.count;
        return weighRows(steps, rows, byteAreaRounding / static_cast<std::int32_t>(entry_lanes));
    };
    for (std::uint64_t block = 0; block < program.blocks; ++block) {
        V32 sums = weighRegister();
        if constexpr (entry_lanes == 2) {
            sums = AddPairs(sums, weighRegister());
        }
        V32 const mean = hn::ShiftRight<byteAreaShift>(sums);
        std::uint8_t* const target = dst + startOfBlock(block, program.entries);
        auto const stored = clamps ? mean : hn::And(mean, hn::Set(d, 0xff));
        hn::StoreU(hn::DemoteTo(to, stored), to, target);
    }
}

using AverageRow = void(ByteAreaProgram const& program, ByteAreaRows const& rows,
                        std::uint8_t* dst);

template <bool clamps, bool single>
AverageRow* chooseByLanes(ByteAreaProgram const& program) {
    return program.entryLanes == 2 ? averageRow<clamps, single, mostLanes>
                                   : averageRow<clamps, single, 1>;
}

template <bool clamps>
AverageRow* chooseBySteps(ByteAreaProgram const& program) {
    return program.singleSteps ? chooseByLanes<clamps, true>(program)
                               : chooseByLanes<clamps, false>(program);
}

void averageByteArea(ByteAreaProgram const& program, ByteAreaRows const& rows,
                     std::uint32_t* /*by*/, std::uint8_t* dst) {
    AverageRow* const average =
        program.channels >= 3 ? chooseBySteps<true>(program) : chooseBySteps<false>(program);
    average(program, rows, dst);
}

#elif HWY_TARGET != HWY_SCALAR

void averageByteArea(ByteAreaProgram const& program, ByteAreaRows const& rows, std::uint32_t* by,
                     std::uint8_t* dst) {
    constexpr std::size_t most_bytes = 3 * blockBytes;  // that a block stores
    CellShape const shape{program.channels, program.taps};
    sumRows(rows, program.rowBytes, by);
    auto* const sum = chooseColumns(shape);
    if (program.entries >= shape.cells() * windowCount * program.channels) {
        return sum(program, by, dst);
    }
    std::uint8_t block[most_bytes];
    sum(program, by, block);
    std::memcpy(dst, block, program.entries);
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
