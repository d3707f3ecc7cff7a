// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// ox_fuzz --target=NAME ...: a target by libFuzzer, whose options and corpus folders follow.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz/targets.h"

namespace {

ox::fuzz::Target const* target = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    constexpr std::string_view option = "--target=";
    for (int i = 1; i < *argc; ++i) {
        std::string_view const argument = (*argv)[i];
        if (argument.substr(0, option.size()) == option) {
            target = ox::fuzz::findTarget(argument.substr(option.size()));
        }
    }
    if (target == nullptr) {
        std::fputs("ox_fuzz --target=NAME, of these:\n", stderr);
        for (ox::fuzz::Target const& each : ox::fuzz::targets()) {
            std::fprintf(stderr, "  %s\n", each.name.data());
        }
        std::exit(2);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    ox::fuzz::Input input({data, size});
    target->run(input);
    return 0;
}
