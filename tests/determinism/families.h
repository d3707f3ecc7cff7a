// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The families of operations. Each draws its inputs from a seed of its own.
#pragma once

#include "determinism/table.h"

namespace ox::test {

void digestColours(Table& table);
void digestScalings(Table& table);
void digestFilters(Table& table);
void digestTensors(Table& table);
void digestWarps(Table& table);
void digestNumbers(Table& table);

// Of private classes, where the program has them; otherwise nothing.
void digestPrivate(Table& table);

// Takes the instruction set that OX_TEST_TARGET names.
// @return 0, or the status that the program ends with
int takeTarget();

}  // namespace ox::test
