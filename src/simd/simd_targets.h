/// @file
/// The instruction sets of the vector routines, for tests and benchmarks.

#pragma once

#include <vector>

namespace Simd::Neon {

/// Names of those that the routines were compiled for, best first; "SCALAR", the last on x86-64,
/// and "plain" stand for loops without vector code.
std::vector<char const*> CompiledTargets();

/// Those that this processor has. While `UseTarget` has taken one, it comes first, and what is
/// better is left out.
std::vector<char const*> Targets();

/// Takes the named one from now on, or the best again for null. Not while kernels run.
void UseTarget(char const* name);

}  // namespace Simd::Neon
