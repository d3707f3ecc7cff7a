// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Half floats by the free functions: which rounding applies is a matter of the count.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "ox_cv/ox_cv_helpers.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

using FloatLimits = std::numeric_limits<float>;

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float floatOf(std::uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Conversions between two blocks of memory, behind which nothing can be read or written; `count`
// copies of one value, whose results have to be equal.
template <class To, class From, class Convert>
To convertCopies(From value, std::size_t count, Guard guard, Convert convert) {
    GuardedMemory src(count * sizeof(From), guard);
    GuardedMemory dst(count * sizeof(To), guard);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(src.data() + i * sizeof(From), &value, sizeof value);
    }
    convert(reinterpret_cast<From const*>(src.data()), count, reinterpret_cast<To*>(dst.data()));
    EXPECT_EQ(dst.touched(), 0);
    for (std::size_t i = 1; i < count; ++i) {
        EXPECT_EQ(std::memcmp(dst.data(), dst.data() + i * sizeof(To), sizeof(To)), 0)
            << "element " << i << " of " << count;
    }
    To result{};
    std::memcpy(&result, dst.data(), sizeof result);
    return result;
}

unsigned short halfOf(float value, std::size_t count) {
    return convertCopies<unsigned short>(value, count, Guard::AtEnd, convertFp32ToFp16);
}

std::uint32_t singleBitsOf(unsigned short half, std::size_t count) {
    return bitsOf(convertCopies<float>(half, count, Guard::AtEnd, convertFp16ToFp32));
}

struct HalfCase {
    float value;
    unsigned short cut;      // of fewer than four
    unsigned short rounded;  // of four or more
};

TEST(ConvertFp32ToFp16, TheCountDecidesOnRounding) {
    HalfCase const cases[] = {
        {1.0F, 0x3C00, 0x3C00},
        {1.0009765F, 0x3C00, 0x3C01},
        {65504.0F, 0x7BFF, 0x7BFF},
        {65505.0F, 0x7C00, 0x7BFF},
        {65519.0F, 0x7C00, 0x7BFF},
        {65520.0F, 0x7C00, 0x7C00},
        {1e30F, 0x7C00, 0x7C00},
        {0x1p-24F, 0x0001, 0x0001},
        {0x1.8p-25F, 0x0000, 0x0001},
        {0x1p-25F, 0x0000, 0x0000},      // a tie, to even
        {0x1.8p-24F, 0x0001, 0x0002},    // a tie, to even
        {0x1.4p-23F, 0x0002, 0x0002},    // another
        {0x1.FFCp-15F, 0x03FF, 0x0400},  // up to the smallest normal one
        {0x1p-14F, 0x0400, 0x0400},
        {1.0F + 0x1p-11F, 0x3C00, 0x3C00},  // a tie, to even
        {1.0F + 0x1.8p-10F, 0x3C01, 0x3C02},
        {1.0F + 0x1.FFFp-11F, 0x3C00, 0x3C01},
        {FloatLimits::denorm_min(), 0x0000, 0x0000},
        {0.0F, 0x0000, 0x0000},
        {FloatLimits::infinity(), 0x7C00, 0x7C00},
    };
    for (HalfCase const& each : cases) {
        for (std::size_t const count : {1U, 2U, 3U}) {
            EXPECT_EQ(halfOf(each.value, count), each.cut) << each.value;
            EXPECT_EQ(halfOf(-each.value, count), each.cut | 0x8000) << -each.value;
        }
        for (std::size_t const count : {4U, 5U, 7U, 16U, 19U, 35U}) {
            EXPECT_EQ(halfOf(each.value, count), each.rounded) << each.value;
            EXPECT_EQ(halfOf(-each.value, count), each.rounded | 0x8000) << -each.value;
        }
    }
}

// Fewer than four keep the upper payload as it is, with the smallest one in place of none.
TEST(ConvertFp32ToFp16, NumbersThatAreNone) {
    HalfCase const cases[] = {
        {floatOf(0x7F800001), 0x7C01, 0x7E00}, {floatOf(0x7F801FFF), 0x7C01, 0x7E00},
        {floatOf(0x7F802000), 0x7C01, 0x7E01}, {floatOf(0x7FA00000), 0x7D00, 0x7F00},
        {floatOf(0x7FC00000), 0x7E00, 0x7E00}, {floatOf(0xFFFFFFFF), 0xFFFF, 0xFFFF},
    };
    for (HalfCase const& each : cases) {
        EXPECT_EQ(halfOf(each.value, 3), each.cut) << std::hex << bitsOf(each.value);
        EXPECT_EQ(halfOf(each.value, 4), each.rounded) << std::hex << bitsOf(each.value);
    }
}

