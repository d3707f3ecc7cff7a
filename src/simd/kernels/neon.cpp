#include "simd/kernels/neon.h"

#include "simd/kernels/plain.h"
#include "simd/simd_targets.h"
#include "vector/dispatch.h"

namespace Simd::Neon {

bool KernelsEnabled = true;

namespace {

Routines findRoutines() {
    Routines best = Plain::routines();
#ifdef OX_WITH_HIGHWAY
    takeBgrRoutines(best);
    takeBgrToYuvRoutines(best);
    takeFloatRoutines(best);
    takeYuvToBgrRoutines(best);
#endif
    return best;
}

}  // namespace

Routines const& routines() {
    return ox::vector::RoutineTable<Routines, findRoutines>::get();
}

std::vector<char const*> CompiledTargets() {
    return ox::vector::compiledTargets();
}

std::vector<char const*> Targets() {
    return ox::vector::targets();
}

void UseTarget(char const* name) {
    ox::vector::useTarget(name);
}

}  // namespace Simd::Neon
