// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Area resizing of bytes: boundaries, weights, squares, and where the classes differ.
#include <gtest/gtest.h>

#include "simd/resizer_check.h"

namespace ox::test::resizer_byte_area {
namespace {

constexpr int area = Simd::ResizerMethodArea;
constexpr int fast = Simd::ResizerMethodAreaFast;
constexpr std::int32_t range = 2048;  // of the weights

ResizerSubjects const directSubjects{&byteArea1x1Resizer, &vectorByteArea1x1Resizer};

using Table = std::vector<std::int32_t>;

struct Tables {
    Table alpha;
    Table index;
    bool operator==(Tables const&) const = default;
};

Tables tablesOf(std::uint64_t s, std::uint64_t d, std::int32_t of) {
    Tables tables{Table(d + 1), Table(d + 1)};
    Simd::Base::fillArea(s, d, of, tables.alpha.data(), tables.index.data());
    return tables;
}

TEST(ResizerByteArea, TablesAreAsModelled) {
    forEachAxis([](std::uint64_t s, std::uint64_t d) {
        for (std::int32_t const of : {1024, 2048}) {
            Tables expected;
            for (std::uint64_t i = 0; i <= d; ++i) {
                auto const at = model::areaPosition(s, d, of, i);
                expected.alpha.push_back(at.weight);
                expected.index.push_back(static_cast<std::int32_t>(at.index));
            }
            ASSERT_EQ(tablesOf(s, d, of), expected);
        }
    });
}

TEST(ResizerByteArea, BoundariesOfHalfTheSize) {
    EXPECT_EQ(tablesOf(4, 2, range), (Tables{{1024, 1024, 0}, {0, 2, 3}}));
    EXPECT_EQ(tablesOf(4, 2, 1024), (Tables{{512, 512, 0}, {0, 2, 3}}));
}

TEST(ResizerByteArea, BoundariesOfTheSameSize) {
    EXPECT_EQ(tablesOf(3, 3, range), (Tables{{2048, 2048, 2048, 0}, {0, 1, 2, 2}}));
}

TEST(ResizerByteArea, BoundariesOfEnlargements) {
    EXPECT_EQ(tablesOf(2, 4, range), (Tables{{4096, 2048, 4096, 2048, 0}, {0, 0, 1, 1, 1}}));
    // 0, 0.75, 1.5, 2.25, 3: four thirds of 2048 by 1, 0.25, 0.5, 0.75, without fractions
    EXPECT_EQ(tablesOf(3, 4, range), (Tables{{2730, 682, 1365, 2048, 0}, {0, 0, 1, 2, 2}}));
}

// 8437 steps end just before the only sample does.
TEST(ResizerByteArea, LastBoundaryThatRoundsDown) {
    Tables const tables = tablesOf(1, 8437, range);
    EXPECT_EQ(tables.alpha.back(), 1);
    EXPECT_EQ(tables.index.back(), 0);
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        model::Resize const request{0, area, 1, 1, 8437, 1, 1};
        EXPECT_TRUE(resizesTo(subject, request, Bytes{100}, Bytes(8437, 100)));
    });
}

constexpr std::int32_t largest = 0x7FFFFFFF;

// 2048 * 2^20 is the first weight that 32 bits don't hold.
TEST(ResizerByteArea, WeightsSaturate) {
    Tables const tables = tablesOf(2, 1 << 21, range);
    EXPECT_EQ(tables.alpha[0], largest);
    EXPECT_EQ(tables.alpha[1], 2147481600);  // less 2048
    EXPECT_EQ(tables.alpha[2], 2147479552);
    EXPECT_EQ(tables.alpha[1 << 20], largest);
    EXPECT_EQ(tables.index[1 << 20], 1);
    EXPECT_EQ(tables.alpha[1 << 21], 0);
    Tables const more = tablesOf(1, 1 << 22, range);
    EXPECT_EQ(more.alpha[1 << 21], largest);  // half of 2^33
    EXPECT_EQ(more.alpha[3 << 20], largest);
    EXPECT_EQ(more.alpha[7 << 19], 1 << 30);
}

