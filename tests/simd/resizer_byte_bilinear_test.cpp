// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Bilinear resizing of bytes: weights, edges, and the gather program of the vector class.
#include <gtest/gtest.h>

#include <limits>

#include "simd/resizer_check.h"

namespace ox::test::resizer_byte_bilinear {
namespace {

constexpr int bilinear = Simd::ResizerMethodBilinear;
constexpr int bicubic = Simd::ResizerMethodBicubic;

ResizerSubjects const bothSubjects{&byteBilinearResizer, &vectorByteBilinearResizer};

using Table = std::vector<std::int32_t>;

struct Tables {
    Table index;
    Table weight;
    bool operator==(Tables const&) const = default;
};

Tables tablesOf(std::uint64_t s, std::uint64_t d, std::uint64_t channels) {
    Tables tables{Table(d * channels), Table(d * channels)};
    Simd::Base::fillByteBilinear(s, d, channels, tables.index.data(), tables.weight.data());
    return tables;
}

TEST(ResizerByteBilinear, TablesAreAsModelled) {
    forEachAxis([](std::uint64_t s, std::uint64_t d) {
        for (std::uint64_t channels = 1; channels <= 3; channels += 2) {
            Tables expected;
            for (std::uint64_t i = 0; i < d; ++i) {
                auto const at = model::bytePosition(s, d, i);
                for (std::uint64_t k = 0; k < channels; ++k) {
                    auto const element = at.index * static_cast<std::int64_t>(channels) +
                                         static_cast<std::int64_t>(k);
                    expected.index.push_back(static_cast<std::int32_t>(element));
                    expected.weight.push_back(at.weight);
                }
            }
            ASSERT_EQ(tablesOf(s, d, channels), expected);
        }
    });
}

TEST(ResizerByteBilinear, WeightsOfTwiceAsMany) {
    // -0.25, 0.25, 0.75, 1.25
    EXPECT_EQ(tablesOf(2, 4, 1), (Tables{{0, 0, 0, 0}, {0, 4, 12, 16}}));
    EXPECT_EQ(tablesOf(2, 2, 2), (Tables{{0, 1, 0, 1}, {0, 0, 16, 16}}));
    // 0.25, 1.75, 3.25, 4.75, 6.25, 7.75
    EXPECT_EQ(tablesOf(9, 6, 1).weight, (Table{4, 12, 4, 12, 4, 12}));
    EXPECT_EQ(tablesOf(9, 6, 1).index, (Table{0, 1, 3, 4, 6, 7}));
}

TEST(ResizerByteBilinear, ASingleSampleIsTheSecondOfItsPair) {
    EXPECT_EQ(tablesOf(1, 2, 1), (Tables{{-1, -1}, {16, 16}}));
    EXPECT_EQ(tablesOf(1, 1, 3), (Tables{{-3, -2, -1}, {16, 16, 16}}));
}

TEST(ResizerByteBilinear, EnlargesARow) {
    // Sixteenths 0, 4, 12, 16 of 160.
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteBilinearResizer, {0, bilinear, 2, 1, 4, 1}, {0, 160},
                                        {0, 40, 120, 160}));
}

TEST(ResizerByteBilinear, RoundsOnceBehindBothPasses) {
    // 0.5, 1.5, 2; 1.5, 4.5, 6; 2, 6, 8
    EXPECT_TRUE(resizesTo<std::uint8_t>(byteBilinearResizer, {0, bilinear, 2, 2, 4, 4},
                                        {0, 0, 0, 8},
                                        {0, 0, 0, 0, 0, 1, 2, 2, 0, 2, 5, 6, 0, 2, 6, 8}));
}

// Columns and rows for the vector class; a scalar destination may have any.
Bytes ramp(std::uint64_t columns, std::uint64_t rows, std::uint64_t channels) {
    Bytes plane(columns * rows * channels);
    for (std::size_t i = 0; i < plane.size(); ++i) {
        plane[i] = static_cast<std::uint8_t>(37 * i + i / 7);
    }
    return plane;
}

TEST(ResizerByteBilinear, TheSameSizeIsTheSame) {
    onEveryTarget(bothSubjects, [&](ResizerSubject const& subject) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            Bytes const plane = ramp(19, 5, channels);
            EXPECT_TRUE(resizesTo(subject, {0, bilinear, 19, 5, 19, 5, channels}, plane, plane));
        }
    });
}

