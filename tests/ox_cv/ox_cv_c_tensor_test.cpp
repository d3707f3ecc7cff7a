// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Recipes, tensors and mappings of the C interface beside those of C++.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox_cv/c_handles.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::c_tensor {

namespace {

ox_recipe defaults() {
    ox_recipe recipe;
    expectTaken(ox_recipe_init(&recipe, sizeof recipe));
    return recipe;
}

ox_recipe sized(std::int32_t width, std::int32_t height) {
    ox_recipe recipe = defaults();
    recipe.width = width;
    recipe.height = height;
    return recipe;
}

CToTensor made(ox_recipe const& recipe) {
    ox_to_tensor* handle = nullptr;
    expectTaken(ox_to_tensor_create(&recipe, &handle));
    return CToTensor(handle);
}

TEST(CRecipe, HasTheDefaultsOfRecipes) {
    ox_recipe const recipe = defaults();
    TensorRecipe const expected;
    EXPECT_EQ(recipe.struct_size, sizeof recipe);
    EXPECT_EQ(recipe.width, expected.width);
    EXPECT_EQ(recipe.height, expected.height);
    EXPECT_EQ(recipe.fit, static_cast<int>(expected.fit));
    EXPECT_EQ(recipe.method, static_cast<int>(expected.method));
    EXPECT_EQ(recipe.filter, nullptr);
    EXPECT_EQ(recipe.precision, static_cast<int>(expected.precision));
    EXPECT_EQ(recipe.colour, static_cast<int>(expected.colour));
    EXPECT_EQ(recipe.layout, static_cast<int>(expected.layout));
    EXPECT_EQ(recipe.element, static_cast<int>(expected.element));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(recipe.mean[i], expected.mean[i]);
        EXPECT_EQ(recipe.scale[i], expected.scale[i]);
        EXPECT_EQ(recipe.bars[i], expected.bars[i]);
    }
    EXPECT_EQ(recipe.quant_scale, expected.quantScale);
    EXPECT_EQ(recipe.zero_point, expected.zeroPoint);
    EXPECT_EQ(recipe.matrix, static_cast<int>(expected.matrix));
    EXPECT_EQ(recipe.range, static_cast<int>(expected.range));
}

