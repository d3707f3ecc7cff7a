/// @file
/// The routines that blend two samples each, along rows and across them.

#pragma once

#include "rows/blend/axis.h"

namespace ox::rows {

struct BlendRoutines {
    CompileBlend* compile_blend;
    BlendColumns* blend_columns;
    BlendRows* blend_rows;
    std::size_t least_row_bytes;  ///< of `blend_rows`
};

/// Puts in those of the best instruction set, and none where that has no vector code.
void takeBlendRoutines(BlendRoutines& routines);

}  // namespace ox::rows
