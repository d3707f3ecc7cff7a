// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where pictures go in a tensor, in numbers worked out by hand, and the way there and back.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_impl_tensor_fit.h"
#include "support/exceptions.h"
#include "support/random.h"

namespace ox::test::picture_mapping {

namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();

struct Case {
    TensorFit fit;
    Rect read;
    Size tensor;
    FrameFormat format;
    Rect source;
    Rect inner;
};

TEST(PictureMapping, FitsByHand) {
    Case const cases[]{
        {TENSOR_FIT_STRETCH, {3, 5, 7, 9}, {4, 4}, FRAME_NV12, {3, 5, 7, 9}, {0, 0, 4, 4}},
        // 640 x 1080 / 1920 = 360
        {TENSOR_FIT_LETTERBOX,
         {0, 0, 1920, 1080},
         {640, 640},
         FRAME_NV12,
         {0, 0, 1920, 1080},
         {0, 140, 640, 360}},
        {TENSOR_FIT_LETTERBOX_TOP_LEFT,
         {0, 0, 1920, 1080},
         {640, 640},
         FRAME_NV12,
         {0, 0, 1920, 1080},
         {0, 0, 640, 360}},
        {TENSOR_FIT_LETTERBOX,
         {2, 4, 30, 40},
         {101, 50},
         FRAME_BGR24,
         {2, 4, 30, 40},
         {31, 0, 38, 50}},  // 37.5 is rounded up, 63 / 2 is cut off
        {TENSOR_FIT_LETTERBOX,
         {0, 0, 1000, 1},
         {8, 8},
         FRAME_GRAY8,
         {0, 0, 1000, 1},
         {0, 3, 8, 1}},  // at least a row
        {TENSOR_FIT_LETTERBOX,
         {0, 0, largest, largest},
         {largest, largest},
         FRAME_GRAY8,
         {0, 0, largest, largest},
         {0, 0, largest, largest}},
        {TENSOR_FIT_LETTERBOX,
         {0, 0, 1, largest},
         {largest, 1},
         FRAME_GRAY8,
         {0, 0, 1, largest},
         {1073741823, 0, 1, 1}},
        // 1080 of 1920 columns, from 420 on
        {TENSOR_FIT_CROP,
         {0, 0, 1920, 1080},
         {224, 224},
         FRAME_NV12,
         {420, 0, 1080, 1080},
         {0, 0, 224, 224}},
        {TENSOR_FIT_CROP, {1, 1, 10, 20}, {4, 6}, FRAME_BGR24, {1, 3, 10, 15}, {0, 0, 4, 6}},
        {TENSOR_FIT_CROP, {0, 0, 10, 21}, {4, 6}, FRAME_BGR24, {0, 3, 10, 15}, {0, 0, 4, 6}},
        {TENSOR_FIT_CROP, {0, 0, 10, 21}, {4, 6}, FRAME_NV12, {0, 2, 10, 15}, {0, 0, 4, 6}},
        {TENSOR_FIT_CROP, {0, 0, 10, 21}, {4, 6}, FRAME_NV16, {0, 3, 10, 15}, {0, 0, 4, 6}},
        {TENSOR_FIT_CROP, {0, 0, 21, 10}, {6, 4}, FRAME_YUYV, {2, 0, 15, 10}, {0, 0, 6, 4}},
        {TENSOR_FIT_CROP, {0, 0, 21, 10}, {6, 4}, FRAME_YUV444, {3, 0, 15, 10}, {0, 0, 6, 4}},
        {TENSOR_FIT_CROP,
         {0, 0, 3, largest},
         {largest, 1},
         FRAME_GRAY8,
         {0, 1073741823, 3, 1},
         {0, 0, largest, 1}},
    };
    for (Case const& one : cases) {
        TensorRecipe recipe;
        recipe.fit = one.fit;
        recipe.width = one.tensor.width;
        recipe.height = one.tensor.height;
        PictureMapping const mapping = impl::fitPicture(recipe, one.format, one.read);
        auto const index = &one - cases;
        EXPECT_EQ(mapping.source, one.source) << index;
        EXPECT_EQ(mapping.inner, one.inner) << index;
    }
}

TEST(PictureMapping, PackedPixelsAreReadFromAnEvenColumnOn) {
    EXPECT_EQ(impl::readRegion(FRAME_UYVY, {5, 3, 4, 2}), (Rect{4, 3, 4, 2}));
    EXPECT_EQ(impl::readRegion(FRAME_NV16, {5, 3, 4, 2}), (Rect{5, 3, 4, 2}));
}

TEST(PictureMapping, AutomaticIsAreaFromHalfOn) {
    TensorRecipe recipe;
    auto const method = [&](Size read, Size inner) {
        return impl::scaleMethodOf(
            recipe, {{0, 0, read.width, read.height}, {0, 0, inner.width, inner.height}});
    };
    EXPECT_EQ(method({8, 8}, {4, 4}), OX_SCALE_AREA);
    EXPECT_EQ(method({7, 8}, {4, 4}), OX_SCALE_BILINEAR);
    EXPECT_EQ(method({8, 7}, {4, 4}), OX_SCALE_BILINEAR);
    EXPECT_EQ(method({8, 8}, {largest, 4}), OX_SCALE_BILINEAR);
    recipe.method = TENSOR_METHOD_NEAREST;
    EXPECT_EQ(method({8, 8}, {4, 4}), OX_SCALE_NEAREST);
}

TEST(PictureMapping, CarriesByHand) {
    PictureMapping const mapping{{10, 20, 8, 16}, {3, 5, 4, 32}};
    EXPECT_EQ(mapping.toInputX(10.0), 3.0);
    EXPECT_EQ(mapping.toInputX(18.0), 7.0);
    EXPECT_EQ(mapping.toInputY(20.5), 6.0);
    EXPECT_EQ(mapping.toSourceX(4.0), 12.0);
    EXPECT_EQ(mapping.toSourceY(6.0), 20.5);
    PictureBox const box = mapping.toInput({9.0, 19.0, 20.0, 40.0});  // unclipped
    EXPECT_EQ(box.left, 2.5);
    EXPECT_EQ(box.top, 3.0);
    EXPECT_EQ(box.right, 8.0);
    EXPECT_EQ(box.bottom, 45.0);
}

TEST(PictureMapping, CarriesBoxesThereAndBack) {
    Random random;
    for (int i = 0; i < 10000; ++i) {
        PictureMapping const mapping{{random.between(0, 4000), random.between(0, 4000),
                                      random.between(1, 4000), random.between(1, 4000)},
                                     {random.between(0, 900), random.between(0, 900),
                                      random.between(1, 900), random.between(1, 900)}};
        double const at[4]{random.real(-100.0F, 5000.0F), random.real(-100.0F, 5000.0F),
                           random.real(-100.0F, 5000.0F), random.real(-100.0F, 5000.0F)};
        PictureBox const back = mapping.toSource(mapping.toInput({at[0], at[1], at[2], at[3]}));
        EXPECT_NEAR(back.left, at[0], 1e-8);
        EXPECT_NEAR(back.top, at[1], 1e-8);
        EXPECT_NEAR(back.right, at[2], 1e-8);
        EXPECT_NEAR(back.bottom, at[3], 1e-8);
    }
}

void expectMatrix(float const (&got)[2][3], float const (&expected)[2][3]) {
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(double{got[i][k]}, double{expected[i][k]}, 1e-6) << i << ", " << k;
        }
    }
}

