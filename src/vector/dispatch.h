// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Which instruction set vector code runs on: one choice, which every table of routines follows.

#pragma once

#include <vector>

namespace ox::vector {

/// Names of the instruction sets that vector code was compiled for, best first; "SCALAR", the last
/// on x86-64, and "plain" stand for loops without vector code.
std::vector<char const*> compiledTargets();

/// The compiled instruction sets that this processor has, best first. After `useTarget`, the list
/// begins with the chosen one.
std::vector<char const*> targets();

/// Switches to the named instruction set, or back to the best one for null. For tests and
/// benchmarks; not while rows or planes are being processed. Objects that are armed already may
/// keep the routines that they chose.
void useTarget(char const* name);

/// A function that each later `useTarget` calls. The object must outlive all these calls.
struct TargetFollower {
    void (*refresh)();
    TargetFollower* next = nullptr;
};
void followTarget(TargetFollower& follower);

// Entries of tables without vector code: one for compiling a program, one for running it.
inline constexpr auto noProgram = [](auto...) { return false; };
inline constexpr auto neverRun = [](auto...) {};

/// The routines of the instruction set in use. `find` looks them up.
template <class Routines, Routines (*find)()>
class RoutineTable {
  public:
    static Routines& get() {
        static RoutineTable table;
        return table._routines;
    }

  private:
    RoutineTable() { followTarget(_follower); }

    Routines _routines = find();
    TargetFollower _follower{[] { get() = find(); }};
};

}  // namespace ox::vector
