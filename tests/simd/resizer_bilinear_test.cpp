// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Bilinear resizing of 16-bit and float elements: conventions of coordinates, edges and rounding.
#include <gtest/gtest.h>

#include "simd/number_draws.h"
#include "simd/resizer_check.h"

namespace ox::test {
namespace {

constexpr int centres = Simd::ResizerMethodBilinear;
constexpr int corners = Simd::ResizerMethodBilinearCorners;
constexpr int topLeft = Simd::ResizerMethodBilinearTopLeft;
constexpr int wide = Simd::ResizerTypeShort;
constexpr int real = Simd::ResizerTypeFloat;

ResizerSubjects const floatSubjects{&floatBilinearResizer, &vectorFloatBilinearResizer};
ResizerSubjects const shortSubjects{&shortBilinearResizer, &vectorShortBilinearResizer};

using Table = std::vector<std::int32_t>;

struct Tables {
    Table index;
    Floats weight;
    bool operator==(Tables const&) const = default;
};

Tables tablesOf(int method, std::uint64_t s, std::uint64_t d, std::uint64_t channels = 1) {
    Tables tables{Table(d * channels), Floats(d * channels)};
    Simd::Base::fillBilinear(static_cast<Simd::ResizerMethod>(method), s, d, channels,
                             tables.index.data(), tables.weight.data());
    return tables;
}

TEST(ResizerBilinear, TablesAreAsModelled) {
    for (int const method : {centres, corners, topLeft}) {
        forEachAxis([&](std::uint64_t s, std::uint64_t d) {
            for (std::uint64_t channels = 1; channels <= 3; channels += 2) {
                Tables expected;
                for (std::uint64_t i = 0; i < d; ++i) {
                    auto const at = model::floatPosition(method, s, d, i);
                    for (std::uint64_t k = 0; k < channels; ++k) {
                        auto const element = at.index * static_cast<std::int64_t>(channels) +
                                             static_cast<std::int64_t>(k);
                        expected.index.push_back(static_cast<std::int32_t>(element));
                        expected.weight.push_back(at.weight);
                    }
                }
                ASSERT_EQ(tablesOf(method, s, d, channels), expected);
            }
        });
    }
}

TEST(ResizerBilinear, Conventions) {
    EXPECT_EQ(tablesOf(centres, 2, 4), (Tables{{0, 0, 0, 0}, {0.0F, 0.25F, 0.75F, 1.0F}}));
    EXPECT_EQ(tablesOf(corners, 3, 5), (Tables{{0, 0, 1, 1, 1}, {0.0F, 0.5F, 0.0F, 0.5F, 1.0F}}));
    EXPECT_EQ(tablesOf(topLeft, 2, 4), (Tables{{0, 0, 0, 0}, {0.0F, 0.5F, 1.0F, 1.0F}}));
    EXPECT_EQ(tablesOf(centres, 2, 2, 2), (Tables{{0, 1, 0, 1}, {0.0F, 0.0F, 1.0F, 1.0F}}));
}

TEST(ResizerBilinear, CornersOfOneAreTheFirst) {
    EXPECT_EQ(tablesOf(corners, 5, 1), (Tables{{0}, {0.0F}}));
    onEveryTarget(floatSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {real, corners, 3, 2, 1, 1},
                              Floats{7.0F, 8.0F, 9.0F, 1.0F, 2.0F, 3.0F}, Floats{7.0F}));
    });
}

TEST(ResizerBilinear, CornersEndAtTheLastSample) {
    EXPECT_EQ(tablesOf(corners, 5, 9).index.back(), 3);
    EXPECT_EQ(tablesOf(corners, 5, 9).weight.back(), 1.0F);
    // 41 * (1 / 41) is just below 1.
    EXPECT_EQ(tablesOf(corners, 2, 42).index.back(), 0);
    EXPECT_EQ(tablesOf(corners, 2, 42).weight.back(), 0x1.fffffep-1F);
}

TEST(ResizerBilinear, TopLeftEndsAStepBeforeTheEnd) {
    EXPECT_EQ(tablesOf(topLeft, 8, 4), (Tables{{0, 2, 4, 6}, {0.0F, 0.0F, 0.0F, 0.0F}}));
}

