// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Tensors of halves to tensors of floats.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "ox_cv/ox_cv_helpers.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

constexpr char notHalves[] =
    "Assertion failed: src.initialized() && src.layout().dataType() == TENSOR_FLOAT_16";
constexpr char otherDevice[] =
    "Assertion failed: src.deviceContext() == DeviceContext::cpuContext() && src.deviceContext() "
    "== dst.deviceContext()";

DeviceContext device(std::uint64_t identity) {
    return {identity, std::make_shared<int>(1)};
}

Tensor tensorOf(TensorDataType type, TensorSize const& size, TensorSize const& strides,
                DeviceContext const& context = DeviceContext()) {
    Tensor tensor;
    tensor.reuse(
        {type, static_cast<TensorFormat>(2), size, strides, static_cast<TensorChannelOrder>(1)},
        context);
    return tensor;
}

// The half of a number from 0 to 15.
unsigned short halfOf(std::size_t number) {
    constexpr unsigned short halves[]{0x0000, 0x3C00, 0x4000, 0x4200, 0x4400, 0x4500,
                                      0x4600, 0x4700, 0x4800, 0x4880, 0x4900, 0x4980,
                                      0x4A00, 0x4A80, 0x4B00, 0x4B80};
    return halves[number];
}

// Halves 0, 1, 2 and so on, from 0 again after 15, in all of the tensor's bytes.
Tensor countingHalves(TensorSize const& size, TensorSize const& strides) {
    Tensor tensor = tensorOf(TENSOR_FLOAT_16, size, strides);
    for (std::size_t i = 0; i < tensor.layout().totalBytes() / 2; ++i) {
        unsigned short const half = halfOf(i % 16);
        std::memcpy(tensor.data() + i * sizeof half, &half, sizeof half);
    }
    return tensor;
}

std::vector<float> floatsOf(Tensor const& tensor) {
    std::vector<float> floats(tensor.layout().totalBytes() / sizeof(float));
    if (!floats.empty()) {
        std::memcpy(floats.data(), tensor.data(), floats.size() * sizeof(float));
    }
    return floats;
}

std::vector<float> countingFloats(std::size_t count) {
    std::vector<float> floats;
    for (std::size_t i = 0; i < count; ++i) {
        floats.push_back(static_cast<float>(i % 16));
    }
    return floats;
}

TEST(TensorFp16ToFp32, ConvertsEveryNumber) {
    for (std::int32_t const count : {1, 2, 3, 4, 5, 15, 33}) {
        Tensor const src = countingHalves({2, {2, count}}, {2, {2 * count, 2}});
        Tensor dst;
        tensorFp16ToFp32(src, dst);
        EXPECT_EQ(floatsOf(dst), countingFloats(2 * static_cast<std::size_t>(count)));
    }
}

TEST(TensorFp16ToFp32, DoublesTheStridesAndDropsTheChannelOrder) {
    Tensor const src = countingHalves({3, {2, 3, 5}}, {3, {36, 12, 2}});
    Tensor dst;
    tensorFp16ToFp32(src, dst);
    TensorLayout const& layout = dst.layout();
    EXPECT_EQ(layout.dataType(), TENSOR_FLOAT_32);
    EXPECT_EQ(layout.format(), static_cast<TensorFormat>(2));
    EXPECT_EQ(layout.channelOrder(), TENSOR_CHANNEL_ORDER_NONE);
    EXPECT_EQ(layout.size().count, 3U);
    EXPECT_EQ(layout.strides().count, 3U);
    std::int32_t const sides[]{2, 3, 5};
    std::int32_t const strides[]{72, 24, 4};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(layout.size().values[i], sides[i]);
        EXPECT_EQ(layout.strides().values[i], strides[i]);
    }
    EXPECT_EQ(layout.totalBytes(), 144U);
    EXPECT_EQ(dst.deviceContext(), DeviceContext::cpuContext());
    EXPECT_EQ(src.layout().channelOrder(), static_cast<TensorChannelOrder>(1));
}

// Five numbers of each six are the tensor's own; the sixth is converted as well.
TEST(TensorFp16ToFp32, ConvertsThePaddingWithTheRest) {
    Tensor const src = countingHalves({2, {3, 5}}, {2, {12, 2}});
    Tensor dst;
    tensorFp16ToFp32(src, dst);
    EXPECT_EQ(floatsOf(dst), countingFloats(18));
}

TEST(TensorFp16ToFp32, TakesFourDimensions) {
    Tensor const src = countingHalves({4, {2, 3, 2, 4}}, {4, {48, 16, 8, 2}});
    Tensor dst;
    tensorFp16ToFp32(src, dst);
    EXPECT_EQ(floatsOf(dst), countingFloats(48));
    EXPECT_EQ(dst.layout().strides().values[3], 4);
}

