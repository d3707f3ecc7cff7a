// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_tensor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <type_traits>

#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

static_assert(TENSOR_UINT_8 == 1 && TENSOR_INT_8 == 2 && TENSOR_FLOAT_16 == 3 &&
              TENSOR_FLOAT_32 == 5 && TENSOR_FORMAT_NCHW == 1 && TENSOR_FORMAT_NHWC == 2);
static_assert(TENSOR_FORMAT_NONE == 0 && TENSOR_CHANNEL_ORDER_NONE == 0);
static_assert(sizeof(TensorDataType) == 4 && sizeof(TensorFormat) == 4 &&
              sizeof(TensorChannelOrder) == 4);
static_assert(std::is_same_v<decltype(TensorSize::count), std::uint64_t> &&
              std::is_same_v<decltype(TensorSize::values), std::int32_t[4]>);

TensorLayout floats(TensorSize const& size, TensorSize const& strides) {
    return {TENSOR_FLOAT_32, TENSOR_FORMAT_NONE, size, strides, TENSOR_CHANNEL_ORDER_NONE};
}

TEST(TensorLayout, KeepsWhatItIsGiven) {
    TensorLayout const layout(TENSOR_FLOAT_16, static_cast<TensorFormat>(3), {3, {2, 3, 4}},
                              {3, {48, 16, 4}}, static_cast<TensorChannelOrder>(1));
    EXPECT_EQ(layout.dataType(), TENSOR_FLOAT_16);
    EXPECT_EQ(layout.format(), static_cast<TensorFormat>(3));
    EXPECT_EQ(layout.channelOrder(), static_cast<TensorChannelOrder>(1));
    EXPECT_EQ(layout.size().count, 3U);
    EXPECT_EQ(layout.size().values[2], 4);
    EXPECT_EQ(layout.strides().count, 3U);
    EXPECT_EQ(layout.strides().values[1], 16);
}

TEST(TensorLayout, MembersStandInOrder) {
    TensorLayout const layout;
    auto const offset = [&layout](auto const& member) {
        return reinterpret_cast<char const*>(&member) - reinterpret_cast<char const*>(&layout);
    };
    EXPECT_EQ(offset(layout.size()), 8);
    EXPECT_EQ(offset(layout.strides()), 32);
    EXPECT_EQ(sizeof(TensorLayout), 72U);
}

TEST(TensorLayout, TotalIsTheLargestExtent) {
    EXPECT_EQ(TensorLayout().totalBytes(), 0U);
    EXPECT_EQ(floats({3, {2, 3, 4}}, {3, {48, 16, 4}}).totalBytes(), 96U);
    EXPECT_EQ(floats({3, {2, 30, 4}}, {3, {48, 16, 4}}).totalBytes(), 480U);
    EXPECT_EQ(floats({2, {2, 3, 1000, 1000}}, {2, {12, 4, 1000, 1000}}).totalBytes(), 24U);
    EXPECT_EQ(floats({4, {1, 1, 1, 5}}, {4, {4, 4, 4, 4}}).totalBytes(), 20U);
    EXPECT_EQ(floats({1, {2147483647}}, {1, {2147483647}}).totalBytes(), 4611686014132420609U);
}

TEST(TensorLayout, RefusesSizesThatMeanNothing) {
    expectStatus(StatusInvalidParameter, [] { floats({5, {1, 1, 1, 1}}, {5, {4, 4, 4, 4}}); });
    expectStatus(StatusInvalidParameter, [] { floats({2, {2, 3}}, {1, {12}}); });
    expectStatus(StatusInvalidParameter, [] { floats({1, {-2}}, {1, {4}}); });
    expectStatus(StatusInvalidParameter, [] { floats({1, {2}}, {1, {-4}}); });
}

TEST(Tensor, StartsWithoutStorage) {
    Tensor const tensor;
    EXPECT_FALSE(tensor.initialized());
    EXPECT_EQ(tensor.data(), nullptr);
    EXPECT_EQ(tensor.deviceContext(), DeviceContext());
    EXPECT_EQ(tensor.layout().totalBytes(), 0U);
    EXPECT_EQ(static_cast<void const*>(&tensor), static_cast<void const*>(&tensor.layout()));
}

TEST(Tensor, ReuseGivesWritableStorage) {
    Tensor tensor;
    tensor.reuse(floats({2, {3, 5}}, {2, {20, 4}}), DeviceContext());
    ASSERT_TRUE(tensor.initialized());
    std::memset(tensor.data(), 1, 60);
    EXPECT_EQ(tensor.layout().size().values[1], 5);
    EXPECT_EQ(tensor.layout().totalBytes(), 60U);
    EXPECT_EQ(tensor.deviceContext(), DeviceContext());
    tensor.reuse(floats({1, {2}}, {1, {4}}), DeviceContext(7, std::make_shared<int>(1)));
    EXPECT_EQ(tensor.layout().size().count, 1U);
    EXPECT_EQ(tensor.deviceContext(), DeviceContext(7, nullptr));
}

TEST(Tensor, ReuseWithItsOwnLayout) {
    Tensor tensor;
    tensor.reuse(floats({2, {3, 5}}, {2, {20, 4}}), DeviceContext());
    tensor.reuse(tensor.layout(), DeviceContext());
    EXPECT_EQ(tensor.layout().totalBytes(), 60U);
    EXPECT_EQ(tensor.layout().size().count, 2U);
}

TEST(Tensor, ReuseTakesStorageThatIsLargeEnoughAndNotShared) {
    Tensor tensor;
    tensor.reuse(floats({1, {100}}, {1, {4}}), DeviceContext());
    std::uint64_t const calls = allocationCalls();
    tensor.reuse(floats({1, {10}}, {1, {4}}), DeviceContext());
    tensor.reuse(floats({2, {10, 10}}, {2, {40, 4}}), DeviceContext());
    EXPECT_EQ(allocationCalls(), calls);
    std::memset(tensor.data(), 1, 400);
}

TEST(Tensor, WithoutBytesIsInitializedAllTheSame) {
    Tensor tensor;
    tensor.reuse(TensorLayout(), DeviceContext());
    EXPECT_TRUE(tensor.initialized());
    EXPECT_NE(tensor.data(), nullptr);
}

TEST(Tensor, CopiesShareStorage) {
    std::int64_t const before = liveAllocations();
    {
        Tensor tensor;
        tensor.reuse(floats({1, {4}}, {1, {4}}), DeviceContext());
        Tensor const copy = tensor;
        EXPECT_EQ(copy.data(), tensor.data());
        tensor.data()[3] = 9;
        tensor.reuse(floats({1, {400}}, {1, {4}}), DeviceContext());
        tensor.data()[3] = 1;
        EXPECT_NE(copy.data(), tensor.data());
        EXPECT_EQ(copy.data()[3], 9);
        EXPECT_EQ(copy.layout().totalBytes(), 16U);
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(Tensor, FailureLeavesNoStorage) {
    Tensor tensor;
    tensor.reuse(floats({1, {4}}, {1, {4}}), DeviceContext());
    expectStatus(StatusCapacityExceeded, [&] {
        tensor.reuse(floats({1, {2147483647}}, {1, {2147483647}}), DeviceContext());
    });
    EXPECT_FALSE(tensor.initialized());
    EXPECT_EQ(tensor.data(), nullptr);
}

}  // namespace

}  // namespace ox::test
