// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Nearest samples: the tables and copies of pixels of every size.
#include <gtest/gtest.h>

#include "simd/resizer_check.h"

namespace ox::test::resizer_nearest {
namespace {

constexpr int byMiddle = Simd::ResizerMethodNearest;
constexpr int byInteger = Simd::ResizerMethodNearestInteger;

std::vector<std::int32_t> tableOf(int method, std::uint64_t s, std::uint64_t d) {
    std::vector<std::int32_t> table(d);
    Simd::Base::fillNearest(static_cast<Simd::ResizerMethod>(method), s, d, table.data());
    return table;
}

using Table = std::vector<std::int32_t>;

TEST(ResizerNearest, TablesAreAsModelled) {
    for (int const method : {byMiddle, byInteger}) {
        forEachAxis([&](std::uint64_t s, std::uint64_t d) {
            Table expected;
            for (std::uint64_t i = 0; i < d; ++i) {
                expected.push_back(
                    static_cast<std::int32_t>(model::nearestPosition(method, s, d, i)));
            }
            ASSERT_EQ(tableOf(method, s, d), expected);
        });
    }
}

TEST(ResizerNearest, AThirdTakesTheMiddleOrTheFirst) {
    EXPECT_EQ(tableOf(byMiddle, 9, 3), (Table{1, 4, 7}));
    EXPECT_EQ(tableOf(byInteger, 9, 3), (Table{0, 3, 6}));
}

TEST(ResizerNearest, TwiceAsManyRepeat) {
    EXPECT_EQ(tableOf(byMiddle, 2, 4), (Table{0, 0, 1, 1}));
    EXPECT_EQ(tableOf(byInteger, 2, 4), (Table{0, 0, 1, 1}));
}

TEST(ResizerNearest, FiveOfThree) {
    // 0.3, 0.9, 1.5, 2.1, 2.7 and 0, 0.6, 1.2, 1.8, 2.4
    EXPECT_EQ(tableOf(byMiddle, 3, 5), (Table{0, 0, 1, 2, 2}));
    EXPECT_EQ(tableOf(byInteger, 3, 5), (Table{0, 0, 1, 1, 2}));
}

TEST(ResizerNearest, TheSameSizeIsTheSame) {
    Table every;
    for (std::uint64_t size = 1; size <= 2000; ++size) {
        every.push_back(static_cast<std::int32_t>(size) - 1);
        ASSERT_EQ(tableOf(byMiddle, size, size), every);
        ASSERT_EQ(tableOf(byInteger, size, size), every);
    }
}

// 2^23 + 1.5 rounds to 2^23 + 2, which isn't there.
TEST(ResizerNearest, TheLastIndexIsHeld) {
    constexpr std::uint64_t size = (1U << 23) + 2;
    Table const table = tableOf(byMiddle, size, size);
    EXPECT_EQ(table[size - 3], (1 << 23) - 1);
    EXPECT_EQ(table[size - 2], 1 << 23);
    EXPECT_EQ(table[size - 1], (1 << 23) + 1);
}

TEST(ResizerNearest, IntegersDoNotWrap) {
    constexpr std::uint64_t size = 70000;
    Table const table = tableOf(byInteger, size, size);
    EXPECT_EQ(table[size - 1], 69999);
    EXPECT_EQ(tableOf(byInteger, 2 * size, size)[size - 1], 139998);
}

TEST(ResizerNearest, OtherMethodsGoByTheMiddle) {
    for (int const method : {2, 3, 4, 5, 6, 7}) {
        EXPECT_EQ(tableOf(method, 9, 3), (Table{1, 4, 7})) << method;
        EXPECT_TRUE(resizesTo<std::uint8_t>(nearestResizer, {0, method, 1, 6, 3, 2},
                                            {10, 20, 30, 40, 50, 60}, {20, 20, 20, 50, 50, 50}))
            << method;
    }
}

TEST(ResizerNearest, TakesWholePixels) {
    EXPECT_TRUE(resizesTo<std::uint8_t>(nearestResizer, {0, byMiddle, 3, 1, 2, 1, 3},
                                        {1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 2, 3, 7, 8, 9}));
    EXPECT_TRUE(resizesTo<std::uint16_t>(nearestResizer, {1, byInteger, 2, 2, 3, 1},
                                         {1000, 65535, 1, 2}, {1000, 1000, 65535}));
    EXPECT_TRUE(resizesTo<float>(nearestResizer, {2, byMiddle, 2, 1, 4, 1, 1}, {-1.5F, 7e9F},
                                 {-1.5F, -1.5F, 7e9F, 7e9F}));
}

// Bytes of every pixel size that there is a copy for, and of others; nothing behind the last pixel.
TEST(ResizerNearest, CopiesPixelsOfEverySize) {
    Random random;
    for (int type = Simd::ResizerTypeByte; type <= Simd::ResizerTypeFloat; ++type) {
        for (std::uint64_t channels = 1; channels <= 17; ++channels) {
            std::uint64_t const pixel =
                channels * Simd::elementBytes(static_cast<Simd::ResizerType>(type));
            // To the model they are all pixels of bytes.
            model::Resize const bytes{0, byMiddle, 7, 5, 9, 4, pixel};
            Bytes src(bytes.src_w * bytes.src_h * pixel);
            std::generate(src.begin(), src.end(), [&] { return random.byte(); });
            model::Resize const request{type, byMiddle, 7, 5, 9, 4, channels};
            for (Guard const guard : {Guard::AtStart, Guard::AtEnd}) {
                GuardedPlane const from(planeSize<std::uint8_t>(7, 5, pixel), {0, 0, guard});
                GuardedPlane const to(planeSize<std::uint8_t>(9, 4, pixel), {1, 0, guard});
                storeRows(src, from);
                makeResizer(nearestResizer, request)
                    ->Run(from.data(), from.stride(), to.data(), to.stride());
                ASSERT_TRUE(holds(to, model::resized(nearestResizer.model, bytes, src)))
                    << textOf(nearestResizer, request) << ", type " << type;
            }
        }
    }
}

// The marks of what is built when.
struct Probe : Simd::Base::ResizerNearest {
    using ResizerNearest::ix;
    using ResizerNearest::iy;
    using ResizerNearest::pixelSize;
    using ResizerNearest::ResizerNearest;
};

TEST(ResizerNearest, BuildsItsTablesAtTheFirstRun) {
    Probe probe(paramOf({2, byMiddle, 2, 3, 4, 3, 3}, scalarAlign));
    EXPECT_EQ(probe.pixelSize, 0U);
    EXPECT_EQ(probe.ix.data, nullptr);
    EXPECT_EQ(probe.iy.data, nullptr);
    Bytes const src(24 * 3);
    Bytes dst(48 * 3);
    probe.Run(src.data(), 24, dst.data(), 48);
    EXPECT_EQ(probe.pixelSize, 12U);
    EXPECT_EQ(Table(probe.ix.data, probe.ix.data + probe.ix.size), (Table{0, 0, 12, 12}));
    EXPECT_EQ(Table(probe.iy.data, probe.iy.data + probe.iy.size), (Table{0, 1, 2}));
    std::int32_t const* const before = probe.ix.data;
    probe.Run(src.data(), 24, dst.data(), 48);
    EXPECT_EQ(probe.ix.data, before);
}

}  // namespace
}  // namespace ox::test::resizer_nearest
