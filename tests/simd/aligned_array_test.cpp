// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/aligned_array.h"

#include <gtest/gtest.h>

#include <numeric>

// Sanitizers end the process at a request that can't be met, unless they are told otherwise.
extern "C" char const* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" char const* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace ox::test {
namespace {

constexpr std::size_t slack = 64;

std::uintptr_t addressOf(void const* at) {
    return reinterpret_cast<std::uintptr_t>(at);
}

TEST(AlignedArray, StartsEmpty) {
    Simd::AlignedArray<int> const array;
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.size, 0U);
}

TEST(AlignedArray, IsAlignedAheadOfItsSlack) {
    for (std::size_t const align : {1U, 4U, 8U, 16U, 32U, 64U, 128U, 4096U}) {
        for (std::size_t const count : {1U, 2U, 3U, 15U, 16U, 17U, 1000U}) {
            Simd::AlignedArray<std::uint32_t> array;
            array.Resize(count, align);
            ASSERT_NE(array.data, nullptr);
            EXPECT_EQ(array.size, count);
            std::size_t const alignment = align < 8 ? 8 : align;
            EXPECT_EQ((addressOf(array.data) - slack) % alignment, 0U) << align;
        }
    }
}

// A sanitizer, or the allocator's own checks, would tell of a block that is too small.
TEST(AlignedArray, HasSlackOnBothSides) {
    for (std::size_t count = 1; count < 200; ++count) {
        Simd::AlignedArray<unsigned char> array;
        array.Resize(count, 16);
        unsigned char* const first = array.data - slack;
        unsigned char* const end = array.data + count + slack;
        std::iota(first, end, static_cast<unsigned char>(0));
        EXPECT_EQ(array[0], static_cast<unsigned char>(slack));
        EXPECT_EQ(array[count - 1], static_cast<unsigned char>(slack + count - 1));
    }
}

TEST(AlignedArray, KeepsItsBlockForTheSameCount) {
    Simd::AlignedArray<int> array;
    array.Resize(100, 16);
    array[99] = 5;
    int* const data = array.data;
    array.Resize(100, 16);
    EXPECT_EQ(array.data, data);
    EXPECT_EQ(array[99], 5);
}

TEST(AlignedArray, TakesAnotherBlockForAnotherCount) {
    Simd::AlignedArray<int> array;
    array.Resize(10, 16);
    array.Resize(100'000, 16);
    array[99'999] = 1;
    EXPECT_EQ(array.size, 100'000U);
    array.Resize(0, 16);
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.size, 0U);
    array.Resize(1, 16);
    EXPECT_NE(array.data, nullptr);
}

template <class Element>
std::string printedBy(Simd::AlignedArray<Element>& array, std::size_t count, std::size_t align) {
    testing::internal::CaptureStdout();
    array.Resize(count, align);
    return testing::internal::GetCapturedStdout();
}

TEST(AlignedArray, TellsOfAFailedAllocation) {
    constexpr std::size_t too_many = std::size_t{1} << 62;
    Simd::AlignedArray<unsigned char> array;
    array.Resize(7, 16);
    EXPECT_EQ(printedBy(array, too_many, 16),
              "The function posix_memalign can't allocate 4611686018427388032 bytes with align 16 "
              "!\n");
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.size, too_many);
    // The same count does nothing, and another one frees nothing.
    EXPECT_EQ(printedBy(array, too_many, 16), "");
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(printedBy(array, 7, 16), "");
    ASSERT_NE(array.data, nullptr);
    array[6] = 1;
    // 2^62 + 1 + 8 + 127, cut to a multiple of 8; the alignment as it is used.
    EXPECT_EQ(printedBy(array, too_many + 1, 5),
              "The function posix_memalign can't allocate 4611686018427388040 bytes with align 8 "
              "!\n");
    EXPECT_EQ(printedBy(array, 0, 16), "");
    EXPECT_EQ(array.data, nullptr);
}

TEST(AlignedArray, CountsBytesAndNotElementsWhenItFails) {
    Simd::AlignedArray<double> array;
    EXPECT_EQ(printedBy(array, std::size_t{1} << 59, 64),
              "The function posix_memalign can't allocate 4611686018427388032 bytes with align 64 "
              "!\n");
}

// A count of bytes that doesn't fit 64 bits must not wrap to a small block.
TEST(AlignedArray, DoesNotWrap) {
    Simd::AlignedArray<double> array;
    EXPECT_NE(printedBy(array, (std::size_t{1} << 61) + 1, 16), "");
    EXPECT_EQ(array.data, nullptr);
    EXPECT_NE(printedBy(array, SIZE_MAX, 16), "");
    EXPECT_EQ(array.data, nullptr);
    Simd::AlignedArray<unsigned char> bytes;
    EXPECT_NE(printedBy(bytes, SIZE_MAX - 10, 16), "");
    EXPECT_EQ(bytes.data, nullptr);
}

}  // namespace
}  // namespace ox::test
