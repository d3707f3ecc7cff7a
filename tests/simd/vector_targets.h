// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which vector routines run: of each instruction set, or none.
#pragma once

#include <string>
#include <vector>

#include "simd/kernels/kernels.h"
#include "support/test_target.h"

namespace ox::test {

// The vector routines of one instruction set.
struct VectorTarget {
    std::string name;
    Simd::Neon::Routines routines;
};

// Of `testTargets`.
inline std::vector<VectorTarget> const& vectorTargets() {
    static std::vector<VectorTarget> const targets = [] {
        std::vector<VectorTarget> found;
        for (char const* const name : testTargets()) {
            UsedTarget const used(name);
            found.push_back({name, Simd::Neon::routines()});
        }
        return found;
    }();
    return targets;
}

// Switches the vector routines off while it lives.
class VectorRoutinesOff {
  public:
    VectorRoutinesOff() { Simd::Neon::KernelsEnabled = false; }
    VectorRoutinesOff(VectorRoutinesOff const&) = delete;
    VectorRoutinesOff& operator=(VectorRoutinesOff const&) = delete;
    ~VectorRoutinesOff() { Simd::Neon::KernelsEnabled = _before; }

  private:
    bool _before = Simd::Neon::KernelsEnabled;
};

}  // namespace ox::test
