#include "simd/simd_neon_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/rows_tap_columns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "rows/rows_targets.h"
#include "simd/simd_neon_ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace Simd::Neon::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Pixels that are written at a time.
constexpr std::size_t lanes = blockBytes / 4;

/// A register of sums for each of a few planes, which share weights.
template <std::size_t planes>
struct PlaneSums {
    V32 plane[planes];
};

/// The sums of a register's pixels, in order, out of registers that hold `lane_sums` for each.
template <std::size_t lane_sums, class SumOfRegister>
HWY_INLINE auto sumPixels(SumOfRegister const& sum, std::size_t first) {
    if constexpr (lane_sums == 1) {
        return sum(first);
    } else {
        auto sums = sumPixels<lane_sums / 2>(sum, first);
        auto const more = sumPixels<lane_sums / 2>(sum, first + lane_sums / 2);
        for (std::size_t p = 0; p < std::size(sums.plane); ++p) {
            sums.plane[p] = AddNeighbours(sums.plane[p], more.plane[p]);
        }
        return sums;
    }
}

/// All pixels of a few planes.
/// @param sum sum(i) is register i of each plane
template <std::size_t lane_sums, class SumOfRegister>
HWY_INLINE void sumAll(TapProgram const& program, std::uint8_t* const* dst,
                       SumOfRegister const& sum) {
    for (std::size_t x = 0; x < program.pixels; x += lanes) {
        auto const sums = sumPixels<lane_sums>(sum, x / lanes * lane_sums);
        for (std::size_t p = 0; p < std::size(sums.plane); ++p) {
            StoreLaneBytes(hn::ShiftRightSame(sums.plane[p], program.shift), dst[p] + x);
        }
    }
}

#if HWY_TARGET == HWY_AVX3_DL

// A register holds the taps of several neighbouring pixels: 4 bytes a lane, gathered out of a
// window of 64 bytes by one permutation. The wider the pixels lie apart, the fewer share a window,
// and the more lanes each of them has. The next step takes the taps behind those, by the same
// places in a window further on.
//
//   3 pixels apart, 16 pixels:  lane i has taps 3i .. 3i + 3, then 3i + 4 .. 3i + 7, ...
//
// The bytes are unsigned and the weights signed, in two parts where they don't fit a byte: 256 *
// high + low, each times the taps in a sum of its own.

constexpr std::size_t windowPixels = 64;
constexpr std::size_t laneTaps = 4;

/// Reductions to a thirty-second are the most.
constexpr std::size_t leastRegisterPixels = 2;

/// Its pixels; the last register may have fewer.
struct RegisterPixels {
    TapStart const* first;
    std::size_t count;

    std::size_t leftmost() const {
        auto const by_place = [](TapStart a, TapStart b) { return a.first < b.first; };
        return std::min_element(first, first + count, by_place)->first;
    }
    std::size_t rightmost() const {
        auto const by_place = [](TapStart a, TapStart b) { return a.first < b.first; };
        return std::max_element(first, first + count, by_place)->first;
    }
};

RegisterPixels pixelsOf(TapAxis const& axis, std::size_t index, std::size_t pixels) {
    std::size_t const first = index * pixels;
    return {axis.starts.data() + first, std::min(pixels, axis.starts.size() - first)};
}