TEST(TensorFp16ToFp32, TakesTensorsWithoutNumbers) {
    Tensor const src = tensorOf(TENSOR_FLOAT_16, {2, {0, 5}}, {2, {10, 0}});
    Tensor dst;
    tensorFp16ToFp32(src, dst);
    EXPECT_TRUE(dst.initialized());
    EXPECT_EQ(dst.layout().dataType(), TENSOR_FLOAT_32);
    EXPECT_EQ(dst.layout().totalBytes(), 0U);
}

TEST(TensorFp16ToFp32, ReplacesWhatTheDestinationWas) {
    Tensor const src = countingHalves({1, {7}}, {1, {2}});
    for (TensorDataType const type : {TENSOR_FLOAT_16, TENSOR_FLOAT_32, TENSOR_DATA_TYPE_NONE}) {
        Tensor dst = tensorOf(type, {2, {9, 9}}, {2, {36, 4}});
        tensorFp16ToFp32(src, dst);
        EXPECT_EQ(dst.layout().size().count, 1U);
        EXPECT_EQ(floatsOf(dst), countingFloats(7));
    }
}

// Storage that fits is kept only where nobody else looks at it, and that is the source's here.
TEST(TensorFp16ToFp32, DestinationOnTheSourcesStorage) {
    Tensor const src = countingHalves({1, {40}}, {1, {2}});
    Tensor dst = src;
    tensorFp16ToFp32(src, dst);
    EXPECT_EQ(floatsOf(dst), countingFloats(40));
    EXPECT_NE(dst.data(), src.data());
    EXPECT_EQ(src.layout().dataType(), TENSOR_FLOAT_16);
    Tensor again;
    tensorFp16ToFp32(src, again);
    EXPECT_EQ(floatsOf(again), countingFloats(40));
}

TEST(TensorFp16ToFp32, SourceAndDestinationAreOneHandle) {
    // storage that would hold the floats as well
    Tensor tensor = tensorOf(TENSOR_FLOAT_16, {1, {400}}, {1, {2}});
    tensor.reuse({TENSOR_FLOAT_16, TENSOR_FORMAT_NONE, {1, {40}}, {1, {2}}, {}}, DeviceContext());
    for (std::size_t i = 0; i < 40; ++i) {
        unsigned short const half = halfOf(i % 16);
        std::memcpy(tensor.data() + i * sizeof half, &half, sizeof half);
    }
    tensorFp16ToFp32(tensor, tensor);
    EXPECT_EQ(tensor.layout().dataType(), TENSOR_FLOAT_32);
    EXPECT_EQ(floatsOf(tensor), countingFloats(40));
}

TEST(TensorFp16ToFp32, TakesHalvesOnly) {
    Tensor dst = countingHalves({1, {4}}, {1, {2}});
    expectException(StatusAssertionFailed, notHalves, [&] { tensorFp16ToFp32(Tensor(), dst); });
    for (std::uint32_t const type : {0U, 1U, 2U, 4U, 5U, 6U}) {
        Tensor const src = tensorOf(static_cast<TensorDataType>(type), {1, {4}}, {1, {4}});
        expectException(StatusAssertionFailed, notHalves, [&] { tensorFp16ToFp32(src, dst); });
    }
    EXPECT_EQ(dst.layout().dataType(), TENSOR_FLOAT_16);
    EXPECT_EQ(dst.layout().totalBytes(), 8U);
}

TEST(TensorFp16ToFp32, BothAreOnTheCpu) {
    Tensor const here = countingHalves({1, {4}}, {1, {2}});
    Tensor const there = tensorOf(TENSOR_FLOAT_16, {1, {4}}, {1, {2}}, device(7));
    Tensor dst_here = countingHalves({1, {4}}, {1, {2}});
    Tensor dst_there = tensorOf(TENSOR_FLOAT_32, {1, {4}}, {1, {4}}, device(7));
    Tensor none;
    for (auto const& [src, dst] : {std::pair{&here, &dst_there},
                                   {&there, &dst_there},
                                   {&there, &dst_here},
                                   {&there, &none}}) {
        expectException(StatusAssertionFailed, otherDevice,
                        [&, from = src, to = dst] { tensorFp16ToFp32(*from, *to); });
    }
    EXPECT_FALSE(none.initialized());
    EXPECT_EQ(dst_here.layout().dataType(), TENSOR_FLOAT_16);
    // the type is looked at first
    Tensor const floats = tensorOf(TENSOR_FLOAT_32, {1, {4}}, {1, {4}}, device(7));
    expectException(StatusAssertionFailed, notHalves, [&] { tensorFp16ToFp32(floats, dst_here); });
}

}  // namespace

}  // namespace ox::test
