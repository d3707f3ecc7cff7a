// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the benchmark's own options say.

#pragma once

#include <string>
#include <vector>

#include "ox_core/ox_geometry.h"

namespace ox::benchmarks {

struct Options {
    std::string directory;    ///< of what is written
    std::string target;       ///< instruction set; empty: the best one
    std::vector<Size> sizes;  ///< empty: the usual ones
    std::vector<char*> rest;  ///< Google Benchmark's, behind the program's name
};

/// @return false after a message, if an argument isn't understood
bool readOptions(int count, char** arguments, Options& options);

}  // namespace ox::benchmarks
