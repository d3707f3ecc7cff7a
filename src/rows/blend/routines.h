/// @file
/// The routines that blend two samples each, along rows and across them.

#pragma once

#include "rows/blend/axis.h"

namespace ox::rows {

struct BlendRoutines {
    CompileBlend* compile_blend;
    BlendRows* blend_rows;  ///< of bytes, any number of them
};

/// Puts in the plain ones, which have no programs.
void takePlainBlendRoutines(BlendRoutines& routines);

/// Puts in those of the best instruction set, and none where that has no vector code.
void takeBlendRoutines(BlendRoutines& routines);

}  // namespace ox::rows
