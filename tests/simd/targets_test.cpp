// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which instruction sets tests run on, and that ctest has an entry for each.
#include "simd/simd_targets.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "simd/kernels/kernels.h"
#include "support/test_target.h"

namespace ox::test {
namespace {

using Names = std::set<std::string>;

Names namesOf(std::vector<char const*> const& targets) {
    return {targets.begin(), targets.end()};
}

// With a single one, programs need no entries beside their tests'.
TEST(Targets, HaveAnEntryOfEachProgram) {
    std::istringstream registered(OX_TEST_TARGETS);
    Names entries;
    for (std::string name; registered >> name;) {
        entries.insert(name);
    }
    Names const compiled = namesOf(Simd::Neon::CompiledTargets());
    ASSERT_FALSE(compiled.empty());
    EXPECT_EQ(entries, compiled.size() == 1 ? Names{} : compiled)
        << "OX_TEST_TARGETS of tests/CMakeLists.txt";
}

TEST(Targets, AreAmongThoseCompiled) {
    Names const compiled = namesOf(Simd::Neon::CompiledTargets());
    ASSERT_FALSE(testTargets().empty());
    for (char const* const target : testTargets()) {
        EXPECT_EQ(compiled.count(target), 1U) << target;
    }
}

// One that is taken hides those that are better.
TEST(Targets, StartWithTheOneInUse) {
    EXPECT_STREQ(Simd::Neon::Targets().front(), testTargets().front());
    for (char const* const target : testTargets()) {
        UsedTarget const used(target);
        EXPECT_STREQ(Simd::Neon::Targets().front(), target);
    }
    EXPECT_STREQ(Simd::Neon::Targets().front(), testTargets().front());
}

TEST(Targets, OnesOwnIsBackAfterOthers) {
    auto* const before = Simd::Neon::routines().SwapRedBlue;
    { UsedTarget const used(Simd::Neon::CompiledTargets().back()); }
    EXPECT_EQ(Simd::Neon::routines().SwapRedBlue, before);
}

TEST(Targets, AreTakenSkippedOrRefused) {
    std::vector<char const*> const compiled{"best", "middle", "least"};
    std::vector<char const*> const supported{"middle", "least"};
    EXPECT_EQ(chooseTarget("middle", compiled, supported), TargetChoice::Taken);
    EXPECT_EQ(chooseTarget("least", compiled, supported), TargetChoice::Taken);
    EXPECT_EQ(chooseTarget("best", compiled, supported), TargetChoice::Lacking);
    for (char const* const unknown : {"", "other", "BEST", "middle "}) {
        EXPECT_EQ(chooseTarget(unknown, compiled, supported), TargetChoice::Unknown) << unknown;
    }
    EXPECT_EQ(takeTestTarget("other"), TargetChoice::Unknown);
}

}  // namespace
}  // namespace ox::test
