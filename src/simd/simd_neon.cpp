#include "simd/simd_neon.h"

#include "simd/simd_neon_targets.h"
#include "simd/simd_plain.h"
#include "simd/simd_targets.h"

#ifdef OX_WITH_HIGHWAY
#include <hwy/targets.h>

#include <cstring>
#endif

namespace Simd::Neon {

namespace {

Routines bestRoutines() {
    Routines best = Plain::routines();
#ifdef OX_WITH_HIGHWAY
    takeBgrRoutines(best);
    takeBgrToYuvRoutines(best);
    takeFloatRoutines(best);
    takeResizeAreaRoutines(best);
    takeResizeByteRoutines(best);
    takeResizeFloatRoutines(best);
    takeWarpRoutines(best);
    takeYuvToBgrRoutines(best);
#endif
    return best;
}

Routines& chosenRoutines() {
    static Routines chosen = bestRoutines();
    return chosen;
}

}  // namespace

bool KernelsEnabled = true;

Routines const& routines() {
    return chosenRoutines();
}

std::vector<char const*> Targets() {
#if !defined(OX_WITH_HIGHWAY)
    return {"plain"};
#elif defined(HWY_COMPILE_ONLY_STATIC)
    return {hwy::TargetName(HWY_STATIC_TARGET)};
#else
    std::vector<char const*> names;
    for (std::int64_t const target : hwy::SupportedAndGeneratedTargets()) {
        names.push_back(hwy::TargetName(target));
    }
    return names;
#endif
}

void UseTarget([[maybe_unused]] char const* name) {
#if defined(OX_WITH_HIGHWAY) && !defined(HWY_COMPILE_ONLY_STATIC)
    hwy::DisableTargets(0);
    for (std::int64_t const target : hwy::SupportedAndGeneratedTargets()) {
        if (name != nullptr && std::strcmp(name, hwy::TargetName(target)) == 0) {
            hwy::DisableTargets(~(target | HWY_STATIC_TARGET));
        }
    }
    chosenRoutines() = bestRoutines();
#endif
}

}  // namespace Simd::Neon
