// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/warps/warp_affine.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "simd/warp_planes.h"

namespace ox::test::warp_affine {
namespace {

using Rows = std::vector<std::vector<int>>;
using Border = std::array<std::uint8_t, 4>;

constexpr model::Matrix identity{1, 0, 0, 0, 1, 0};
constexpr std::uint32_t everyFlags[]{0, 1, 2, 4, 5, 6};  // that a warp can be made with

Rows const square{{10, 20, 30}, {40, 50, 60}, {70, 80, 90}};

model::Matrix shift(float x, float y) {
    return {1, 0, x, 0, 1, y};
}

model::Matrix scale(float x, float y) {
    return {x, 0, 0, 0, y, 0};
}

model::Warp nearest(model::Matrix const& matrix, std::uint8_t border) {
    return {matrix, 0, Border{border}};
}

model::Warp bilinear(model::Matrix const& matrix, std::uint8_t border) {
    return {matrix, model::WarpBilinear, Border{border}};
}

model::Pixels pixelsOf(Rows const& rows, int channels) {
    int const width = rows.empty() ? 0 : static_cast<int>(rows[0].size()) / channels;
    model::Pixels pixels{width, static_cast<int>(rows.size()), channels, {}};
    for (std::vector<int> const& row : rows) {
        std::transform(row.begin(), row.end(), std::back_inserter(pixels.bytes),
                       [](int value) { return static_cast<std::uint8_t>(value); });
    }
    return pixels;
}

Rows rowsOf(model::Pixels const& pixels) {
    Rows rows;
    for (int y = 0; y < pixels.height; ++y) {
        unsigned char const* const row = pixels.bytes.data() + pixels.indexOf(0, y);
        rows.emplace_back(row, row + pixels.rowBytes());
    }
    return rows;
}

Rows flat(int width, int height, int value) {
    return Rows(static_cast<std::size_t>(height),
                Rows::value_type(static_cast<std::size_t>(width), value));
}

// What the library and the model make of a plane over another one.
Rows warped(model::Warp const& warp, Rows const& from, Rows const& before, int channels = 1) {
    model::Pixels const src = pixelsOf(from, channels);
    model::Pixels dst = pixelsOf(before, channels);
    PlacedPixels const src_plane(src, {3, 0, Guard::AtEnd});
    PlacedPixels const dst_plane(dst, {5, 0, Guard::AtEnd});
    WarpHandle const object = createWarp(warp, src_plane, dst_plane, channels);
    if (object == nullptr) {
        ADD_FAILURE() << "no warp";
        return {};
    }
    object->Run(src_plane.data(), dst_plane.data());
    model::warpPlane(warp, src, dst);
    EXPECT_TRUE(dst_plane.hold(dst)) << "against the model";
    EXPECT_TRUE(src_plane.hold(src)) << "the source changed";
    return rowsOf(dst_plane.pixels(channels));
}

struct Creation {
    std::uint64_t rows = 4;
    std::uint64_t stride = 64;
    std::uint64_t channels = 1;
    model::Matrix matrix = identity;
    std::uint32_t flags = 0;
};

// Of a source four pixels wide and no rows to be written.
bool isMade(Creation const& with) {
    WarpHandle const warp(Simd::Base::CreateWarpAffine(4, with.rows, with.stride, 4, 0, 64,
                                                       with.channels, with.matrix.data(),
                                                       with.flags, nullptr));
    return warp != nullptr;
}

TEST(WarpAffineCreation, NeedsOneToFourChannels) {
    for (std::uint32_t const flags : everyFlags) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            EXPECT_TRUE(isMade({.channels = channels, .flags = flags}));
        }
        for (std::uint64_t const channels :
             {std::uint64_t{0}, std::uint64_t{5}, std::uint64_t{6}, std::uint64_t{1} << 32,
              (std::uint64_t{1} << 32) + 1, UINT64_MAX}) {
            EXPECT_FALSE(isMade({.channels = channels, .flags = flags})) << channels;
        }
    }
}

