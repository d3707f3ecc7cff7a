/// @file
/// The routines of resizers, of one instruction set.

#pragma once

#include "vector/row_program.h"

namespace Simd::Neon {

struct ResizeRoutines {
    CompilePixels* compilePixels;
    CopyPixels* copyPixels;
    FillByteSamples* fillByteSamples;
    CompileBytePairs* compileBytePairs;
    BlendBytePairs* blendBytePairs;
    BlendByteRows* blendByteRows;
    CompileAreaColumns* compileAreaColumns;
    AverageAreaRow* averageAreaRow;
    CompileFloatColumns* compileFloatColumns;
    BlendFloatColumns* blendFloatColumns;
    BlendFloatPairRows* blendFloatPairRows;
    BlendFloatRows* blendFloatRows;
};

/// Those of the instruction set in use; see vector/dispatch.h.
ResizeRoutines const& resizeRoutines();

/// The same, looked up anew.
ResizeRoutines findResizeRoutines();

// Each puts in the routines of one source for the best instruction set, and none where that has no
// vector code.
void takeResizeAreaRoutines(ResizeRoutines& routines);
void takeResizeByteRoutines(ResizeRoutines& routines);
void takeResizeFloatRoutines(ResizeRoutines& routines);

}  // namespace Simd::Neon
