// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace ox::test::cv_helpers {

namespace {

using Matrix = std::array<float, 6>;

struct Inverse {
    bool invertible;
    Matrix matrix;
};

Inverse inverseOf(Matrix const& matrix) {
    Inverse result{};
    result.matrix.fill(99.0F);
    result.invertible = invertAffineTransform(matrix.data(), result.matrix.data());
    return result;
}

TEST(EmptyConstants, StandForNothing) {
    EXPECT_EQ(emptyRoi(), (Rect{0, 0, 0, 0}));
    EXPECT_TRUE(emptyRoi().empty());
    EXPECT_FALSE(emptyFrame().initialized());
    EXPECT_EQ(emptyFrame().planeData(0), nullptr);
}

TEST(InvertAffineTransform, Identity) {
    Inverse const inverse = inverseOf({1, 0, 0, 0, 1, 0});
    EXPECT_TRUE(inverse.invertible);
    EXPECT_EQ(inverse.matrix, (Matrix{1, 0, 0, 0, 1, 0}));  // zeros of either sign are equal
}

// D = 2 x 5 - 3 x 4 = -2: a = -5/2, 3/2, 2, -1; b = 5/2 x 7 - 3/2 x 11 and -2 x 7 + 11.
TEST(InvertAffineTransform, AllTerms) {
    Inverse const inverse = inverseOf({2, 3, 7, 4, 5, 11});
    EXPECT_TRUE(inverse.invertible);
    EXPECT_EQ(inverse.matrix, (Matrix{-2.5F, 1.5F, 1, 2, -1, -3}));
}

TEST(InvertAffineTransform, SingularMatricesGiveZeros) {
    for (Matrix const& matrix :
         {Matrix{0, 0, 0, 0, 0, 0}, Matrix{1, 2, 3, 2, 4, 5}, Matrix{0, 0, 3, 0, 0, 5}}) {
        Inverse const inverse = inverseOf(matrix);
        EXPECT_FALSE(inverse.invertible);
        EXPECT_EQ(inverse.matrix, (Matrix{0, 0, 0, 0, 0, 0}));
    }
}

// (1 + 2^-12)^2 - (1 + 2^-11) is 2^-24, which only a fused product keeps.
TEST(InvertAffineTransform, FirstProductOfTheDeterminantIsFused) {
    float const near_one = 1.0F + 0x1p-12F;
    Inverse const inverse = inverseOf({near_one, 1, 0, 1.0F + 0x1p-11F, near_one, 0});
    EXPECT_TRUE(inverse.invertible);
    EXPECT_EQ(inverse.matrix, (Matrix{16781312, -16777216, 0, -16785408, 16781312, 0}));
}

// The other product is rounded to 1 + 2^-11 first.
TEST(InvertAffineTransform, SecondProductOfTheDeterminantIsRounded) {
    float const near_one = 1.0F + 0x1p-12F;
    Inverse const inverse = inverseOf({1.0F + 0x1p-11F, near_one, 5, near_one, 1, 6});
    EXPECT_FALSE(inverse.invertible);
    EXPECT_EQ(inverse.matrix, (Matrix{0, 0, 0, 0, 0, 0}));
}

// D = 3 and s = (1 - 2^-54) / 3 in 64 bits. Both products of b are s x 3 = 1 - 2^-54, which rounds
// to 1: the fused one keeps the difference, and its sign tells which one is fused.
TEST(InvertAffineTransform, ProductWithTheFirstOffsetIsFused) {
    float const third = 1.0F / 3.0F;
    Inverse const upper = inverseOf({4, 1, 3, 1, 1, 3});
    EXPECT_EQ(upper.matrix, (Matrix{third, -third, 0x1p-54F, -third, 4.0F / 3.0F, -3}));
    Inverse const lower = inverseOf({1, 1, 3, 1, 4, 3});
    EXPECT_EQ(lower.matrix, (Matrix{4.0F / 3.0F, -third, -3, -third, third, -0x1p-54F}));
}

TEST(InvertAffineTransform, NonFiniteInputTakesTheSameSteps) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    Inverse const undefined = inverseOf({nan, 0, 0, 0, 1, 0});
    EXPECT_TRUE(undefined.invertible);
    for (float const value : undefined.matrix) {
        EXPECT_TRUE(std::isnan(value));
    }
    Inverse const infinite = inverseOf({infinity, 0, 0, 0, 1, 0});  // s = 0
    EXPECT_TRUE(infinite.invertible);
    EXPECT_EQ(infinite.matrix[0], 0.0F);
    EXPECT_TRUE(std::isnan(infinite.matrix[4]));
    EXPECT_TRUE(std::isnan(infinite.matrix[5]));
}

