// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What `FrameToTensor` refuses, by status and text, and in which order.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::frame_to_tensor_refusals {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

TensorRecipe goodRecipe() {
    TensorRecipe recipe;
    recipe.width = 6;
    recipe.height = 4;
    return recipe;
}

std::string textOf(char const* field) {
    return std::string("Failure in FrameToTensor::reuse(...) : field '") + field +
           "' of the recipe is invalid.";
}

struct BadField {
    char const* name;
    std::function<void(TensorRecipe&)> spoil;
};

// In the order of the fields.
std::vector<BadField> const& badFields() {
    static std::vector<BadField> const fields{
        {"width", [](auto& r) { r.width = 0; }},
        {"height", [](auto& r) { r.height = -1; }},
        {"fit", [](auto& r) { r.fit = static_cast<TensorFit>(4); }},
        {"method", [](auto& r) { r.method = static_cast<TensorMethod>(4); }},
        {"precision", [](auto& r) { r.precision = static_cast<ScalerPrecision>(15); }},
        {"colour", [](auto& r) { r.colour = static_cast<TensorColour>(3); }},
        {"layout", [](auto& r) { r.layout = TENSOR_FORMAT_NONE; }},
        {"element", [](auto& r) { r.element = static_cast<TensorDataType>(4); }},
        {"mean", [](auto& r) { r.mean[2] = std::nanf(""); }},
        {"scale", [](auto& r) { r.scale[1] = -infinity; }},
        {"quantScale", [](auto& r) { r.quantScale = 0.0F; }},
        {"matrix", [](auto& r) { r.matrix = static_cast<TensorMatrix>(4); }},
        {"range", [](auto& r) { r.range = static_cast<TensorRange>(2); }},
    };
    return fields;
}

TEST(FrameToTensorRefusals, TheFirstBadFieldIsNamed) {
    TensorRecipe recipe = goodRecipe();
    FrameToTensor object;
    object.reuse(recipe);
    for (auto field = badFields().rbegin(); field != badFields().rend(); ++field) {
        TensorRecipe alone = goodRecipe();
        field->spoil(alone);
        field->spoil(recipe);
        for (TensorRecipe const& bad : {alone, recipe}) {
            expectException(StatusInvalidParameter, textOf(field->name),
                            [&] { object.reuse(bad); });
        }
    }
    EXPECT_EQ(object.layout(1).size().values[3], 6) << "the former recipe is kept";
    for (float const bad : {-1.0F, infinity, std::nanf("")}) {
        recipe = goodRecipe();
        recipe.quantScale = bad;
        expectException(StatusInvalidParameter, textOf("quantScale"),
                        [&] { object.reuse(recipe); });
    }
}

TEST(FrameToTensorRefusals, Layouts) {
    FrameToTensor object;
    EXPECT_FALSE(object.initialized());
    expectException(StatusNotInitialized,
                    "FrameToTensor is not initialized. Call FrameToTensor::reuse(...) first.",
                    [&] { object.layout(1); });
    TensorRecipe recipe = goodRecipe();
    object.reuse(recipe);
    EXPECT_TRUE(object.initialized());
    expectException(StatusInvalidParameter,
                    "Failure in FrameToTensor::layout(...) : parameter 'batch' is invalid 0.",
                    [&] { object.layout(0); });
    recipe.width = 16384;
    recipe.height = 10922;  // 3 x 4 x 16384 x 10922 = 2^31 - 131072
    for (TensorFormat const layout : {TENSOR_FORMAT_NCHW, TENSOR_FORMAT_NHWC}) {
        recipe.layout = layout;
        recipe.height = 10922;
        object.reuse(recipe);
        EXPECT_EQ(object.layout(7).strides().values[0], 2147352576);
        recipe.height = 10923;
        object.reuse(recipe);
        expectException(StatusCapacityExceeded,
                        "Failure in FrameToTensor::layout(...) : a stride is too large.",
                        [&] { object.layout(1); });
    }
}

// Each entry spoils one thing more; the text is that of the thing spoiled last.
class Run : public testing::Test {
  protected:
    Run() {
        object.reuse(goodRecipe());
        dst.reuse(object.layout(2), DeviceContext());
        std::memset(dst.data(), 0x6B, dst.layout().totalBytes());
        fill(src.frame(), 9);
    }

