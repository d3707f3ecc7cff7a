// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/aligned_array.h"

#include <stdlib.h>  // posix_memalign

#include <iostream>

namespace Simd {

namespace {

constexpr std::size_t slack = 64;

}  // namespace

unsigned char* allocateBlock(std::size_t bytes, std::size_t align) {
    std::size_t const alignment = (align + 7) / 8 * 8;
    std::size_t const extra = alignment + 2 * slack - 1;
    std::size_t const sum = bytes > SIZE_MAX - extra ? SIZE_MAX : bytes + extra;
    std::size_t const request = sum & (~alignment + 1);
    void* block = nullptr;
    if (posix_memalign(&block, alignment, request) != 0) {
        std::cout << "The function posix_memalign can't allocate " << request
                  << " bytes with align " << alignment << " !" << std::endl;
        return nullptr;
    }
    return static_cast<unsigned char*>(block) + slack;
}

void freeBlock(unsigned char* data) {
    if (data != nullptr) {
        free(data - slack);
    }
}

}  // namespace Simd
