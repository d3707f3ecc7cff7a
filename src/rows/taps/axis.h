/// @file
/// Sums of weighted pixels, along a row and across rows: how an axis is described and compiled, and
/// the routines.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ox::rows {

/// Where the taps of a destination pixel are.
struct TapStart {
    std::uint16_t first;    ///< source pixel
    std::uint16_t weights;  ///< row of them
};

/// How a plane is resampled along its rows.
struct TapAxis {
    std::vector<TapStart> starts;       ///< of each destination pixel
    std::vector<std::int16_t> weights;  ///< rows of `taps`; zeros where no pixel takes one
    std::size_t taps = 0;               ///< positive
    int shift = 0;                      ///< log2 of the weights' unit

    std::int16_t* weightRow(std::size_t row) { return weights.data() + row * taps; }
    std::int16_t const* weightRow(std::size_t row) const { return weights.data() + row * taps; }
};

struct alignas(64) RegisterBytes {
    std::array<std::uint8_t, 64> bytes;
};

/// What a source row is made of.
struct TapRow {
    std::size_t channels;  ///< interleaved, 1 to 4; a tap is a sample of its own channel
    std::size_t pixels;
};

struct TapProgram;

/// clamp(sum >> shift) to 0 and 255; sums wrap in 32 bits. Taps behind the row add nothing.
/// @param src `src_bytes` of the program
/// @param dst `dst_bytes`, of which those behind the entries are of no use
using RunTaps = void(TapProgram const& program, std::uint8_t const* src, std::uint8_t* dst);

/// What an instruction set makes of an axis.
struct TapProgram {
    RunTaps* run = nullptr;
    std::vector<std::uint32_t> offsets;  ///< of what is read, and where weights are
    std::vector<RegisterBytes> tables;
    std::size_t steps = 0;         ///< that a sum takes
    std::size_t lane_sums = 1;     ///< partial sums of an entry in a register
    std::size_t channels = 1;      ///< interleaved
    std::size_t entries = 0;       ///< of the result: its samples
    std::size_t whole_groups = 0;  ///< leading registers of results whose windows end in the row
    bool has_high = false;         ///< whether weights are more than a byte
    std::size_t src_bytes = 0;  ///< that the source must have, zeros behind its row if that is less
    std::size_t dst_bytes = 0;  ///< that are written
    int shift = 0;
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileTaps = bool(TapAxis const& axis, TapRow row, TapProgram& program);

/// The rows that a row is summed from.
struct RowTaps {
    std::uint8_t const* const* rows;
    std::int16_t const* weights;
    std::size_t count;
    int shift;
};

/// clamp(sum >> shift) of each column, to 0 and 255; sums wrap in 32 bits. Without rows they are 0.
using SumRows = void(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst);

/// None is ever null.
struct TapRoutines {
    CompileTaps* compile_taps;
    SumRows* sum_rows;  ///< of any number of bytes
};

/// The plain loop for rows.
SumRows sumPlainRows;

/// Puts in the plain ones, which have no programs.
void takePlainTapRoutines(TapRoutines& routines);

// Each source puts in its own for the best instruction set, and none where that has no vector code.
void takeTapColumnRoutines(TapRoutines& routines);
void takeTapRowRoutines(TapRoutines& routines);

}  // namespace ox::rows
