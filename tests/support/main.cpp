// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The entry of the test programs: GoogleTest's, on the instruction set that OX_TEST_TARGET names.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "support/test_target.h"

namespace {

constexpr int skipped = 77;  // SKIP_RETURN_CODE of the programs' entries in ctest

using ox::test::TargetChoice;

// 0, or the status to end with. Standard output is what ctest reads the names of tests from.
int statusOf(TargetChoice choice, char const* target) {
    switch (choice) {
        case TargetChoice::Taken:
            std::fprintf(stderr, "On %s.\n", target);
            return 0;
        case TargetChoice::Lacking:
            std::fprintf(stderr, "Skipped: this processor lacks %s.\n", target);
            return skipped;
        default:
            std::fprintf(stderr, "OX_TEST_TARGET: nothing is compiled for '%s'.\n", target);
            return 1;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (char const* const target = std::getenv("OX_TEST_TARGET"); target != nullptr) {
        if (std::getenv("OX_TEST_UNLESS_BEST") != nullptr && ox::test::isBestTarget(target)) {
            std::fprintf(stderr, "Skipped: %s is what runs without a choice.\n", target);
            return skipped;
        }
        int const status = statusOf(ox::test::takeTestTarget(target), target);
        if (status != 0) {
            return status;
        }
    }
    testing::InitGoogleTest(&argc, argv);  // makes the tests that go over instruction sets
    return RUN_ALL_TESTS();
}
