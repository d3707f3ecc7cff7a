// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The heap beside the frames.

#pragma once

namespace ox::benchmarks {

/// Prints what ways from an 8K NV12 frame to a 4K BGR24 frame take from the heap beside the two:
/// bytes that they go on to hold and the most at a time, and blocks of the first frame and of later
/// ones.
void printMemory();

}  // namespace ox::benchmarks
