// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the program has on the heap.

#pragma once

namespace ox::benchmarks {

/// Counted at the C library's door, through which `operator new` goes as well; of a program of one
/// thread.
struct HeapUse {
    long long bytes = 0;
    long long most_bytes = 0;  ///< since the last `forgetMostBytes`
    long long blocks = 0;      ///< ever taken
};

HeapUse const& heapUse();

void forgetMostBytes();

}  // namespace ox::benchmarks
