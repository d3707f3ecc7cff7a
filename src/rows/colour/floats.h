/// @file
/// Rows of floats, which needn't be aligned.

#pragma once

#include <cstddef>
#include <cstdint>

namespace ox::rows {

/// Numbers from 0 to 255. At least `Routines::least_floats`, as the other.
using BytesToFloats = void(std::uint8_t const* src, std::size_t count, std::uint8_t* floats);

/// The low byte of the number truncated to 32 bits, where it saturates. Negative numbers and NaN
/// give 0.
using FloatsToLowBytes = void(std::uint8_t const* floats, std::size_t count, std::uint8_t* dst);

}  // namespace ox::rows