TEST(ResizerByteBilinear, AThirdOfTheSizeIsEachMiddlePixel) {
    onEveryTarget(bothSubjects, [](ResizerSubject const& subject) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            for (std::uint64_t width = 16; width <= 40; ++width) {
                std::uint64_t const stride = 3 * width * channels;
                Bytes const src = ramp(3 * width, 6, channels);
                Bytes expected;
                for (std::uint64_t y = 0; y < 2; ++y) {
                    for (std::uint64_t x = 0; x < width; ++x) {
                        auto const pixel =
                            src.begin() + static_cast<std::ptrdiff_t>((3 * y + 1) * stride +
                                                                      (3 * x + 1) * channels);
                        expected.insert(expected.end(), pixel,
                                        pixel + static_cast<std::ptrdiff_t>(channels));
                    }
                }
                EXPECT_TRUE(resizesTo(subject, {0, bilinear, 3 * width, 6, width, 2, channels}, src,
                                      expected));
            }
        }
    });
}

TEST(ResizerByteBilinear, TheLastColumnAndRowAreTheLastSamples) {
    onEveryTarget(bothSubjects, [&](ResizerSubject const& subject) {
        model::Resize const request{0, bilinear, 5, 3, 20, 12, 1};
        Bytes src = ramp(5, 3, 1);
        src.back() = 201;
        Bytes const expected = model::resized(subject.model, request, src);
        EXPECT_EQ(expected.back(), 201);
        EXPECT_TRUE(resizesTo(subject, request, src, expected));
    });
}

TEST(ResizerByteBilinear, BicubicOfTwoSamplesIsTheSame) {
    Bytes const src = ramp(2, 2, 3);
    onEveryTarget(bothSubjects, [&](ResizerSubject const& subject) {
        Bytes const expected = model::resized(subject.model, {0, bilinear, 2, 2, 18, 5, 3}, src);
        EXPECT_TRUE(resizesTo(subject, {0, bilinear, 2, 2, 18, 5, 3}, src, expected));
        EXPECT_TRUE(resizesTo(subject, {0, bicubic, 2, 2, 18, 5, 3}, src, expected));
    });
}

TEST(ResizerByteBilinear, SourcesThatAreALine) {
    onEveryTarget(bothSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {0, bilinear, 1, 1, 16, 2}, Bytes{9}, Bytes(32, 9)));
        Bytes repeated(16, 10);
        repeated.insert(repeated.end(), 16, 20);
        EXPECT_TRUE(resizesTo(subject, {0, bilinear, 1, 2, 16, 2}, Bytes{10, 20}, repeated));
    });
}

TEST(ResizerByteBilinear, RowsOfOneAndTwoBlocks) {
    onEveryTarget(bothSubjects, [](ResizerSubject const& subject) {
        for (std::uint64_t width = 16; width <= 33; ++width) {
            EXPECT_TRUE(
                resizesAsModelled(subject, {0, bilinear, 23, 4, width, 7, 1}, ramp(23, 4, 1)));
        }
    });
}

// 44.5 * 17 / 1424 - 0.5 is just above a 32nd, or just below it.
TEST(ResizerByteBilinear, TheClassesRoundWeightsDifferently) {
    onEveryTarget(bothSubjects, [](ResizerSubject const& subject) {
        model::Resize const request{0, bilinear, 17, 1, 1424, 1, 1};
        Bytes src(17);
        src[1] = 255;
        Bytes const expected = model::resized(subject.model, request, src);
        EXPECT_EQ(expected[44], subject.isVector() ? 0 : 16);
        EXPECT_TRUE(resizesTo(subject, request, src, expected));
    });
}

struct Probe : Simd::Neon::ResizerByteBilinear {
    using ResizerByteBilinear::alphaX;
    using ResizerByteBilinear::ax;
    using ResizerByteBilinear::ay;
    using ResizerByteBilinear::blocks;
    using ResizerByteBilinear::bx;
    using ResizerByteBilinear::gather;
    using ResizerByteBilinear::ix;
    using ResizerByteBilinear::iy;
    using ResizerByteBilinear::ResizerByteBilinear;
    using ResizerByteBilinear::rows;
};

// A vector resizer that has run once.
std::unique_ptr<Probe> probeAfterRun(std::uint64_t src_w, std::uint64_t dst_w,
                                     std::uint64_t channels) {
    auto probe =
        std::make_unique<Probe>(paramOf({0, bilinear, src_w, 1, dst_w, 1, channels}, vectorAlign));
    Bytes const src(src_w * channels);
    Bytes dst(dst_w * channels);
    probe->Run(src.data(), src.size(), dst.data(), dst.size());
    return probe;
}

TEST(ResizerByteBilinear, FewColumnsAreTakenOneByOne) {
    EXPECT_EQ(probeAfterRun(64, 16, 1)->blocks, 0U);
    EXPECT_NE(probeAfterRun(63, 16, 1)->blocks, 0U);
    EXPECT_EQ(probeAfterRun(80, 20, 1)->blocks, 0U);
    EXPECT_NE(probeAfterRun(79, 20, 1)->blocks, 0U);
    EXPECT_EQ(probeAfterRun(63, 16, 2)->blocks, 0U);
    EXPECT_EQ(probeAfterRun(20, 20, 4)->blocks, 0U);
}

