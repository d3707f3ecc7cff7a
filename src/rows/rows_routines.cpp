#include "rows/rows_routines.h"

#ifdef OX_WITH_HIGHWAY
#include "rows/rows_targets.h"
#endif

namespace ox::rows {

Routines findRoutines() {
    Routines found{};
#ifdef OX_WITH_HIGHWAY
    takeBgrToYuvRoutines(found);
    takeFloatRoutines(found);
    takeTapColumnRoutines(found);
    takeTapRowRoutines(found);
    takeYuvToBgrRoutines(found);
#endif
    return found;
}

Routines const& routines() {
    static Routines const found = findRoutines();
    return found;
}

}  // namespace ox::rows
