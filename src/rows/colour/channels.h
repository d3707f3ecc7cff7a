// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

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

/// Channel c of three channels becomes the floats of planes[c]. A null plane gets nothing.
void splitToFloats(std::uint8_t const* row, std::size_t pixels, std::uint8_t* const* planes);

}  // namespace ox::rows
