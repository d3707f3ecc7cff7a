// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Floats and halves as bit patterns, in arrays that needn't be aligned.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ox::test {

inline std::uint32_t bitsOf(float number) {
    return std::bit_cast<std::uint32_t>(number);
}

inline float floatOf(std::uint32_t bits) {
    return std::bit_cast<float>(bits);
}

// Element `i` of an array of elements of another type.
template <class Element>
Element loadAs(void const* array, std::size_t i) {
    Element element;
    std::memcpy(&element, static_cast<unsigned char const*>(array) + i * sizeof element,
                sizeof element);
    return element;
}

template <class Element>
void storeAs(void* array, std::size_t i, Element element) {
    std::memcpy(static_cast<unsigned char*>(array) + i * sizeof element, &element, sizeof element);
}

inline float loadFloat(float const* array, std::size_t i) {
    return loadAs<float>(array, i);
}

inline std::uint32_t loadHalf(std::uint16_t const* array, std::size_t i) {
    return loadAs<std::uint16_t>(array, i);
}

inline void storeFloat(float* array, std::size_t i, float number) {
    storeAs(array, i, number);
}

inline void storeBits(float* array, std::size_t i, std::uint32_t bits) {
    storeAs(array, i, bits);
}

inline void storeHalf(std::uint16_t* array, std::size_t i, std::uint32_t bits) {
    storeAs(array, i, static_cast<std::uint16_t>(bits));
}

// Equal bits, or both NaNs: which NaN an operation gives isn't fixed.
inline bool sameFloat(float a, float b) {
    return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b));
}

}  // namespace ox::test
