/// @file
/// Which instruction set vector code runs on: one choice, which every table of routines follows.

#pragma once

#include <vector>

namespace ox::vector {

/// Names of the instruction sets that vector code was compiled for, best first; "SCALAR", the last
/// on x86-64, and "plain" stand for loops without vector code.
std::vector<char const*> compiledTargets();

/// Those that this processor has. While `useTarget` has taken one, it comes first, and what is
/// better is left out.
std::vector<char const*> targets();

/// Takes the named one from now on, or the best again for null. For tests and benchmarks, and not
/// while rows or planes are on their way: what is armed may go on with what it has chosen.
void useTarget(char const* name);

/// What each later `useTarget` calls; it must live on.
struct TargetFollower {
    void (*refresh)();
    TargetFollower* next = nullptr;
};
void followTarget(TargetFollower& follower);

// In tables of routines, what stands for compiling a program where there is no vector code, and for
// running one.
inline constexpr auto noProgram = [](auto...) { return false; };
inline constexpr auto neverRun = [](auto...) {};

/// The routines of the instruction set in use, by `find`, which looks them up.
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
