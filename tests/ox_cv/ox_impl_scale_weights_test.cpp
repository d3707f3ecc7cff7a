// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_weights.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "ox_cv/test_kernels.h"
#include "support/exceptions.h"

namespace ox::test::scale_weights {

namespace {

using Taps = std::vector<int>;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float least = std::numeric_limits<float>::denorm_min();

constexpr char zeroSum[] = "Failure in computeWeights(...): Kernel has zero weight sum.";
constexpr char tooWide[] =
    "Failure in _computeWeights(...): The kernel aperture is greater than "
    "MAX_FIXED_POINT_APERTURE";

// The weights of a window, on memory that held something else before.
template <class Weight>
Taps weightsOf(TestKernel kernel, float phase = 0.0F, int capacity = 64) {
    std::vector<Weight> weights(static_cast<std::size_t>(capacity) + 1, 99);
    std::vector<float> unnormalised(weights.size(), 99.0F);
    int const count =
        impl::_computeWeights<Weight>(kernel, phase, weights.data(), unnormalised.data(), capacity);
    EXPECT_EQ(weights.back(), 99);
    EXPECT_EQ(unnormalised.back(), 99.0F);
    EXPECT_TRUE(std::all_of(weights.begin() + count, weights.end() - 1,
                            [](Weight weight) { return weight == 0; }));
    EXPECT_TRUE(std::all_of(unnormalised.begin() + count, unnormalised.end() - 1,
                            [](float weight) { return weight == 0.0F; }));
    return Taps(weights.begin(), weights.begin() + count);
}

Taps flatOf(float width, float phase = 0.0F) {
    return weightsOf<signed char>(TestKernel(width), phase);
}

float integralOf(TestKernel::Function const& f, float lower, float upper) {
    TestKernel kernel(0.0F, f);
    return impl::_computeIntegral(&kernel, 0.0F, lower, upper);
}

float square(float x) {
    return x * x;
}

// A filter of two pixels with those exact means.
TestKernel pairKernel(float first, float second) {
    float const slope = second - first;
    return TestKernel(2.0F, [=](float x) { return first + slope * (x + 0.5F); });
}

std::vector<float> abscissas(TestKernel const& kernel) {
    std::vector<float> all = kernel.distances;
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

TEST(ScaleIntegral, NeedsAKernel) {
    expectException(StatusNullPointer, "Parameter '_p_kernel' is null.",
                    [] { impl::_computeIntegral(nullptr, 0.0F, 0.0F, 1.0F); });
}

TEST(ScaleIntegral, IsTheTrapezoidRuleInSixteenths) {
    EXPECT_EQ(integralOf(square, 0.0F, 0.03125F), 1.0F / 65536);   // one trapezoid
    EXPECT_EQ(integralOf(square, 0.0F, 0.0625F), 1.0F / 8192);     // still one
    EXPECT_EQ(integralOf(square, 0.0F, 0.09375F), 21.0F / 65536);  // the last one is half as wide
    EXPECT_EQ(integralOf(square, 0.0F, 0.125F), 6.0F / 8192);
    EXPECT_EQ(integralOf(square, 0.0F, 1.0F), 171.0F / 512);
    EXPECT_EQ(integralOf(TestKernel::flat, 0.25F, 0.75F), 0.5F);
    EXPECT_EQ(integralOf(TestKernel::flat, 0.5F, 0.5F), 0.0F);
    EXPECT_EQ(integralOf(TestKernel::flat, 0.75F, 0.25F), -0.5F);
}

TEST(ScaleIntegral, DistancesAreTakenFromTheWindowsMiddle) {
    TestKernel kernel(3.0F);
    impl::_computeIntegral(&kernel, 0.5F, 0.5F, 0.59375F);
    EXPECT_EQ(abscissas(kernel), (std::vector<float>{-1.5F, -1.4375F, -1.40625F}));
}

// 0.006 + 4 / 16, rounded once, is 0.256000012.
TEST(ScaleIntegral, AbscissasAddUp) {
    TestKernel kernel(0.0F);
    impl::_computeIntegral(&kernel, 0.0F, 0.00600000005F, 0.3F);
    std::vector<float> const all = abscissas(kernel);
    ASSERT_EQ(all.size(), 6U);
    EXPECT_EQ(all[4], 0.255999982F);
}

// Half of the least number is a tie: alone it is 0, with another least number 2.
TEST(ScaleIntegral, TheMiddleIsRoundedOnce) {
    TestKernel kernel(least);
    impl::_computeIntegral(&kernel, least, 0.0F, 0.0F);
    EXPECT_EQ(abscissas(kernel), std::vector<float>{-2 * least});
}

// The last trapezoid is 1.5 of the least number; with 1 from the first it is 2, not 2 + 1.
TEST(ScaleIntegral, TheLastTrapezoidIsRoundedOnce) {
    auto const f = [](float x) { return x < 0.1F ? 16 * least : 32 * least; };
    EXPECT_EQ(integralOf(f, 0.0F, 0.125F), 2 * least);
}

// 2^24 + (1 + 1); one by one, they would be lost.
TEST(ScaleIntegral, ValuesAreAddedInPairs) {
    auto const f = [](float x) { return x < 0.05F ? 16777215.0F : x < 0.15F ? 1.0F : -1.0F; };
    EXPECT_EQ(integralOf(f, 0.0F, 0.1875F), 524288.0625F);
}

TEST(ScaleWeights, CoverTheWindow) {
    EXPECT_EQ(flatOf(1.0F), (Taps{64}));
    EXPECT_EQ(flatOf(2.0F), (Taps{32, 32}));
    EXPECT_EQ(flatOf(2.0F, 0.5F), (Taps{16, 32, 16}));
    EXPECT_EQ(flatOf(1.5F, 0.5F), (Taps{21, 43}));
    EXPECT_EQ(flatOf(0.5F, 0.25F), (Taps{64}));  // within a pixel
    EXPECT_EQ(weightsOf<short>(TestKernel(2.0F), 0.25F), (Taps{6144, 8192, 2048}));
    EXPECT_EQ(weightsOf<short>(TestKernel(1.0F)), (Taps{16384}));
}

TEST(ScaleWeights, TheMiddleTakesWhatIsTooMuch) {
    EXPECT_EQ(flatOf(2.5F), (Taps{26, 25, 13}));  // 25.6, 25.6, 12.8
    EXPECT_EQ(weightsOf<short>(TestKernel(2.5F)), (Taps{6554, 6553, 3277}));
}

// 2 + 1e-8 is 2 in single precision: no third tap.
TEST(ScaleWeights, TheWindowsEndIsAFloat) {
    EXPECT_EQ(flatOf(2.0F, 1e-8F), (Taps{32, 32}));
}

TEST(ScaleWeights, SumsOfEvenCountsAreForcedFromTheLowerMiddleOn) {
    EXPECT_EQ(flatOf(6), (Taps{11, 11, 10, 10, 11, 11}));                     // 66
    EXPECT_EQ(flatOf(10), (Taps{6, 6, 6, 7, 7, 7, 7, 6, 6, 6}));              // 60
    EXPECT_EQ(flatOf(14), (Taps{5, 5, 5, 5, 4, 4, 4, 4, 4, 4, 5, 5, 5, 5}));  // 70
    EXPECT_EQ(weightsOf<short>(TestKernel(6)), (Taps{2731, 2731, 2730, 2730, 2731, 2731}));
    // 31.5 and 32.5, away from zero
    EXPECT_EQ(weightsOf<signed char>(pairKernel(31.5F, 32.5F)), (Taps{31, 33}));
}

TEST(ScaleWeights, SumsOfOddCountsAreForcedFromTheMiddleOnTwice) {
    EXPECT_EQ(flatOf(3), (Taps{21, 22, 21}));                                          // 63
    EXPECT_EQ(flatOf(7), (Taps{9, 9, 9, 10, 9, 9, 9}));                                // 63
    EXPECT_EQ(flatOf(11), (Taps{6, 6, 6, 6, 6, 4, 6, 6, 6, 6, 6}));                    // 66
    EXPECT_EQ(flatOf(15), (Taps{4, 4, 4, 4, 4, 4, 5, 6, 5, 4, 4, 4, 4, 4, 4}));        // 60
    EXPECT_EQ(flatOf(17), (Taps{4, 4, 4, 4, 4, 4, 4, 3, 2, 3, 4, 4, 4, 4, 4, 4, 4}));  // 68
}

// 21 too few: two for the middle, 9 pairs, and one at the right.
TEST(ScaleWeights, SumsOfOddCountsGrowToTheRightFirst) {
    Taps expected(43, 1);
    std::fill(expected.begin() + 12, expected.begin() + 32, 2);
    expected[21] = 3;
    EXPECT_EQ(flatOf(43), expected);
}

// Weights that count as 0 show where a single pass comes: never at index 0 of an odd count.
TEST(ScaleWeights, ThereIsASinglePass) {
    Taps const passes[] = {{1},
                           {1, 1},
                           {0, 2, 1},
                           {1, 1, 1, 1},
                           {0, 1, 2, 1, 1},
                           {1, 1, 1, 1, 1, 1},
                           {0, 1, 1, 2, 1, 1, 1}};
    for (float const value : {notANumber, infinity, 1e38F}) {
        for (Taps const& pass : passes) {
            TestKernel const kernel(static_cast<float>(pass.size()), [=](float) { return value; });
            EXPECT_EQ(weightsOf<signed char>(kernel), pass) << value;
            EXPECT_EQ(weightsOf<short>(kernel), pass) << value;
        }
    }
}

TEST(ScaleWeights, RoundTiesAwayFromZero) {
    EXPECT_EQ(weightsOf<signed char>(pairKernel(64.5F, -0.5F)), (Taps{65, -1}));
    EXPECT_EQ(weightsOf<short>(pairKernel(16385.5F, -1.5F)), (Taps{16386, -2}));
}

// 3 x 64 and -2 x 64 don't fit; their remainders sum to -192, and one pass adds 2.
TEST(ScaleWeights, AreNarrowed) {
    EXPECT_EQ(weightsOf<signed char>(tapKernel({3.0F, -2.0F})), (Taps{-63, -127}));
    EXPECT_EQ(weightsOf<short>(tapKernel({3.0F, -2.0F})), (Taps{-16384 + 1, -32768 + 1}));
    EXPECT_EQ(weightsOf<signed char>(tapKernel({1.5F, -0.5F})), (Taps{96, -32}));
    EXPECT_EQ(weightsOf<signed char>(tapKernel({4.5F, -3.5F})), (Taps{32, 32}));  // 288 and -224
}

// Huge numbers that cancel are multiples of 2^16, or no numbers at all.
TEST(ScaleWeights, HugeOnesCountAsZero) {
    for (float const huge : {1e12F, 1e20F, 1e30F, 1e36F, 1e37F}) {
        EXPECT_EQ(weightsOf<signed char>(tapKernel({huge, -huge, 1.0F})), (Taps{0, 0, 64})) << huge;
        EXPECT_EQ(weightsOf<short>(tapKernel({huge, -huge, 1.0F})), (Taps{0, 0, 16384})) << huge;
    }
}

// (2^26 + 1) - 2^26 is 0; in another order it would be 1.
TEST(ScaleWeights, AreAddedUpInOrder) {
    expectException(StatusNullPointer, zeroSum, [] {
        weightsOf<signed char>(tapKernel({67108864.0F, 1.0F, -67108864.0F}));
    });
}

TEST(ScaleWeights, NeedASum) {
    auto const level = [](float value) { return [=](float) { return value; }; };
    for (float const value : {0.0F, -1.0F, -infinity, 0.0009F}) {
        expectException(StatusNullPointer, zeroSum,
                        [&] { weightsOf<signed char>(TestKernel(1.0F, level(value))); });
    }
    EXPECT_EQ(weightsOf<signed char>(TestKernel(1.0F, level(0.0011F))), (Taps{64}));
    for (float const width : {0.0F, -0.5F, -3.0F, -infinity}) {
        expectException(StatusNullPointer, zeroSum, [&] { flatOf(width); });
    }
    // a window that ends before it begins
    expectException(StatusNullPointer, zeroSum, [] { flatOf(-0.5F, 0.75F); });
    EXPECT_EQ(weightsOf<signed char>(TestKernel(-0.5F, level(-1.0F)), 0.75F), (Taps{64}));
}

TEST(ScaleWeights, AreClearedBeforeARefusal) {
    signed char weights[] = {9, 9, 9};
    float unnormalised[] = {9, 9, 9};
    TestKernel kernel(0.0F);
    EXPECT_ANY_THROW(impl::_computeWeights<signed char>(kernel, 0.0F, weights, unnormalised, 2));
    EXPECT_EQ(Taps(weights, weights + 3), (Taps{0, 0, 9}));
    EXPECT_EQ(Taps(unnormalised, unnormalised + 3), (Taps{0, 0, 9}));
}

TEST(ScaleWeights, ChecksComeInOrder) {
    std::vector<signed char> weights(80);
    std::vector<float> buffer(80);
    auto const refuses = [&](Status status, char const* text, signed char* p_weights,
                             float* p_buffer, int capacity, float phase, float width) {
        TestKernel kernel(width);
        expectException(status, text, [&] {
            impl::_computeWeights(kernel, phase, p_weights, p_buffer, capacity);
        });
    };
    signed char* const w = weights.data();
    refuses(StatusNullPointer, "Failure in _computeWeights(...): Parameter 'p_weights' is null.",
            nullptr, nullptr, 0, 2.0F, 70.0F);
    refuses(StatusNullPointer,
            "Failure in _computeWeights(...): Parameter 'p_weight_buffer' is null.", w, nullptr, 0,
            2.0F, 70.0F);
    for (int const capacity : {0, -1, 1073741824}) {
        refuses(StatusOutOfRange,
                "Failure in _computeWeights(...): Parameter 'weight_capacity' is out of range.", w,
                buffer.data(), capacity, 2.0F, 70.0F);
    }
    for (float const phase : {1.0F, 2.0F, -least, -0.5F, notANumber, infinity}) {
        refuses(StatusOutOfRange,
                "Failure in _computeWeights(...): Parameter 'phase' is out of range.", w,
                buffer.data(), 10, phase, 70.0F);
    }
    for (float const width : {70.0F, 10.5F, infinity}) {
        refuses(StatusCapacityExceeded,
                "Failure in _computeWeights(...): Not enough capacity to fit the kernel.", w,
                buffer.data(), 10, 0.0F, width);
    }
    refuses(StatusCapacityExceeded, tooWide, w, buffer.data(), 80, 0.0F, 70.0F);
    refuses(StatusCapacityExceeded, tooWide, w, buffer.data(), 80, 0.5F, 64.0F);
}

TEST(ScaleWeights, ThereAreAsManyAsTheSumAtMost) {
    EXPECT_EQ(weightsOf<signed char>(TestKernel(64.0F)), Taps(64, 1));
    EXPECT_EQ(weightsOf<short>(TestKernel(70.0F), 0.0F, 70).size(), 70U);
    EXPECT_EQ(weightsOf<short>(TestKernel(16384.0F), 0.0F, 16384), Taps(16384, 1));
    expectException(StatusCapacityExceeded, tooWide,
                    [] { weightsOf<short>(TestKernel(16384.0F), 0.5F, 16385); });
}

TEST(ScaleWeights, PhasesUpToOneAreTaken) {
    EXPECT_EQ(flatOf(1.0F, -0.0F), (Taps{64}));
    EXPECT_EQ(flatOf(1.0F, 0.99999994F), (Taps{0, 64}));
}

}  // namespace

}  // namespace ox::test::scale_weights
