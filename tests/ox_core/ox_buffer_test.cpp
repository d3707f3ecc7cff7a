// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

static_assert(!std::is_copy_constructible_v<Buffer> && !std::is_copy_assignable_v<Buffer>);

TEST(Buffer, StartsEmpty) {
    Buffer const buffer;
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.context, DeviceContext());
    EXPECT_EQ(static_cast<void const*>(&buffer), static_cast<void const*>(&buffer.context));
}

TEST(Buffer, StorageIsAlignedWithRoomBehindIt) {
    for (unsigned long const bytes : {0UL, 1UL, 63UL, 64UL, 1000UL}) {
        Buffer buffer;
        buffer.resize(bytes, false);
        ASSERT_NE(buffer.data, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data) % 64, 0U);
        std::memset(buffer.data, 1, bytes + 64);
        EXPECT_EQ(buffer.data[bytes + 63], 1);
    }
}

TEST(Buffer, KeepsStorageThatIsLargeEnough) {
    Buffer buffer;
    buffer.resize(100, false);
    unsigned char const* const storage = buffer.data;
    std::uint64_t const calls = allocationCalls();
    buffer.resize(10, false);
    buffer.resize(100, false);
    EXPECT_EQ(buffer.data, storage);
    EXPECT_EQ(allocationCalls(), calls);
}

TEST(Buffer, KeepsContentsOnDemand) {
    Buffer buffer;
    buffer.resize(10, false);
    std::memset(buffer.data, 7, 10);
    buffer.resize(100000, true);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(buffer.data[i], 7);
    }
}

TEST(Buffer, SetZeroClearsTheBytesLastAskedFor) {
    Buffer buffer;
    buffer.setZero();
    buffer.resize(100, false);
    std::memset(buffer.data, 7, 100);
    buffer.resize(10, false);
    buffer.setZero();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(buffer.data[i], 0);
    }
    EXPECT_EQ(buffer.data[10], 7);
}

TEST(Buffer, ClearGivesUpTheStorage) {
    std::int64_t const before = liveAllocations();
    Buffer buffer;
    buffer.resize(100, false);
    EXPECT_EQ(liveAllocations(), before + 1);
    buffer.clear();
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(liveAllocations(), before);
    buffer.clear();
    buffer.resize(5, false);
    EXPECT_NE(buffer.data, nullptr);
}

TEST(Buffer, DestructorGivesUpTheStorage) {
    std::int64_t const before = liveAllocations();
    {
        Buffer buffer;
        buffer.resize(100, false);
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(Buffer, FailureLeavesItAsItWas) {
    Buffer buffer;
    buffer.resize(10, false);
    std::memset(buffer.data, 7, 10);
    unsigned char const* const storage = buffer.data;
    for (unsigned long const bytes : {std::numeric_limits<unsigned long>::max(),
                                      std::numeric_limits<unsigned long>::max() - 63, 1UL << 62}) {
        expectStatus(StatusCapacityExceeded, [&] { buffer.resize(bytes, false); });
        expectStatus(StatusCapacityExceeded, [&] { buffer.resize(bytes, true); });
    }
    {
        FailingAllocation const failing(1);
        expectStatus(StatusCapacityExceeded, [&] { buffer.resize(1000, false); });
    }
    EXPECT_EQ(buffer.data, storage);
    EXPECT_EQ(buffer.data[9], 7);
    buffer.resize(1000, true);
    EXPECT_EQ(buffer.data[9], 7);
}

TEST(Buffer, CarriesAContext) {
    Buffer const buffer(DeviceContext(7, std::make_shared<int>(1)));
    EXPECT_EQ(buffer.context, DeviceContext(7, nullptr));
}

}  // namespace

}  // namespace ox::test
