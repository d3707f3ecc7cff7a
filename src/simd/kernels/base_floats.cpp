// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "simd/kernels/half.h"
#include "simd/kernels/kernels.h"

namespace Simd::Base {

namespace {

// Rows of wrapped frames needn't be aligned.

float load(float const* at) {
    float number = 0;
    std::memcpy(&number, at, sizeof number);
    return number;
}

void store(float* at, float number) {
    std::memcpy(at, &number, sizeof number);
}

/// Truncates towards zero; what lies outside saturates, and NaN gives 0.
std::uint32_t truncate(float number) {
    constexpr float limit = 4294967296.0F;
    if (!(number > 0.0F)) {
        return 0;
    }
    return number < limit ? static_cast<std::uint32_t>(number)
                          : std::numeric_limits<std::uint32_t>::max();
}

}  // namespace

void ScaleBytesToFloats(ConstBytes src, std::size_t count, float const* lower, float const* upper,
                        float* dst) {
    float const offset = *lower;
    float const scale = (*upper - offset) / 255.0F;
    for (std::size_t i = 0; i < count; ++i) {
        store(dst + i, std::fma(scale, static_cast<float>(src[i]), offset));
    }
}

void ScaleFloatsToBytes(float const* src, std::size_t count, float const* lower, float const* upper,
                        Bytes dst) {
    float const first = *lower;
    float const last = *upper;
    float const scale = 255.0F / (last - first);
    for (std::size_t i = 0; i < count; ++i) {
        float const x = load(src + i);
        float const raised = x > first ? x : first;  // NaN counts as the lower end
        float const clamped = last > raised ? raised : last;
        dst[i] = static_cast<std::uint8_t>(truncate((clamped - first) * scale));
    }
}

void FloatsToHalves(float const* src, std::size_t count, std::uint16_t* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = truncateToHalf(std::bit_cast<std::uint32_t>(src[i]));
    }
}

void HalvesToFloats(std::uint16_t const* src, std::size_t count, float* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = std::bit_cast<float>(widenHalf(src[i]));
    }
}

void AddConstantFloats(float const* value, float* data, std::size_t count) {
    float const addend = *value;
    for (std::size_t i = 0; i < count; ++i) {
        store(data + i, load(data + i) + addend);
    }
}

void AccumulateScaledFloats(float const* src, std::size_t count, float const* value, float* dst) {
    float const factor = *value;
    for (std::size_t i = 0; i < count; ++i) {
        store(dst + i, std::fma(factor, load(src + i), load(dst + i)));
    }
}

void MultiplyFloats(float const* value, float* data, std::size_t count) {
    float const factor = *value;
    for (std::size_t i = 0; i < count; ++i) {
        store(data + i, std::fma(factor, load(data + i), 0.0F));
    }
}

}  // namespace Simd::Base
