// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "options.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "vector/dispatch.h"

namespace ox::benchmarks {

namespace {

constexpr std::string_view targetOption = "--target=";
constexpr std::string_view sizeOption = "--size=";

bool fail(char const* what, std::string const& value) {
    std::fprintf(stderr, "ox_benchmark: %s: %s\n", what, value.c_str());
    return false;
}

bool readTarget(std::string const& name, Options& options) {
    std::vector<char const*> const targets = vector::targets();
    auto const isNamed = [&](char const* target) { return name == target; };
    if (std::none_of(targets.begin(), targets.end(), isNamed)) {
        return fail("this processor and build don't have that instruction set", name);
    }
    options.target = name;
    return true;
}

bool readSize(std::string const& text, Options& options) {
    Size size;
    int end = 0;
    bool const is_size =
        std::sscanf(text.c_str(), "%dx%d%n", &size.width, &size.height, &end) == 2 &&
        static_cast<std::size_t>(end) == text.size();
    constexpr int least = 64;
    if (!is_size || std::min(size.width, size.height) < least) {
        return fail("not a size such as 1536x864", text);
    }
    options.sizes.push_back(size);
    return true;
}

}  // namespace

bool readOptions(int count, char** arguments, Options& options) {
    if (count < 2) {
        std::fputs(
            "usage: ox_benchmark DIRECTORY [--target=AVX2] [--size=1536x864 ...]\n"
            "           [--benchmark_filter=NV12 ...]\n",
            stderr);
        return false;
    }
    options.directory = arguments[1];
    options.rest = {arguments[0]};
    for (int i = 2; i < count; ++i) {
        std::string const argument = arguments[i];
        if (argument.starts_with(targetOption)) {
            if (!readTarget(argument.substr(targetOption.size()), options)) {
                return false;
            }
        } else if (argument.starts_with(sizeOption)) {
            if (!readSize(argument.substr(sizeOption.size()), options)) {
                return false;
            }
        } else {
            options.rest.push_back(arguments[i]);
        }
    }
    return true;
}

}  // namespace ox::benchmarks
