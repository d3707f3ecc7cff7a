// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The plain model of a tensor's picture, against numbers worked out by hand.
#include "model/frame_to_tensor.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace ox::test::frame_to_tensor_model {
namespace {

using model::TensorColour;
using model::TensorElement;
using model::TensorFit;
using model::TensorLayout;
using model::TensorMethod;
using model::TensorRecipe;
using model::YuvMatrix;
using model::YuvRange;
using Bytes = std::vector<std::uint8_t>;

// Bytes as they are in the picture.
TensorRecipe recipeOf(int width, int height, TensorFit fit = TensorFit::Stretch) {
    TensorRecipe recipe;
    recipe.width = width;
    recipe.height = height;
    recipe.fit = fit;
    recipe.element = TensorElement::UnsignedByte;
    return recipe;
}

// A picture whose samples are counted up, plane by plane.
model::Image counted(int format, int width, int height) {
    model::Image image = model::makeImage(format, width, height, 0);
    std::uint8_t next = 1;
    for (model::Plane& plane : image.planes) {
        for (std::uint8_t& byte : plane.bytes) {
            byte = next++;
        }
    }
    return image;
}

model::Image yuvPixel(int y, int u, int v) {
    model::Image image = model::makeImage(model::Yuv444, 1, 1, 0);
    image.planes[0].bytes = {static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(u),
                             static_cast<std::uint8_t>(v)};
    return image;
}

Bytes bytesOf(TensorRecipe const& recipe, model::Image const& src, model::Region region = {}) {
    model::TensorPicture const picture = model::frameToTensor(recipe, src, region);
    EXPECT_TRUE(picture.outcome.ok) << picture.outcome.text;
    return picture.bytes;
}

template <class Value>
std::vector<Value> valuesOf(Bytes const& bytes) {
    std::vector<Value> values(bytes.size() / sizeof(Value));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

TEST(FrameToTensorModel, Refuses) {
    auto const statusOf = [](model::Image const& src, model::Region region) {
        model::TensorPicture const picture = model::frameToTensor(recipeOf(2, 2), src, region);
        EXPECT_EQ(picture.bytes.empty(), !picture.outcome.ok);
        return picture.outcome.status;
    };
    model::Image const image = counted(model::Gray8, 5, 3);
    EXPECT_EQ(statusOf(image, {0, 0, 5, 3}), 0);
    EXPECT_EQ(statusOf(image, {-1, 0, 2, 2}), model::OutOfRange);
    EXPECT_EQ(statusOf(image, {0, -1, 2, 2}), model::OutOfRange);
    EXPECT_EQ(statusOf(image, {4, 0, 2, 2}), model::OutOfRange);
    EXPECT_EQ(statusOf(image, {0, 2, 2, 2}), model::OutOfRange);
    EXPECT_EQ(statusOf(image, {std::numeric_limits<int>::max(), 0, 2, 2}), model::OutOfRange);
    for (int format = model::Gray8; format <= model::Bgr32fPlanar; ++format) {
        EXPECT_EQ(statusOf(counted(format, 4, 4), {}),
                  format <= model::Yuv444Planar ? 0 : model::NotSupported)
            << format;
    }
}

TEST(FrameToTensorModel, EachElement) {
    model::Image pixel = model::makeImage(model::Bgr24, 1, 1, 0);
    pixel.planes[0].bytes = {10, 20, 30};
    TensorRecipe recipe = recipeOf(1, 1);
    recipe.mean = {1.0F, 2.0F, 3.0F};
    recipe.scale = {0.5F, 2.0F, 0.25F};

    recipe.element = TensorElement::Float;
    EXPECT_EQ(valuesOf<float>(bytesOf(recipe, pixel)), (std::vector{4.5F, 36.0F, 6.75F}));
    recipe.element = TensorElement::Half;
    EXPECT_EQ(valuesOf<std::uint16_t>(bytesOf(recipe, pixel)),
              (std::vector<std::uint16_t>{0x4480, 0x5080, 0x46C0}));
    recipe.element = TensorElement::UnsignedByte;
    EXPECT_EQ(bytesOf(recipe, pixel), (Bytes{4, 36, 7}));
    recipe.element = TensorElement::SignedByte;
    recipe.quant_scale = 0.5F;
    recipe.zero_point = -100;
    EXPECT_EQ(bytesOf(recipe, pixel), (Bytes{0xA5, 0xE4, 0xAA}));  // -91, -28, -86

    recipe.element = TensorElement::Float;
    recipe.colour = TensorColour::Rgb;
    EXPECT_EQ(valuesOf<float>(bytesOf(recipe, pixel)), (std::vector{14.5F, 36.0F, 1.75F}));
    recipe.colour = TensorColour::Gray;  // (28 * 10 + 152 * 20 + 76 * 30) / 256 = 21
    EXPECT_EQ(valuesOf<float>(bytesOf(recipe, pixel)), (std::vector{10.0F}));
}

TEST(FrameToTensorModel, EachStepOfANormalisedFloatIsRounded) {
    model::Image const pixel = model::makeImage(model::Gray8, 1, 1, 255);
    TensorRecipe recipe = recipeOf(1, 1);
    recipe.colour = TensorColour::Gray;
    recipe.element = TensorElement::Float;
    recipe.mean[0] = 0x1p-17F;          // half a unit in the last place of 255 - 2^-17: to even, up
    recipe.scale[0] = 1.0F + 0x1p-23F;  // 255 + 1.99 units
    EXPECT_EQ(valuesOf<float>(bytesOf(recipe, pixel)), (std::vector{255.0F + 0x1p-15F}));
}

TEST(FrameToTensorModel, BytesAreClamped) {
    model::Image image = model::makeImage(model::Gray8, 4, 1, 0);
    image.planes[0].bytes = {0, 100, 200, 255};
    TensorRecipe recipe = recipeOf(4, 1);
    recipe.colour = TensorColour::Gray;
    recipe.mean[0] = 100.0F;
    recipe.scale[0] = 2.0F;
    recipe.zero_point = 3;
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{0, 3, 203, 255}));
    recipe.element = TensorElement::SignedByte;
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{0x80, 3, 127, 127}));
    recipe.scale[0] = 3e38F;  // infinite on both sides
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{0x80, 3, 127, 127}));
}

