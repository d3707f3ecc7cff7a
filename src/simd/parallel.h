// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The block runner: spreads a range over threads and waits for them.

#pragma once

#include <cstdint>
#include <functional>

namespace Simd {

/// Calls function(thread, block_begin, block_end) for consecutive blocks of the range, each on a
/// thread of its own, and waits for all of them. With one thread, or fewer than two items, it makes
/// one call on this thread for the whole range. Exceptions of `function` on other threads are lost.
/// @param block_align without effect: the range is divided evenly
/// @throws std::system_error if a thread can't be started, when those already started have ended
void Parallel(std::uint64_t begin, std::uint64_t end,
              std::function<void(std::uint64_t thread, std::uint64_t block_begin,
                                 std::uint64_t block_end)> const& function,
              std::uint64_t threads, std::uint64_t block_align);

}  // namespace Simd
