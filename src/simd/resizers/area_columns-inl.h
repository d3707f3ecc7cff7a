// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The means of area resizing, out of sums of rows, once per instruction set.

#if defined(OX_SIMD_AREA_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_SIMD_AREA_COLUMNS_INL_H
#undef OX_SIMD_AREA_COLUMNS_INL_H
#else
#define OX_SIMD_AREA_COLUMNS_INL_H
#endif

#include <algorithm>
#include <atomic>
#include <limits>

#include "simd/resizers/byte_area.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_NEON

constexpr std::size_t lanesOfWindow = 4;
constexpr std::size_t pairTaps = 2;

/// How the cells of a row lie in registers. A load takes neighbouring sums of a cell, or of one in
/// each window; or those of two cells, if each has at most two. Three channels are loaded apart
/// where that is an instruction, if it has enough to load.
struct CellShape {
    std::size_t channels;
    std::size_t taps;  ///< that the widest cell takes of each channel

    constexpr bool isPair() const { return channels == 1 && taps <= pairTaps; }
    constexpr bool isApart() const {
        return HWY_TARGET == HWY_NEON && channels == 3 && taps > pairTaps;
    }
    constexpr std::size_t lanesOfTap() const { return isApart() ? 1 : channels; }
    /// Cells whose bytes fill a window; of three channels that aren't apart, whose bytes and gaps.
    constexpr std::size_t cells() const {
        return 4 * lanesOfWindow / (lanesOfTap() == 3 ? 4 : lanesOfTap());
    }
    constexpr std::size_t tapsOfLoad() const { return std::max(lanesOfWindow / lanesOfTap(), 1UL); }
    constexpr std::size_t loads() const { return (taps + tapsOfLoad() - 1) / tapsOfLoad(); }
    /// The lane of a table of weights, for a cell of a window and the first channel of a tap.
    constexpr std::size_t weightLane(std::size_t cell, std::size_t window, std::size_t tap) const {
        if (isPair()) {
            return (cell / 2 * windowCount + window) * lanesOfWindow + cell % 2 * pairTaps + tap;
        }
        std::size_t const load = cell * loads() + tap / tapsOfLoad();
        return (load * windowCount + window) * lanesOfWindow + tap % tapsOfLoad() * lanesOfTap();
    }
};

/// The weight of a tap of a cell that has `last` + 1, modulo 2^32.
std::uint32_t weightOfTap(std::int32_t const* ax, std::size_t x, std::size_t last,
                          std::size_t tap) {
    auto const whole = static_cast<std::uint32_t>(tap == 0 ? ax[x] : ax[0]);
    return tap == last ? whole - static_cast<std::uint32_t>(ax[x + 1]) : whole;
}

std::size_t lastTap(ByteAreaColumns const& columns, std::size_t x) {
    return static_cast<std::size_t>(columns.ix[x + 1] - columns.ix[x]);
}

/// Of the widest cell, but at least two, which any row has.
std::size_t mostTaps(ByteAreaColumns const& columns) {
    std::size_t most = pairTaps;
    for (std::size_t x = 0; x < columns.width; ++x) {
        std::size_t const last = lastTap(columns, x);
        most = std::max(most, weightOfTap(columns.ax, x, last, last) == 0 ? last : last + 1);
    }
    return most;
}

/// Puts a cell into a block. Where its taps would leave the row, they begin further left.
HWY_NOINLINE void putCell(ByteAreaColumns const& columns, CellShape const& shape, std::size_t x,
                          std::size_t i, std::int32_t* offsets, std::int32_t* weights) {
    std::size_t const cell = i % shape.cells();
    std::size_t const window = i / shape.cells();
    std::size_t const pixels = columns.rowBytes / columns.channels;
    auto const first = static_cast<std::size_t>(columns.ix[x]);
    std::size_t const start = std::min(first, pixels - shape.taps);
    offsets[cell * windowCount + window] =
        static_cast<std::int32_t>(start * columns.channels * sizeof(std::uint32_t));
    std::size_t const last = lastTap(columns, x);
    for (std::size_t tap = 0; tap <= last && first + tap < start + shape.taps; ++tap) {
        std::fill_n(weights + shape.weightLane(cell, window, first - start + tap),
                    shape.lanesOfTap(),
                    static_cast<std::int32_t>(weightOfTap(columns.ax, x, last, tap)));
    }
}

std::size_t startOfBlock(std::size_t block, std::size_t block_length, std::size_t length) {
    return length < block_length ? 0 : std::min(block * block_length, length - block_length);
}