TEST(WarpAffineCreation, BilinearNeedsBytes) {
    for (std::uint32_t flags = 0; flags < 8; ++flags) {
        EXPECT_EQ(isMade({.flags = flags}), flags != 3 && flags != 7) << flags;
    }
}

TEST(WarpAffineCreation, RefusesSourcesPastFourGibibytes) {
    constexpr std::uint64_t limit = 0x100000000;
    EXPECT_TRUE(isMade({.rows = 1, .stride = limit}));
    EXPECT_TRUE(isMade({.rows = limit / 64}));
    EXPECT_TRUE(isMade({.rows = 65536, .stride = 65536}));
    EXPECT_FALSE(isMade({.rows = 1, .stride = limit + 1}));
    EXPECT_FALSE(isMade({.rows = limit / 64 + 1}));
    EXPECT_FALSE(isMade({.rows = 65537, .stride = 65536}));
    // products that 64 bits don't hold
    EXPECT_FALSE(isMade({.rows = limit, .stride = limit}));
    EXPECT_FALSE(isMade({.rows = 2, .stride = std::uint64_t{1} << 63}));
    // no rows have no bytes, however far apart
    EXPECT_TRUE(isMade({.rows = 0, .stride = UINT64_MAX}));
}

TEST(WarpAffineCreation, RefusesMatricesWithoutInverse) {
    for (std::uint32_t const flags : {0U, 2U}) {
        for (model::Matrix const& matrix :
             {model::Matrix{}, model::Matrix{0, 0, 5, 0, 0, 7}, model::Matrix{1, 2, 0, 2, 4, 0},
              model::Matrix{1, 0, 3, 0, 0, 4}, model::Matrix{0, 1, 3, 0, 1, 4},
              model::Matrix{-0.0F, 0, 0, 0, -0.0F, 0},
              // the product that is rounded first leaves a determinant of 0
              model::Matrix{1.0F + 0x1p-11F, 1.0F + 0x1p-12F, 5, 1.0F + 0x1p-12F, 1, 6},
              // an inverse too small for a float
              model::Matrix{1e30F, 0, 0, 0, 1e30F, 0}}) {
            EXPECT_FALSE(isMade({.matrix = matrix, .flags = flags})) << matrix[0];
        }
        for (model::Matrix const& matrix :
             {// determinants that differ from 0 a little, by the fused product in the first
              model::Matrix{1.0F + 0x1p-12F, 1, 0, 1.0F + 0x1p-11F, 1.0F + 0x1p-12F, 0},
              model::Matrix{1, 1, 0, 1, 1.0F + 0x1p-23F, 0}, model::Matrix{0, 1e-20F, 0, 1, 0, 0},
              model::Matrix{1e15F, 0, 0, 0, 1e15F, 0}}) {
            EXPECT_TRUE(isMade({.matrix = matrix, .flags = flags})) << matrix[0];
        }
    }
}

TEST(WarpAffineCreation, ReadsNoMoreOfTheBorderThanAPixel) {
    for (std::size_t channels = 1; channels <= 4; ++channels) {
        for (std::uint32_t const flags : everyFlags) {
            GuardedMemory const border(channels, Guard::AtEnd);
            WarpHandle const warp(Simd::Base::CreateWarpAffine(
                4, 4, 64, 4, 4, 64, channels, identity.data(), flags, border.data()));
            EXPECT_NE(warp, nullptr);
        }
    }
}

TEST(WarpAffineNearest, Identity) {
    EXPECT_EQ(warped(nearest(identity, 7), square, flat(3, 3, 99)), square);
    EXPECT_EQ(warped(nearest(identity, 7), square, flat(5, 4, 99)),
              (Rows{{10, 20, 30, 7, 7}, {40, 50, 60, 7, 7}, {70, 80, 90, 7, 7}, {7, 7, 7, 7, 7}}));
    EXPECT_EQ(warped(nearest(identity, 7), square, flat(2, 2, 99)), (Rows{{10, 20}, {40, 50}}));
}

