// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Sums and products of the vector backend, down to the bits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "ox_cv/ox_cv_backend_simd.h"

namespace ox::test::cv_backend_simd_numbers {

namespace {

using Limits = std::numeric_limits<float>;

// What one operation makes of a row of equal samples.
float resultOf(void (CvBackendSimd::*apply)(Frame&, float, Rect), float sample, float value) {
    CvBackendSimd backend;
    std::vector<std::uint32_t> seen;
    for (int const width : {1, 23}) {  // by the remainder alone, and by every block
        Frame frame;
        frame.reuse(FRAME_GRAY_32F, {width, 1}, DeviceContext(), 0);
        for (int x = 0; x < width; ++x) {
            std::memcpy(frame.planeData(0) + 4 * x, &sample, sizeof sample);
        }
        (backend.*apply)(frame, value, {});
        for (int x = 0; x < width; ++x) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, frame.planeData(0) + 4 * x, sizeof bits);
            seen.push_back(bits);
        }
    }
    float result = 0;
    std::memcpy(&result, &seen[0], sizeof result);
    for (std::uint32_t const bits : seen) {
        EXPECT_TRUE(bits == seen[0] || std::isnan(result)) << sample << ", " << value;
    }
    return result;
}

bool isPositiveZero(float value) {
    return value == 0.0F && !std::signbit(value);
}

bool isNegativeZero(float value) {
    return value == 0.0F && std::signbit(value);
}

TEST(CvBackendSimdMultiply, SignsOfZero) {
    auto const product = [](float sample, float value) {
        return resultOf(&CvBackendSimd::mul, sample, value);
    };
    EXPECT_TRUE(isPositiveZero(product(-1.0F, 0.0F)));
    EXPECT_TRUE(isPositiveZero(product(0.0F, -1.0F)));
    EXPECT_TRUE(isPositiveZero(product(-0.0F, 1.0F)));
    EXPECT_TRUE(isPositiveZero(product(1.0F, 0.0F)));
    // too small for a float, yet not zero
    EXPECT_TRUE(isNegativeZero(product(-1e-30F, 1e-30F)));
    EXPECT_TRUE(isNegativeZero(product(Limits::denorm_min(), -0.25F)));
    EXPECT_TRUE(isPositiveZero(product(-1e-30F, -1e-30F)));
}

TEST(CvBackendSimdMultiply, ProductsAreRoundedOnceAndKeepSmallNumbers) {
    auto const product = [](float sample, float value) {
        return resultOf(&CvBackendSimd::mul, sample, value);
    };
    EXPECT_EQ(product(3.0F, 0.1F), 0x1.333334p-2F);  // 0.3000000045 lies between two floats
    EXPECT_EQ(product(1.0F + 0x1p-12F, 1.0F + 0x1p-12F), 1.0F + 0x1p-11F);  // a tie, to even
    EXPECT_EQ(product(Limits::min(), 0.5F), 0x1p-127F);
    EXPECT_EQ(product(Limits::denorm_min(), -3.0F), -0x3p-149F);
    EXPECT_EQ(product(Limits::max(), 2.0F), Limits::infinity());
}

TEST(CvBackendSimdMultiply, NonFiniteNumbers) {
    auto const product = [](float sample, float value) {
        return resultOf(&CvBackendSimd::mul, sample, value);
    };
    EXPECT_TRUE(std::isnan(product(Limits::infinity(), 0.0F)));
    EXPECT_TRUE(std::isnan(product(-Limits::infinity(), 0.0F)));
    EXPECT_TRUE(std::isnan(product(Limits::quiet_NaN(), 0.0F)));
    EXPECT_TRUE(std::isnan(product(Limits::quiet_NaN(), 2.0F)));
    EXPECT_TRUE(std::isnan(product(0.0F, Limits::infinity())));
    EXPECT_EQ(product(Limits::infinity(), -2.0F), -Limits::infinity());
}

TEST(CvBackendSimdAdd, NearestSums) {
    auto const sum = [](float sample, float value) {
        return resultOf(&CvBackendSimd::add, sample, value);
    };
    EXPECT_EQ(sum(1.0F, 0x1p-24F), 1.0F);  // a tie, to even
    EXPECT_EQ(sum(1.0F + 0x1p-23F, 0x1p-24F), 1.0F + 0x1p-22F);
    EXPECT_EQ(sum(1.0F, 0x1.8p-24F), 1.0F + 0x1p-23F);
    EXPECT_TRUE(isNegativeZero(sum(-0.0F, -0.0F)));
    EXPECT_TRUE(isPositiveZero(sum(-0.0F, 0.0F)));
    EXPECT_TRUE(isPositiveZero(sum(-1.5F, 1.5F)));
    EXPECT_EQ(sum(Limits::denorm_min(), Limits::denorm_min()), 0x1p-148F);
    EXPECT_TRUE(std::isnan(sum(Limits::infinity(), -Limits::infinity())));
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_numbers