TEST(ConvertFp16ToFp32, IsExact) {
    struct {
        unsigned short half;
        float value;
    } const cases[] = {
        {0x0000, 0.0F},
        {0x0001, 0x1p-24F},
        {0x03FF, 1023 * 0x1p-24F},
        {0x0400, 0x1p-14F},
        {0x3C00, 1.0F},
        {0x3C01, 1.0F + 0x1p-10F},
        {0x7BFF, 65504.0F},
        {0x7C00, FloatLimits::infinity()},
        {0x3555, 0x1.554p-2F},
    };
    for (auto const& each : cases) {
        for (std::size_t const count : {1U, 3U, 4U, 5U, 16U, 23U}) {
            auto const negative = static_cast<unsigned short>(each.half | 0x8000);
            EXPECT_EQ(singleBitsOf(each.half, count), bitsOf(each.value)) << each.value;
            EXPECT_EQ(singleBitsOf(negative, count), bitsOf(-each.value)) << -each.value;
        }
    }
}

TEST(ConvertFp16ToFp32, TheCountDecidesOnQuieting) {
    EXPECT_EQ(singleBitsOf(0x7C01, 3), 0x7F802000U);
    EXPECT_EQ(singleBitsOf(0x7C01, 4), 0x7FC02000U);
    EXPECT_EQ(singleBitsOf(0xFD55, 3), 0xFFAAA000U);
    EXPECT_EQ(singleBitsOf(0xFD55, 4), 0xFFEAA000U);
    EXPECT_EQ(singleBitsOf(0x7E03, 3), 0x7FC06000U);
    EXPECT_EQ(singleBitsOf(0x7E03, 4), 0x7FC06000U);
}

// Every half is a float that gives it back, whichever way both are counted.
TEST(HalfFloats, ThereAndBack) {
    std::vector<unsigned short> halves;
    for (unsigned bits = 0; bits < 0x10000; bits += emulated() ? 7U : 1U) {
        bool const is_number = (bits & 0x7FFF) <= 0x7C00;
        halves.push_back(static_cast<unsigned short>(is_number ? bits : 0));
    }
    std::vector<float> singles(halves.size());
    std::vector<unsigned short> back(halves.size());
    convertFp16ToFp32(halves.data(), halves.size(), singles.data());
    convertFp32ToFp16(singles.data(), singles.size(), back.data());
    EXPECT_EQ(back, halves);
    for (std::size_t i = 0; i < halves.size(); ++i) {
        float single = 0;
        unsigned short half = 0;
        convertFp16ToFp32(&halves[i], 1, &single);
        convertFp32ToFp16(&single, 1, &half);
        ASSERT_EQ(half, halves[i]);
        ASSERT_EQ(bitsOf(single), bitsOf(singles[i]));
    }
}

// Each element has its own result at every count.
TEST(HalfFloats, EveryCountInPlace) {
    Random random;
    for (std::size_t count = 0; count <= 70; ++count) {
        for (Guard const guard : {Guard::AtStart, Guard::AtEnd}) {
            GuardedMemory singles(count * sizeof(float), guard);
            GuardedMemory halves(count * sizeof(short), guard);
            auto* const single = reinterpret_cast<float*>(singles.data());
            auto* const half = reinterpret_cast<unsigned short*>(halves.data());
            std::vector<int> numbers(count);
            for (std::size_t i = 0; i < count; ++i) {
                numbers[i] = random.between(-2048, 2048);
                single[i] = static_cast<float>(numbers[i]);
            }
            convertFp32ToFp16(single, count, half);
            std::memset(singles.data(), 0, singles.size());
            convertFp16ToFp32(half, count, single);
            for (std::size_t i = 0; i < count; ++i) {
                EXPECT_EQ(single[i], static_cast<float>(numbers[i])) << i << " of " << count;
            }
            EXPECT_EQ(singles.touched(), 0);
            EXPECT_EQ(halves.touched(), 0);
        }
    }
}

TEST(HalfFloats, NothingForNone) {
    convertFp32ToFp16(nullptr, 0, nullptr);
    convertFp16ToFp32(nullptr, 0, nullptr);
    float single = 7.0F;
    unsigned short half = 7;
    convertFp32ToFp16(&single, 0, &half);
    convertFp16ToFp32(&half, 0, &single);
    EXPECT_EQ(single, 7.0F);
    EXPECT_EQ(half, 7);
}

}  // namespace

}  // namespace ox::test