TEST(FrameToTensorModel, WholeNumbers) {
    EXPECT_EQ(model::nearestWhole(0.5F), 0.0F);
    EXPECT_EQ(model::nearestWhole(1.5F), 2.0F);
    EXPECT_EQ(model::nearestWhole(2.5F), 2.0F);
    EXPECT_EQ(model::nearestWhole(-0.5F), 0.0F);
    EXPECT_EQ(model::nearestWhole(-1.5F), -2.0F);
    EXPECT_EQ(model::nearestWhole(-2.5F), -2.0F);
    EXPECT_EQ(model::nearestWhole(std::nextafter(0.5F, 0.0F)), 0.0F);
    EXPECT_EQ(model::nearestWhole(std::nextafter(0.5F, 1.0F)), 1.0F);
    EXPECT_EQ(model::nearestWhole(8388607.5F), 8388608.0F);
    EXPECT_EQ(model::nearestWhole(-8388606.5F), -8388606.0F);
    EXPECT_EQ(model::nearestWhole(16777218.0F), 16777218.0F);
    EXPECT_EQ(model::nearestWhole(-INFINITY), -INFINITY);
}

TEST(FrameToTensorModel, Halves) {
    struct {
        float value;
        std::uint16_t half;
    } const cases[]{
        {0.0F, 0x0000},
        {-0.0F, 0x8000},
        {1.0F, 0x3C00},
        {-2.0F, 0xC000},
        {1.0F + 0x1p-11F, 0x3C00},    // a tie
        {1.0F + 0x1.8p-10F, 0x3C02},  // a tie
        {1.0F + 0x1.002p-11F, 0x3C01},
        {2.0F - 0x1p-11F, 0x4000},  // a tie carried into the exponent
        {65504.0F, 0x7BFF},
        {65519.996F, 0x7BFF},
        {65520.0F, 0x7C00},
        {-65536.0F, 0xFC00},
        {70000.0F, 0x7C00},
        {3e38F, 0x7C00},
        {INFINITY, 0x7C00},
        {0x1p-14F, 0x0400},
        {0x1.FFCp-15F, 0x0400},  // a tie of the largest subnormal
        {0x1.FF8p-15F, 0x03FF},
        {0x1p-24F, 0x0001},
        {0x1.8p-24F, 0x0002},  // a tie
        {0x1.4p-23F, 0x0002},  // a tie
        {0x1p-25F, 0x0000},    // a tie
        {0x1.000002p-25F, 0x0001},
        {-0x1.FFFFFEp-26F, 0x8000},
        {1e-40F, 0x0000},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(model::nearestHalf(c.value), c.half) << c.value;
    }
    for (std::uint32_t half = 0; half < 0x7C00; ++half) {  // all that halves can hold
        float const value = half < 0x400 ? std::ldexp(static_cast<float>(half), -24)
                                         : std::ldexp(static_cast<float>(0x400 + half % 0x400),
                                                      static_cast<int>(half / 0x400) - 25);
        EXPECT_EQ(model::nearestHalf(value), half);
        EXPECT_EQ(model::nearestHalf(-value), half + 0x8000);
    }
}