// The first cell of a sample has 2047 of 2048.
TEST(ResizerByteArea, AMillionColumnsForEach) {
    constexpr std::uint64_t width = 1 << 21;
    Bytes expected;
    for (std::uint8_t const sample : Bytes{10, 200, 90, 255}) {
        expected.insert(expected.end(), width / 2, sample);
    }
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {0, area, 2, 2, width, 2, 1}, {10, 200, 90, 255}, expected));
    });
}

// Half of the rows of a sample lie between boundaries whose weights are both the largest: they are
// black.
TEST(ResizerByteArea, TwoMillionRowsForEach) {
    constexpr std::uint64_t height = 1 << 22;
    Bytes expected;
    for (Bytes const& row : {Bytes{0, 0}, Bytes{10, 200}, Bytes{0, 0}, Bytes{90, 255}}) {
        for (std::uint64_t r = 0; r < height / 4; ++r) {
            expected.insert(expected.end(), row.begin(), row.end());
        }
    }
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(
            resizesTo(subject, {0, area, 2, 2, 2, height, 1}, {10, 200, 90, 255}, expected));
    });
}

// Boundaries aren't exact here. The weight of a whole sample is 2048 * 1,500,000, and falls below
// 2^31 behind 451,388 cells.
TEST(ResizerByteArea, MillionsOfColumnsAreAsModelled) {
    Bytes const src{200, 100, 255, 3};
    model::Resize const request{0, area, 2, 2, 3'000'000, 2, 1};
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        Bytes const expected = model::resized(subject.model, request, src);
        EXPECT_EQ(expected[0], 0);
        EXPECT_EQ(expected[451'000], 0);
        EXPECT_NE(expected[452'000], 0);
        EXPECT_TRUE(resizesTo(subject, request, src, expected));
    });
}

// Down a picture whose rows fill registers: each is all of one sum.
TEST(ResizerByteArea, MillionsOfRowsAreAsModelled) {
    constexpr std::uint64_t height = 1'500'000;
    constexpr std::uint64_t width = 16;
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        Bytes const column =
            model::resized(subject.model, {0, area, 1, 1, 1, height, 1}, Bytes{201});
        Bytes expected;
        for (std::uint8_t const sample : column) {
            expected.insert(expected.end(), width, sample);
        }
        EXPECT_TRUE(
            resizesTo(subject, {0, area, 64, 1, width, height, 1}, Bytes(64, 201), expected));
    });
}

TEST(ResizerByteArea, NoCellsHaveNoBoundaries) {
    std::int32_t alpha = 77;
    std::int32_t index = 78;
    Simd::Base::fillArea(5, 0, range, &alpha, &index);
    EXPECT_EQ(alpha, 77);
    EXPECT_EQ(index, 78);
}

TEST(ResizerByteArea, HalfTheSizeIsTheRoundedMean) {
    // 3.5 and 5.5 go up, 3.25 goes down.
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo<std::uint8_t>(subject, {0, area, 6, 2, 3, 1},
                                            {1, 2, 3, 4, 3, 3, 5, 6, 7, 8, 3, 4}, {4, 6, 3}));
    });
}

TEST(ResizerByteArea, TheSameSizeIsTheSame) {
    Random random;
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            Bytes plane(19 * 4 * channels);
            std::generate(plane.begin(), plane.end(), [&] { return random.byte(); });
            EXPECT_TRUE(resizesTo(subject, {0, area, 19, 4, 19, 4, channels}, plane, plane));
        }
    });
}

TEST(ResizerByteArea, EnlargementsSplitCellsAtBoundaries) {
    // 90 * 1365 and 90 * 1365 + 255 * 682, over 2048
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo<std::uint8_t>(subject, {0, area, 3, 1, 4, 1}, {0, 90, 255},
                                            {0, 60, 145, 255}));
        EXPECT_TRUE(resizesTo<std::uint8_t>(subject, {0, area, 1, 3, 1, 4}, {0, 90, 255},
                                            {0, 60, 145, 255}));
    });
}