TEST(WarpAffineNearest, IdentityOfASideOfOne) {
    EXPECT_EQ(warped(nearest(identity, 7), {{5}}, flat(3, 2, 99)), (Rows{{5, 7, 7}, {7, 7, 7}}));
    EXPECT_EQ(warped(nearest(identity, 7), {{5, 6, 8}}, flat(4, 2, 99)),
              (Rows{{5, 6, 8, 7}, {7, 7, 7, 7}}));
    EXPECT_EQ(warped(nearest(identity, 7), {{5}, {6}, {8}}, flat(2, 4, 99)),
              (Rows{{5, 7}, {6, 7}, {8, 7}, {7, 7}}));
}

TEST(WarpAffineNearest, ShiftsByWholePixels) {
    EXPECT_EQ(warped(nearest(shift(1, 2), 7), square, flat(5, 6, 99)), (Rows{{7, 7, 7, 7, 7},
                                                                             {7, 7, 7, 7, 7},
                                                                             {7, 10, 20, 30, 7},
                                                                             {7, 40, 50, 60, 7},
                                                                             {7, 70, 80, 90, 7},
                                                                             {7, 7, 7, 7, 7}}));
    EXPECT_EQ(warped(nearest(shift(-1, -1), 7), square, flat(3, 3, 99)),
              (Rows{{50, 60, 7}, {80, 90, 7}, {7, 7, 7}}));
    for (auto const& [x, y] : {std::pair{9.0F, 0.0F}, {-9.0F, 0.0F}, {0.0F, 9.0F}, {0.0F, -9.0F}}) {
        EXPECT_EQ(warped(nearest(shift(x, y), 7), square, flat(3, 3, 99)), flat(3, 3, 7));
    }
}

// Halves go away from 0 on both sides: columns 0.5 to 2.5 are 1 to 3, and show places 0.5 to 2.5,
// of which the last is cut to the plane.
TEST(WarpAffineNearest, ShiftsByHalfPixels) {
    EXPECT_EQ(warped(nearest(shift(0.5F, 0), 7), {{10, 20, 30}}, flat(5, 1, 99)),
              (Rows{{7, 20, 30, 30, 7}}));
    EXPECT_EQ(warped(nearest(shift(-0.5F, 0), 7), {{10, 20, 30}}, flat(5, 1, 99)),
              (Rows{{20, 30, 30, 7, 7}}));
    EXPECT_EQ(warped(nearest(shift(0, 0.5F), 7), {{10}, {20}, {30}}, flat(1, 5, 99)),
              (Rows{{7}, {20}, {30}, {30}, {7}}));
    EXPECT_EQ(warped(nearest(shift(0, -0.5F), 7), {{10}, {20}, {30}}, flat(1, 5, 99)),
              (Rows{{20}, {30}, {30}, {7}, {7}}));
}

// The lowest edge may end above the plane by less than half a row, with the columns that it has.
TEST(WarpAffineNearest, LowestEdgeAboveThePlane) {
    EXPECT_EQ(warped(nearest(shift(0, -2.25F), 7), square, flat(3, 2, 99)),
              (Rows{{70, 80, 90}, {7, 7, 7}}));
    EXPECT_EQ(warped(nearest(shift(0, -2.5F), 7), square, flat(3, 2, 99)), flat(3, 2, 7));
    // from (0, -1/4) to (2, -7/32)
    EXPECT_EQ(
        warped(nearest({1, 0, 0, 1.0F / 64, 1, -1.25F}, 7), {{1, 2, 3}, {4, 5, 6}}, flat(6, 2, 99)),
        (Rows{{4, 5, 6, 7, 7, 7}, {7, 7, 7, 7, 7, 7}}));
}

TEST(WarpAffineNearest, Scales) {
    EXPECT_EQ(warped(nearest(scale(2, 1), 7), {{10, 20, 30}}, flat(6, 1, 99)),
              (Rows{{10, 20, 20, 30, 30, 7}}));
    EXPECT_EQ(warped(nearest(scale(0.5F, 1), 7), {{10, 20, 30, 40, 50}}, flat(4, 1, 99)),
              (Rows{{10, 30, 50, 7}}));
    EXPECT_EQ(warped(nearest(scale(1, 2), 7), {{10}, {20}, {30}}, flat(1, 6, 99)),
              (Rows{{10}, {20}, {20}, {30}, {30}, {7}}));
}