TEST(CRecipe, OfAnUnknownVersionIsRefused) {
    ox_recipe recipe = sized(4, 4);
    expectRefused(ox_recipe_init(&recipe, 4), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'struct_size' is invalid 4.");
    EXPECT_EQ(recipe.width, 4);
    recipe.struct_size = 4;
    ox_to_tensor* handle = nullptr;
    expectRefused(ox_to_tensor_create(&recipe, &handle), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'struct_size' is invalid 4.");
}

TEST(CRecipe, FirstFieldThatIsInvalidIsNamed) {
    ox_to_tensor* handle = nullptr;
    ox_recipe recipe = defaults();
    expectRefused(ox_to_tensor_create(&recipe, &handle), OX_STATUS_INVALID_PARAMETER,
                  "Failure in FrameToTensor::reuse(...) : field 'width' of the recipe is invalid.");
    recipe = sized(4, 4);
    recipe.colour = -1;
    recipe.scale[2] = std::nanf("");
    expectRefused(
        ox_to_tensor_create(&recipe, &handle), OX_STATUS_INVALID_PARAMETER,
        "Failure in FrameToTensor::reuse(...) : field 'colour' of the recipe is invalid.");
    EXPECT_EQ(handle, nullptr);
}

// Every field with a value of its own, so that none is mixed up with another.
struct Recipes {
    ox_recipe in_c;
    TensorRecipe in_cpp;
};

Recipes recipesOfAllFields() {
    Recipes recipes{sized(24, 20), {}};
    recipes.in_c.fit = OX_FIT_LETTERBOX;
    recipes.in_c.method = OX_METHOD_NEAREST;
    recipes.in_c.colour = OX_COLOUR_BGR;
    recipes.in_c.layout = OX_LAYOUT_NHWC;
    recipes.in_c.element = OX_ELEMENT_INT_8;
    recipes.in_c.quant_scale = 0.75F;
    recipes.in_c.zero_point = -3;
    recipes.in_c.matrix = OX_MATRIX_BT709;
    recipes.in_c.range = OX_RANGE_FULL;
    recipes.in_cpp.width = 24;
    recipes.in_cpp.height = 20;
    recipes.in_cpp.fit = TENSOR_FIT_LETTERBOX;
    recipes.in_cpp.method = TENSOR_METHOD_NEAREST;
    recipes.in_cpp.colour = TENSOR_COLOUR_BGR;
    recipes.in_cpp.layout = TENSOR_FORMAT_NHWC;
    recipes.in_cpp.element = TENSOR_INT_8;
    recipes.in_cpp.quantScale = 0.75F;
    recipes.in_cpp.zeroPoint = -3;
    recipes.in_cpp.matrix = TENSOR_MATRIX_BT709;
    recipes.in_cpp.range = TENSOR_RANGE_FULL;
    for (int i = 0; i < 3; ++i) {
        recipes.in_c.mean[i] = recipes.in_cpp.mean[i] = static_cast<float>(100 + i);
        recipes.in_c.scale[i] = recipes.in_cpp.scale[i] = 0.5F + static_cast<float>(i) / 8.0F;
        recipes.in_c.bars[i] = recipes.in_cpp.bars[i] = static_cast<std::uint8_t>(50 + i);
    }
    return recipes;
}

class CTensor : public testing::Test {
  protected:
    // Fills a tensor by both, the one of C through strides of 0, and compares bytes and mappings.
    void expectSame(Recipes const& recipes, ox_rect const* region, Rect rect) {
        FrameToTensor to_tensor;
        to_tensor.reuse(recipes.in_cpp);
        Tensor expected;
        expected.reuse(to_tensor.layout(1), DeviceContext::cpuContext());
        PictureMapping const mapping = to_tensor.run(source.frame(), rect, expected, 0);

        CToTensor const handle = made(recipes.in_c);
        ox_tensor_info info{};
        expectTaken(ox_to_tensor_get_info(handle.get(), 1, &info));
        ASSERT_EQ(info.bytes, expected.layout().totalBytes());
        std::vector<unsigned char> bytes(info.bytes);
        ox_mapping got{};
        expectTaken(ox_to_tensor_run(handle.get(), src.get(), region, bytes.data(), 0, 0, &got));
        EXPECT_EQ(bytes, std::vector<unsigned char>(expected.data(), expected.data() + info.bytes));
        EXPECT_EQ((Rect{got.source.x, got.source.y, got.source.width, got.source.height}),
                  mapping.source);
        EXPECT_EQ((Rect{got.inner.x, got.inner.y, got.inner.width, got.inner.height}),
                  mapping.inner);
    }

    Random random;
    TestFrame source{FRAME_NV12, {40, 30}, random};
    CFrame src = handleOn(source.frame());
};

TEST_F(CTensor, IsThatOfTheRecipe) {
    Recipes recipes = recipesOfAllFields();
    expectSame(recipes, nullptr, Rect{});
    ox_rect const region{4, 2, 30, 20};
    expectSame(recipes, &region, {4, 2, 30, 20});
    recipes.in_c.layout = OX_LAYOUT_NCHW;
    recipes.in_cpp.layout = TENSOR_FORMAT_NCHW;
    recipes.in_c.element = OX_ELEMENT_FLOAT_32;
    recipes.in_cpp.element = TENSOR_FLOAT_32;
    expectSame(recipes, nullptr, Rect{});
}

TEST_F(CTensor, TakesFilters) {
    Recipes recipes = recipesOfAllFields();
    MitchellNetravaliKernel kernel;
    recipes.in_cpp.kernel = &kernel;
    recipes.in_cpp.precision = OX_SCALER_FIXED_POINT_8S;
    recipes.in_c.precision = OX_PRECISION_8;
    ox_filter const filter{OX_FILTER_MITCHELL_NETRAVALI, nullptr, nullptr, nullptr};
    recipes.in_c.filter = &filter;
    expectSame(recipes, nullptr, Rect{});
}

TEST_F(CTensor, ShapeIsThatOfTheRecipe) {
    ox_tensor_info info{};
    expectTaken(ox_to_tensor_get_info(made(sized(6, 5)).get(), 2, &info));
    EXPECT_EQ(std::vector<int>(info.sides, info.sides + 4), (std::vector<int>{2, 3, 5, 6}));
    EXPECT_EQ(std::vector<std::int64_t>(info.strides, info.strides + 4),
              (std::vector<std::int64_t>{360, 120, 24, 4}));
    EXPECT_EQ(info.bytes, 720U);
}

TEST_F(CTensor, StridesAreTheCallers) {
    CToTensor const handle = made(sized(6, 5));
    std::vector<float> tight(3 * 5 * 6);
    expectTaken(ox_to_tensor_run(handle.get(), src.get(), nullptr, tight.data(), 0, 0, nullptr));
    // Rows of eight elements; planes that follow one another, and then a row apart.
    for (std::size_t const gap : {0U, 8U}) {
        std::size_t const plane = 5 * 8 + gap;
        std::vector<float> wide(3 * plane, -1.0F);
        auto const stride = static_cast<std::int64_t>(gap == 0 ? 0 : plane * sizeof(float));
        expectTaken(
            ox_to_tensor_run(handle.get(), src.get(), nullptr, wide.data(), 32, stride, nullptr));
        for (std::size_t i = 0; i < tight.size(); ++i) {
            EXPECT_EQ(wide[i / 30 * plane + i % 30 / 6 * 8 + i % 6], tight[i]);
        }
    }
}

TEST_F(CTensor, RefusesAsFrameToTensorDoes) {
    CToTensor const handle = made(sized(6, 5));
    std::vector<float> numbers(3 * 5 * 6);
    auto const run = [&](ox_frame const* frame, ox_rect const* region, void* dst,
                         std::int64_t stride) {
        return ox_to_tensor_run(handle.get(), frame, region, dst, stride, 0, nullptr);
    };
    TestFrame const words(FRAME_C1_16U, {8, 8});
    ox_rect const outside{30, 0, 20, 8};
    ox_tensor_info info{};
    EXPECT_EQ(run(handleOn(words.frame()).get(), nullptr, numbers.data(), 0),
              OX_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(run(src.get(), &outside, numbers.data(), 0), OX_STATUS_OUT_OF_RANGE);
    EXPECT_EQ(run(src.get(), nullptr, numbers.data(), 20), OX_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(run(src.get(), nullptr, numbers.data(), -24), OX_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(run(src.get(), nullptr, numbers.data(), std::int64_t{1} << 62),
              OX_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(run(src.get(), nullptr, nullptr, 0), OX_STATUS_NULL_POINTER);
    expectRefused(ox_to_tensor_get_info(handle.get(), 0, &info), OX_STATUS_INVALID_PARAMETER,
                  "Failure in FrameToTensor::layout(...) : parameter 'batch' is invalid 0.");
}

TEST_F(CTensor, RefusesNull) {
    CToTensor const handle = made(sized(6, 5));
    ox_recipe const recipe = sized(6, 5);
    ox_to_tensor* other = nullptr;
    ox_tensor_info info{};
    float numbers[3 * 5 * 6];
    ox_point point{};
    ox_box box{};
    ox_mapping const mapping{{0, 0, 1, 1}, {0, 0, 1, 1}};
    auto const refused = [](ox_status status, char const* name) {
        expectRefused(status, OX_STATUS_NULL_POINTER,
                      ("Parameter '" + std::string(name) + "' is null.").c_str());
    };
    refused(ox_recipe_init(nullptr, sizeof recipe), "recipe");
    refused(ox_to_tensor_create(nullptr, &other), "recipe");
    refused(ox_to_tensor_create(&recipe, nullptr), "to_tensor");
    refused(ox_to_tensor_get_info(nullptr, 1, &info), "to_tensor");
    refused(ox_to_tensor_get_info(handle.get(), 1, nullptr), "info");
    refused(ox_to_tensor_run(nullptr, src.get(), nullptr, numbers, 0, 0, nullptr), "to_tensor");
    refused(ox_to_tensor_run(handle.get(), nullptr, nullptr, numbers, 0, 0, nullptr), "src");
    refused(ox_mapping_points_to_input(nullptr, &point, 1, &point), "mapping");
    refused(ox_mapping_points_to_source(&mapping, nullptr, 1, &point), "points");
    refused(ox_mapping_boxes_to_input(&mapping, nullptr, 1, &box), "boxes");
    refused(ox_mapping_boxes_to_source(&mapping, &box, 1, nullptr), "mapped");
}

TEST_F(CTensor, FailedAllocationsLeaveNothing) {
    ox_filter const filter{OX_FILTER_TRIANGLE, nullptr, nullptr, nullptr};
    ox_recipe recipe = sized(6, 5);
    recipe.filter = &filter;
    std::vector<float> numbers(3 * 5 * 6);
    std::int64_t const live = liveAllocations();
    bool struck = true;
    for (std::uint64_t k = 1; struck; ++k) {
        CToTensor handle;
        ox_status status = OX_STATUS_OK;
        {
            FailingAllocations const failing(k);
            ox_to_tensor* out = nullptr;
            status = ox_to_tensor_create(&recipe, &out);
            handle.reset(out);
            if (status == OX_STATUS_OK) {
                status = ox_to_tensor_run(out, src.get(), nullptr, numbers.data(), 0, 0, nullptr);
            }
            struck = failing.struck();
        }
        EXPECT_EQ(status, struck ? OX_STATUS_CAPACITY_EXCEEDED : OX_STATUS_OK) << ox_last_error();
        handle.reset();
        EXPECT_EQ(liveAllocations(), live) << "allocation " << k;
    }
}

TEST(CMapping, LeadsBothWays) {
    ox_mapping const mapping{{10, 20, 300, 200}, {0, 40, 150, 100}};
    PictureMapping const expected{{10, 20, 300, 200}, {0, 40, 150, 100}};
    ox_point points[]{{1.5, 2.25}, {-3, 400}};
    ox_point mapped[2];
    expectTaken(ox_mapping_points_to_input(&mapping, points, 2, mapped));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(mapped[i].x, expected.toInputX(points[i].x));
        EXPECT_EQ(mapped[i].y, expected.toInputY(points[i].y));
    }
    expectTaken(ox_mapping_points_to_source(&mapping, points, 2, mapped));
    EXPECT_EQ(mapped[1].x, expected.toSourceX(-3));
    EXPECT_EQ(mapped[1].y, expected.toSourceY(400));
    expectTaken(ox_mapping_points_to_source(&mapping, points, 1, points));  // in place
    EXPECT_EQ(points[0].x, 13.0);
    EXPECT_EQ(points[1].x, -3.0);

    ox_box const box{1, 2, 30, 50};
    ox_box moved{};
    expectTaken(ox_mapping_boxes_to_input(&mapping, &box, 1, &moved));
    PictureBox input = expected.toInput({1, 2, 30, 50});
    EXPECT_EQ(moved.left, input.left);
    EXPECT_EQ(moved.bottom, input.bottom);
    expectTaken(ox_mapping_boxes_to_source(&mapping, &box, 1, &moved));
    input = expected.toSource({1, 2, 30, 50});
    EXPECT_EQ(moved.top, input.top);
    EXPECT_EQ(moved.right, input.right);
    expectTaken(ox_mapping_boxes_to_source(&mapping, &box, 0, &moved));
}

TEST(CFitSimilarity, IsThatOfTheLibrary) {
    float const from[]{1, 2, 30, 4, 16, 25};
    float const to[]{5, 5, 60, 14, 30, 51};
    float const from_pairs[3][2]{{1, 2}, {30, 4}, {16, 25}};
    float const to_pairs[3][2]{{5, 5}, {60, 14}, {30, 51}};
    float matrix[6];
    float expected[2][3];
    fitSimilarity(from_pairs, to_pairs, 3, expected);
    expectTaken(ox_fit_similarity(from, to, 3, matrix));
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(matrix[i], expected[i / 3][i % 3]);
    }
    matrix[0] = 7;
    expectRefused(ox_fit_similarity(from, to, 1, matrix), OX_STATUS_INVALID_PARAMETER,
                  "Failure in fitSimilarity(...) : 'count' is below 2.");
    EXPECT_EQ(matrix[0], 7);
    expectRefused(ox_fit_similarity(nullptr, to, 3, matrix), OX_STATUS_NULL_POINTER,
                  "Failure in fitSimilarity(...) : 'from' is null.");
    expectRefused(ox_fit_similarity(from, to, 3, nullptr), OX_STATUS_NULL_POINTER,
                  "Parameter 'matrix' is null.");
}

}  // namespace

}  // namespace ox::test::c_tensor
