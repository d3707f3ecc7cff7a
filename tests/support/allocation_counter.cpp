// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "support/allocation_counter.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

// The linker gives the library's calls to the first, and the C library's function the second name.
extern "C" {
// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's own name
int __wrap_posix_memalign(void** block, std::size_t alignment, std::size_t bytes);
// NOLINTNEXTLINE(bugprone-reserved-identifier)
int __real_posix_memalign(void** block, std::size_t alignment, std::size_t bytes);
}

namespace ox::test {

namespace {

// No request that large can succeed; sanitizers would end the program instead of refusing it.
constexpr std::size_t available = std::size_t{1} << 40;

std::atomic<std::int64_t> live{0};
std::atomic<std::uint64_t> calls{0};

// The numbers of the calls that fail, on this thread, counted from the arming on.
struct Trap {
    std::uint64_t seen = 0;
    std::uint64_t first = 0;  // 0: not armed
    std::uint64_t last = 0;
    bool struck = false;
};
thread_local Trap trap;

void arm(std::uint64_t first, std::uint64_t last) {
    trap = Trap{0, first, last, false};
}

bool strikes() {
    if (trap.first == 0) {
        return false;
    }
    ++trap.seen;
    bool const now = trap.first <= trap.seen && trap.seen <= trap.last;
    trap.struck = trap.struck || now;
    return now;
}

void* allocate(std::size_t bytes, std::size_t alignment) noexcept {
    calls.fetch_add(1, std::memory_order_relaxed);
    if (strikes() || bytes > available) {
        return nullptr;
    }
    void* block = nullptr;
    std::size_t const usable = std::max(bytes, std::size_t{1});
    if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
        block = std::malloc(usable);
    } else if (__real_posix_memalign(&block, alignment, usable) != 0) {
        block = nullptr;
    }
    if (block != nullptr) {
        live.fetch_add(1, std::memory_order_relaxed);
    }
    return block;
}

void* allocateOrThrow(std::size_t bytes, std::size_t alignment) {
    void* const block = allocate(bytes, alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        live.fetch_sub(1, std::memory_order_relaxed);
        std::free(block);
    }
}

constexpr std::size_t plain = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

}  // namespace

std::int64_t liveAllocations() {
    return live.load(std::memory_order_relaxed);
}

std::uint64_t allocationCalls() {
    return calls.load(std::memory_order_relaxed);
}

FailingAllocations::FailingAllocations(std::uint64_t k) {
    arm(k, std::numeric_limits<std::uint64_t>::max());
}

FailingAllocations::~FailingAllocations() {
    arm(0, 0);
}

bool FailingAllocations::struck() const {
    return trap.struck;
}

FailingAllocation::FailingAllocation(std::uint64_t k) {
    arm(k, k);
}

FailingAllocation::~FailingAllocation() {
    arm(0, 0);
}

bool FailingAllocation::struck() const {
    return trap.struck;
}

}  // namespace ox::test

using ox::test::allocate;
using ox::test::allocateOrThrow;
using ox::test::plain;
using ox::test::release;
using std::align_val_t;
using std::nothrow_t;
using std::size_t;

int __wrap_posix_memalign(void** block, size_t alignment, size_t bytes) {
    ox::test::calls.fetch_add(1, std::memory_order_relaxed);
    return __real_posix_memalign(block, alignment, bytes);
}

void* operator new(size_t bytes) {
    return allocateOrThrow(bytes, plain);
}
void* operator new[](size_t bytes) {
    return allocateOrThrow(bytes, plain);
}
void* operator new(size_t bytes, nothrow_t const&) noexcept {
    return allocate(bytes, plain);
}
void* operator new[](size_t bytes, nothrow_t const&) noexcept {
    return allocate(bytes, plain);
}
void* operator new(size_t bytes, align_val_t alignment) {
    return allocateOrThrow(bytes, static_cast<size_t>(alignment));
}
void* operator new[](size_t bytes, align_val_t alignment) {
    return allocateOrThrow(bytes, static_cast<size_t>(alignment));
}
void* operator new(size_t bytes, align_val_t alignment, nothrow_t const&) noexcept {
    return allocate(bytes, static_cast<size_t>(alignment));
}
void* operator new[](size_t bytes, align_val_t alignment, nothrow_t const&) noexcept {
    return allocate(bytes, static_cast<size_t>(alignment));
}

void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, size_t) noexcept {
    release(block);
}
void operator delete[](void* block, size_t) noexcept {
    release(block);
}
void operator delete(void* block, nothrow_t const&) noexcept {
    release(block);
}
void operator delete[](void* block, nothrow_t const&) noexcept {
    release(block);
}
void operator delete(void* block, align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, size_t, align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, size_t, align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, align_val_t, nothrow_t const&) noexcept {
    release(block);
}
void operator delete[](void* block, align_val_t, nothrow_t const&) noexcept {
    release(block);
}