    void expectRefused(Status status, char const* text) {
        expectException(status, std::string("Failure in FrameToTensor::run(...) : ") + text,
                        [&] { object.run(frame, region, dst, index); });
        std::vector<unsigned char> const same(dst.layout().totalBytes(), 0x6B);
        if (dst.initialized()) {
            EXPECT_EQ(std::memcmp(dst.data(), same.data(), same.size()), 0);
        }
    }

    Tensor tensorOf(TensorLayout const& layout) {
        Tensor tensor;
        tensor.reuse(layout, DeviceContext());
        std::memset(tensor.data(), 0x6B, layout.totalBytes());
        return tensor;
    }

    Tensor tensorOf(TensorSize const& size, TensorSize const& strides) {
        return tensorOf(
            {TENSOR_FLOAT_32, TENSOR_FORMAT_NCHW, size, strides, TENSOR_CHANNEL_ORDER_NONE});
    }

    FrameToTensor object;
    Tensor dst;
    TestFrame src{FRAME_NV12, {8, 6}};
    Frame frame = src.frame();
    Rect region;
    int index = 1;
};

TEST_F(Run, InTheOrderOfTheChecks) {
    index = 2;
    expectRefused(StatusOutOfRange, "parameter 'index' is out of range.");
    index = -1;
    expectRefused(StatusOutOfRange, "parameter 'index' is out of range.");
    dst = tensorOf({4, {2, 3, 4, 6}}, {4, {288, 96, 24, 8}});
    expectRefused(StatusInvalidParameter, "'dst' has strides that don't fit the recipe.");
    dst = tensorOf({4, {2, 3, 6, 4}}, {4, {288, 96, 16, 4}});
    expectRefused(StatusInvalidParameter,
                  "'dst' has another type, format or size than the recipe.");
    dst = Tensor();
    expectRefused(StatusInputNotInitialized, "'dst' has no storage.");
    for (Rect const outside : {Rect{0, 0, 9, 6}, Rect{-1, 0, 4, 4}, Rect{7, 5, 1, 2},
                               Rect{2147483647, 0, 2147483647, 1}}) {
        region = outside;
        expectRefused(StatusOutOfRange, "parameter 'region' is out of range.");
    }
    TestFrame const empty(FRAME_NV12, {0, 6});
    frame = empty.frame();
    expectRefused(StatusInvalidParameter, "'src' has no pixels.");
    for (FrameFormat const format : {FRAME_C2_8U, FRAME_C1_32U, FRAME_BGR_32F}) {
        TestFrame const other(format, {8, 6});
        frame = other.frame();
        expectRefused(StatusNotSupported, "format of 'src' isn't supported.");
    }
    frame = Frame();
    expectRefused(StatusInputNotInitialized, "'src' is not initialized.");
    FrameToTensor fresh;
    expectException(StatusNotInitialized,
                    "FrameToTensor is not initialized. Call FrameToTensor::reuse(...) first.",
                    [&] { fresh.run(frame, region, dst, index); });
}

TEST_F(Run, OtherDevices) {
    DeviceContext const device(5, nullptr);
    Tensor elsewhere;
    elsewhere.reuse(object.layout(2), device);
    expectException(StatusInvalidParameter,
                    "Failure in FrameToTensor::run(...) : 'dst' isn't on the CPU.",
                    [&] { object.run(frame, {}, elsewhere, 0); });
    frame = Frame();
    frame.reuse(FRAME_NV12, {8, 6}, device, 0);
    expectRefused(StatusInvalidParameter, "'src' isn't on the CPU.");
}

