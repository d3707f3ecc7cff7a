// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The array of the kernel layer's tables and row buffers.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Simd {

/// An aligned block with 64 bytes of slack before its first byte and at least 64 behind its last.
/// @param bytes without the slack
/// @param align a power of two; rounded up to a multiple of 8
/// @return null if there is no memory, after a line on the standard output
unsigned char* allocateBlock(std::size_t bytes, std::size_t align);

/// Frees a block of `allocateBlock`; does nothing for null.
void freeBlock(unsigned char* data);

/// Bytes of `count` elements; SIZE_MAX, which no allocation serves, if they don't fit 64 bits.
constexpr std::size_t arrayBytes(std::size_t count, std::size_t element) {
    return count > SIZE_MAX / element ? SIZE_MAX : count * element;
}

/// An owning array of trivial elements, which aren't cleared. A failed allocation isn't reported:
/// `data` is null then, while `size` keeps the count.
template <class T>
class AlignedArray {
  public:
    AlignedArray() = default;
    AlignedArray(AlignedArray const&) = delete;
    AlignedArray& operator=(AlignedArray const&) = delete;
    ~AlignedArray() { freeBlock(reinterpret_cast<unsigned char*>(data)); }

    /// Does nothing for the count that the array already has, also after a failure.
    void Resize(std::size_t count, std::size_t align) {
        if (count == size) {
            return;
        }
        freeBlock(reinterpret_cast<unsigned char*>(data));
        data = nullptr;
        size = count;
        if (count != 0) {
            data = reinterpret_cast<T*>(allocateBlock(arrayBytes(count, sizeof(T)), align));
        }
    }

    T& operator[](std::size_t index) { return data[index]; }
    T const& operator[](std::size_t index) const { return data[index]; }

    T* data = nullptr;
    std::uint64_t size = 0;  ///< elements
};

}  // namespace Simd
