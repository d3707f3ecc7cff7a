// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Digests the results of every operation on pictures from fixed seeds: `ox_determinism` prints a
// table, `ox_determinism FILE...` compares with the tables of the files, taken together.

#include <cstdio>

#include "determinism/families.h"

int main(int count, char** arguments) {
    using namespace ox::test;
    if (int const status = takeTarget(); status != 0) {
        return status;
    }
    Table table;
    digestColours(table);
    digestScalings(table);
    digestFilters(table);
    digestTensors(table);
    digestWarps(table);
    digestNumbers(table);
    digestPrivate(table);
    if (!table.sort()) {
        return 2;
    }
    if (count < 2) {
        table.print(stdout);
        return 0;
    }
    Table expected;
    for (int i = 1; i < count; ++i) {
        if (!expected.read(arguments[i])) {
            std::fprintf(stderr, "ox_determinism: '%s' is no such table.\n", arguments[i]);
            return 2;
        }
    }
    if (!expected.sort()) {
        return 2;
    }
    int const differences = table.compare(expected);
    std::printf("%zu operations, %d differ\n", table.size(), differences);
    return differences == 0 ? 0 : 1;
}