TEST(ResizerByteArea, KeepsChannelsApart) {
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo<std::uint8_t>(subject, {0, area, 4, 1, 2, 1, 3},
                                            {0, 10, 255, 10, 30, 255, 1, 2, 3, 4, 5, 6},
                                            {5, 20, 255, 3, 4, 5}));
        EXPECT_TRUE(resizesTo<std::uint8_t>(subject, {0, area, 2, 2, 1, 1, 2},
                                            {0, 200, 4, 100, 8, 0, 12, 100}, {6, 100}));
    });
}

// Sums of weights grow with the rounding of boundaries; a pixel of this row has 2064 of 2048, and
// white becomes 257.
TEST(ResizerByteArea, OverflowOfHugeEnlargements) {
    onEveryTarget(directSubjects, [](ResizerSubject const& subject) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            model::Resize const request{0, area, 1, 1, 81003, 1, channels};
            Bytes const white(channels, 255);
            Bytes const expected = model::resized(subject.model, request, white);
            EXPECT_EQ(expected[15479 * channels], subject.isVector() && channels > 2 ? 255 : 1);
            EXPECT_TRUE(resizesTo(subject, request, white, expected));
        }
    });
}

// The same down a picture whose rows fill registers: each is all of one sum.
TEST(ResizerByteArea, OverflowOfHugeHeights) {
    constexpr std::uint64_t height = 81003;
    onEveryTarget(directSubjects, [](ResizerSubject const& subject) {
        for (std::uint64_t const channels : {2U, 3U}) {
            Bytes const column = model::resized(subject.model, {0, area, 1, 1, 1, height, channels},
                                                Bytes(channels, 255));
            EXPECT_EQ(column[15479 * channels], subject.isVector() && channels > 2 ? 255 : 1);
            std::uint64_t const width = 64 / channels + 1;
            Bytes expected;
            for (std::uint64_t r = 0; r < height; ++r) {
                expected.insert(expected.end(), width * channels, column[r * channels]);
            }
            EXPECT_TRUE(resizesTo(subject, {0, area, width, 1, width, height, channels},
                                  Bytes(width * channels, 255), expected));
        }
    });
}

// So many white rows that their sums leave signed words, then words; and cells that end in between.
TEST(ResizerByteArea, CellsOfManyRows) {
    onEveryTarget(directSubjects, [](ResizerSubject const& subject) {
        for (std::uint64_t const rows : {128U, 129U, 257U, 258U, 600U}) {
            for (std::uint64_t const dst_h : {1U, 3U}) {
                std::uint64_t const src_h = dst_h * rows + dst_h / 2;
                model::Resize const request{0, area, 70, src_h, 40, dst_h, 1};
                Bytes const src(70 * src_h, 255);
                Bytes const expected =
                    model::resized(model::ResizeClass::ByteArea1x1, request, src);
                EXPECT_TRUE(resizesTo(subject, request, src, expected));
            }
        }
    });
}

// 2048 / scale has 16 bits and more, but no row has so large a weight: cells end in their sample,
// or share theirs with the next.
TEST(ResizerByteArea, ClassesAgreeWhereHeightsGrowManyTimes) {
    onEveryTarget(directSubjects, [](ResizerSubject const& subject) {
        Random random;
        for (std::uint64_t const times : {15U, 16U, 17U, 31U, 32U, 33U, 64U, 100U}) {
            for (std::uint64_t src_h = 1; src_h <= 5; ++src_h) {
                std::uint64_t const channels = 1 + (times + src_h) % 4;
                model::Resize const request{0, area, 5, src_h, 3, times * src_h + 1, channels};
                Bytes src(5 * src_h * channels);
                std::generate(src.begin(), src.end(), [&] { return random.byte(); });
                Bytes const expected =
                    model::resized(model::ResizeClass::ByteArea1x1, request, src);
                EXPECT_TRUE(resizesTo(subject, request, src, expected));
            }
        }
    });
}

