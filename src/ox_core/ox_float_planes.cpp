// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_float_planes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ox {

namespace {

struct Add {
    static float apply(float element, float value) { return element + value; }
};

struct Multiply {
    static float apply(float element, float value) { return element * value; }
};

/// Rows of `Channels` interleaved floats; through memcpy, since wrapped rows may be misaligned.
template <class Operation, std::size_t Channels>
void applyConstants(float const* values, unsigned char* data, std::int64_t stride, Rect rect) {
    constexpr std::int64_t pixelBytes = std::int64_t{Channels * sizeof(float)};
    float constants[Channels];  // `values` might lie in the plane
    std::copy(values, values + Channels, constants);
    for (std::int64_t y = 0; y < rect.height; ++y) {
        unsigned char* element = data + (rect.y + y) * stride + rect.x * pixelBytes;
        for (std::int64_t x = 0; x < rect.width; ++x) {
            for (std::size_t c = 0; c < Channels; ++c, element += sizeof(float)) {
                float number = 0;
                std::memcpy(&number, element, sizeof number);
                number = Operation::apply(number, constants[c]);
                std::memcpy(element, &number, sizeof number);
            }
        }
    }
}

}  // namespace

void addConstant_32f_C1(float value, unsigned char* data, int stride, Rect rect) {
    applyConstants<Add, 1>(&value, data, stride, rect);
}

void addConstant_32f_C3(float const* values, unsigned char* data, unsigned long stride, Rect rect) {
    applyConstants<Add, 3>(values, data, static_cast<std::int64_t>(stride), rect);
}

void mulConstant_32f_C1(float value, unsigned char* data, int stride, Rect rect) {
    applyConstants<Multiply, 1>(&value, data, stride, rect);
}

void mulConstant_32f_C3(float const* values, unsigned char* data, unsigned long stride, Rect rect) {
    applyConstants<Multiply, 3>(values, data, static_cast<std::int64_t>(stride), rect);
}

}  // namespace ox