struct MatrixCase {
    YuvMatrix matrix;
    YuvRange range;
    int luma, blue_u, green_u, green_v, red_v;
    Bytes bgr;  // of Y = 100, U = 90, V = 180
};

std::vector<MatrixCase> matrixCases() {
    constexpr auto limited = YuvRange::Limited;
    constexpr auto full = YuvRange::Full;
    return {
        // 1602468 - 1255900, 1602468 + 243922 - 692640 and 1602468 + 1359748, by 16384: 21.15,
        // 70.42, 180.8; the others in the same way.
        {YuvMatrix::Bt601, limited, 19077, 33050, -6419, -13320, 26149, {21, 70, 181}},
        {YuvMatrix::Bt601, full, 16384, 29032, -5638, -11700, 22970, {33, 76, 173}},
        {YuvMatrix::Bt709, limited, 19077, 34610, -3494, -8731, 29372, {18, 78, 191}},
        {YuvMatrix::Bt709, full, 16384, 30402, -3069, -7670, 25802, {29, 83, 182}},
        {YuvMatrix::Bt2020, limited, 19077, 35091, -3069, -10657, 27503, {16, 71, 185}},
        {YuvMatrix::Bt2020, full, 16384, 30825, -2696, -9361, 24160, {29, 77, 177}},
    };
}

TEST(FrameToTensorModel, Matrices) {
    for (MatrixCase const& c : matrixCases()) {
        model::MatrixWeights const weights = model::matrixWeights(c.matrix, c.range);
        bool const full = c.range == YuvRange::Full;
        EXPECT_EQ(weights.luma, c.luma);
        EXPECT_EQ(weights.offset, full ? 0 : 16);
        EXPECT_EQ(weights.blue.u, c.blue_u);
        EXPECT_EQ(weights.blue.v, 0);
        EXPECT_EQ(weights.green.u, c.green_u);
        EXPECT_EQ(weights.green.v, c.green_v);
        EXPECT_EQ(weights.red.u, 0);
        EXPECT_EQ(weights.red.v, c.red_v);

        TensorRecipe recipe = recipeOf(1, 1);
        recipe.matrix = c.matrix;
        recipe.range = c.range;
        EXPECT_EQ(bytesOf(recipe, yuvPixel(100, 90, 180)), c.bgr);
        auto const grey = [](int byte) { return Bytes(3, static_cast<std::uint8_t>(byte)); };
        EXPECT_EQ(bytesOf(recipe, yuvPixel(16, 128, 128)), grey(full ? 16 : 0));
        EXPECT_EQ(bytesOf(recipe, yuvPixel(235, 128, 128)), grey(full ? 235 : 255));
        EXPECT_EQ(bytesOf(recipe, yuvPixel(3, 128, 128)), grey(full ? 3 : 0));
        recipe.colour = TensorColour::Gray;
        EXPECT_EQ(bytesOf(recipe, yuvPixel(3, 90, 180)), (Bytes{3}));
    }
}

// 84 * 297 = 24948 of luma, with -38 * 516, -52 * 207 + 38 * 100 and 52 * 408, by 256.
TEST(FrameToTensorModel, LibrarysMatrix) {
    EXPECT_EQ(bytesOf(recipeOf(1, 1), yuvPixel(100, 90, 180)), (Bytes{20, 70, 180}));
}

