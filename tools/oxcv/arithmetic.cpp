// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "arithmetic.h"

#include <cstring>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_cv_helpers.h"
#include "vector_limits.h"

namespace oxcv {

namespace {

/// One number does for all channels: the library has that, and refuses what isn't of floats.
bool isUniform(ox::Frame const& frame, Channels const& numbers) {
    return !isColourOfFloats(frame.format()) ||
           (numbers[0] == numbers[1] && numbers[0] == numbers[2]);
}

/// Replaces each float by operation(float, its channel's number).
template <class Operation>
void forEachFloat(ox::Frame& frame, Channels const& numbers, Operation operation) {
    bool const is_packed = frame.layout().planeCount == 1;
    for (int index = 0; index < frame.layout().planeCount; ++index) {
        ox::FramePlane const& plane = frame.layout().plane[index];
        for (std::int64_t y = 0; y < plane.height; ++y) {
            unsigned char* const row = frame.planeData(index) + y * plane.stride;
            for (std::size_t i = 0; i < plane.rowBytes / sizeof(float); ++i) {
                float number = 0;
                std::memcpy(&number, row + i * sizeof(float), sizeof(float));
                std::size_t const channel = is_packed ? i % 3 : static_cast<std::size_t>(index);
                number = operation(number, numbers[channel]);
                std::memcpy(row + i * sizeof(float), &number, sizeof(float));
            }
        }
    }
}

}  // namespace

void multiply(ox::ICvBackend& operations, ox::Frame& frame, Channels const& factors) {
    if (isUniform(frame, factors)) {
        operations.mul(frame, factors[0], ox::emptyRoi());
    } else {
        forEachFloat(frame, factors, [](float number, float factor) { return number * factor; });
    }
}

void add(ox::ICvBackend& operations, ox::Frame& frame, Channels const& summands) {
    if (isUniform(frame, summands)) {
        operations.add(frame, summands[0], ox::emptyRoi());
    } else {
        forEachFloat(frame, summands, [](float number, float summand) { return number + summand; });
    }
}

}  // namespace oxcv
