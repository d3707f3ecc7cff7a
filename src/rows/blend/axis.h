/// @file
/// Two samples blended, along a row and across rows.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ox::rows {

/// The two source pixels of a destination pixel; places never fall.
struct PixelPair {
    std::int32_t left;
    std::int32_t right;    ///< the next one, or `left` itself
    std::uint16_t weight;  ///< of `right`, of 2^16
};

/// A row of bytes and what it is blended to.
struct BlendAxis {
    std::vector<PixelPair> pixels;  ///< of the result
    std::size_t channels = 0;       ///< 1 to 4
    std::size_t row_bytes = 0;      ///< of the source
};

/// The pairs that come out of one window.
struct alignas(64) BlendStep {
    std::array<std::uint8_t, 64> places;
    std::array<std::uint16_t, 32> weights;  ///< as they are, or two bytes where they are 64ths
};

/// What an instruction set makes of an axis.
struct BlendProgram {
    std::vector<std::uint32_t> offsets;  ///< of each step: its window, its first entry
    std::vector<BlendStep> steps;
    bool of_64 = false;        ///< whether all weights are whole 64ths
    std::size_t row_room = 0;  ///< bytes of a row that is written, with room behind
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileBlend = bool(BlendAxis const& axis, BlendProgram& program);

/// left + ((right - left) * weight >> 16) of each entry.
/// @param dst `row_room` bytes
using BlendColumns = void(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst);

/// upper + ((lower - upper) * weight >> 16) of each byte.
/// @param bytes at least `Routines::least_row_bytes`
using BlendRows = void(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                       std::size_t bytes, std::uint8_t* dst);

}  // namespace ox::rows