// Places between whole pixels have no part in these.
class WarpAffineOfWholePixels : public testing::TestWithParam<std::uint32_t> {
  protected:
    Rows run(model::Matrix const& matrix, Rows const& src, int width, int height) const {
        return warped({matrix, GetParam(), Border{7}}, src, flat(width, height, 99));
    }
};

TEST_P(WarpAffineOfWholePixels, Flips) {
    EXPECT_EQ(run({-1, 0, 2, 0, 1, 0}, square, 3, 3),
              (Rows{{30, 20, 10}, {60, 50, 40}, {90, 80, 70}}));
    EXPECT_EQ(run({1, 0, 0, 0, -1, 2}, square, 3, 3),
              (Rows{{70, 80, 90}, {40, 50, 60}, {10, 20, 30}}));
    EXPECT_EQ(run({-1, 0, 2, 0, -1, 1}, {{1, 2, 3}, {4, 5, 6}}, 4, 3),
              (Rows{{6, 5, 4, 7}, {3, 2, 1, 7}, {7, 7, 7, 7}}));
}

TEST_P(WarpAffineOfWholePixels, QuarterTurns) {
    Rows const wide{{1, 2, 3}, {4, 5, 6}};
    EXPECT_EQ(run({0, -1, 1, 1, 0, 0}, wide, 3, 4),
              (Rows{{4, 1, 7}, {5, 2, 7}, {6, 3, 7}, {7, 7, 7}}));
    EXPECT_EQ(run({0, 1, 0, -1, 0, 2}, wide, 2, 3), (Rows{{3, 6}, {2, 5}, {1, 4}}));
    EXPECT_EQ(run({0, 1, 0, 1, 0, 0}, wide, 2, 3), (Rows{{1, 4}, {2, 5}, {3, 6}}));
}

TEST_P(WarpAffineOfWholePixels, ShiftsOutOfThePlane) {
    EXPECT_EQ(run(shift(-2, -1), square, 3, 3), (Rows{{60, 7, 7}, {90, 7, 7}, {7, 7, 7}}));
}

TEST_P(WarpAffineOfWholePixels, EmptyPlanes) {
    EXPECT_EQ(run(identity, square, 3, 0), Rows{});
    EXPECT_EQ(run(identity, square, 0, 3), flat(0, 3, 0));
    EXPECT_EQ(run(identity, {}, 3, 2), flat(3, 2, 7));
    EXPECT_EQ(run(identity, flat(0, 2, 0), 3, 2), flat(3, 2, 7));
}

INSTANTIATE_TEST_SUITE_P(Nearest, WarpAffineOfWholePixels, testing::Values(0U));
INSTANTIATE_TEST_SUITE_P(Bilinear, WarpAffineOfWholePixels, testing::Values(2U));

// An eighth of a turn, and twice the area: rows of a diamond.
constexpr model::Matrix diamond{1, -1, 2, 1, 1, 0};

TEST(WarpAffineNearest, TurnsLeaveCornersUncovered) {
    EXPECT_EQ(warped(nearest(diamond, 7), square, flat(5, 5, 99)), (Rows{{7, 7, 10, 7, 7},
                                                                         {7, 40, 50, 20, 7},
                                                                         {70, 80, 50, 60, 30},
                                                                         {7, 80, 90, 60, 7},
                                                                         {7, 7, 90, 7, 7}}));
    EXPECT_EQ(warped({diamond, model::WarpTransparent, Border{7}}, square, flat(5, 5, 99)),
              (Rows{{99, 99, 10, 99, 99},
                    {99, 40, 50, 20, 99},
                    {70, 80, 50, 60, 30},
                    {99, 80, 90, 60, 99},
                    {99, 99, 90, 99, 99}}));
}

