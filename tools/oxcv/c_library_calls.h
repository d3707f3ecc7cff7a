// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Calls of C libraries that report errors by a jump.

#pragma once

#include <csetjmp>

namespace oxcv {

/// Where the error handler of a C library leaves its message, and where it jumps to.
struct CallState {
    std::jmp_buf place;
    char message[256];
};

/// Runs `calls`, which must not own anything that a jump would leak.
/// @return false if an error handler jumped
template <class Calls>
bool succeeds(CallState& state, Calls const& calls) {
    if (setjmp(state.place) != 0) {
        return false;
    }
    calls();
    return true;
}

}  // namespace oxcv
