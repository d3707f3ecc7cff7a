/// @file
/// The routines that sum weighted samples, along rows and across them.

#pragma once

#include "rows/taps/axis.h"

namespace ox::rows {

struct TapRoutines {
    CompileTaps* compile_taps;
    SumTaps* sum_taps;
    SumRows* sum_rows;
    std::size_t least_row_bytes;  ///< of `sum_rows`
};

// Each source puts in its own for the best instruction set, and none where that has no vector code.
void takeTapColumnRoutines(TapRoutines& routines);
void takeTapRowRoutines(TapRoutines& routines);

}  // namespace ox::rows
