/// @file
/// Sums of weighted pixels, along a row and across rows.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ox::rows {

/// Where the taps of a destination pixel are.
struct TapStart {
    std::uint16_t first;   ///< source pixel
    std::uint16_t kernel;  ///< row of weights
};

/// How a plane is resampled along its rows.
struct TapAxis {
    std::vector<TapStart> starts;       ///< of each destination pixel
    std::vector<std::int16_t> weights;  ///< rows of `taps`; zeros where no pixel takes one
    std::size_t taps = 0;               ///< positive
    int shift = 0;                      ///< log2 of the weights' unit

    std::int16_t* kernel(std::size_t row) { return weights.data() + row * taps; }
    std::int16_t const* kernel(std::size_t row) const { return weights.data() + row * taps; }
};

struct alignas(64) RegisterBytes {
    std::array<std::uint8_t, 64> bytes;
};

/// What an instruction set makes of an axis.
struct TapProgram {
    std::vector<std::uint32_t> offsets;  ///< of what is read, and where weights are
    std::vector<RegisterBytes> tables;
    std::size_t steps = 0;      ///< that a sum takes
    std::size_t lane_sums = 1;  ///< partial sums of a pixel in a register
    std::size_t pixels = 0;     ///< that are written: whole registers
    std::size_t src_bytes = 0;  ///< that a source plane must have, zeros behind its pixels
    int shift = 0;
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileTaps = bool(TapAxis const& axis, TapProgram& program);

/// clamp(sum >> shift) to 0 and 255; sums wrap in 32 bits.
/// @param planes how many planes are summed alike, up to 4
/// @param src, dst a row of each, with `src_bytes` and room for `pixels` bytes
using SumTaps = void(TapProgram const& program, std::size_t planes, std::uint8_t const* const* src,
                     std::uint8_t* const* dst);

/// The rows that a row is summed from.
struct RowTaps {
    std::uint8_t const* const* rows;
    std::int16_t const* weights;
    std::size_t count;  ///< positive
    int shift;
};

/// clamp(sum >> shift) of each column, to 0 and 255; sums wrap in 32 bits.
/// @param bytes at least `Routines::least_row_bytes`
using SumRows = void(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst);

}  // namespace ox::rows
