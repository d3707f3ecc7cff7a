/// @file
/// Vector routines for the row loops of the pipeline: raw rows, without frames and exceptions. Each
/// gives the bytes of the plain loop that it stands in for.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ox::rows {

/// Where the taps of a destination pixel are.
struct TapStart {
    std::uint32_t source;   ///< byte of the first one in the source row
    std::uint32_t weights;  ///< index of the first of its arranged weights
};

/// What a row of pixels is summed from.
struct ColumnTaps {
    TapStart const* starts;
    std::size_t count;            ///< pixels, a multiple of `TapShape::batch`
    std::int16_t const* weights;  ///< as `arrangeWeights` leaves them, 64-byte aligned
    std::size_t steps;            ///< of each pixel
    int shift;
};

/// clamp(sum >> shift) for each channel, to 0 and 255; sums wrap in 32 bits. Up to 4 bytes behind
/// the last pixel are overwritten.
using SumColumns = void(ColumnTaps const& taps, std::uint8_t const* src, std::uint8_t* dst);

/// Arranges `count` weights for the steps of a pixel, and fills up with zeros.
using ArrangeWeights = void(std::int16_t const* weights, std::size_t count, std::int16_t* arranged);

/// How an instruction set goes about pixels of so many channels. A step takes a window of the
/// source row and multiplies the taps in it, of all channels, by a register of weights.
struct TapShape {
    SumColumns* sum;
    ArrangeWeights* arrange;
    std::size_t batch;         ///< pixels that are summed at a time
    std::size_t step_taps;     ///< taps of a step
    std::size_t step_words;    ///< arranged weights of a step
    std::size_t window_bytes;  ///< what a step reads, from its first tap on
};

/// The rows that a row is summed from.
struct RowTaps {
    std::uint8_t const* const* rows;
    std::int16_t const* weights;
    std::size_t count;  ///< positive
    int shift;
};

/// clamp(sum >> shift) of each column, to 0 and 255, for at least `least_row_bytes`; sums wrap in
/// 32 bits.
using SumRows = void(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst);

/// The routines of an instruction set; null where there is no vector code.
struct Routines {
    std::array<TapShape, 4> columns;  ///< of 1 to 4 channels
    SumRows* sum_rows;
    std::size_t least_row_bytes;
};

/// Those of the best instruction set of this processor.
Routines const& routines();

/// The same, looked up anew: for tests, which try one instruction set after another.
Routines findRoutines();

}  // namespace ox::rows
