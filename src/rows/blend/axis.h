/// @file
/// Two samples blended, along a row and across rows: how an axis is described and compiled, and the
/// routines.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ox::rows {

/// The two source pixels of a destination pixel. `left` and `right` never fall from pixel to pixel.
struct PixelPair {
    std::int32_t left;
    std::int32_t right;    ///< the next one, or `left` itself
    std::uint16_t weight;  ///< of `right`, of 2^16
};

/// How a row of bytes is blended.
struct BlendAxis {
    std::vector<PixelPair> pixels;  ///< of the result
    std::size_t channels = 0;       ///< 1 to 4
    std::size_t row_bytes = 0;      ///< of the source
};

/// The pairs of bytes that a step takes from its windows, and their weights.
struct alignas(64) BlendStep {
    std::array<std::uint8_t, 64> places;
    std::array<std::uint16_t, 32> weights;  ///< of 2^16, or pairs of bytes of 64ths
};

struct BlendProgram;

/// left + ((right - left) * weight >> 16) of each entry. Nothing is written behind the last entry.
using RunBlend = void(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst);

/// The program that an axis is compiled to.
struct BlendProgram {
    RunBlend* run = nullptr;
    std::vector<std::uint32_t> offsets;  ///< of each window: its first byte, its first entry
    std::vector<BlendStep> steps;
    std::size_t whole_steps = 0;  ///< leading steps whose stores end inside the result
    std::size_t entries = 0;      ///< of the result: its samples
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileBlend = bool(BlendAxis const& axis, BlendProgram& program);

/// upper + ((lower - upper) * weight >> 16) of each sample.
using BlendRows = void(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                       std::size_t samples, std::uint8_t* dst);

/// None is ever null.
struct BlendRoutines {
    CompileBlend* compile_blend;
    BlendRows* blend_rows;  ///< of bytes, any number of them
};

/// The plain loop for rows of bytes.
BlendRows blendPlainRows;

/// Enters the plain routines, which have no programs.
void takePlainBlendRoutines(BlendRoutines& routines);

/// Enters the vector routines of the instruction set in use, if it has any.
void takeBlendRoutines(BlendRoutines& routines);

}  // namespace ox::rows