TEST_F(Run, OtherTensors) {
    auto const refused = [&](TensorDataType type, TensorFormat format, TensorSize const& size,
                             TensorSize const& strides) {
        dst = tensorOf({type, format, size, strides, TENSOR_CHANNEL_ORDER_NONE});
        expectRefused(StatusInvalidParameter,
                      "'dst' has another type, format or size than the recipe.");
    };
    TensorSize const size{4, {2, 3, 4, 6}};
    TensorSize const strides{4, {288, 96, 24, 4}};
    refused(TENSOR_FLOAT_16, TENSOR_FORMAT_NCHW, size, strides);
    refused(TENSOR_FLOAT_32, TENSOR_FORMAT_NHWC, size, strides);
    refused(TENSOR_FLOAT_32, TENSOR_FORMAT_NONE, size, strides);
    refused(TENSOR_FLOAT_32, TENSOR_FORMAT_NCHW, {4, {2, 1, 4, 6}}, strides);
    refused(TENSOR_FLOAT_32, TENSOR_FORMAT_NCHW, {4, {2, 3, 4, 7}}, strides);
    refused(TENSOR_FLOAT_32, TENSOR_FORMAT_NCHW, {3, {3, 4, 6}}, {3, {96, 24, 4}});
    for (TensorSize const& other :
         {TensorSize{4, {288, 96, 20, 4}}, TensorSize{4, {288, 92, 24, 4}},
          TensorSize{4, {284, 96, 24, 4}}, TensorSize{4, {290, 96, 24, 4}},
          TensorSize{4, {288, 98, 24, 4}}, TensorSize{4, {312, 104, 26, 4}},
          TensorSize{4, {288, 96, 24, 0}}}) {
        dst = tensorOf(size, other);
        expectRefused(StatusInvalidParameter, "'dst' has strides that don't fit the recipe.");
    }
    // The storage ends with the second row of a plane.
    dst = tensorOf({4, {1, 3, 4, 6}}, {4, {0, 24, 72, 4}});
    index = 0;
    EXPECT_NO_THROW(object.run(frame, {}, dst, 0)) << "planes whose rows take turns";
}

TEST_F(Run, MemoryOfTheCallers) {
    std::vector<float> memory(72, 3.0F);
    auto const refused = [&](Status status, char const* text, void* to, std::int64_t row_stride,
                             std::int64_t channel_stride) {
        expectException(status, std::string("Failure in FrameToTensor::run(...) : ") + text,
                        [&] { object.run(frame, {}, to, row_stride, channel_stride); });
    };
    refused(StatusNullPointer, "'dst' is null.", nullptr, 1, 1);
    std::int64_t const large = std::numeric_limits<std::int64_t>::max() / 4 * 4;
    std::pair<std::int64_t, std::int64_t> const strides[]{
        {20, 96}, {25, 100},   {24, 92}, {24, 98},    {-24, 96},
        {24, 24}, {large, 96}, {72, 20}, {24, large}, {68, 24}};
    for (auto const& [row, channel] : strides) {
        refused(StatusInvalidParameter, "strides don't fit the recipe.", memory.data(), row,
                channel);
    }
    EXPECT_EQ(memory, std::vector<float>(72, 3.0F));
    TensorRecipe recipe = goodRecipe();
    recipe.layout = TENSOR_FORMAT_NHWC;
    object.reuse(recipe);
    EXPECT_NO_THROW(object.run(frame, {}, memory.data(), 72, -1)) << "no plane has that stride";
    refused(StatusInvalidParameter, "strides don't fit the recipe.", memory.data(), 68, 0);
}

TEST_F(Run, WhatAKernelCantDo) {
    BoxKernel kernel;
    TensorRecipe recipe = goodRecipe();
    recipe.kernel = &kernel;
    object.reuse(recipe);
    for (Size const size : {Size{5, 6}, Size{8193, 4}, Size{193, 4}}) {
        TestFrame const other(FRAME_GRAY8, size);
        expectStatus(StatusOutOfRange, [&] { object.run(other.frame(), {}, dst, 0); });
    }
    EXPECT_NO_THROW(object.run(frame, {}, dst, 0));
}

// A picture after a failure has the bytes that it has without one.
TEST_F(Run, AfterEachFailingAllocation) {
    TestFrame const packed(FRAME_YUYV, {70, 30});
    fill(packed.frame(), 77);
    std::vector<unsigned char> expected;
    bool done = false;
    for (std::uint64_t k = 0; !done; ++k) {
        FrameToTensor victim;
        victim.reuse(goodRecipe());
        std::memset(dst.data(), 0x6B, dst.layout().totalBytes());
        if (k > 0) {
            try {
                FailingAllocation const failing(k);
                victim.run(packed.frame(), {}, dst, 0);
                done = !failing.struck();
            } catch (Exception const& exception) {
                EXPECT_EQ(exception.status, StatusCapacityExceeded) << exception.what();
                EXPECT_EQ(dst.data()[0], 0x6B);
            }
        }
        victim.run(packed.frame(), {}, dst, 0);
        std::vector<unsigned char> const got(dst.data(), dst.data() + dst.layout().totalBytes());
        expected = k == 0 ? got : expected;
        EXPECT_EQ(got, expected) << k;
    }
}

}  // namespace

}  // namespace ox::test::frame_to_tensor_refusals