TEST(ResizerByteArea, SquaresOfEvenSides) {
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteArea2x2Resizer, {0, fast, 4, 2, 2, 1},
                                        {1, 2, 3, 4, 5, 6, 7, 8}, {4, 6}));
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteArea2x2Resizer, {0, fast, 4, 4, 1, 1},
                                        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255}, {16}));
}

// The last column and row count twice.
TEST(ResizerByteArea, SquaresOfOddSides) {
    Bytes const src{10, 20, 30, 50, 60, 70, 90, 100, 110};
    EXPECT_TRUE(
        resizesTo<std::uint8_t>(byteArea2x2Resizer, {0, fast, 3, 3, 2, 2}, src, {35, 50, 95, 110}));
    // (35 + 50 + 95 + 110) / 4
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteArea2x2Resizer, {0, fast, 3, 3, 1, 1}, src, {73}));
    // With three samples of three parts each it would be 60.
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteArea1x1Resizer, {0, area, 3, 3, 1, 1}, src, {60}));
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteArea2x2Resizer, {0, fast, 1, 1, 1, 1}, {200}, {200}));
}

TEST(ResizerByteArea, SquaresOfEverySmallSize) {
    Random random;
    for (std::uint64_t side = 1; side <= 13; ++side) {
        for (std::uint64_t other = 1; other <= 13; ++other) {
            for (std::uint64_t w = 1; w <= (side + 1) / 2; ++w) {
                for (std::uint64_t h = 1; h <= (other + 1) / 2; ++h) {
                    model::Resize const request{0, fast, side, other, w, h, 1 + (w + h) % 4};
                    Bytes src(side * other * request.channels);
                    std::generate(src.begin(), src.end(), [&] { return random.byte(); });
                    ASSERT_TRUE(resizesAsModelled(byteArea2x2Resizer, request, src));
                }
            }
        }
    }
}

template <class Class>
struct Probe : Class {
    using Class::ax;
    using Class::ay;
    using Class::by;
    using Class::Class;
    using Class::ix;
    using Class::iy;
};

TEST(ResizerByteArea, TablesAreBuiltAtOnce) {
    Probe<Simd::Base::ResizerByteArea1x1> const direct(
        paramOf({0, area, 7, 5, 3, 4, 3}, scalarAlign));
    EXPECT_EQ(direct.ax.size, 4U);
    EXPECT_EQ(direct.ix.size, 4U);
    EXPECT_EQ(direct.ay.size, 5U);
    EXPECT_EQ(direct.iy.size, 5U);
    EXPECT_EQ(direct.by.size, 24U);
    EXPECT_EQ(direct.ay[0], 1638);  // 2048 / 1.25
    Probe<Simd::Neon::ResizerByteArea1x1> const vector(
        paramOf({0, area, 7, 5, 3, 4, 3}, vectorAlign));
    EXPECT_EQ(vector.by.size, 32U);
    Probe<Simd::Base::ResizerByteArea2x2> const squares(
        paramOf({0, fast, 7, 5, 3, 2, 3}, scalarAlign));
    EXPECT_EQ(squares.by.size, 32U);  // 12 rounded up, and 16
    EXPECT_EQ(squares.ix[3], 3);
    EXPECT_EQ(squares.iy[2], 2);
    EXPECT_EQ(squares.ay[0], 682);  // 1024 / 1.5
}

TEST(ResizerByteArea, TablesOfNoCellsAreEmpty) {
    onEveryTarget(directSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {0, area, 3, 3, 0, 5, 1}, Bytes(9), Bytes{}));
        EXPECT_TRUE(resizesTo(subject, {0, area, 3, 3, 5, 0, 1}, Bytes(9), Bytes{}));
    });
}

}  // namespace
}  // namespace ox::test::resizer_byte_area
