#include "rows/rows_routines.h"

#ifdef OX_WITH_HIGHWAY
#include "rows/rows_targets.h"
#include "simd/kernels/neon.h"
#endif

namespace ox::rows {

namespace {

Routines& chosenRoutines() {
    static Routines chosen = findRoutines();
    return chosen;
}

}  // namespace

Routines findRoutines() {
    Routines found{};
#ifdef OX_WITH_HIGHWAY
    takeBgrToYuvRoutines(found);
    takeBlendRoutines(found);
    takeFloatRoutines(found);
    takeTapColumnRoutines(found);
    takeTapRowRoutines(found);
    takeYuvToBgrRoutines(found);
    found.compile_pixels = Simd::Neon::routines().compilePixels;
    found.copy_pixels = Simd::Neon::routines().copyPixels;
#endif
    return found;
}

Routines const& routines() {
    return chosenRoutines();
}

void useRoutines(Routines const& wanted) {
    chosenRoutines() = wanted;
}

}  // namespace ox::rows