[[gnu::cold]] bool compileByteArea(ByteAreaColumns const& columns, ByteAreaProgram& program) {
    constexpr std::size_t most_bytes = std::numeric_limits<std::int32_t>::max() / 4;
    if (columns.rowBytes < blockBytes || columns.rowBytes > most_bytes || columns.width == 0) {
        return false;
    }
    CellShape const shape{columns.channels, mostTaps(columns)};
    std::size_t const block_cells = shape.cells() * windowCount;
    std::size_t const block_weights = shape.weightLane(shape.cells(), 0, 0);
    program.channels = columns.channels;
    program.taps = shape.taps;
    program.entries = columns.width * columns.channels;
    program.rowBytes = columns.rowBytes;
    program.blocks = (columns.width - 1) / block_cells + 1;
    program.offsets.Resize(program.blocks * block_cells, blockBytes);
    program.weights.Resize(program.blocks * block_weights, blockBytes);
    std::fill_n(program.offsets.data, program.offsets.size, 0);
    std::fill_n(program.weights.data, program.weights.size, 0);
    for (std::size_t block = 0; block < program.blocks; ++block) {
        std::size_t const x = startOfBlock(block, block_cells, columns.width);
        for (std::size_t i = 0; i < std::min(block_cells, columns.width); ++i) {
            putCell(columns, shape, x + i, i, program.offsets.data + block * block_cells,
                    program.weights.data + block * block_weights);
        }
    }
    return true;
}

/// A register of what window(i) loads.
template <class Window>
HWY_INLINE V32 joinWindows(Window window) {
    if constexpr (windowCount == 2) {
        return hn::Combine(BlockTagS32(), window(1), window(0));
    } else {
        return window(0);
    }
}

/// Goes through the loads of a row.
struct CellReader {
    CellReader(ByteAreaProgram const& program, CellShape const& shape, std::uint32_t const* sums)
        : by(reinterpret_cast<std::uint8_t const*>(sums)),
          offset(program.offsets.data),
          weights(program.weights.data),
          loads(shape.loads()),
          step(sizeof(std::uint32_t) * shape.channels * shape.tapsOfLoad()) {}

    std::uint8_t const* by;
    std::int32_t const* offset;
    std::int32_t const* weights;
    std::size_t loads;  ///< of a cell
    std::size_t step;   ///< bytes from a load of a cell to the next

    HWY_INLINE std::int32_t const* at(std::size_t i, std::size_t load) const {
        // Unsigned, because some processors extend a sign apart from the load.
        auto const start = static_cast<std::uint32_t>(offset[i]);
        return reinterpret_cast<std::int32_t const*>(by + start + load * step);
    }

    HWY_INLINE V32 takeWeights() {
        V32 const v = hn::Load(BlockTagS32(), weights);
        weights += windowCount * lanesOfWindow;
        return v;
    }

    HWY_INLINE V32 takePair() {
        hn::CappedTag<std::int32_t, pairTaps> const part;
        hn::CappedTag<std::int32_t, lanesOfWindow> const d;
        V32 const sums = joinWindows([&](std::size_t i) HWY_ATTR {
            return hn::Combine(d, hn::LoadU(part, at(windowCount + i, 0)),
                               hn::LoadU(part, at(i, 0)));
        });
        offset += 2 * windowCount;
        return hn::Mul(sums, takeWeights());
    }

    HWY_INLINE V32 takeLoad(std::size_t load) {
        hn::CappedTag<std::int32_t, lanesOfWindow> const d;
        V32 const sums =
            joinWindows([&](std::size_t i) HWY_ATTR { return hn::LoadU(d, at(i, load)); });
        return hn::Mul(sums, takeWeights());
    }

    /// @tparam known how many loads a cell has
    template <std::size_t known>
    HWY_INLINE V32 takeCell() {
        V32 sum = takeLoad(0);
        for (std::size_t i = 1; i < known; ++i) {
            sum = hn::Add(sum, takeLoad(i));
        }
        offset += windowCount;
        return sum;
    }
};

/// Of any number of loads; not inlined, because a block would be long then.
template <>
HWY_NOINLINE V32 CellReader::takeCell<0>() {
    V32 sum = takeLoad(0);
    for (std::size_t i = 1; i < loads; ++i) {
        sum = hn::Add(sum, takeLoad(i));
    }
    offset += windowCount;
    return sum;
}

/// A register of sums, one for each byte that is stored.
template <std::size_t channels, bool pairs, std::size_t loads>
HWY_INLINE V32 takeRegister(CellReader& reader) {
    if constexpr (pairs) {
        V32 const first = reader.takePair();
        return AddPairs(first, reader.takePair());
    } else if constexpr (channels == 1) {
        V32 const first = reader.takeCell<loads>();
        V32 const lower = AddPairs(first, reader.takeCell<loads>());
        V32 const third = reader.takeCell<loads>();
        return AddPairs(lower, AddPairs(third, reader.takeCell<loads>()));
    } else if constexpr (channels == 2) {
        V32 const first = reader.takeCell<loads>();
        return AddHalves(first, reader.takeCell<loads>());
    } else {
        return reader.takeCell<loads>();
    }
}

