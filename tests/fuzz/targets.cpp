// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/targets.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

// Asked by the address sanitizer: memory that nobody has is a refusal, as without it.
extern "C" char const* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace ox::fuzz {

namespace {

constexpr Target all[]{
    {"canary", canary},
    {"conversions", conversions},
    {"chains", chains},
    {"kernels", kernels},
    {"resizers", resizers},
    {"warps", warps},
    {"filters", filters},
    {"tensors", tensors},
    {"vector_backend", vector_backend},
    {"pipeline_backend", pipeline_backend},
    {"c_interface", c_interface},
#ifdef OX_FUZZ_TOOL
    {"readers", readers},
    {"command_line", command_line},
#endif
};

}  // namespace

std::span<Target const> targets() {
    return all;
}

Target const* findTarget(std::string_view name) {
    auto const found = std::find_if(std::begin(all), std::end(all),
                                    [&](Target const& target) { return target.name == name; });
    return found == std::end(all) ? nullptr : found;
}

void fail(char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    std::abort();
}

// Has to be found: whatever doesn't find it finds nothing else either.
void canary(Input& input) {
    constexpr std::uint8_t wanted[]{'o', 'x', 7};
    for (std::uint8_t const byte : wanted) {
        if (input.byte() != byte) {
            return;
        }
    }
    fail("the canary was found");
}

}  // namespace ox::fuzz