// Of three columns the third has a chroma sample of its own; so has the third row.
TEST(FrameToTensorModel, ChromaOfOddPictures) {
    model::Image image = model::makeImage(model::Nv21, 3, 3, 128);
    image.planes[0].bytes.assign(9, 0);
    image.planes[1].bytes = {128, 128, 138, 128, 148, 128, 158, 128};  // V of 0, 10, 20, 30
    TensorRecipe recipe = recipeOf(3, 3);
    recipe.colour = TensorColour::Rgb;
    recipe.matrix = YuvMatrix::Bt601;
    recipe.range = YuvRange::Full;
    Bytes const bytes = bytesOf(recipe, image);
    ASSERT_EQ(bytes.size(), 27U);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 9),
              (Bytes{0, 0, 14, 0, 0, 14, 28, 28, 42}));  // times 1.402
}

TEST(FrameToTensorModel, BarsAndLayouts) {
    TensorRecipe recipe = recipeOf(2, 3, TensorFit::Letterbox);
    recipe.bars = {100, 110, 120};
    recipe.mean = {0.0F, 10.0F, 20.0F};
    model::Image const image = counted(model::Bgr24, 2, 1);
    // 2 - 10 and the like are clamped.
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{100, 100, 1, 4, 100, 100, 100, 100, 0, 0, 100, 100,
                                             100, 100, 0, 0, 100, 100}));
    recipe.layout = TensorLayout::Nhwc;
    recipe.colour = TensorColour::Rgb;
    recipe.mean = {};
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{100, 110, 120, 100, 110, 120, 3, 2, 1, 6, 5, 4, 100,
                                             110, 120, 100, 110, 120}));
    recipe.centred = false;
    recipe.colour = TensorColour::Gray;  // (28 + 304 + 228) / 256 and (112 + 760 + 456) / 256
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{2, 5, 100, 100, 100, 100}));
}

TEST(FrameToTensorModel, Formats) {
    TensorRecipe recipe = recipeOf(2, 1);
    recipe.layout = TensorLayout::Nhwc;
    EXPECT_EQ(bytesOf(recipe, counted(model::Bgr24, 2, 1)), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(bytesOf(recipe, counted(model::Rgb24, 2, 1)), (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(bytesOf(recipe, counted(model::BgrPlanar, 2, 1)), (Bytes{1, 3, 5, 2, 4, 6}));
    EXPECT_EQ(bytesOf(recipe, counted(model::RgbPlanar, 2, 1)), (Bytes{5, 3, 1, 6, 4, 2}));
    EXPECT_EQ(bytesOf(recipe, counted(model::Gray8, 2, 1)), (Bytes{1, 1, 1, 2, 2, 2}));
    recipe.colour = TensorColour::Gray;
    EXPECT_EQ(bytesOf(recipe, counted(model::Gray8, 5, 3), {1, 2, 2, 1}), (Bytes{12, 13}));
    EXPECT_EQ(bytesOf(recipe, counted(model::Yuyv, 5, 1), {3, 0, 2, 1}), (Bytes{5, 7}));
    EXPECT_EQ(bytesOf(recipe, counted(model::Uyvy, 5, 1), {3, 0, 2, 1}), (Bytes{6, 8}));
    EXPECT_EQ(bytesOf(recipe, counted(model::Nv16, 5, 1), {3, 0, 2, 1}), (Bytes{4, 5}));
}

// Chroma begins with the sample that covers the region's corner, and pairs are counted from there.
TEST(FrameToTensorModel, OddRegionsOfSharedChroma) {
    model::Image image = model::makeImage(model::Nv16, 4, 1, 128);
    image.planes[0].bytes.assign(4, 0);
    image.planes[1].bytes = {128, 138, 128, 148};  // V of 10, 20
    TensorRecipe recipe = recipeOf(3, 1);
    recipe.colour = TensorColour::Rgb;
    recipe.matrix = YuvMatrix::Bt601;
    recipe.range = YuvRange::Full;
    Bytes const bytes = bytesOf(recipe, image, {1, 0, 3, 1});
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 3), (Bytes{14, 14, 28}));
}

TEST(FrameToTensorModel, Methods) {
    model::Image image = model::makeImage(model::Gray8, 4, 2, 0);
    image.planes[0].bytes = {0, 10, 20, 30, 40, 50, 60, 70};
    TensorRecipe recipe = recipeOf(2, 1);
    recipe.colour = TensorColour::Gray;
    recipe.method = TensorMethod::Area;
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{25, 45}));
    recipe.method = TensorMethod::Nearest;
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{50, 70}));
    recipe.height = 2;
    recipe.method = TensorMethod::Bilinear;
    EXPECT_EQ(bytesOf(recipe, image), (Bytes{5, 25, 45, 65}));
}

