#include "simd/simd_neon_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/simd_neon_resize_area.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "simd/simd_neon_ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR

/// What is still to be placed of an entry of a row: neighbouring samples, `channels` bytes apart.
struct AreaTaps {
    std::uint64_t at;    // the byte of the next one
    std::uint64_t left;  // how many
    std::int32_t next;   // weight of the next one
    std::int32_t last;   // weight of the last one, if it isn't the next
};

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

constexpr std::size_t entriesOfWindow = windowBytes / 4;

/// Writes the steps of the entries from `entry`. A step adds up to two samples to each entry, all
/// out of one window.
/// @return how many steps there are; 0 if that is more than `capacity`
std::uint64_t compileEntries(AreaColumns const& columns, std::uint64_t entry,
                             std::uint64_t capacity, std::int32_t* window, std::uint8_t* table) {
    AreaTaps taps[entriesOfWindow];
    std::uint64_t left = 0;
    std::uint64_t x = entry / columns.channels;
    std::uint64_t channel = entry % columns.channels;
    for (AreaTaps& tap : taps) {
        tap = tapsOf(columns, x, channel);
        left += tap.left;
        if (++channel == columns.channels) {
            channel = 0;
            ++x;
        }
    }
    std::uint64_t steps = 0;
    for (; left > 0; ++steps, ++window, table += 2 * windowBytes) {
        if (steps == capacity) {
            return 0;
        }
        std::uint64_t start = columns.rowBytes - windowBytes;
        for (AreaTaps const& tap : taps) {
            start = tap.left > 0 ? std::min(start, tap.at) : start;
        }
        *window = static_cast<std::int32_t>(start);
        std::memset(table, emptyPlace, windowBytes);
        std::memset(table + windowBytes, 0, windowBytes);
        for (std::size_t i = 0; i < entriesOfWindow; ++i) {
            AreaTaps& tap = taps[i];
            for (std::size_t half = 0; half < 2; ++half) {
                if (tap.left == 0 || tap.at - start >= windowBytes) {
                    break;
                }
                table[4 * i + 2 * half] = static_cast<std::uint8_t>(tap.at - start);
                auto const weight = static_cast<std::int16_t>(tap.next);
                std::memcpy(table + windowBytes + 4 * i + 2 * half, &weight, sizeof weight);
                tap.at += columns.channels;
                tap.left -= 1;
                tap.next = tap.left == 1 ? tap.last : columns.ax[0];
                left -= 1;
            }
        }
    }
    return steps;
}

std::uint64_t startOfEntries(std::uint64_t block, std::uint64_t entries) {
    return std::min(block * entriesOfWindow, entries - entriesOfWindow);
}

/// @return false if the steps are more than `capacity`
bool compileBlocks(AreaColumns const& columns, RowProgram& program, std::uint64_t capacity) {
    program.offsets.Resize(program.steps + capacity, windowBytes);
    program.tables.Resize(2 * windowBytes * capacity, windowBytes);
    std::int32_t* offset = program.offsets.data;
    std::uint8_t* table = program.tables.data;
    for (std::uint64_t block = 0; block < program.steps; ++block) {
        std::uint64_t const steps = compileEntries(columns, startOfEntries(block, program.entries),
                                                   capacity, offset + 1, table);
        if (steps == 0) {
            return false;
        }
        capacity -= steps;
        *offset = static_cast<std::int32_t>(steps);
        offset += steps + 1;
        table += 2 * windowBytes * steps;
    }
    return true;
}

bool compileAreaColumns(AreaColumns const& columns, RowProgram& program) {
    std::uint64_t const entries = columns.width * columns.channels;
    if (entries < entriesOfWindow || columns.rowBytes < windowBytes ||
        columns.ax[0] > std::numeric_limits<std::int16_t>::max()) {
        return false;
    }
    program.entries = entries;
    program.channels = columns.channels;
    program.steps = (entries - 1) / entriesOfWindow + 1;
    std::uint64_t const samples = columns.rowBytes / columns.channels / columns.width + 2;
    std::uint64_t capacity = program.steps * (samples / 2 + 1);
    while (!compileBlocks(columns, program, capacity)) {
        capacity *= 2;
    }
    return true;
}

template <bool clamps>
HWY_INLINE void averageRow(RowProgram const& program, AreaRows const& rows, std::uint8_t* dst) {
    WindowTagS32 const d;
    WindowTag const d8;
    hn::Rebind<std::uint8_t, WindowTagS32> const to;
    auto const first_weight = hn::Set(d, rows.weight);
    auto const inner_weight = hn::Set(d, rows.inner);
    auto const outer_weight = hn::Set(d, rows.outer);
    auto const rounding = hn::Set(d, 1 << 21);
    std::int32_t const* offset = program.offsets.data;
    std::uint8_t const* table = program.tables.data;
    for (std::uint64_t block = 0; block < program.steps; ++block) {
        auto const steps = static_cast<std::uint64_t>(*offset++);
        auto const rowSum = [&](std::uint8_t const* row) HWY_ATTR {
            auto sum = hn::Zero(d);
            for (std::uint64_t i = 0; i < steps; ++i) {
                std::uint8_t const* const at = table + 2 * windowBytes * i;
                auto const words = PermuteToWords(hn::LoadU(d8, row + offset[i]), hn::Load(d8, at));
                sum = hn::Add(sum, MulAddWords(words, hn::Load(d8, at + windowBytes)));
            }
            return sum;
        };
        std::uint8_t const* row = rows.first;
        auto sum = hn::Mul(rowSum(row), first_weight);
        if (rows.more > 0) {
            auto inner = hn::Zero(d);
            for (std::uint64_t i = 1; i < rows.more; ++i) {
                row += rows.stride;
                inner = hn::Add(inner, rowSum(row));
            }
            sum = hn::Add(sum, hn::Mul(inner, inner_weight));
            if (rows.outer != 0) {
                sum = hn::Add(sum, hn::Mul(rowSum(row + rows.stride), outer_weight));
            }
        }
        auto const mean = hn::ShiftRight<22>(hn::Add(sum, rounding));
        std::uint8_t* const target = dst + startOfEntries(block, program.entries);
        auto const stored = clamps ? mean : hn::And(mean, hn::Set(d, 0xff));
        hn::StoreU(hn::DemoteTo(to, stored), to, target);
        offset += steps;
        table += 2 * windowBytes * steps;
    }
}

void averageAreaRow(RowProgram const& program, AreaRows const& rows, std::uint8_t* dst) {
    if (program.channels >= 3) {
        averageRow<true>(program, rows, dst);
    } else {
        averageRow<false>(program, rows, dst);
    }
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
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

void takeResizeAreaRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
