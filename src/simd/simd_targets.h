// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The instruction sets of vector code, of kernels and of the pipeline's rows, for tests and
/// benchmarks: what vector/dispatch.h has, by the kernel layer's names.

#pragma once

#include <vector>

namespace Simd::Neon {

std::vector<char const*> CompiledTargets();
std::vector<char const*> Targets();
void UseTarget(char const* name);

}  // namespace Simd::Neon
