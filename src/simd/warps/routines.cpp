#include "simd/warps/routines.h"

#include "vector/dispatch.h"

namespace Simd::Neon {

namespace {

WarpRoutines findRoutines() {
    WarpRoutines best;
#ifdef OX_WITH_HIGHWAY
    takeWarpRoutines(best);
#endif
    return best;
}

}  // namespace

WarpRoutines const& warpRoutines() {
    return ox::vector::RoutineTable<WarpRoutines, findRoutines>::get();
}

}  // namespace Simd::Neon