TEST(WarpAffineNearest, NonBytesGetNoBorder) {
    model::Warp warp = nearest(shift(1, 0), 7);
    warp.flags = model::WarpNonByte;
    EXPECT_EQ(warped(warp, {{1, 2}}, flat(4, 2, 99)), (Rows{{0, 1, 2, 0}, {0, 0, 0, 0}}));
    warp.flags = model::WarpNonByte | model::WarpTransparent;
    EXPECT_EQ(warped(warp, {{1, 2}}, flat(4, 2, 99)), (Rows{{99, 1, 2, 99}, {99, 99, 99, 99}}));
}

TEST(WarpAffineNearest, BorderIsZeroUnlessGiven) {
    EXPECT_EQ(warped({shift(1, 0), 0, {}}, {{1, 2}}, flat(4, 1, 99)), (Rows{{0, 1, 2, 0}}));
    EXPECT_EQ(warped({shift(1, 0), 2, {}}, {{1, 2}}, flat(4, 1, 99)), (Rows{{0, 1, 2, 0}}));
}

TEST(WarpAffine, EachChannelHasItsBorder) {
    for (std::uint32_t const flags : {0U, 2U}) {
        for (int channels = 1; channels <= 4; ++channels) {
            std::vector<int> const border{7, 8, 9, 10};
            std::vector<int> const pixel{101, 102, 103, 104};
            std::vector<int> row(border.begin(), border.begin() + channels);
            row.insert(row.end(), pixel.begin(), pixel.begin() + channels);
            row.insert(row.end(), border.begin(), border.begin() + channels);
            EXPECT_EQ(warped({shift(1, 0), flags, Border{7, 8, 9, 10}},
                             {{pixel.begin(), pixel.begin() + channels}}, flat(channels * 3, 1, 99),
                             channels),
                      Rows{row});
        }
    }
}

TEST(WarpAffineBilinear, Identity) {
    EXPECT_EQ(warped(bilinear(identity, 7), square, flat(3, 3, 99)), square);
    EXPECT_EQ(warped(bilinear(identity, 7), square, flat(5, 4, 99)),
              (Rows{{10, 20, 30, 7, 7}, {40, 50, 60, 7, 7}, {70, 80, 90, 7, 7}, {7, 7, 7, 7, 7}}));
}

TEST(WarpAffineBilinear, HalfOfTheBorderAtHalfAPixelOutside) {
    Rows const row{{10, 20, 30}};
    EXPECT_EQ(warped(bilinear(shift(0.5F, 0), 0), row, flat(5, 1, 99)), (Rows{{5, 15, 25, 15, 0}}));
    EXPECT_EQ(warped(bilinear(shift(0.5F, 0), 100), row, flat(5, 1, 99)),
              (Rows{{55, 15, 25, 65, 100}}));
    EXPECT_EQ(warped(bilinear(shift(-0.5F, 0), 100), row, flat(5, 1, 99)),
              (Rows{{15, 25, 65, 100, 100}}));
    EXPECT_EQ(warped(bilinear(shift(0, 0.5F), 100), {{10}, {20}, {30}}, flat(1, 5, 99)),
              (Rows{{55}, {15}, {25}, {65}, {100}}));
    EXPECT_EQ(warped(bilinear(shift(0.5F, 0.5F), 0), {{200}}, flat(3, 3, 99)),
              (Rows{{50, 50, 0}, {50, 50, 0}, {0, 0, 0}}));
}

// The outermost taps are what the destination holds.
TEST(WarpAffineBilinear, TransparentBlendsWithTheDestination) {
    std::uint32_t const flags = model::WarpBilinear | model::WarpTransparent;
    EXPECT_EQ(warped({shift(0.5F, 0), flags, Border{7}}, {{200}}, {{100, 0, 33}}),
              (Rows{{150, 100, 33}}));
    EXPECT_EQ(warped({shift(0.5F, 0.5F), flags, {}}, {{200}}, {{0, 40, 33}, {80, 120, 44}}),
              (Rows{{50, 80, 33}, {110, 140, 44}}));
    EXPECT_EQ(warped({shift(0.25F, 0), flags, {}}, {{96, 32, 200, 201}}, {{16, 64, 0, 0, 8, 9}}, 2),
              (Rows{{76, 40, 174, 159, 56, 57}}));
}

