// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "heap_use.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace ox::benchmarks {

namespace {

constinit HeapUse use;

void* taken(void* block) {
    if (block != nullptr) {
        use.bytes += static_cast<long long>(malloc_usable_size(block));
        use.most_bytes = std::max(use.most_bytes, use.bytes);
        ++use.blocks;
    }
    return block;
}

void given(void* block) {
    if (block != nullptr) {
        use.bytes -= static_cast<long long>(malloc_usable_size(block));
    }
}

}  // namespace

HeapUse const& heapUse() {
    return use;
}

void forgetMostBytes() {
    use.most_bytes = use.bytes;
}

}  // namespace ox::benchmarks

using ox::benchmarks::given;
using ox::benchmarks::taken;

// The C library lets a program have functions of its own in place of these, and offers its own by
// names with two underscores.
extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void* block);

void* malloc(std::size_t bytes) noexcept {
    return taken(__libc_malloc(bytes));
}

void* calloc(std::size_t count, std::size_t bytes) noexcept {
    return taken(__libc_calloc(count, bytes));
}

void* realloc(void* block, std::size_t bytes) noexcept {
    given(block);
    return taken(__libc_realloc(block, bytes));
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
    return taken(__libc_memalign(alignment, bytes));
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
    return taken(__libc_memalign(alignment, bytes));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
    *block = taken(__libc_memalign(alignment, bytes));
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) noexcept {
    given(block);
    __libc_free(block);
}

}  // extern "C"