// The backend takes rows of up to 2^31 - 1 bytes. A pair of each is two.
TEST(ResizerByteBilinear, PairsOfTheLongestRowsAreFound) {
    constexpr std::uint64_t gibi = std::uint64_t{1} << 30;
    EXPECT_EQ(Simd::pairOfEntry(std::int32_t{1} << 30), 2 * gibi);
    EXPECT_EQ(Simd::pairOfEntry(std::numeric_limits<std::int32_t>::max()), 4 * gibi - 2);
    auto const gathers = [](std::uint64_t src_w, std::uint64_t dst_w) {
        return Simd::Neon::gathersBlocks(
            paramOf({0, bilinear, src_w, 1, dst_w, 1, 1}, vectorAlign));
    };
    EXPECT_TRUE(gathers(63, 16));
    EXPECT_FALSE(gathers(64, 16));
    EXPECT_TRUE(gathers(gibi, gibi - 1));
    EXPECT_FALSE(gathers(gibi, gibi));
    EXPECT_FALSE(gathers(2, 2 * gibi - 1));
}

TEST(ResizerByteBilinear, VectorTablesAreAsModelled) {
    for (std::uint64_t channels = 1; channels <= 4; ++channels) {
        for (std::uint64_t const src_w : {2U, 7U, 17U, 100U, 700U}) {
            for (std::uint64_t const dst_w : {16U, 17U, 31U, 150U, 1424U}) {
                auto const probe = probeAfterRun(src_w, dst_w, channels);
                Table index;
                Bytes pairs;
                for (std::uint64_t x = 0; x < dst_w; ++x) {
                    auto const at = model::vectorBytePosition(src_w, dst_w, x);
                    index.push_back(static_cast<std::int32_t>(at.index));
                    for (std::uint64_t k = 0; k < channels; ++k) {
                        pairs.push_back(static_cast<std::uint8_t>(16 - at.weight));
                        pairs.push_back(static_cast<std::uint8_t>(at.weight));
                    }
                }
                ASSERT_EQ(Bytes(probe->alphaX.data, probe->alphaX.data + probe->alphaX.size), pairs)
                    << src_w << " to " << dst_w;
                if (probe->blocks == 0) {
                    ASSERT_EQ(Table(probe->ix.data, probe->ix.data + probe->ix.size), index)
                        << src_w << " to " << dst_w;
                }
            }
        }
    }
}

TEST(ResizerByteBilinear, BuffersOfTheVectorClass) {
    Probe before(paramOf({0, bilinear, 20, 9, 17, 3, 3}, vectorAlign));
    EXPECT_EQ(before.alphaX.data, nullptr);
    EXPECT_EQ(before.rows[0].data, nullptr);
    EXPECT_EQ(before.blocks, 0U);
    EXPECT_EQ(before.ay.size, 3U);
    EXPECT_EQ(before.iy.size, 3U);
    auto const probe = probeAfterRun(20, 17, 3);
    EXPECT_EQ(probe->alphaX.size, 102U);
    EXPECT_EQ(probe->rows[0].size, 96U);
    EXPECT_EQ(probe->rows[1].size, 96U);
    EXPECT_EQ(probe->ax.size, 0U);
    EXPECT_EQ(probe->bx[0].size, 0U);
}

// A block by the rules: pairs by their place in the 16 bytes that it stores.
struct Block {
    std::int64_t src;
    std::int64_t dst;
    std::vector<std::pair<std::int64_t, std::int64_t>> places;  // in the stored, in the loaded ones
};

std::vector<Block> blocksOf(std::int64_t src_w, std::int64_t dst_w) {
    std::vector<Block> blocks{{0, 0, {}}};
    for (std::int64_t x = 0; x < dst_w; ++x) {
        std::int64_t const index = model::vectorBytePosition(static_cast<std::uint64_t>(src_w),
                                                             static_cast<std::uint64_t>(dst_w),
                                                             static_cast<std::uint64_t>(x))
                                       .index;
        std::int64_t const in_loaded = index - blocks.back().src;
        std::int64_t const in_stored = 2 * x - blocks.back().dst;
        if (in_loaded < 0 || in_loaded > 14 || in_stored < 0 || in_stored > 15) {
            blocks.push_back({std::min(src_w - 16, index), 2 * x, {}});
        }
        Block& current = blocks.back();
        current.places.emplace_back(2 * x - current.dst, index - current.src);
    }
    return blocks;
}

