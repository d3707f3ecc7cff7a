// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The routines of the pipeline's rows. Plain ones define the bytes; vector ones give the same.

#pragma once

#include "rows/blend/columns.h"
#include "rows/colour/routines.h"
#include "rows/taps/axis.h"
#include "rows/tensor/routines.h"
#include "vector/gather.h"

namespace ox::rows {

/// The routines of an instruction set, or the plain ones; none is ever null.
struct Routines {
    ColourRoutines colour;
    BlendRoutines blend;
    TapRoutines taps;
    TensorRoutines tensor;
    vector::GatherRoutines gather;
};

/// The routines of the instruction set in use; see vector/dispatch.h.
Routines const& routines();

/// The same, looked up anew.
Routines findRoutines();

/// The plain routines alone.
Routines plainRoutines();

/// Replaces the routines. For tests and benchmarks; not while rows are being processed. Objects
/// that are armed already may keep the routines that they chose.
void useRoutines(Routines const& wanted);

}  // namespace ox::rows
