// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Kernels of floats on special numbers and ranges.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "simd/kernel_check.h"
#include "simd/number_draws.h"

namespace ox::test {
namespace {

template <class Element>
Planes planesOf(std::vector<Element>& elements) {
    Planes planes;
    planes[0] = {static_cast<unsigned char*>(static_cast<void*>(elements.data())), 0};
    return planes;
}

std::vector<Range> manyRanges(Random& random) {
    std::vector<Range> many(std::begin(ranges), std::end(ranges));
    for (int i = 0; i < (emulated() ? 20 : 300); ++i) {
        many.push_back({drawBits(random), drawBits(random)});
        many.push_back({random.real(-1000.0F, 1000.0F), random.real(-1000.0F, 1000.0F)});
    }
    return many;
}

TEST(FloatKernels, ScaleFloatsToBytesOnEveryRange) {
    Random random;
    for (Range const range : manyRanges(random)) {
        std::vector<float> floats(std::begin(specialNumbers), std::end(specialNumbers));
        while (floats.size() < 2048) {
            floats.push_back(drawAround(range, random));
        }
        // Both the vector routine and, in pieces, what is below its threshold.
        for (std::size_t const count : {floats.size(), std::size_t{15}}) {
            Operands const operands{planesOf(floats), {}, count, 1, range.lower, range.upper};
            ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleFloatsToBytes, operands));
        }
    }
}

TEST(FloatKernels, ScaleBytesToFloatsOnEveryRange) {
    Random random;
    std::vector<unsigned char> bytes(256);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    for (Range const range : manyRanges(random)) {
        Operands const operands{planesOf(bytes), {}, bytes.size(), 1, range.lower, range.upper};
        ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleBytesToFloats, operands));
    }
}

// Every float beside a step from byte to byte.
TEST(FloatKernels, ScaleFloatsToBytesTruncates) {
    std::vector<float> floats;
    for (int byte = 0; byte <= 256; ++byte) {
        auto const number = static_cast<float>(byte);
        floats.insert(floats.end(), {std::nextafter(number, -infinity), number,
                                     std::nextafter(number, infinity)});
    }
    Operands const operands{planesOf(floats), {}, floats.size(), 1, 0.0F, 255.0F};
    ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleFloatsToBytes, operands));
}

}  // namespace
}  // namespace ox::test