// The place in the source row of each byte of the row of pairs, as the program puts them there.
std::vector<std::int64_t> placesByProgram(Probe const& probe, std::uint64_t dst_w) {
    std::vector<std::int64_t> places(2 * dst_w + 16, -1000);
    for (std::uint64_t b = 0; b < probe.blocks; ++b) {
        Simd::Neon::GatherBlock const& block = probe.gather[b];
        for (std::size_t i = 0; i < 16; ++i) {
            places.at(static_cast<std::size_t>(block.dst) + i) = block.src + block.shuffle[i];
        }
    }
    return places;
}

void checkProgram(std::uint64_t src_w, std::uint64_t dst_w) {
    auto const probe = probeAfterRun(src_w, dst_w, 1);
    auto const expected =
        blocksOf(static_cast<std::int64_t>(src_w), static_cast<std::int64_t>(dst_w));
    ASSERT_EQ(probe->blocks, expected.size());
    ASSERT_GE(probe->gather.size, probe->blocks);
    for (std::size_t b = 0; b < expected.size(); ++b) {
        Simd::Neon::GatherBlock const& block = probe->gather[b];
        ASSERT_EQ(block.src, expected[b].src) << "block " << b;
        ASSERT_EQ(block.dst, expected[b].dst) << "block " << b;
        for (auto const& [stored, loaded] : expected[b].places) {
            auto const at = static_cast<std::size_t>(stored);
            ASSERT_EQ(block.shuffle[at], loaded) << "block " << b << ", byte " << at;
            ASSERT_EQ(block.shuffle[at + 1], loaded + 1) << "block " << b << ", byte " << at + 1;
        }
    }
    auto const places = placesByProgram(*probe, dst_w);
    for (std::uint64_t x = 0; x < dst_w; ++x) {
        std::int64_t const index = model::vectorBytePosition(src_w, dst_w, x).index;
        ASSERT_EQ(places[2 * x], index) << "column " << x;
        ASSERT_EQ(places[2 * x + 1], index + 1) << "column " << x;
    }
}

TEST(ResizerByteBilinear, BlocksGatherEveryPair) {
    static_assert(sizeof(Simd::Neon::GatherBlock) == 24);
    constexpr std::uint64_t step = emulated() ? 7 : 1;
    for (std::uint64_t dst_w = 16; dst_w <= 80; dst_w += step) {
        for (std::uint64_t src_w = 2; src_w < 4 * dst_w; src_w += step) {
            ASSERT_NO_FATAL_FAILURE(checkProgram(src_w, dst_w)) << src_w << " to " << dst_w;
        }
    }
    for (std::uint64_t const src_w : {17U, 1000U, 1919U, 1920U, 4000U}) {
        ASSERT_NO_FATAL_FAILURE(checkProgram(src_w, 1424)) << src_w << " to 1424";
    }
}

TEST(ResizerByteBilinear, BlocksOfTheSameSize) {
    auto const probe = probeAfterRun(32, 32, 1);
    // Eight columns each; the last one of the row is the second of its pair, within the block.
    ASSERT_EQ(probe->blocks, 4U);
    for (std::uint64_t b = 0; b < 4; ++b) {
        EXPECT_EQ(probe->gather[b].src,
                  std::min<std::int32_t>(static_cast<std::int32_t>(8 * b), 16));
        EXPECT_EQ(probe->gather[b].dst, static_cast<std::int32_t>(16 * b));
    }
    Bytes const last(probe->gather[3].shuffle, probe->gather[3].shuffle + 16);
    EXPECT_EQ(last, (Bytes{8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 14, 15}));
}

TEST(ResizerByteBilinear, ScalarTablesOfColumnsAreBuiltAtTheFirstRun) {
    struct ScalarProbe : Simd::Base::ResizerByteBilinear {
        using ResizerByteBilinear::ax;
        using ResizerByteBilinear::bx;
        using ResizerByteBilinear::ix;
        using ResizerByteBilinear::iy;
        using ResizerByteBilinear::ResizerByteBilinear;
    };
    ScalarProbe probe(paramOf({0, bilinear, 4, 4, 2, 2, 3}, scalarAlign));
    EXPECT_EQ(probe.ax.data, nullptr);
    EXPECT_EQ(probe.iy.size, 2U);
    Bytes const src(48);
    Bytes dst(12);
    probe.Run(src.data(), 12, dst.data(), 6);
    EXPECT_EQ(Table(probe.ix.data, probe.ix.data + probe.ix.size), (Table{0, 1, 2, 6, 7, 8}));
    EXPECT_EQ(Table(probe.ax.data, probe.ax.data + probe.ax.size), (Table{8, 8, 8, 8, 8, 8}));
    EXPECT_EQ(probe.bx[1].size, 6U);
    std::int32_t const* const before = probe.ax.data;
    probe.Run(src.data(), 12, dst.data(), 6);
    EXPECT_EQ(probe.ax.data, before);
}

}  // namespace
}  // namespace ox::test::resizer_byte_bilinear
