/// @file
/// What each source of vector routines puts into the table, once per instruction set.

#pragma once

#include "rows/rows_routines.h"

namespace ox::rows {

// Nothing is put in where the best instruction set of this processor has no vector code.
void takeBgrToYuvRoutines(Routines& routines);
void takeBlendRoutines(Routines& routines);
void takeFloatRoutines(Routines& routines);
void takeTapColumnRoutines(Routines& routines);
void takeTapRowRoutines(Routines& routines);
void takeYuvToBgrRoutines(Routines& routines);

}  // namespace ox::rows
