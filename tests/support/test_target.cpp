// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "support/test_target.h"

#include <algorithm>

namespace ox::test {

namespace {

// Asked for before any is taken, as what is taken hides those that are better.
std::vector<char const*>& targets() {
    static std::vector<char const*> all = Simd::Neon::Targets();
    return all;
}

}  // namespace

TargetChoice chooseTarget(std::string const& name, std::vector<char const*> const& compiled,
                          std::vector<char const*> const& supported) {
    auto const isIn = [&](std::vector<char const*> const& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (!isIn(compiled)) {
        return TargetChoice::Unknown;
    }
    return isIn(supported) ? TargetChoice::Taken : TargetChoice::Lacking;
}

bool isBestTarget(std::string const& name) {
    return targets().front() == name;
}

TargetChoice takeTestTarget(std::string const& name) {
    TargetChoice const choice = chooseTarget(name, Simd::Neon::CompiledTargets(), targets());
    if (choice == TargetChoice::Taken) {
        targets() = {*std::find(targets().begin(), targets().end(), name)};
        Simd::Neon::UseTarget(targets().front());
    }
    return choice;
}

std::vector<char const*> const& testTargets() {
    return targets();
}

}  // namespace ox::test