// A frame of NV12 with one colour, and room behind each row.
class Picture {
  public:
    Picture(int width, int height, int y, int u, int v)
        : _width(width),
          _height(height),
          _luma(cells(height, stride), static_cast<unsigned char>(y)),
          _chroma(cells((height + 1) / 2, stride)),
          _bgr(cells(height, bgrStride), untouched) {
        for (std::size_t i = 0; i < _chroma.size(); ++i) {
            _chroma[i] = static_cast<unsigned char>(i % 2 == 0 ? u : v);
        }
    }

    static constexpr int stride = 34;
    static constexpr int bgrStride = 101;
    static constexpr unsigned char untouched = 77;

    unsigned char& luma(int x, int y) { return _luma[cells(y, stride) + cells(x, 1)]; }
    unsigned char& chroma(int x, int y) { return _chroma[cells(y, stride) + cells(x, 1)]; }

    void convert() {
        NV12toBGR_neon(_luma.data(), _chroma.data(), _bgr.data(), _width, _height, stride,
                       bgrStride);
    }

    std::vector<int> pixel(int x, int y) const {
        auto const* const bgr = &_bgr[cells(y, bgrStride) + cells(x, 3)];
        return {bgr[0], bgr[1], bgr[2]};
    }

    // How many leading bytes of a row were written; -1 if any behind them was.
    int written(int y) const {
        auto const row = _bgr.begin() + static_cast<std::ptrdiff_t>(cells(y, bgrStride));
        auto const end = std::find(row, row + bgrStride, untouched);
        bool const rest = std::all_of(end, row + bgrStride, [](auto b) { return b == untouched; });
        return rest ? static_cast<int>(end - row) : -1;
    }

  private:
    static std::size_t cells(int count, int size) { return static_cast<std::size_t>(count * size); }

    int _width;
    int _height;
    std::vector<unsigned char> _luma;
    std::vector<unsigned char> _chroma;
    std::vector<unsigned char> _bgr;
};

std::vector<int> colour(int y, int u, int v) {
    Picture picture(8, 2, y, u, v);
    picture.convert();
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(picture.pixel(i % 8, i / 8), picture.pixel(0, 0));
    }
    return picture.pixel(0, 0);
}

using Pixel = std::vector<int>;

TEST(Nv12ToBgr, BlackAndWhite) {
    EXPECT_EQ(colour(16, 128, 128), (Pixel{0, 0, 0}));
    EXPECT_EQ(colour(0, 128, 128), (Pixel{0, 0, 0}));  // not 256 - 16
    EXPECT_EQ(colour(15, 128, 128), (Pixel{0, 0, 0}));
    EXPECT_EQ(colour(0, 192, 128), (Pixel{129, 0, 0}));        // (128 + 516 x 64) >> 8
    EXPECT_EQ(colour(235, 128, 128), (Pixel{255, 255, 255}));  // 65390 >> 8
}

// 298 x 64 + 128 is 75 x 256 exactly: one less of anything is 74.
TEST(Nv12ToBgr, LumaAndRounding) {
    EXPECT_EQ(colour(80, 128, 128), (Pixel{75, 75, 75}));
}

// 516 x 64 is 129 x 256 and 100 x 64 is 25 x 256; 298 x 192 + 128 is 224 x 256.
TEST(Nv12ToBgr, BlueDifference) {
    EXPECT_EQ(colour(80, 192, 128), (Pixel{75 + 129, 75 - 25, 75}));
    EXPECT_EQ(colour(208, 64, 128), (Pixel{224 - 129, 224 + 25, 224}));
}

