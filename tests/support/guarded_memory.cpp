// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "support/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

namespace ox::test {

namespace {

constexpr std::size_t watchedBytes = 128;  // keeps the block 64-byte aligned

std::size_t pageBytes() {
    static auto const bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

unsigned char* mapPages(std::size_t bytes) {
    void* const pages =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return static_cast<unsigned char*>(pages);
}

// Accessible pages between two others. Tests make many small ones, so that those of a single page
// are kept for the next one.
class GuardedPages {
  public:
    unsigned char* take(std::size_t accessible) {
        std::size_t const page = pageBytes();
        std::lock_guard const lock(_mutex);
        if (accessible == page && !_spare.empty()) {
            unsigned char* const mapping = _spare.back();
            _spare.pop_back();
            return mapping;
        }
        unsigned char* const mapping = mapPages(accessible + 2 * page);
        mprotect(mapping, page, PROT_NONE);
        mprotect(mapping + page + accessible, page, PROT_NONE);
        return mapping;
    }

    void giveBack(unsigned char* mapping, std::size_t accessible) {
        std::lock_guard const lock(_mutex);
        if (accessible == pageBytes() && _spare.size() < _spare.capacity()) {
            _spare.push_back(mapping);
        } else {
            munmap(mapping, accessible + 2 * pageBytes());
        }
    }

    static GuardedPages& instance() {
        static GuardedPages pages;
        return pages;
    }

  private:
    GuardedPages() { _spare.reserve(64); }

    std::mutex _mutex;
    std::vector<unsigned char*> _spare;
};

}  // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, Guard guard) : _bytes(bytes) {
    std::size_t const page = pageBytes();
    if (guard == Guard::None) {
        _accessible_bytes = bytes + 2 * watchedBytes;
        _accessible = static_cast<unsigned char*>(
            ::operator new (_accessible_bytes, std::align_val_t{watchedBytes}));
        _data = _accessible + watchedBytes;
    } else {
        _accessible_bytes = std::max((bytes + page - 1) / page, std::size_t{1}) * page;
        _mapping = GuardedPages::instance().take(_accessible_bytes);
        _accessible = _mapping + page;
        _data = guard == Guard::AtEnd ? _accessible + _accessible_bytes - bytes : _accessible;
    }
    std::memset(_accessible, poison, _accessible_bytes);
}

GuardedMemory::~GuardedMemory() {
    if (_mapping != nullptr) {
        GuardedPages::instance().giveBack(_mapping, _accessible_bytes);
    } else {
        ::operator delete (_accessible, std::align_val_t{watchedBytes});
    }
}

std::ptrdiff_t GuardedMemory::touched() const {
    auto const changed = [](unsigned char byte) { return byte != poison; };
    unsigned char const* const before = std::find_if(_accessible, _data, changed);
    if (before != _data) {
        return before - _data;
    }
    unsigned char const* const end = _accessible + _accessible_bytes;
    unsigned char const* const behind =
        std::find_if(_data + _bytes, _accessible + _accessible_bytes, changed);
    return behind != end ? behind - _data : 0;
}

}  // namespace ox::test
