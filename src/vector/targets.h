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

// AVX3_DL and AVX2 at run time. The processors between them take AVX2: without permutations of
// bytes, wider registers gain little here. What is below takes plain loops, with every compiler.
#define HWY_WANT_AVX3_DL
#define HWY_BROKEN_EMU128 1
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3)

#endif
