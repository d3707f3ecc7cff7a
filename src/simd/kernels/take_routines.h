/// @file
/// What each source of vector routines puts into the table, once per instruction set.

#pragma once

#include "simd/kernels/neon.h"

namespace Simd::Neon {

// Each puts in the routines of one source for the best instruction set of this processor, and none
// where that has no vector code.
void takeBgrRoutines(Routines& routines);
void takeBgrToYuvRoutines(Routines& routines);
void takeFloatRoutines(Routines& routines);
void takeYuvToBgrRoutines(Routines& routines);

}  // namespace Simd::Neon
