/// @file
/// The routines of warps, of one instruction set.

#pragma once

#include "simd/warps/columns.h"

namespace Simd::Neon {

/// By default the scalar ones.
struct WarpRoutines {
    NearestOffsets* findNearestOffsets = Base::FindNearestOffsets;
    BilinearPositions* findBilinearPositions = Base::FindBilinearPositions;
    BlendTaps* blendTaps = Base::BlendWarpTaps;
};

/// Those of the instruction set in use; see vector/dispatch.h.
WarpRoutines const& warpRoutines();

/// Puts in those of the best instruction set, and none where that has no vector code.
void takeWarpRoutines(WarpRoutines& routines);

}  // namespace Simd::Neon
