/// @file
/// The routines of warps, of one instruction set.

#pragma once

#include "simd/warps/columns.h"

namespace Simd::Neon {

/// A new object has the scalar routines.
struct WarpRoutines {
    NearestOffsets* findNearestOffsets = Base::FindNearestOffsets;
    BilinearPositions* findBilinearPositions = Base::FindBilinearPositions;
    BlendTaps* blendTaps = Base::BlendWarpTaps;
};

/// The routines of the instruction set in use; see vector/dispatch.h.
WarpRoutines const& warpRoutines();

/// Enters the vector routines of the instruction set in use, if it has any.
void takeWarpRoutines(WarpRoutines& routines);

}  // namespace Simd::Neon