TEST(FitSimilarity, ByHand) {
    float const from[3][2]{{0, 0}, {2, 0}, {0, 2}};
    // A quarter turn, twice as large, moved by (10, 20): x' = 10 - 2y, y' = 20 + 2x.
    float const turned[3][2]{{10, 20}, {10, 24}, {6, 20}};
    float matrix[2][3];
    fitSimilarity(from, turned, 3, matrix);
    expectMatrix(matrix, {{0, -2, 10}, {2, 0, 20}});
    // Two points determine it: here the second is half as far off, on the other side.
    float const mirrored[2][2]{{1, 1}, {0, 1}};
    fitSimilarity(from, mirrored, 2, matrix);
    expectMatrix(matrix, {{-0.5F, 0, 1}, {0, -0.5F, 1}});
    // Points that no similarity takes there. The means are (0, 1) and (0, 2).
    float const tall[3][2]{{-1, 0}, {1, 0}, {0, 3}};
    float const wide[3][2]{{-1, 0}, {1, 0}, {0, 6}};
    // s = 2 + 2 + 4 = 8, p = 3 + 3 + 8 = 14, q = 1 - 1 = 0
    fitSimilarity(tall, wide, 3, matrix);
    expectMatrix(matrix, {{1.75F, 0, 0}, {0, 1.75F, 0.25F}});
}

