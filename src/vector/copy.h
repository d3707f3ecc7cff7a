// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Copies of many bytes.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ox::vector {

/// Copies in pieces of a part of the second-level cache: memcpy has a quicker way up to about that
/// size than beyond it.
inline void copyBytes(std::uint8_t const* src, std::size_t count, std::uint8_t* dst) {
    constexpr std::size_t piece = std::size_t{1} << 18;
    for (std::size_t done = 0; done < count; done += piece) {
        std::memcpy(dst + done, src + done, std::min(piece, count - done));
    }
}

}  // namespace ox::vector