// 208 x 16 is 13 x 256; 409 x 16 is 25.6 x 256.
TEST(Nv12ToBgr, RedDifference) {
    EXPECT_EQ(colour(80, 128, 144), (Pixel{75, 75 - 13, 75 + 25}));
    EXPECT_EQ(colour(80, 128, 112), (Pixel{75, 75 + 13, 75 - 26}));
    EXPECT_EQ(colour(91, 128, 130), (Pixel{87, 86, 91}));  // red 298 x 75 + 128 + 818 = 91 x 256
    EXPECT_EQ(colour(69, 128, 126), (Pixel{62, 63, 59}));  // red 298 x 53 + 128 - 818 = 59 x 256
}

TEST(Nv12ToBgr, SaturatesAt16Bits) {
    EXPECT_EQ(colour(255, 255, 255), (Pixel{255, 125, 255}));  // green (71350 - 39116) >> 8
    EXPECT_EQ(colour(16, 0, 0), (Pixel{0, 154, 0}));           // green (128 + 39424) >> 8
    EXPECT_EQ(colour(255, 0, 0),
              (Pixel{20, 255, 74}));  // (71350 - 66048) >> 8, (71350 - 52352) >> 8
}

TEST(Nv12ToBgr, ChromaServesTwoByTwoPixels) {
    Picture picture(8, 2, 80, 128, 128);
    picture.chroma(2, 0) = 192;  // U of columns 2 and 3
    picture.luma(5, 1) = 208;
    picture.convert();
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 8; ++x) {
            Pixel expected{75, 75, 75};
            if (x == 2 || x == 3) {
                expected = {204, 50, 75};
            } else if (x == 5 && y == 1) {
                expected = {224, 224, 224};
            }
            EXPECT_EQ(picture.pixel(x, y), expected) << x << ", " << y;
        }
    }
}

// Chroma rows are as far apart as luma rows.
TEST(Nv12ToBgr, RowsFollowTheStrides) {
    Picture picture(8, 4, 80, 128, 128);
    picture.chroma(0, 1) = 192;
    picture.luma(7, 2) = 208;
    picture.convert();
    EXPECT_EQ(picture.pixel(0, 1), (Pixel{75, 75, 75}));
    EXPECT_EQ(picture.pixel(0, 2), (Pixel{204, 50, 75}));
    EXPECT_EQ(picture.pixel(1, 3), (Pixel{204, 50, 75}));
    EXPECT_EQ(picture.pixel(7, 2), (Pixel{224, 224, 224}));
    EXPECT_EQ(picture.pixel(7, 3), (Pixel{75, 75, 75}));
}

TEST(Nv12ToBgr, OnlyWholeBlocksAreWritten) {
    struct {
        int width;
        int height;
        int bytes;
        int rows;
    } const cases[] = {{8, 1, 0, 0},   {8, 0, 0, 0},  {7, 2, 0, 0},  {0, 2, 0, 0},
                       {8, 2, 24, 2},  {8, 3, 24, 2}, {9, 2, 24, 2}, {15, 5, 24, 4},
                       {16, 2, 48, 2}, {31, 3, 72, 2}};
    for (auto const& each : cases) {
        Picture picture(each.width, each.height, 80, 128, 128);
        picture.convert();
        for (int y = 0; y < each.height; ++y) {
            EXPECT_EQ(picture.written(y), y < each.rows ? each.bytes : 0)
                << each.width << " x " << each.height << ", row " << y;
        }
    }
}

TEST(Nv12ToBgr, NegativeSizesWriteNothing) {
    unsigned char byte = 77;
    NV12toBGR_neon(&byte, &byte, &byte, 8, -2, 8, 24);
    NV12toBGR_neon(&byte, &byte, &byte, -8, 2, 8, 24);
    EXPECT_EQ(byte, 77);
}

}  // namespace

}  // namespace ox::test::cv_helpers
