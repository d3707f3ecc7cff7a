// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where numbers go in a tensor, and numbers worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/tensor_chain.h"
#include "support/sparse_memory.h"
#include "support/test_frame.h"

namespace ox::test::frame_to_tensor_numbers {

namespace {

class FrameToTensorNumbers : public testing::Test {
  protected:
    static TensorRecipe recipeOf(Size size) {
        TensorRecipe recipe;
        recipe.width = size.width;
        recipe.height = size.height;
        return recipe;
    }

    FrameToTensor object;
};

// Each picture of a batch goes to its own place, whatever the tensor's strides.
TEST_F(FrameToTensorNumbers, FillsOnePictureOfABatch) {
    Random random;
    TestFrame const src(FRAME_NV12, {20, 12}, random);
    for (TensorFormat const layout : {TENSOR_FORMAT_NCHW, TENSOR_FORMAT_NHWC}) {
        TensorRecipe recipe = recipeOf({9, 7});
        recipe.layout = layout;
        recipe.element = TENSOR_FLOAT_16;
        object.reuse(recipe);
        TensorSize const size = object.layout(3).size();
        TensorSize const strides = layout == TENSOR_FORMAT_NCHW ? TensorSize{4, {600, 180, 24, 2}}
                                                                : TensorSize{4, {500, 60, 6, 2}};
        TensorLayout const padded(TENSOR_FLOAT_16, layout, size, strides,
                                  TENSOR_CHANNEL_ORDER_NONE);
        for (TensorLayout const& wanted : {object.layout(3), padded}) {
            Tensor dst;
            dst.reuse(wanted, DeviceContext());
            std::size_t const total = wanted.totalBytes();
            std::memset(dst.data(), 0x6B, total);
            object.run(src.frame(), {}, dst, 1);
            std::int64_t const start = wanted.strides().values[0];
            bool const planes = layout == TENSOR_FORMAT_NCHW;
            std::vector<std::uint8_t> expected(total, 0x6B);
            object.run(src.frame(), {}, expected.data() + start,
                       wanted.strides().values[planes ? 2 : 1], wanted.strides().values[1]);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), dst.data()));
        }
    }
}

TEST_F(FrameToTensorNumbers, TakesPlanesWhoseRowsTakeTurns) {
    Random random;
    TestFrame const src(FRAME_BGR24, {6, 4}, random);
    TensorRecipe recipe = recipeOf({6, 4});
    recipe.element = TENSOR_UINT_8;
    recipe.colour = TENSOR_COLOUR_BGR;
    object.reuse(recipe);
    std::vector<std::uint8_t> picture(std::size_t{3} * 6 * 4);
    object.run(src.frame(), {}, picture.data(), 18, 6);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x) {
            for (int c = 0; c < 3; ++c) {
                EXPECT_EQ(picture[static_cast<std::size_t>(18 * y + 6 * c + x)],
                          src.row(0, y)[3 * x + c]);
            }
        }
    }
}

// Rows of the source, and rows of the tensor, nearly 2^31 bytes apart.
TEST_F(FrameToTensorNumbers, TakesRowsThatLieFarApart) {
    constexpr std::int64_t stride = (std::int64_t{1} << 31) - 4;
    SparseMemory const from(std::size_t{5} * stride + 4096);
    SparseMemory const to(std::size_t{3} * stride + 4096);
    Random random;
    for (FrameFormat const format : {FRAME_NV12, FRAME_RGB_PLANAR, FRAME_YUYV}) {
        TestFrame const near(format, {70, 6}, random);
        FrameLayout layout = near.layout();
        std::array<unsigned char*, 4> planes{};
        for (std::size_t i = 0; i < 3; ++i) {
            layout.plane[i].stride = stride;
            planes[i] = from.data() + 1024 * i;
        }
        Frame far = Frame::wrap(layout, planes.data());
        near.frame().copyTo(far);
        for (Size const size : {Size{70, 6}, Size{33, 4}}) {
            TensorRecipe recipe = recipeOf(size);
            recipe.layout = TENSOR_FORMAT_NHWC;
            recipe.fit = TENSOR_FIT_CROP;
            std::vector<std::uint8_t> const expected =
                runChain(recipe, near.frame(), {0, 0, 70, 6}).bytes;
            object.reuse(recipe);
            bool const apart = size.height == 4;
            std::int64_t const row = apart ? stride : std::int64_t{12} * size.width;
            object.run(far, {}, to.data(), row, 0);
            for (int y = 0; y < size.height; ++y) {
                auto const bytes = std::size_t{12} * static_cast<std::size_t>(size.width);
                EXPECT_EQ(std::memcmp(to.data() + y * row,
                                      expected.data() + static_cast<std::size_t>(y) * bytes, bytes),
                          0)
                    << y;
            }
        }
    }
}

// Numbers by hand: halves are rounded to even, also when there are fewer than four of them.
TEST_F(FrameToTensorNumbers, RoundsHalvesToNearest) {
    TestFrame src(FRAME_GRAY8, {3, 1});
    fill(src.frame(), 0, {{1, 3, 255}});
    TensorRecipe recipe = recipeOf({3, 1});
    recipe.colour = TENSOR_COLOUR_GRAY;
    recipe.element = TENSOR_FLOAT_16;
    recipe.mean[0] = -2048.0F;  // 2049 lies between 2048 and 2050, 2051 between 2050 and 2052
    object.reuse(recipe);
    std::uint16_t halves[3];
    object.run(src.frame(), {}, halves, 6, 0);
    EXPECT_EQ(halves[0], 0x6800);  // 2048
    EXPECT_EQ(halves[1], 0x6802);  // 2052
    EXPECT_EQ(halves[2], 0x6880);  // 2303 between 2302 and 2304
    recipe.mean[0] = 0.0F;
    recipe.scale[0] = 257.0F;  // 257, 771, 65535, which is beyond 65520
    object.reuse(recipe);
    object.run(src.frame(), {}, halves, 6, 0);
    EXPECT_EQ(halves[0], 0x5C04);
    EXPECT_EQ(halves[1], 0x6206);
    EXPECT_EQ(halves[2], 0x7C00);
}

TEST_F(FrameToTensorNumbers, QuantisesByHand) {
    TestFrame src(FRAME_GRAY8, {4, 1});
    fill(src.frame(), 0, {{0, 1, 3, 255}});
    TensorRecipe recipe = recipeOf({4, 1});
    recipe.colour = TENSOR_COLOUR_GRAY;
    recipe.element = TENSOR_INT_8;
    recipe.quantScale = 2.0F;
    recipe.zeroPoint = -3;
    object.reuse(recipe);
    std::int8_t numbers[4];
    object.run(src.frame(), {}, numbers, 4, 0);
    EXPECT_EQ(numbers[0], -3);
    EXPECT_EQ(numbers[1], -3);   // 0.5 to 0
    EXPECT_EQ(numbers[2], -1);   // 1.5 to 2
    EXPECT_EQ(numbers[3], 125);  // 127.5 to 128
    recipe.zeroPoint = 0;
    object.reuse(recipe);
    object.run(src.frame(), {}, numbers, 4, 0);
    EXPECT_EQ(numbers[3], 127);
}

}  // namespace

}  // namespace ox::test::frame_to_tensor_numbers
