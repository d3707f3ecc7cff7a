// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Memory of which only the pages that are touched exist, for rows gibibytes apart.
#pragma once

#include <sys/mman.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace ox::test {

class SparseMemory {
  public:
    // Throws where there are no such addresses.
    explicit SparseMemory(std::size_t bytes)
        : _bytes(bytes),
          _mapping(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        if (_mapping == MAP_FAILED) {
            throw std::system_error(errno, std::generic_category(), "mmap");
        }
    }
    SparseMemory(SparseMemory const&) = delete;
    SparseMemory& operator=(SparseMemory const&) = delete;
    ~SparseMemory() { munmap(_mapping, _bytes); }

    unsigned char* data() const { return static_cast<unsigned char*>(_mapping); }

  private:
    std::size_t _bytes;
    void* _mapping;
};

}  // namespace ox::test
