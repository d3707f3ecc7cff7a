// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Arithmetic on byte counts that fails instead of wrapping.

#pragma once

#include <cstdint>

#include "ox_core/ox_impl_place.h"

namespace ox::impl {

/// Rows start at multiples of this, a cache line, unless the caller asks for another alignment.
constexpr std::uint64_t defaultAlignment = 64;

/// No frame, ring or buffer is larger, so that sums of two such counts stay in range.
constexpr std::uint64_t maxBytes = std::uint64_t{1} << 62;

[[noreturn]] inline void throwTooLarge() {
    Place{"src/ox_core/ox_impl_sizes"}.fail({StatusCapacityExceeded, "checkBytes"},
                                            "Size is too large.");
}

inline std::uint64_t checkBytes(std::uint64_t bytes, bool wrapped) {
    if (wrapped || bytes > maxBytes) {
        throwTooLarge();
    }
    return bytes;
}

inline std::uint64_t addBytes(std::uint64_t a, std::uint64_t b) {
    std::uint64_t sum = 0;
    bool const wrapped = __builtin_add_overflow(a, b, &sum);
    return checkBytes(sum, wrapped);
}

inline std::uint64_t multiplyBytes(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    bool const wrapped = __builtin_mul_overflow(a, b, &product);
    return checkBytes(product, wrapped);
}

/// The next multiple of `unit`, which needn't be a power of two.
inline std::uint64_t roundUpBytes(std::uint64_t bytes, std::uint64_t unit) {
    return multiplyBytes(bytes / unit + (bytes % unit != 0 ? 1U : 0U), unit);
}

}  // namespace ox::impl
