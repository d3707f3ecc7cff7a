// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Half floats: every half, and floats at and beside every place where the half changes.
#include <gtest/gtest.h>

#include <vector>

#include "simd/half_steps.h"
#include "simd/kernel_check.h"
#include "simd/number_draws.h"

namespace ox::test::half {
namespace {

constexpr std::size_t halfPatterns = 65536;

template <class Element>
Planes planesOf(std::vector<Element>& elements) {
    Planes planes;
    planes[0] = {static_cast<unsigned char*>(static_cast<void*>(elements.data())), 0};
    return planes;
}

template <class Element, class Record>
void check(Record const& record, std::vector<Element>& elements) {
    ASSERT_TRUE(everyRoutineAgrees(record, Operands{planesOf(elements), {}, elements.size(), 1}));
}

TEST(Half, EveryHalfBecomesItsFloat) {
    std::vector<std::uint16_t> halves(halfPatterns);
    for (std::size_t i = 0; i < halves.size(); ++i) {
        halves[i] = static_cast<std::uint16_t>(i);
    }
    check(Simd::HalvesToFloats, halves);
}

TEST(Half, EveryHalfButSomeNaNsComesBack) {
    std::vector<std::uint16_t> halves(halfPatterns);
    for (std::size_t i = 0; i < halves.size(); ++i) {
        halves[i] = static_cast<std::uint16_t>(i);
    }
    std::vector<float> floats(halves.size());
    std::vector<std::uint16_t> again(halves.size());
    Simd::Base::HalvesToFloats(halves.data(), halves.size(), floats.data());
    Simd::Base::FloatsToHalves(floats.data(), floats.size(), again.data());
    EXPECT_EQ(again, halves);
    for (VectorTarget const& target : vectorTargets()) {
        target.routines.HalvesToFloats(halves.data(), halves.size(), floats.data());
        target.routines.FloatsToHalves(floats.data(), floats.size(), again.data());
        for (std::size_t i = 0; i < halves.size(); ++i) {
            bool const nan = (i & 0x7FFF) > 0x7C00;
            ASSERT_EQ(again[i], nan ? (halves[i] | 0x200) : halves[i]) << target.name;
        }
    }
}

// Patterns at which a half begins, of both roundings, and their neighbours, of both signs.
TEST(Half, FloatsBesideEveryStepBecomeTheirHalf) {
    std::vector<float> floats;
    for (Rounding const rounding : {Rounding::Truncating, Rounding::ToNearest}) {
        for (std::uint32_t const start : halfSteps(rounding)) {
            for (std::uint32_t const bits : {start - 1, start, start + 1}) {
                floats.push_back(floatOf(bits & 0x7FFFFFFF));
                floats.push_back(floatOf(bits | 0x80000000));
            }
        }
    }
    check(Simd::FloatsToHalves, floats);
}

TEST(Half, NaNsKeepWhatFitsOfTheirPayload) {
    std::vector<float> floats;
    for (std::uint32_t high = 0; high < 1024; ++high) {
        for (std::uint32_t const low : {0U, 1U, 0x1000U, 0x1FFFU}) {
            std::uint32_t const bits = 0x7F800000 | high << 13 | low;
            floats.push_back(floatOf(bits));
            floats.push_back(floatOf(bits | 0x80000000));
        }
    }
    check(Simd::FloatsToHalves, floats);
}

TEST(Half, DrawnFloatsBecomeTheirHalf) {
    Random random;
    std::vector<float> floats(emulated() ? 200'000 : 4'000'000);
    for (float& number : floats) {
        number = drawForHalf(random);
    }
    check(Simd::FloatsToHalves, floats);
}

}  // namespace
}  // namespace ox::test::half
