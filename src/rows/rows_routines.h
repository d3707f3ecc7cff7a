/// @file
/// Vector routines for the row loops of the pipeline: raw rows, without frames. Each gives the
/// bytes of the plain loop that it stands in for.

#pragma once

#include "rows/blend/routines.h"
#include "rows/colour/routines.h"
#include "rows/taps/routines.h"
#include "vector/row_program.h"

namespace ox::rows {

/// The routines of an instruction set. Where there is no vector code, those that blend and tap are
/// the plain ones, and the others null.
struct Routines {
    ColourRoutines colour;
    BlendRoutines blend;
    TapRoutines taps;
    Simd::CompilePixels* compile_pixels;  ///< whole pixels, gathered
    Simd::CopyPixels* copy_pixels;
};

/// Those of the instruction set in use; see vector/dispatch.h.
Routines const& routines();

/// The same, looked up anew.
Routines findRoutines();

/// Those without vector code.
Routines plainRoutines();

/// Takes these from now on. For tests and benchmarks, and not while rows are on their way: what is
/// armed may go on with what it has chosen.
void useRoutines(Routines const& wanted);

}  // namespace ox::rows
