#include "simd/warps/routines.h"

#include "vector/dispatch.h"

namespace Simd::Neon {

namespace {

WarpRoutines findWarpRoutines() {
    WarpRoutines best;
#ifdef OX_WITH_HIGHWAY
    takeWarpRoutines(best);
#endif
    return best;
}

}  // namespace

WarpRoutines const& warpRoutines() {
    return ox::vector::RoutineTable<WarpRoutines, findWarpRoutines>::get();
}

}  // namespace Simd::Neon
