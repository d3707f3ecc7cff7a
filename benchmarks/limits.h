// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the library wants to reach: times or instructions over those of the best other library.

#pragma once

#include <optional>
#include <string>

#include "operation.h"

namespace ox::benchmarks {

/// @param operation its name; some operations have a limit of their own
/// @return nothing where none is set
std::optional<double> limitOf(Family family, std::string const& operation, std::string const& road);

/// The geometric mean over all operations.
double meanLimitOf(std::string const& road);

/// The same of instructions on AArch64, for every operation.
double instructionLimitOf(std::string const& road);
double meanInstructionLimitOf(std::string const& road);

}  // namespace ox::benchmarks
