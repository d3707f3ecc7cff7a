// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/dispatch.h"

#include <atomic>

#include "vector/targets.h"

#ifdef OX_WITH_HIGHWAY
#include <hwy/targets.h>

#include <cstring>
#endif

namespace ox::vector {

namespace {

/// Tables of routines may be looked up by several threads at once.
constinit std::atomic<TargetFollower*> lastFollower{nullptr};

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

}  // namespace

void followTarget(TargetFollower& follower) {
    follower.next = lastFollower;
    while (!lastFollower.compare_exchange_weak(follower.next, &follower)) {
    }
}

std::vector<char const*> compiledTargets() {
#if !defined(OX_WITH_HIGHWAY)
    return {"plain"};
#elif defined(HWY_COMPILE_ONLY_STATIC)
    return {hwy::TargetName(HWY_STATIC_TARGET)};
#else
    return namesOf(HWY_TARGETS);
#endif
}

std::vector<char const*> targets() {
#if defined(OX_WITH_HIGHWAY) && !defined(HWY_COMPILE_ONLY_STATIC)
    return namesOf(hwy::SupportedTargets() & HWY_TARGETS);
#else
    return compiledTargets();
#endif
}

void useTarget([[maybe_unused]] char const* name) {
#if defined(OX_WITH_HIGHWAY) && !defined(HWY_COMPILE_ONLY_STATIC)
    hwy::DisableTargets(0);
    for (std::int64_t const target : hwy::SupportedAndGeneratedTargets()) {
        if (name != nullptr && std::strcmp(name, hwy::TargetName(target)) == 0) {
            hwy::DisableTargets(~(target | HWY_STATIC_TARGET));
        }
    }
    for (TargetFollower* follower = lastFollower; follower != nullptr; follower = follower->next) {
        follower->refresh();
    }
#endif
}

}  // namespace ox::vector
