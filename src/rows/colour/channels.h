/// @file
/// Rows of interleaved channels, taken apart and put together.

#pragma once

#include <cstddef>
#include <cstdint>

namespace ox::rows {

/// Channel c of each pixel goes to planes[c].
/// @param channels 1 to 4
void splitChannels(std::uint8_t const* row, std::size_t pixels, std::size_t channels,
                   std::uint8_t* const* planes);

/// The other way round.
void mergeChannels(std::uint8_t const* const* planes, std::size_t pixels, std::size_t channels,
                   std::uint8_t* row);

/// The first and the third of three channels change places.
void swapRedBlue(std::uint8_t const* row, std::size_t pixels, std::uint8_t* dst);

/// Each sample as three.
void repeatThrice(std::uint8_t const* row, std::size_t pixels, std::uint8_t* dst);

}  // namespace ox::rows
