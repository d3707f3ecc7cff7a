// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Faults that the sanitizer of this build has to find: if it doesn't, it isn't at work, and what
// the tests say about the library is worth nothing.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <thread>

namespace {

// Not known when the program is compiled.
int volatile one = 1;

// Reads a byte behind a block.
int address() {
    auto* const block = static_cast<char*>(std::calloc(1, 16));
    int const byte = block[15 + one];
    std::free(block);
    return byte;
}

// A sum that is too large.
int undefined() {
    return std::numeric_limits<int>::max() + one;
}

// Two threads count without a lock.
int thread() {
    int count = 0;
    auto const add = [&] {
        for (int i = 0; i < 1000; ++i) {
            count += one;
        }
    };
    std::thread other(add);
    add();
    other.join();
    return count;
}

// Decides by a byte that nobody wrote.
int memory() {
    auto* const block = static_cast<char*>(std::malloc(16));
    if (block[one] == 0) {
        std::puts("A zero.");
    }
    std::free(block);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    struct {
        char const* name;
        int (*fault)();
    } const faults[]{
        {"address", address}, {"undefined", undefined}, {"thread", thread}, {"memory", memory}};
    for (auto const& [name, fault] : faults) {
        if (count == 2 && std::strcmp(arguments[1], name) == 0) {
            std::printf("%s went unnoticed: %d\n", name, fault());
            return 0;
        }
    }
    return 2;
}
