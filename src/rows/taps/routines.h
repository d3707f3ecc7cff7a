/// @file
/// The routines that sum weighted samples, along rows and across them.

#pragma once

#include "rows/taps/axis.h"

namespace ox::rows {

struct TapRoutines {
    CompileTaps* compile_taps;
    SumRows* sum_rows;  ///< of any number of bytes
};

/// The plain loop for rows.
SumRows sumPlainRows;

/// Puts in the plain ones, which have no programs.
void takePlainTapRoutines(TapRoutines& routines);

// Each source puts in its own for the best instruction set, and none where that has no vector code.
void takeTapColumnRoutines(TapRoutines& routines);
void takeTapRowRoutines(TapRoutines& routines);

}  // namespace ox::rows
