// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// clang-format off
/// @file
/// Operations that Highway lacks: the only place with raw intrinsics. Each has the same meaning on
/// every instruction set that has it.
///
/// | operation | does |
/// |---|---|
/// | `LoadThree`, `StoreThree` | a block of packed pixels as three registers, in order, and back |
/// | `StoreThreeSame` | stores each byte three times |
/// | `LoadTwo` | a block of pairs of bytes as two registers, in order |
/// | `StoreThreePixels` | clamps 16-bit lanes of even and of odd pixels to bytes and stores the block |
/// | `TruncateFour` | four registers of floats from 0 to 255, truncated to the bytes of a block; not on NEON |
/// | `SaturateFour` | the same of any floats, which are clamped, and a NaN is 0; on NEON alone |
/// | `StoreLaneBytes` | clamps lanes to bytes and stores them |
/// | `LowBytesOfFour` | four registers of floats, truncated to 0 to 2^32 - 1, as the low bytes; a NaN's is 0 |
/// | `MulShift13` | floor(v * factor / 2^13), for lanes of at most 256 |
/// | `AddWhereGreater` | sum + (a > b) |
/// | `LowerHalf`, `UpperHalf`, `Average` | half a block of pixels, or means of two by two, for: |
/// | `WeightedBytes` | the low bytes of (weights * pixel + 2^13) >> 14; also of a block |
/// | `WeightedPairs` | the bytes of two such sums, in pairs |
/// | `LowerColours`, `UpperColours` | half a block of pixels, for: |
/// | `SumModulo` | weighted sums of bytes, modulo 2^16 |
/// | `HighBytes` | the high bytes of two registers of words, in order |
/// | `HighPairs` | the same, in pairs |
/// | `PairSums`, `AddPairSums` | sums of neighbouring bytes as words, and added to others |
/// | `RoundedBytes` | (v + (1 << shift - 1)) >> shift, of words that leave bytes; on x86-64 by 8 alone |
/// | `StoreDoubled` | `doubledBytes` bytes by 12 and 4, and by 4 and 12, with the next pixel's; by turns |
/// | `FloorMean` | (a + b) >> 1, of bytes |
/// | `BlendBy64ths` | (a * (64 - weight) + b * weight) >> 6, of bytes |
/// | `PermuteWindow` | the bytes at the given places of a window |
/// | `PermuteTwoWindows` | the bytes at the given places of two windows; not on AVX2 |
/// | `MulAddWords` | sums of products of neighbours, of signed words |
/// | `MulAddWindowPairs` | sums of products of neighbours, bytes by weights below 128 |
/// | `NoWordSums`, `AddWordProducts` | `WordSums` and products of words that are added to them |
/// | `TotalOf` | the lanes of `WordSums`, each of two neighbouring products |
/// | `AddPairs` | sums of neighbours of both registers, in order within windows |
/// | `WordPlace`, `AddPairProducts` | products of two words a lane, added to it; not on AVX3_DL, as are: |
/// | `PackSums` | lanes of four registers, clamped to bytes; 16 bytes of each into 16 bytes |
/// | `PackMeans` | sums of four registers by a power of two, rounded, placed as by `PackSums` |
/// | `AddHalves` | sums of neighbouring pairs of lanes of both registers, in order within windows |
/// | `StoreSums` | stores `FourSums` in the order of a block's bytes |
/// | `StoreThreeOfFour` | stores the first three of each four bytes |
/// | `NoFourSums`, `AddTwoRows` | `FourSums` and two weighted rows of a block, added to them |
/// | `AddRow` | the same of one row |
/// | `WidenRow`, `AddBytes` | a block as `RowWords`, and a block added to them |
/// | `AddWords` | `FourSums` and weighted words of at most 2^15 - 1, added to them |
/// | `BytesOf` | `FourSums` shifted and clamped to bytes |
/// | `Differences` | bytes less a number, as `TwoWords`; only NEON has this and all down to `Permute`: |
/// | `PackWords` | words clamped to bytes, in order |
/// | `WideProducts`, `AddWideProducts` | products of words, and added to others |
/// | `WeighThree` | sums of three interleaved channels by weights, as `ThreeSums` |
/// | `WeightedYuv` | (factors * (y, u, v), less their zeros, + 2^(shift - 1)) >> shift, clamped to bytes |
/// | `RoundedHighWords` | (a + b + 2^15) >> 16, of such sums |
/// | `AddThreefold` | sum + 3 * v, of words |
/// | `Permute` | the bytes of each period at a table's places; not on NEON, as are: |
/// | `LoadPeriods`, `StorePeriods` | periods that overlap by a byte in memory; the later one wins |
/// | `AddByteProducts` | adds products of four unsigned and signed bytes; only AVX3_DL has this and: |
/// | `PermuteTwo` | the lanes at the given places of two registers |
/// | `StoreThreeLanes` | clamps all but each fourth lane to bytes and stores them |
/// | `LoadAll`, `LookUp` | 256 bytes as `AllBytes`, and the bytes at the given places of them |

// clang-format on

// Included once per instruction set, so the guard is a toggle.
#if defined(OX_VECTOR_OPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_VECTOR_OPS_INL_H
#undef OX_VECTOR_OPS_INL_H
#else
#define OX_VECTOR_OPS_INL_H
#endif

#include "vector/block-inl.h"
#include "vector/split.h"

// The files are included here alone, each on top of those before it.
#if HWY_TARGET == HWY_AVX3_DL
#include "vector/ops_avx3_dl-inl.h"
#elif HWY_TARGET == HWY_AVX2
#include "vector/ops_avx2-inl.h"
#elif HWY_TARGET == HWY_NEON
#include "vector/ops_neon-inl.h"
#include "vector/ops_neon_area-inl.h"
#include "vector/ops_neon_weights-inl.h"
#endif
#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX2
#include "vector/ops_x86-inl.h"
#include "vector/ops_x86_doubled-inl.h"
#endif

#endif  // toggle
