// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/parallel.h"

#include <algorithm>
#include <thread>
#include <vector>

#include "simd/processor_figures.h"

namespace Simd {

void Parallel(std::uint64_t begin, std::uint64_t end,
              std::function<void(std::uint64_t thread, std::uint64_t block_begin,
                                 std::uint64_t block_end)> const& function,
              std::uint64_t threads, std::uint64_t /*block_align*/) {
    std::uint64_t const count = std::min<std::uint64_t>(threads, hardwareThreads());
    if (count <= 1 || end <= begin || end - begin == 1) {
        function(0, begin, end);
        return;
    }
    std::uint64_t const range = end - begin;
    std::uint64_t const block = (range - 1) / count + 1;
    // The destructor joins all threads that have started, also when another one can't start.
    std::vector<std::jthread> blocks;
    blocks.reserve(count);
    for (std::uint64_t thread = 0; thread < count && thread * block < range; ++thread) {
        std::uint64_t const block_begin = begin + thread * block;
        std::uint64_t const block_end = block_begin + std::min(block, end - block_begin);
        blocks.emplace_back([&function, thread, block_begin, block_end] {
            try {
                function(thread, block_begin, block_end);
            } catch (...) {  // nobody asks what became of a block, on purpose
            }
        });
    }
}

}  // namespace Simd