TEST(WarpAffineBilinear, WeightsAreThirtySeconds) {
    Rows const step{{0, 255}};
    auto const firstAt = [&](float place) {
        return warped(bilinear(shift(-place, 0), 0), step, flat(1, 1, 99))[0][0];
    };
    EXPECT_EQ(firstAt(1.0F / 65), 0);     // 0.49 of a step
    EXPECT_EQ(firstAt(1.0F / 64), 8);     // halves go up: (255 x 1 x 32 + 512) >> 10
    EXPECT_EQ(firstAt(0.5F), 128);        // 127.5 + 0.5
    EXPECT_EQ(firstAt(31.0F / 32), 247);  // (255 x 31 x 32 + 512) >> 10
    EXPECT_EQ(firstAt(63.0F / 64), 255);
    auto const faintAt = [](float place) {
        return warped(bilinear(shift(-place, 0), 0), {{0, 1}}, flat(1, 1, 99))[0][0];
    };
    EXPECT_EQ(faintAt(15.0F / 32), 0);
    EXPECT_EQ(faintAt(0.5F), 1);
}

TEST(WarpAffineBilinear, Scales) {
    EXPECT_EQ(warped(bilinear(scale(2, 1), 0), {{10, 20, 30}}, flat(7, 1, 99)),
              (Rows{{10, 15, 20, 25, 30, 15, 0}}));
    EXPECT_EQ(warped(bilinear(scale(0.5F, 1), 0), {{10, 20, 30, 40, 50}}, flat(4, 1, 99)),
              (Rows{{10, 30, 50, 0}}));
}

TEST(WarpAffineBilinear, SourcesOfASideOfOne) {
    EXPECT_EQ(warped(bilinear(scale(2, 2), 0), {{100}}, flat(3, 3, 99)),
              (Rows{{100, 50, 0}, {50, 25, 0}, {0, 0, 0}}));
    EXPECT_EQ(warped(bilinear(scale(2, 2), 0), {{100, 60}}, flat(5, 3, 99)),
              (Rows{{100, 80, 60, 30, 0}, {50, 40, 30, 15, 0}, {0, 0, 0, 0, 0}}));
    EXPECT_EQ(warped(bilinear(scale(2, 2), 0), {{100}, {60}}, flat(3, 5, 99)),
              (Rows{{100, 50, 0}, {80, 40, 0}, {60, 30, 0}, {30, 15, 0}, {0, 0, 0}}));
}

TEST(WarpAffine, RunsOnAnyNumberOfPlanes) {
    for (std::uint32_t const flags : everyFlags) {
        model::Warp const warp{diamond, flags, Border{7}};
        model::Pixels const plane = pixelsOf(square, 1);
        model::Pixels const other = pixelsOf({{9, 8, 7}, {6, 5, 4}, {3, 2, 1}}, 1);
        model::Pixels const before = pixelsOf(flat(5, 5, 99), 1);
        PlacedPixels const first(plane);
        PlacedPixels const second(other);
        PlacedPixels const first_dst(before);
        PlacedPixels const second_dst(before);
        WarpHandle const object = createWarp(warp, first, first_dst, 1);
        ASSERT_NE(object, nullptr);
        for (int i = 0; i < 2; ++i) {
            object->Run(second.data(), second_dst.data());
            object->Run(first.data(), first_dst.data());
        }
        model::Pixels expected = before;
        model::warpPlane(warp, plane, expected);
        model::warpPlane(warp, plane, expected);
        EXPECT_TRUE(first_dst.hold(expected)) << flags;
        expected = before;
        model::warpPlane(warp, other, expected);
        model::warpPlane(warp, other, expected);
        EXPECT_TRUE(second_dst.hold(expected)) << flags;
    }
}

}  // namespace
}  // namespace ox::test::warp_affine
