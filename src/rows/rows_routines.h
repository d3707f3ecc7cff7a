/// @file
/// The routines of the pipeline's rows. Plain ones define the bytes; vector ones give the same.

#pragma once

#include "rows/blend/axis.h"
#include "rows/colour/routines.h"
#include "rows/taps/axis.h"
#include "vector/gather.h"

namespace ox::rows {

/// The routines of an instruction set, or the plain ones; none is ever null.
struct Routines {
    ColourRoutines colour;
    BlendRoutines blend;
    TapRoutines taps;
    vector::GatherRoutines gather;
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