template <std::size_t channels, bool pairs, std::size_t loads>
void sumColumnsBy(ByteAreaProgram const& program, std::uint32_t const* by, std::uint8_t* dst) {
    constexpr std::size_t block_bytes = channels == 3 ? blockBytes / 4 * 3 : blockBytes;
    CellReader reader(program, {channels, program.taps}, by);
    for (std::size_t block = 0; block < program.blocks; ++block) {
        V32 const a = takeRegister<channels, pairs, loads>(reader);
        V32 const b = takeRegister<channels, pairs, loads>(reader);
        V32 const c = takeRegister<channels, pairs, loads>(reader);
        V32 const d = takeRegister<channels, pairs, loads>(reader);
        V8 const bytes = PackMeans<byteAreaShift, channels >= 3>(a, b, c, d);
        std::uint8_t* const target = dst + startOfBlock(block, block_bytes, program.entries);
        if constexpr (channels == 3) {
            StoreThreeOfFour(target, bytes);
        } else {
            hn::StoreU(bytes, Tag8(), target);
        }
    }
}

/// @tparam known numbers of loads that have a routine
template <std::size_t channels, std::size_t... known>
auto chooseColumns(std::size_t loads) {
    auto* choice = sumColumnsBy<channels, false, 0>;
    (void)((loads == known && (choice = sumColumnsBy<channels, false, known>, true)) || ...);
    return choice;
}

#if HWY_TARGET == HWY_NEON

HWY_INLINE ThreeSums takeLoadApart(CellReader& reader) {
    ThreeSums const sums = WeighThree(reader.at(0, 0), reader.takeWeights());
    reader.offset += 1;
    return sums;
}

/// Of any number of loads.
HWY_NOINLINE ThreeSums takeCellApart(CellReader& reader) {
    ThreeSums sums = WeighThree(reader.at(0, 0), reader.takeWeights());
    for (std::size_t i = 1; i < reader.loads; ++i) {
        ThreeSums const more = WeighThree(reader.at(0, i), reader.takeWeights());
        sums = {hn::Add(sums.c0, more.c0), hn::Add(sums.c1, more.c1), hn::Add(sums.c2, more.c2)};
    }
    reader.offset += 1;
    return sums;
}

/// Sums of three channels, a register of each, from four calls of `take`.
template <class Take>
HWY_INLINE ThreeSums joinFour(CellReader& reader, Take take) {
    ThreeSums const a = take(reader);
    ThreeSums const b = take(reader);
    ThreeSums const c = take(reader);
    ThreeSums const d = take(reader);
    return {AddPairs(AddPairs(a.c0, b.c0), AddPairs(c.c0, d.c0)),
            AddPairs(AddPairs(a.c1, b.c1), AddPairs(c.c1, d.c1)),
            AddPairs(AddPairs(a.c2, b.c2), AddPairs(c.c2, d.c2))};
}

HWY_INLINE ThreeSums takeFourLoads(CellReader& reader) {
    ThreeSums const sums = joinFour(reader, takeLoadApart);
    // Else the compiler loads all cells of a block first, for which there are too few registers.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    return sums;
}

HWY_NOINLINE ThreeSums takeFourCells(CellReader& reader) {
    return joinFour(reader, takeCellApart);
}

template <auto take>
void sumColumnsApart(ByteAreaProgram const& program, std::uint32_t const* by, std::uint8_t* dst) {
    constexpr std::size_t block_bytes = 3 * blockBytes;
    CellReader reader(program, {3, program.taps}, by);
    for (std::size_t block = 0; block < program.blocks; ++block) {
        ThreeSums const a = take(reader);
        ThreeSums const b = take(reader);
        ThreeSums const c = take(reader);
        ThreeSums const d = take(reader);
        StoreThree(dst + startOfBlock(block, block_bytes, program.entries),
                   {PackMeans<byteAreaShift, true>(a.c0, b.c0, c.c0, d.c0),
                    PackMeans<byteAreaShift, true>(a.c1, b.c1, c.c1, d.c1),
                    PackMeans<byteAreaShift, true>(a.c2, b.c2, c.c2, d.c2)});
    }
}

auto chooseThree(CellShape shape) {
    return !shape.isApart()    ? sumColumnsBy<3, false, 2>
           : shape.loads() > 1 ? sumColumnsApart<takeFourCells>
                               : sumColumnsApart<takeFourLoads>;
}

auto chooseFour(std::size_t loads) {
    return chooseColumns<4, 2>(loads);
}

#else

auto chooseThree(CellShape shape) {
    return chooseColumns<3, 2, 3, 4>(shape.loads());
}

auto chooseFour(std::size_t loads) {
    return chooseColumns<4, 2, 3, 4>(loads);
}

#endif

auto chooseColumns(CellShape shape) {
    switch (shape.channels) {
        case 1:
            return shape.isPair() ? sumColumnsBy<1, true, 1>
                                  : chooseColumns<1, 1, 2>(shape.loads());
        case 2:
            return chooseColumns<2, 1, 2>(shape.loads());
        case 3:
            return chooseThree(shape);
        default:
            return chooseFour(shape.loads());
    }
}

#endif

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
