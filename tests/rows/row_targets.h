// The instruction sets that have vector routines for the pipeline's rows.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "rows/rows_routines.h"
#include "simd/simd_targets.h"

namespace ox::test {

inline bool hasVectors(std::string const& target) {
    return target != "plain" && target != "SCALAR";
}

// Of this processor.
inline std::vector<std::string> vectorTargets() {
    std::vector<char const*> const all = Simd::Neon::Targets();
    std::vector<std::string> targets;
    std::copy_if(all.begin(), all.end(), std::back_inserter(targets), hasVectors);
    return targets;
}

// A test for each of them.
class RowRoutines : public testing::TestWithParam<std::string> {
  protected:
    RowRoutines() {
        Simd::Neon::UseTarget(GetParam().c_str());
        routines = rows::findRoutines();
        Simd::Neon::UseTarget(nullptr);
    }

    rows::Routines routines{};
};

}  // namespace ox::test
