// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The instruction sets that tests run on.
//
// A test runs on the best one of this processor, and goes over all of them where it can tell them
// apart. With OX_TEST_TARGET in the environment a whole program runs on the one that it names, and
// no test leaves it. So tests take instruction sets by `UsedTarget` alone, never by
// `Simd::Neon::UseTarget`, which knows only the best to go back to.
#pragma once

#include <string>
#include <vector>

#include "simd/simd_targets.h"

namespace ox::test {

enum class TargetChoice { Taken, Lacking, Unknown };

// What comes of a wish for an instruction set: the vector routines may be compiled for it without
// this processor having it.
TargetChoice chooseTarget(std::string const& name, std::vector<char const*> const& compiled,
                          std::vector<char const*> const& supported);

// Whether it is the one that this processor takes by itself.
bool isBestTarget(std::string const& name);

// Runs the program on an instruction set. If it isn't taken, nothing changes.
TargetChoice takeTestTarget(std::string const& name);

// Those that tests go over: the program's own, or all that this processor has, best first. The
// first of them is the one that tests run on.
std::vector<char const*> const& testTargets();

inline bool hasVectors(std::string const& target) {
    return target != "plain" && target != "SCALAR";
}

// Runs an instruction set while it lives, and behind it the tests' own. Choosing one is slow.
class UsedTarget {
  public:
    explicit UsedTarget(char const* name) : _own(testTargets().front()) {
        Simd::Neon::UseTarget(name);
    }
    UsedTarget(UsedTarget const&) = delete;
    UsedTarget& operator=(UsedTarget const&) = delete;
    ~UsedTarget() { Simd::Neon::UseTarget(_own); }

  private:
    char const* _own;
};

}  // namespace ox::test