/// Whether the taps of each register's pixels lie in one window.
bool sharesWindows(TapAxis const& axis, std::size_t pixels) {
    std::size_t const taps = lanes / pixels * laneTaps;
    for (std::size_t i = 0; i * pixels < axis.starts.size(); ++i) {
        RegisterPixels const group = pixelsOf(axis, i, pixels);
        if (group.rightmost() - group.leftmost() + taps > windowPixels) {
            return false;
        }
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

/// Tables of a register: places, then for each step the low and, if need be, the high weights.
std::size_t tablesOf(std::size_t steps, bool has_high) {
    return 1 + steps * (has_high ? 2 : 1);
}

void fillTables(TapAxis const& axis, RegisterPixels group, std::size_t lane_sums, std::size_t steps,
                bool has_high, RegisterBytes* tables) {
    std::size_t const leftmost = group.leftmost();
    for (std::size_t pixel = 0; pixel < group.count; ++pixel) {
        TapStart const start = group.first[pixel];
        std::int16_t const* const weights = axis.kernel(start.kernel);
        for (std::size_t i = 0; i < lane_sums * laneTaps; ++i) {
            std::size_t const byte = pixel * lane_sums * laneTaps + i;
            tables[0].bytes[byte] = static_cast<std::uint8_t>(start.first - leftmost + i);
            RegisterBytes* table = tables + 1;
            for (std::size_t tap = i; tap < axis.taps; tap += lane_sums * laneTaps) {
                SplitWeight const split = splitWeight(weights[tap]);
                table->bytes[byte] = static_cast<std::uint8_t>(split.low);
                if (has_high) {
                    table[1].bytes[byte] = static_cast<std::uint8_t>(split.high);
                }
                table += has_high ? 2 : 1;
            }
        }
    }
}

bool compileTaps(TapAxis const& axis, TapProgram& program) {
    if (!fitsParts(axis)) {
        return false;
    }
    std::size_t pixels = lanes;
    while (pixels >= leastRegisterPixels && !sharesWindows(axis, pixels)) {
        pixels /= 2;
    }
    if (pixels < leastRegisterPixels) {
        return false;
    }
    bool const has_high = needsHighParts(axis);
    program.lane_sums = lanes / pixels;
    std::size_t const step_taps = program.lane_sums * laneTaps;
    program.steps = (axis.taps - 1) / step_taps + 1;
    program.pixels = (axis.starts.size() + lanes - 1) / lanes * lanes;
    program.shift = axis.shift;
    std::size_t const registers = program.pixels / pixels;
    std::size_t const table_count = tablesOf(program.steps, has_high);
    program.offsets.assign(registers, 0);
    program.tables.assign(registers * table_count, RegisterBytes{});
    for (std::size_t i = 0; i * pixels < axis.starts.size(); ++i) {
        RegisterPixels const group = pixelsOf(axis, i, pixels);
        program.offsets[i] = static_cast<std::uint32_t>(group.leftmost());
        fillTables(axis, group, program.lane_sums, program.steps, has_high,
                   program.tables.data() + i * table_count);
    }
    program.src_bytes = *std::max_element(program.offsets.begin(), program.offsets.end()) +
                        (program.steps - 1) * step_taps + windowPixels;
    return true;
}

template <std::size_t lane_sums, std::size_t planes>
void sumTapsBy(TapProgram const& program, bool has_high, std::uint8_t const* const* src,
               std::uint8_t* const* dst) {
    std::size_t const table_count = tablesOf(program.steps, has_high);
    sumAll<lane_sums>(program, dst, [&](std::size_t i) HWY_ATTR {
        RegisterBytes const* table = program.tables.data() + i * table_count;
        std::size_t window = program.offsets[i];
        Tag8 const d;
        V8 const places = hn::Load(d, table++->bytes.data());
        PlaneSums<planes> low;
        PlaneSums<planes> high;
        for (std::size_t p = 0; p < planes; ++p) {
            low.plane[p] = hn::Zero(BlockTagS32());
            high.plane[p] = hn::Zero(BlockTagS32());
        }
        for (std::size_t k = 0; k < program.steps; ++k, window += lane_sums * laneTaps) {
            V8 const low_weights = hn::Load(d, table++->bytes.data());
            V8 const high_weights = has_high ? hn::Load(d, table++->bytes.data()) : hn::Zero(d);
            for (std::size_t p = 0; p < planes; ++p) {
                V8 const taps = PermuteWindow(hn::LoadU(d, src[p] + window), places);
                low.plane[p] = AddByteProducts(low.plane[p], taps, low_weights);
                if (has_high) {
                    high.plane[p] = AddByteProducts(high.plane[p], taps, high_weights);
                }
            }
        }
        for (std::size_t p = 0; p < planes; ++p) {
            low.plane[p] = hn::Add(low.plane[p], hn::ShiftLeft<8>(high.plane[p]));
        }
        return low;
    });
}

/// Planes are taken together where the weights are many.
void sumTogether(TapProgram const& program, bool has_high, std::size_t planes,
                 std::uint8_t const* const* src, std::uint8_t* const* dst) {
    switch (planes) {
        case 0:
            return;
        case 1:
            return sumTapsBy<1, 1>(program, has_high, src, dst);
        case 2:
            return sumTapsBy<1, 2>(program, has_high, src, dst);
        default:
            sumTapsBy<1, 3>(program, has_high, src, dst);
            return sumTogether(program, has_high, planes - 3, src + 3, dst + 3);
    }
}

void sumPlane(TapProgram const& program, bool has_high, std::uint8_t const* const* src,
              std::uint8_t* const* dst) {
    switch (program.lane_sums) {
        case 2:
            return sumTapsBy<2, 1>(program, has_high, src, dst);
        case 4:
            return sumTapsBy<4, 1>(program, has_high, src, dst);
        default:
            return sumTapsBy<8, 1>(program, has_high, src, dst);
    }
}

void sumTaps(TapProgram const& program, std::size_t planes, std::uint8_t const* const* src,
             std::uint8_t* const* dst) {
    std::size_t const registers = program.offsets.size();
    bool const has_high = program.tables.size() != registers * tablesOf(program.steps, false);
    if (program.lane_sums == 1) {
        return sumTogether(program, has_high, planes, src, dst);
    }
    for (std::size_t plane = 0; plane < planes; ++plane) {
        sumPlane(program, has_high, src + plane, dst + plane);
    }
}

#else

// A register holds the taps of one pixel, as words, and the weights are those of its kernel.

constexpr std::size_t registerTaps = blockBytes / 2;

/// For each pixel, the source byte and the table of its first weights.
bool compileTaps(TapAxis const& axis, TapProgram& program) {
    program.lane_sums = lanes;
    program.steps = (axis.taps - 1) / registerTaps + 1;
    program.pixels = (axis.starts.size() + lanes - 1) / lanes * lanes;
    program.shift = axis.shift;
    std::size_t const kernels = axis.weights.size() / axis.taps;
    program.tables.assign(kernels * program.steps, RegisterBytes{});
    for (std::size_t kernel = 0; kernel < kernels; ++kernel) {
        for (std::size_t tap = 0; tap < axis.taps; tap += registerTaps) {
            std::memcpy(program.tables[kernel * program.steps + tap / registerTaps].bytes.data(),
                        axis.kernel(kernel) + tap,
                        std::min(registerTaps, axis.taps - tap) * sizeof(std::int16_t));
        }
    }
    program.offsets.assign(2 * program.pixels, 0);
    std::size_t last = 0;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        program.offsets[2 * i] = axis.starts[i].first;
        program.offsets[2 * i + 1] =
            static_cast<std::uint32_t>(axis.starts[i].kernel * program.steps);
        last = std::max<std::size_t>(last, axis.starts[i].first);
    }
    program.src_bytes = last + program.steps * registerTaps;
    return true;
}

void sumPlane(TapProgram const& program, std::uint8_t const* src, std::uint8_t* const* dst) {
    sumAll<lanes>(program, dst, [&](std::size_t i) HWY_ATTR {
        std::uint8_t const* taps = src + program.offsets[2 * i];
        RegisterBytes const* table = program.tables.data() + program.offsets[2 * i + 1];
        WordSums sums = NoWordSums();
        for (std::size_t k = 0; k < program.steps; ++k, taps += registerTaps, ++table) {
            V8 const weights = hn::Load(Tag8(), table->bytes.data());
            V16 const words = hn::PromoteTo(TagS16(), hn::LoadU(HalfTag8(), taps));
            sums = AddWordProducts(sums, words, hn::BitCast(TagS16(), weights));
        }
        return PlaneSums<1>{{TotalOf(sums)}};
    });
}

void sumTaps(TapProgram const& program, std::size_t planes, std::uint8_t const* const* src,
             std::uint8_t* const* dst) {
    for (std::size_t plane = 0; plane < planes; ++plane) {
        sumPlane(program, src[plane], dst + plane);
    }
}

#endif

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compile_taps = compileTaps;
    routines.sum_taps = sumTaps;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeTapColumnRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
