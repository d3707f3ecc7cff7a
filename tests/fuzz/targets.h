// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What is run with inputs that a fuzzer makes. Two programs share it: ox_fuzz makes inputs,
// ox_fuzz_replay reads those that are kept.
#pragma once

#include <span>
#include <string_view>

#include "fuzz/input.h"

namespace ox::fuzz {

// A finding is what ends the process: a failed comparison, a sanitizer's report, an exception.
struct Target {
    std::string_view name;
    void (*run)(Input& input);
};

std::span<Target const> targets();

// Null for a name that no target has.
Target const* findTarget(std::string_view name);

// Says what differs, and ends the process.
[[noreturn]] void fail(char const* format, ...) __attribute__((format(printf, 1, 2)));

void canary(Input& input);
void conversions(Input& input);
void chains(Input& input);
void kernels(Input& input);
void resizers(Input& input);
void warps(Input& input);
void filters(Input& input);
void tensors(Input& input);
void vector_backend(Input& input);
void pipeline_backend(Input& input);
void c_interface(Input& input);

// Where the tool is built.
void readers(Input& input);
void command_line(Input& input);

}  // namespace ox::fuzz