TEST(FrameToTensorModel, AutomaticMethod) {
    struct {
        int src_w, src_h, dst_w, dst_h;
        TensorMethod chosen;
    } const cases[]{
        {4, 8, 2, 1, TensorMethod::Area},     {8, 4, 1, 2, TensorMethod::Area},
        {4, 8, 3, 1, TensorMethod::Bilinear}, {8, 4, 1, 3, TensorMethod::Bilinear},
        {5, 8, 3, 2, TensorMethod::Bilinear}, {3, 3, 7, 7, TensorMethod::Bilinear},
    };
    for (auto const& c : cases) {
        model::Image image = counted(model::Gray8, c.src_w, c.src_h);
        for (std::uint8_t& byte : image.planes[0].bytes) {
            byte = static_cast<std::uint8_t>(byte * byte % 251);
        }
        TensorRecipe recipe = recipeOf(c.dst_w, c.dst_h);
        Bytes const bytes = bytesOf(recipe, image);
        bool const area = c.chosen == TensorMethod::Area;
        recipe.method = c.chosen;
        EXPECT_EQ(bytesOf(recipe, image), bytes) << c.src_w << "x" << c.src_h;
        recipe.method = area ? TensorMethod::Bilinear : TensorMethod::Area;
        EXPECT_NE(bytesOf(recipe, image), bytes) << c.src_w << "x" << c.src_h;
    }
}

TEST(FrameToTensorModel, Filters) {
    model::Image image = model::makeImage(model::Gray8, 4, 2, 0);
    image.planes[0].bytes = {0, 10, 20, 30, 40, 50, 60, 70};
    model::BoxFilter box;
    TensorRecipe recipe = recipeOf(2, 1);
    recipe.colour = TensorColour::Gray;
    recipe.filter = &box;
    for (int const precision : {8, 16}) {
        recipe.precision = precision;
        EXPECT_EQ(bytesOf(recipe, image), (Bytes{25, 45}));
    }
    auto const status = [&](TensorRecipe const& of) {
        return model::frameToTensor(of, image, {}).outcome.status;
    };
    recipe.precision = 9;
    EXPECT_EQ(status(recipe), model::InvalidParameter);
    recipe.precision = 8;
    recipe.height = 3;
    EXPECT_EQ(status(recipe), model::OutOfRange);
    image = model::makeImage(model::Gray8, 33, 3, 0);
    recipe.width = 1;
    EXPECT_EQ(status(recipe), model::OutOfRange);
    image = model::makeImage(model::Gray8, 8193, 3, 0);
    recipe.width = 8193;
    EXPECT_EQ(status(recipe), model::OutOfRange);
}

// Nothing is refused, and each element is written once.
TEST(FrameToTensorModel, SmallSizes) {
    for (int format = model::Gray8; format <= model::Yuv444Planar; ++format) {
        for (int i = 0; i < 81 * 9; ++i) {
            TensorRecipe recipe = recipeOf(1 + i % 7, 1 + i % 5, static_cast<TensorFit>(i % 3));
            recipe.method = static_cast<TensorMethod>(i % 4);
            recipe.colour = static_cast<TensorColour>(i / 3 % 3);
            recipe.matrix = static_cast<YuvMatrix>(i % 4);
            model::Image const image = counted(format, 1 + i % 9, 1 + i / 9 % 9);
            ASSERT_EQ(bytesOf(recipe, image).size(),
                      static_cast<std::size_t>(recipe.width * recipe.height *
                                               (recipe.colour == TensorColour::Gray ? 1 : 3)))
                << format << ", " << i;
        }
    }
}

}  // namespace
}  // namespace ox::test::frame_to_tensor_model
