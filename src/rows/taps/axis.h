// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Sums of weighted pixels, along a row and across rows: how an axis is described and compiled, and
/// the routines.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vector/windows.h"

namespace ox::rows {

/// Where the taps of a destination pixel are.
struct TapStart {
    std::uint16_t first;    ///< source pixel
    std::uint16_t weights;  ///< row of weights
};

/// How a plane is resampled along its rows.
struct TapAxis {
    std::vector<TapStart> starts;       ///< of each destination pixel
    std::vector<std::int16_t> weights;  ///< rows of `taps` weights; unused ones are 0
    std::size_t taps = 0;               ///< positive
    int shift = 0;                      ///< log2 of the weights' unit
    /// Whether results are the low bytes of what doesn't fit a byte, in place of a clamped one.
    bool keeps_low_bytes = false;

    std::int16_t* weightRow(std::size_t row) { return weights.data() + row * taps; }
    std::int16_t const* weightRow(std::size_t row) const { return weights.data() + row * taps; }
};

/// What a source row is made of.
struct TapRow {
    std::size_t channels;  ///< interleaved, 1 to 4; a tap is a sample of its own channel
    std::size_t pixels;
};

struct TapProgram;

/// sum >> shift of each entry, clamped to a byte, or its low byte. Sums wrap in 32 bits. Taps
/// behind the row add nothing.
/// @param src `src_bytes` of the program
/// @param dst `dst_bytes` of the program; the bytes behind the entries have no meaning
using RunTaps = void(TapProgram& program, std::uint8_t const* src, std::uint8_t* dst);

/// The program that an axis is compiled to.
struct TapProgram {
    RunTaps* run = nullptr;
    std::vector<std::uint32_t> offsets;  ///< of each register: source bytes, byte in `tables`
    std::vector<vector::RegisterBytes> tables;
    std::vector<std::uint8_t> shares_weights;  ///< of each block: whether its registers' are equal
    std::size_t steps = 0;                     ///< of each sum
    std::size_t window_bytes = 0;
    std::size_t window_steps = 0;    ///< after which the window moves on; 0: all have one window
    std::size_t lane_sums = 1;       ///< partial sums of an entry in a register
    std::size_t channels = 1;        ///< interleaved
    std::size_t entries = 0;         ///< of the result: its samples, and gaps
    std::size_t whole_blocks = 0;    ///< leading blocks of results whose windows end in the row
    bool has_high = false;           ///< whether a weight doesn't fit a byte
    bool has_gaps = false;           ///< whether each pixel has one entry more, not stored
    std::int32_t kept_bits = -1;     ///< of a sum, before it is clamped
    std::size_t src_bytes = 0;       ///< of the source row
    std::size_t tail_first = 0;      ///< the row's byte that `tail` begins with
    std::vector<std::uint8_t> tail;  ///< room for a copy of the row's end, and zeros behind it
    std::size_t dst_bytes = 0;       ///< written
    int shift = 0;
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileTaps = bool(TapAxis const& axis, TapRow row, TapProgram& program);

/// The source rows of a destination row, and their weights.
struct RowTaps {
    std::uint8_t const* const* rows;
    std::int16_t const* weights;
    std::size_t count;
    int shift;
};

/// sum >> shift of each column, clamped to a byte. Sums wrap in 32 bits; without rows they are 0.
using SumRows = void(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst);

/// No entry is ever null.
struct TapRoutines {
    CompileTaps* compile_taps;
    SumRows* sum_rows;  ///< of any number of bytes
};

/// The plain loop for rows.
SumRows sumPlainRows;

/// Enters the plain routines, which have no programs.
void takePlainTapRoutines(TapRoutines& routines);

// Each enters the vector routines of one source, for the instruction set in use, if it has any.
void takeTapColumnRoutines(TapRoutines& routines);
void takeTapRowRoutines(TapRoutines& routines);

}  // namespace ox::rows
