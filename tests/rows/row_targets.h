// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The instruction sets that have vector routines for the pipeline's rows.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "rows/rows_routines.h"
#include "support/test_target.h"

namespace ox::test {

inline std::vector<std::string> vectorTargets() {
    std::vector<char const*> const& all = testTargets();
    std::vector<std::string> targets;
    std::copy_if(all.begin(), all.end(), std::back_inserter(targets), hasVectors);
    return targets;
}

// And none of them: the plain routines.
constexpr char noTarget[] = "none";

inline std::vector<std::string> targetsAndNone() {
    std::vector<std::string> targets = vectorTargets();
    targets.emplace_back(noTarget);
    return targets;
}

// A test for each of them.
class RowRoutines : public testing::TestWithParam<std::string> {
  protected:
    RowRoutines() {
        if (GetParam() == noTarget) {
            routines = rows::plainRoutines();
            return;
        }
        UsedTarget const used(GetParam().c_str());
        routines = rows::findRoutines();
    }

    rows::Routines routines{};
};

// The same, for code that takes its routines from the table.
class UsedRowRoutines : public RowRoutines {
  protected:
    UsedRowRoutines() { rows::useRoutines(routines); }
    ~UsedRowRoutines() override { rows::useRoutines(rows::findRoutines()); }
};

}  // namespace ox::test