TEST(ResizerBilinear, ASingleSampleIsTheSecondOfItsPair) {
    for (int const method : {centres, corners, topLeft}) {
        EXPECT_EQ(tablesOf(method, 1, 2), (Tables{{-1, -1}, {1.0F, 1.0F}})) << method;
        EXPECT_EQ(tablesOf(method, 1, 1, 2), (Tables{{-2, -1}, {1.0F, 1.0F}})) << method;
    }
}

TEST(ResizerBilinear, FloatsAreNotHeldToARange) {
    onEveryTarget(floatSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {real, centres, 2, 1, 4, 1}, Floats{-8.0F, 24.0F},
                              Floats{-8.0F, 0.0F, 16.0F, 24.0F}));
        EXPECT_TRUE(resizesTo(subject, {real, centres, 1, 2, 1, 4}, Floats{-0x1p100F, 0x3p100F},
                              Floats{-0x1p100F, 0.0F, 0x2p100F, 0x3p100F}));
    });
}

TEST(ResizerBilinear, TheSameSizeIsTheSame) {
    Random random;
    for (std::uint64_t channels = 1; channels <= 5; ++channels) {
        Floats plane(9 * 4 * channels);
        std::generate(plane.begin(), plane.end(), [&] { return random.real(-9.0F, 9.0F); });
        onEveryTarget(floatSubjects, [&](ResizerSubject const& subject) {
            EXPECT_TRUE(resizesTo(subject, {real, centres, 9, 4, 9, 4, channels}, plane, plane));
        });
    }
}

// Products with a weight of 0 count: those of infinities are NaNs.
TEST(ResizerBilinear, WeightsOfZeroKeepNaNs) {
    onEveryTarget(floatSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {real, centres, 2, 1, 2, 1}, Floats{notANumber, 5.0F},
                              Floats{notANumber, notANumber}));
        EXPECT_TRUE(resizesTo(subject, {real, centres, 2, 1, 2, 1}, Floats{infinity, 5.0F},
                              Floats{infinity, notANumber}));
        EXPECT_TRUE(resizesTo(subject, {real, centres, 2, 1, 2, 1}, Floats{5.0F, -infinity},
                              Floats{notANumber, -infinity}));
    });
}

// There is nothing beside a single sample: 0 counts, so that only the sign of a zero is lost.
TEST(ResizerBilinear, SourcesThatAreALine) {
    onEveryTarget(floatSubjects, [&](ResizerSubject const& subject) {
        for (int const method : {centres, corners, topLeft}) {
            EXPECT_TRUE(resizesTo(subject, {real, method, 1, 1, 5, 2}, Floats{infinity},
                                  Floats(10, infinity)));
            EXPECT_TRUE(
                resizesTo(subject, {real, method, 1, 1, 5, 2}, Floats{-7.0F}, Floats(10, -7.0F)));
            EXPECT_TRUE(
                resizesTo(subject, {real, method, 1, 1, 5, 2}, Floats{-0.0F}, Floats(10, 0.0F)));
        }
        EXPECT_TRUE(resizesTo(subject, {real, centres, 2, 1, 2, 1, 3},
                              Floats{1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F},
                              Floats{1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F}));
    });
    onEveryTarget(shortSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(
            resizesTo(subject, {wide, centres, 1, 1, 3, 2}, Shorts{65535}, Shorts(6, 65535)));
        EXPECT_TRUE(resizesTo(subject, {wide, centres, 1, 3, 1, 1}, Shorts{1, 2, 9}, Shorts{2}));
    });
}

TEST(ResizerBilinear, ShortsRoundToNearest) {
    // 16383.75, 49151.25
    onEveryTarget(shortSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, {wide, centres, 2, 1, 4, 1}, Shorts{0, 65535},
                              Shorts{0, 16384, 49151, 65535}));
        EXPECT_TRUE(resizesTo(subject, {wide, centres, 1, 2, 1, 4}, Shorts{0, 65535},
                              Shorts{0, 16384, 49151, 65535}));
        // Halves go up.
        EXPECT_TRUE(
            resizesTo(subject, {wide, centres, 4, 1, 2, 1}, Shorts{0, 1, 2, 3}, Shorts{1, 3}));
    });
}

