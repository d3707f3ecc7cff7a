#include "simd/kernels/neon.h"

#include "simd/kernels/plain.h"
#include "simd/kernels/take_routines.h"
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

#if defined(OX_WITH_HIGHWAY) && !defined(HWY_COMPILE_ONLY_STATIC)
/// Lower bits are better.
std::vector<char const*> namesOf(std::int64_t targets) {
    std::vector<char const*> names;
    for (auto left = static_cast<std::uint64_t>(targets); left != 0; left &= left - 1) {
        names.push_back(hwy::TargetName(static_cast<std::int64_t>(left & (~left + 1))));
    }
    return names;
}
#endif

Routines& chosenRoutines() {
    static Routines chosen = bestRoutines();
    return chosen;
}

}  // namespace

bool KernelsEnabled = true;

Routines const& routines() {
    return chosenRoutines();
}

std::vector<char const*> CompiledTargets() {
#if !defined(OX_WITH_HIGHWAY)
    return {"plain"};
#elif defined(HWY_COMPILE_ONLY_STATIC)
    return {hwy::TargetName(HWY_STATIC_TARGET)};
#else
    return namesOf(HWY_TARGETS);
#endif
}

std::vector<char const*> Targets() {
#if defined(OX_WITH_HIGHWAY) && !defined(HWY_COMPILE_ONLY_STATIC)
    return namesOf(hwy::SupportedTargets() & HWY_TARGETS);
#else
    return CompiledTargets();
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
