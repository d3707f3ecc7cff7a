// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/rows_routines.h"

#include "vector/dispatch.h"

namespace ox::rows {

namespace {

using Table = vector::RoutineTable<Routines, findRoutines>;

}  // namespace

Routines plainRoutines() {
    Routines plain{};
    plain.colour = plainColour;
    takePlainBlendRoutines(plain.blend);
    takePlainTapRoutines(plain.taps);
    plain.tensor = plainTensor;
    return plain;
}

Routines findRoutines() {
    Routines found = plainRoutines();
#ifdef OX_WITH_HIGHWAY
    takeBgrToYuvRoutines(found.colour);
    takeChannelRoutines(found.colour);
    takeYuvToBgrRoutines(found.colour);
    takeBlendRoutines(found.blend);
    takeTapColumnRoutines(found.taps);
    takeTapRowRoutines(found.taps);
    takeMatrixRoutines(found.tensor);
    takeNumberRoutines(found.tensor);
    vector::takeGatherRoutines(found.gather);
#endif
    return found;
}

Routines const& routines() {
    return Table::get();
}

void useRoutines(Routines const& wanted) {
    Table::get() = wanted;
}

}  // namespace ox::rows