TEST(FitSimilarity, FindsWhatWasThere) {
    Random random;
    for (int i = 0; i < 200; ++i) {
        double const a = random.real(-3.0F, 3.0F);
        double const b = random.real(-3.0F, 3.0F);
        double const x0 = random.real(-100.0F, 100.0F);
        double const y0 = random.real(-100.0F, 100.0F);
        float from[5][2];
        float to[5][2];
        for (int k = 0; k < 5; ++k) {
            from[k][0] = random.real(0.0F, 300.0F);
            from[k][1] = random.real(0.0F, 300.0F);
            to[k][0] = static_cast<float>(a * double{from[k][0]} - b * double{from[k][1]} + x0);
            to[k][1] = static_cast<float>(b * double{from[k][0]} + a * double{from[k][1]} + y0);
        }
        float matrix[2][3];
        fitSimilarity(from, to, 5, matrix);
        EXPECT_NEAR(double{matrix[0][0]}, a, 1e-5);
        EXPECT_NEAR(double{matrix[0][1]}, -b, 1e-5);
        EXPECT_NEAR(double{matrix[1][0]}, b, 1e-5);
        EXPECT_NEAR(double{matrix[1][1]}, a, 1e-5);
        EXPECT_NEAR(double{matrix[0][2]}, x0, 1e-3);
        EXPECT_NEAR(double{matrix[1][2]}, y0, 1e-3);
    }
}

TEST(FitSimilarity, RefusesDegeneratePoints) {
    float const square[4][2]{{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    float const mirrored[4][2]{{0, 1}, {1, 1}, {1, 0}, {0, 0}};
    float const same[4][2]{{0.1F, 0.3F}, {0.1F, 0.3F}, {0.1F, 0.3F}, {0.1F, 0.3F}};
    float const infinite[4][2]{{0, 0}, {1, 0}, {1, std::numeric_limits<float>::infinity()}, {0, 1}};
    float matrix[2][3]{{7, 7, 7}, {7, 7, 7}};
    auto const refused = [&](Status status, char const* text, auto from, auto to, int count) {
        expectException(status, std::string("Failure in fitSimilarity(...) : ") + text,
                        [&] { fitSimilarity(from, to, count, matrix); });
    };
    using Points = float const(*)[2];
    refused(StatusNullPointer, "'from' is null.", Points{}, square, 4);
    refused(StatusNullPointer, "'to' is null.", square, Points{}, 4);
    expectException(StatusNullPointer, "Failure in fitSimilarity(...) : 'matrix' is null.",
                    [&] { fitSimilarity(square, square, 4, nullptr); });
    refused(StatusInvalidParameter, "'count' is below 2.", square, square, 1);
    refused(StatusInvalidParameter, "'from' has a number that isn't finite.", infinite, square, 4);
    refused(StatusInvalidParameter, "'to' has a number that isn't finite.", square, infinite, 4);
    refused(StatusInvalidParameter, "'from' has no two different points.", same, square, 4);
    refused(StatusInvalidParameter, "'to' has no two different points.", square, same, 4);
    refused(StatusInvalidParameter, "'to' has no similarity to 'from'.", square, mirrored, 4);
    expectMatrix(matrix, {{7, 7, 7}, {7, 7, 7}});
}

}  // namespace

}  // namespace ox::test::picture_mapping
