// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Figures of the processor and the layer's thread count.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Simd {

/// For kernels that block their work by cache size; nothing reads it yet.
struct ProcessorFigures {
    std::uint64_t socketCount = 0;  ///< 0 if unknown
    std::uint64_t coreCount = 0;    ///< 0 if unknown
    std::uint64_t threadCount = 0;
    std::uint64_t l1CacheBytes = 0;
    std::uint64_t l2CacheBytes = 0;
    std::uint64_t l3CacheBytes = 0;
};

/// The figures of this processor. Filled on the first call, which starts `lscpu`: nothing is
/// started when the library is loaded.
ProcessorFigures const& processorFigures();

/// Threads that the hardware runs at once; 1 if unknown.
std::size_t hardwareThreads();

/// Replaces the hardware's number of threads by `count`; 0 restores it. For tests, and not while
/// kernels run.
void UseHardwareThreads(std::size_t count);

/// How many threads work may be spread over; 1 at first.
std::size_t GetParallelThreads();

/// Sets the number of threads to `wish`, or to the hardware's if that is less; 0 counts as 1.
/// @return what was stored
std::size_t SetParallelThreads(std::size_t wish);

}  // namespace Simd
