/// @file
/// The row loop of the vertical pass of convolutional scaling.

#pragma once

#include <cstdint>

namespace ox::impl {

/// Weighted sums of rows of bytes, divided by the weights' unit, truncated and clamped to bytes.
/// Sums wrap in 32 bits.
/// @param taps how many rows and weights there are, at most `maxAperture`; without any, the sums
///        are 0
void sumRows(unsigned char const* const* rows, signed char const* weights, int taps,
             std::uint64_t bytes, unsigned char* dst);
void sumRows(unsigned char const* const* rows, short const* weights, int taps, std::uint64_t bytes,
             unsigned char* dst);

}  // namespace ox::impl
