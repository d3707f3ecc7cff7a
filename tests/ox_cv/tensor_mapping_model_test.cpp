// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where the plain model of a tensor's picture puts it, against numbers worked out by hand.
#include <gtest/gtest.h>

#include "model/frame_to_tensor.h"

namespace ox::test::tensor_mapping_model {
namespace {

using model::TensorFit;
using model::TensorMapping;
using model::TensorRecipe;

TensorRecipe recipeFor(int width, int height, TensorFit fit) {
    TensorRecipe recipe;
    recipe.width = width;
    recipe.height = height;
    recipe.fit = fit;
    return recipe;
}

TEST(TensorMappingModel, Letterboxes) {
    struct {
        int src_w, src_h, dst_w, dst_h;
        int left, top, inner_w, inner_h;
    } const cases[]{
        {1920, 1080, 640, 640, 0, 140, 640, 360},
        {1080, 1920, 640, 640, 140, 0, 360, 640},
        {1280, 720, 640, 640, 0, 140, 640, 360},
        {1, 10000, 640, 640, 319, 0, 1, 640},
        {10000, 1, 640, 640, 0, 319, 640, 1},
        {3, 2, 5, 5, 0, 1, 5, 3},  // 3.33 rows
        {1, 1, 7, 4, 1, 0, 4, 4},  // one of three columns of bars at the left
        {640, 480, 300, 300, 0, 37, 300, 225},
        {4, 3, 2, 2, 0, 0, 2, 2},  // 1.5 rows
        {5, 5, 2, 9, 0, 3, 2, 2},
        {2, 3, 1, 1, 0, 0, 1, 1},
        {9, 7, 9, 7, 0, 0, 9, 7},
        {100000, 100000, 40000, 30000, 5000, 0, 30000, 30000},  // products of 33 bits
    };
    for (auto const& c : cases) {
        TensorRecipe recipe = recipeFor(c.dst_w, c.dst_h, TensorFit::Letterbox);
        model::Geometry const src{model::Nv12, c.src_w, c.src_h};
        TensorMapping wanted{0, 0, c.src_w, c.src_h, c.left, c.top, c.inner_w, c.inner_h};
        EXPECT_EQ(model::tensorMapping(recipe, src, {}), wanted) << c.src_w << "x" << c.src_h;
        recipe.centred = false;
        wanted.left = wanted.top = 0;
        EXPECT_EQ(model::tensorMapping(recipe, src, {}), wanted) << c.src_w << "x" << c.src_h;
    }
}

TEST(TensorMappingModel, Crops) {
    struct {
        int format, src_w, src_h, dst_w, dst_h;
        int x0, y0, width, height;
    } const cases[]{
        {model::Nv12, 1920, 1080, 224, 224, 420, 0, 1080, 1080},
        {model::Nv12, 1080, 1920, 224, 224, 0, 420, 1080, 1080},
        {model::Bgr24, 7, 5, 2, 2, 1, 0, 5, 5},
        {model::Nv12, 7, 5, 2, 2, 0, 0, 5, 5},
        {model::Yuyv, 7, 5, 2, 2, 0, 0, 5, 5},
        {model::Yuv444, 7, 5, 2, 2, 1, 0, 5, 5},
        {model::Nv16, 5, 7, 2, 2, 0, 1, 5, 5},
        {model::I420, 5, 7, 2, 2, 0, 0, 5, 5},
        {model::Gray8, 10, 4, 3, 2, 2, 0, 6, 4},
        {model::Gray8, 1, 10000, 640, 640, 0, 4999, 1, 1},
        {model::Yv12, 1, 10000, 640, 640, 0, 4998, 1, 1},
        {model::Gray8, 10000, 1, 640, 640, 4999, 0, 1, 1},
        {model::Gray8, 3, 2, 1, 1000, 1, 0, 1, 2},
        {model::Gray8, 3, 3, 3, 3, 0, 0, 3, 3},
        {model::Gray8, 4, 3, 4, 4, 0, 0, 3, 3},  // half a column is left over
        {model::Gray8, 5, 3, 3, 2, 0, 0, 5, 3},  // 4.5 columns
        {model::Gray8, 100000, 90000, 30000, 40000, 16250, 0, 67500, 90000},
    };
    for (auto const& c : cases) {
        TensorMapping const wanted{c.x0, c.y0, c.width, c.height, 0, 0, c.dst_w, c.dst_h};
        EXPECT_EQ(model::tensorMapping(recipeFor(c.dst_w, c.dst_h, TensorFit::Crop),
                                       {c.format, c.src_w, c.src_h}, {}),
                  wanted)
            << c.format << ": " << c.src_w << "x" << c.src_h;
    }
}

TEST(TensorMappingModel, Regions) {
    TensorRecipe const stretch = recipeFor(2, 2, TensorFit::Stretch);
    TensorRecipe const crop = recipeFor(2, 2, TensorFit::Crop);
    EXPECT_EQ(model::tensorMapping(stretch, {model::Nv12, 20, 20}, {3, 5, 7, 5}),
              (TensorMapping{3, 5, 7, 5, 0, 0, 2, 2}));
    EXPECT_EQ(model::tensorMapping(stretch, {model::Uyvy, 20, 20}, {3, 5, 7, 5}),
              (TensorMapping{2, 5, 7, 5, 0, 0, 2, 2}));
    EXPECT_EQ(model::tensorMapping(crop, {model::Bgr24, 20, 20}, {3, 5, 7, 5}),
              (TensorMapping{4, 5, 5, 5, 0, 0, 2, 2}));
    EXPECT_EQ(model::tensorMapping(crop, {model::Yuyv, 20, 20}, {3, 5, 9, 3}),
              (TensorMapping{4, 5, 3, 3, 0, 0, 2, 2}));
    EXPECT_EQ(model::tensorMapping(stretch, {model::Gray8, 20, 10}, {-1, 7, 0, 5}),
              (TensorMapping{0, 0, 20, 10, 0, 0, 2, 2}));
}

TEST(TensorMappingModel, MapsThereAndBack) {
    TensorMapping const box = model::tensorMapping(recipeFor(640, 640, TensorFit::Letterbox),
                                                   {model::Nv12, 1920, 1080}, {});
    EXPECT_EQ(box.toInputX(0.0), 0.0);
    EXPECT_EQ(box.toInputY(0.0), 140.0);
    EXPECT_EQ(box.toInputX(1920.0), 640.0);
    EXPECT_EQ(box.toInputY(1080.0), 500.0);
    EXPECT_EQ(box.toInputX(-3.0), -1.0);
    EXPECT_EQ(box.toSourceX(640.0), 1920.0);
    EXPECT_EQ(box.toSourceY(140.0), 0.0);
    EXPECT_EQ(box.toSourceY(0.0), -420.0);

    TensorMapping const crop = model::tensorMapping(recipeFor(100, 50, TensorFit::Crop),
                                                    {model::Bgr24, 400, 400}, {100, 40, 200, 300});
    EXPECT_EQ(crop, (TensorMapping{100, 140, 200, 100, 0, 0, 100, 50}));
    EXPECT_EQ(crop.toInputX(100.0), 0.0);
    EXPECT_EQ(crop.toInputX(300.0), 100.0);
    EXPECT_EQ(crop.toInputY(141.0), 0.5);
    EXPECT_EQ(crop.toSourceX(50.0), 200.0);
    EXPECT_EQ(crop.toSourceY(50.0), 240.0);
}

}  // namespace
}  // namespace ox::test::tensor_mapping_model