// The float below a half, plus a half, is a tie of floats and goes to 1.
TEST(ResizerBilinear, ShortsAddTheHalfInFloat) {
    model::Resize const request{wide, centres, 2, 1, 25, 1, 1};
    Shorts const src{0, 1};
    EXPECT_EQ(tablesOf(centres, 2, 25).weight[12], 0x1.fffffep-2F);
    Shorts const expected = model::resized(shortBilinearResizer.model, request, src);
    EXPECT_EQ(expected[11], 0);
    EXPECT_EQ(expected[12], 1);
    onEveryTarget(shortSubjects, [&](ResizerSubject const& subject) {
        EXPECT_TRUE(resizesTo(subject, request, src, expected));
    });
}

// Rows are kept from one to the next unless half of them or less is left.
TEST(ResizerBilinear, ShortsAtHeightsAroundAHalf) {
    Random random;
    for (std::uint64_t src_h = 2; src_h <= 18; ++src_h) {
        for (std::uint64_t dst_h = 1; dst_h <= 20; ++dst_h) {
            for (std::uint64_t channels = 1; channels <= 4; ++channels) {
                model::Resize const request{wide, centres, 11, src_h, 9, dst_h, channels};
                Shorts src(11 * src_h * channels);
                std::generate(src.begin(), src.end(),
                              [&] { return static_cast<std::uint16_t>(random.next() >> 48); });
                onEveryTarget(shortSubjects, [&](ResizerSubject const& subject) {
                    ASSERT_TRUE(resizesAsModelled(subject, request, src));
                });
            }
        }
    }
}

TEST(ResizerBilinear, ShortsOfFiveChannelsAreLeft) {
    onEveryTarget(shortSubjects, [&](ResizerSubject const& subject) {
        for (std::uint64_t const channels : {0U, 5U, 6U}) {
            EXPECT_TRUE(resizesTo(subject, {wide, centres, 2, 2, 3, 3, channels},
                                  Shorts(4 * channels), Shorts(9 * channels, 0xA5A5)));
        }
    });
}

TEST(ResizerBilinear, StridesOfTheTypedRoutinesAreElements) {
    Floats const src{1.0F, 2.0F, -1.0F, 3.0F, 4.0F, -1.0F};
    Floats dst(2 * 5, 9.0F);
    Simd::Base::ResizerFloatBilinear scalar(paramOf({real, centres, 2, 2, 2, 2, 1}, scalarAlign));
    scalar.Run(src.data(), 3, dst.data(), 5);
    Floats const expected{1.0F, 2.0F, 9.0F, 9.0F, 9.0F, 3.0F, 4.0F, 9.0F, 9.0F, 9.0F};
    EXPECT_EQ(dst, expected);
    Shorts const shorts{1, 2, 9, 3, 4, 9};
    Shorts shrunk{0, 0};
    Simd::Base::ResizerShortBilinear both(paramOf({wide, centres, 2, 2, 1, 1, 1}, scalarAlign));
    both.Run(shorts.data(), 3, shrunk.data(), 1);
    EXPECT_EQ(shrunk, (Shorts{3, 0}));  // 2.5
}

template <class Class>
struct Probe : Class {
    using Class::ax;
    using Class::ay;
    using Class::bx;
    using Class::Class;
    using Class::ix;
    using Class::iy;
};

TEST(ResizerBilinear, EverythingIsBuiltAtOnce) {
    Probe<Simd::Base::ResizerFloatBilinear> const floats(
        paramOf({real, centres, 4, 4, 5, 7, 3}, scalarAlign));
    EXPECT_EQ(floats.ix.size, 15U);
    EXPECT_EQ(floats.ax.size, 15U);
    EXPECT_EQ(floats.iy.size, 7U);
    EXPECT_EQ(floats.ay.size, 7U);
    EXPECT_EQ(floats.bx[0].size, 15U);
    EXPECT_EQ(floats.bx[1].size, 15U);
    Probe<Simd::Neon::ResizerShortBilinear> const shorts(
        paramOf({wide, centres, 4, 4, 5, 7, 1}, vectorAlign));
    EXPECT_EQ(shorts.ix.size, 21U);
    EXPECT_EQ(shorts.ax.size, 21U);
    EXPECT_EQ(shorts.ay.size, 7U);
    EXPECT_EQ(shorts.bx[1].size, 21U);
}

}  // namespace
}  // namespace ox::test
