// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The table of the resizers' routines; their shapes and programs are beside the classes that use
/// them.
///
/// Rows are gathered by programs: lists of steps, each of which loads a window of the source row,
/// permutes it and multiplies by weights. Only the instruction set that compiled one can run it.

#pragma once

#include "simd/resizers/bilinear.h"
#include "simd/resizers/byte_area.h"
#include "simd/resizers/byte_bilinear.h"
#include "vector/gather.h"

namespace Simd::Neon {

/// The routines of one instruction set.
struct ResizeRoutines {
    ox::vector::GatherRoutines gather;
    FillByteSamples* fillByteSamples;
    CompileBytePairs* compileBytePairs;
    BlendBytePairs* blendBytePairs;
    BlendByteRows* blendByteRows;
    CompileByteArea* compileByteArea;
    AverageByteArea* averageByteArea;
    CompileFloatColumns* compileFloatColumns;
    BlendFloatColumns* blendFloatColumns;
    BlendFloatPairRows* blendFloatPairRows;
    BlendFloatRows* blendFloatRows;
};

/// Those of the instruction set in use; see vector/dispatch.h.
ResizeRoutines const& resizeRoutines();

// Each puts in the routines of one source for the best instruction set of this processor, and none
// where that has no vector code.
void takeResizeAreaRoutines(ResizeRoutines& routines);
void takeResizeByteRoutines(ResizeRoutines& routines);
void takeResizeFloatRoutines(ResizeRoutines& routines);

}  // namespace Simd::Neon
