// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Memory between two pages that nobody may touch.
#pragma once

#include <cstddef>

namespace ox::test {

enum class Guard {
    None,     // a few watched bytes at both ends
    AtEnd,    // the last byte is the last one of a page, the next page faults
    AtStart,  // the first byte is the first one of a page, the page before it faults
};

// A block of bytes. What is accessible around it holds `poison`, and can be checked.
class GuardedMemory {
  public:
    static constexpr unsigned char poison = 0xA5;

    GuardedMemory(std::size_t bytes, Guard guard);
    GuardedMemory(GuardedMemory const&) = delete;
    GuardedMemory& operator=(GuardedMemory const&) = delete;
    ~GuardedMemory();

    unsigned char* data() const { return _data; }
    std::size_t size() const { return _bytes; }

    // Distance from data() of the first byte around the block that changed; 0 if none did, since
    // byte 0 lies in the block.
    std::ptrdiff_t touched() const;

  private:
    std::size_t _bytes;
    unsigned char* _mapping = nullptr;  // the accessible part and, with guards, a page on each side
    unsigned char* _accessible = nullptr;
    std::size_t _accessible_bytes = 0;
    unsigned char* _data = nullptr;
};

}  // namespace ox::test
