// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Which instruction sets vector code is compiled for; included before Highway, whose choices it
/// makes.

#pragma once

#if defined(__aarch64__)

// NEON alone, which every such processor has: nothing is chosen, and no library needed, at run
// time.
#define HWY_COMPILE_ONLY_STATIC
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)

#else

// AVX3_DL or AVX2, chosen at run time. Processors between the two take AVX2: without permutations
// of bytes, wider registers gain little here. Processors below AVX2 take plain loops.
#define HWY_WANT_AVX3_DL
#define HWY_BROKEN_EMU128 1
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3)

#endif
