// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The taps in a lane of a register, which are bytes or words, and what is done with them, once per
/// instruction set.

#if defined(OX_ROWS_TAPS_LANES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_ROWS_TAPS_LANES_INL_H
#undef OX_ROWS_TAPS_LANES_INL_H
#else
#define OX_ROWS_TAPS_LANES_INL_H
#endif

#include <algorithm>
#include <cstring>
#include <utility>

#include "rows/taps/axis.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

constexpr std::size_t windowLanes = windowBytes / 4;
/// Of the numbers of a register: its windows, its tables.
constexpr std::size_t registerOffsets = windowCount + 1;
constexpr std::size_t gapLanes = 4;  ///< of a pixel of three channels, with its gap

/// What is known of a program when it is compiled.
template <std::size_t lane_sums_, std::size_t reach_, std::size_t window_steps_, std::size_t steps_>
struct Shape {
    static constexpr std::size_t lane_sums = lane_sums_;
    static constexpr std::size_t reach = reach_;
    static constexpr std::size_t window_steps = window_steps_;
    static constexpr std::size_t steps = steps_;  ///< 0: any number
    /// Whether blocks whose registers have the same weights go a way of their own.
    static constexpr bool may_share =
        blockBytes != 64 && lane_sums == 1 && window_steps == 1 && steps == 0;
};

/// The loops that are compiled, as `Shape`s: those that were measured to pay, in order of
/// preference where they cost the same.
template <class... Shapes>
struct Loops {};

#if HWY_TARGET == HWY_AVX3_DL

// Taps are bytes. A weight that doesn't fit a byte is 256 * high + low, and the products of each
// part have a sum of their own.

constexpr bool splitsWeights = true;
constexpr std::size_t laneTaps = 4;
constexpr std::size_t blockRegisters = 1;  ///< of sums, that are stored together
/// Eight lanes are enough for reductions to about a thirtieth.
using CompiledLoops =
    Loops<Shape<1, 1, 0, 1>, Shape<1, 1, 0, 2>, Shape<1, 2, 0, 2>, Shape<1, 2, 0, 3>,
          Shape<2, 2, 0, 2>, Shape<1, 2, 0, 0>, Shape<1, 1, 1, 0>, Shape<2, 1, 1, 0>,
          Shape<4, 1, 1, 0>, Shape<8, 1, 1, 0>>;

inline bool fitsParts(TapAxis const& axis) {
    constexpr int largest = 127 * 256 + 127;
    return std::all_of(axis.weights.begin(), axis.weights.end(),
                       [](std::int16_t weight) { return weight <= largest; });
}

struct SplitWeight {
    std::int8_t high;
    std::int8_t low;
};

inline SplitWeight splitWeight(std::int16_t weight) {
    auto const low = static_cast<std::int8_t>(weight);
    return {static_cast<std::int8_t>((weight - low) / 256), low};
}

inline bool needsHighParts(TapAxis const& axis) {
    return std::any_of(axis.weights.begin(), axis.weights.end(),
                       [](std::int16_t weight) { return splitWeight(weight).high != 0; });
}

constexpr std::size_t placeOfTap(std::size_t lane, std::size_t tap) {
    return laneTaps * lane + tap;
}

inline void putWeight(std::int16_t weight, bool has_high, std::uint8_t* tables) {
    SplitWeight const split = splitWeight(weight);
    *tables = static_cast<std::uint8_t>(split.low);
    if (has_high) {
        tables[blockBytes] = static_cast<std::uint8_t>(split.high);
    }
}

template <bool has_high>
struct Sums {
    V32 low;
    V32 high;

    static HWY_INLINE Sums none() { return {hn::Zero(BlockTagS32()), hn::Zero(BlockTagS32())}; }

    HWY_INLINE void add(V8 taps, std::uint8_t const* weights) {
        Tag8 const d;
        low = AddByteProducts(low, taps, hn::Load(d, weights));
        if (has_high) {
            high = AddByteProducts(high, taps, hn::Load(d, weights + blockBytes));
        }
    }

    HWY_INLINE V32 total() const { return has_high ? hn::Add(low, hn::ShiftLeft<8>(high)) : low; }
};

/// @param sum sum(k) is the k-th register of sums
template <class Sum>
HWY_INLINE void storeBlock(Sum const& sum, bool has_gaps, std::uint8_t* to) {
    V32 const sums = sum(0);
    if (has_gaps) {
        StoreThreeLanes(sums, to);
    } else {
        StoreLaneBytes(sums, to);
    }
}

#else

// Taps are words.

constexpr bool splitsWeights = false;
constexpr std::size_t laneTaps = 2;
constexpr std::size_t blockRegisters = 4;
/// With four lanes a window has one entry.
using CompiledLoops =
    Loops<Shape<1, 1, 0, 1>, Shape<1, 1, 0, 2>, Shape<2, 1, 0, 2>, Shape<1, 1, 1, 0>,
          Shape<1, 1, 2, 0>, Shape<1, 1, 1, 2>, Shape<1, 1, 1, 3>, Shape<1, 1, 1, 4>,
          Shape<1, 1, 2, 3>, Shape<1, 1, 2, 4>, Shape<2, 1, 1, 0>, Shape<4, 1, 1, 0>>;

inline bool fitsParts(TapAxis const& /*axis*/) {
    return true;
}

inline bool needsHighParts(TapAxis const& /*axis*/) {
    return false;
}

constexpr std::size_t placeOfTap(std::size_t lane, std::size_t tap) {
    return 2 * WordPlace(lane, tap);
}

inline void putWeight(std::int16_t weight, bool /*has_high*/, std::uint8_t* tables) {
    std::memcpy(tables, &weight, sizeof weight);
}

template <bool has_high>
struct Sums {
    V32 sums;

    static HWY_INLINE Sums none() { return {hn::Zero(BlockTagS32())}; }

    HWY_INLINE void add(V8 words, std::uint8_t const* weights) {
        sums = AddPairProducts(sums, words, hn::Load(Tag8(), weights));
    }

    HWY_INLINE V32 total() const { return sums; }
};

/// @param sum sum(k) is the k-th register of sums
template <class Sum>
HWY_INLINE void storeBlock(Sum const& sum, bool has_gaps, std::uint8_t* to) {
    V8 const bytes = PackSums(sum(0), sum(1), sum(2), sum(3));
    if (has_gaps) {
        StoreThreeOfFour(to, bytes);
    } else {
        hn::StoreU(bytes, Tag8(), to);
    }
}

#endif

#endif

}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
