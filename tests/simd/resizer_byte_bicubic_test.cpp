// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Bicubic resizing of bytes: tables, borders, overshoot and the two forms.
#include <gtest/gtest.h>

#include "simd/resizer_check.h"

namespace ox::test::resizer_byte_bicubic {
namespace {

constexpr int bicubic = Simd::ResizerMethodBicubic;

struct Probe : Simd::Base::ResizerByteBicubic {
    using ResizerByteBicubic::ax;
    using ResizerByteBicubic::ay;
    using ResizerByteBicubic::bx;
    using ResizerByteBicubic::ix;
    using ResizerByteBicubic::iy;
    using ResizerByteBicubic::ResizerByteBicubic;
    using ResizerByteBicubic::sxl;
    using ResizerByteBicubic::xn;
    using ResizerByteBicubic::xt;
};

// A resizer that has run once, on a plane of zeros.
std::unique_ptr<Probe> probeAfterRun(model::Resize const& r) {
    auto probe = std::make_unique<Probe>(paramOf(r, scalarAlign));
    Bytes const src(r.src_w * r.src_h * r.channels);
    Bytes dst(r.dst_w * r.dst_h * r.channels);
    probe->Run(src.data(), r.src_w * r.channels, dst.data(), r.dst_w * r.channels);
    return probe;
}

template <class Element>
std::vector<Element> elementsOf(Simd::AlignedArray<Element> const& array) {
    return std::vector<Element>(array.data, array.data + array.size);
}

TEST(ResizerByteBicubic, TablesAreAsModelled) {
    forEachAxis([](std::uint64_t s, std::uint64_t d) {
        if (s < 3 || s * d > 2000000) {
            return;
        }
        std::vector<std::int32_t> index;
        std::vector<std::int32_t> weights;
        std::uint64_t left = 0;
        std::uint64_t right = 0;
        for (std::uint64_t i = 0; i < d; ++i) {
            model::CubicPosition const at = model::cubicPosition(s, d, i);
            index.push_back(static_cast<std::int32_t>(at.index));
            weights.insert(weights.end(), at.weights.begin(), at.weights.end());
            left += at.index == 0 ? 1 : 0;
            right += at.index == static_cast<std::int64_t>(s) - 2 ? 1 : 0;
        }
        auto const columns = probeAfterRun({0, bicubic, s, 3, d, 1, 1});
        ASSERT_EQ(elementsOf(columns->ix), index);
        ASSERT_EQ(elementsOf(columns->ax), weights);
        ASSERT_EQ(columns->xn, left);
        ASSERT_EQ(columns->xt, d - right);
        ASSERT_EQ(columns->sxl, s - 2);
        auto const rows = probeAfterRun({0, bicubic, 3, s, 1, d, 1});
        ASSERT_EQ(elementsOf(rows->iy), index);
        ASSERT_EQ(elementsOf(rows->ay), weights);
    });
}

TEST(ResizerByteBicubic, OffsetsOfColumnsCountChannels) {
    auto const probe = probeAfterRun({0, bicubic, 8, 3, 4, 3, 3});
    // 0.5, 2.5, 4.5, 6.5
    EXPECT_EQ(elementsOf(probe->ix), (std::vector<std::int32_t>{0, 6, 12, 18}));
    EXPECT_EQ(elementsOf(probe->iy), (std::vector<std::int32_t>{0, 1, 1}));
    EXPECT_EQ(probe->xn, 1U);
    EXPECT_EQ(probe->xt, 3U);
    EXPECT_EQ(probe->sxl, 18U);
    EXPECT_EQ(elementsOf(probe->ax), (std::vector<std::int32_t>{8, -72, -72, 8, 8, -72, -72, 8, 8,
                                                                -72, -72, 8, 8, -72, -72, 8}));
    EXPECT_EQ(elementsOf(probe->ay),
              (std::vector<std::int32_t>{0, -128, 0, 0, 0, -128, 0, 0, 0, 0, -128, 0}));
}

// Planes of equal rows, whose vertical pass changes nothing.
Bytes threeRows(Bytes const& row) {
    Bytes plane;
    for (int i = 0; i < 3; ++i) {
        plane.insert(plane.end(), row.begin(), row.end());
    }
    return plane;
}

TEST(ResizerByteBicubic, HalvesARow) {
    // 1760, 7200, 23520 and 28960 128ths
    EXPECT_TRUE(resizesTo(byteBicubicResizer, {0, bicubic, 8, 3, 4, 3, 1},
                          threeRows({10, 20, 40, 80, 160, 200, 220, 230}),
                          threeRows({14, 56, 184, 226})));
}

TEST(ResizerByteBicubic, HoldsOvershoot) {
    // -15.9, 270.9, 270.9 and -15.9
    EXPECT_TRUE(resizesTo(byteBicubicResizer, {0, bicubic, 8, 3, 4, 3, 1},
                          threeRows({0, 0, 255, 255, 255, 255, 0, 0}),
                          threeRows({0, 255, 255, 0})));
}

TEST(ResizerByteBicubic, TheSameSizeIsTheSame) {
    Random random;
    for (std::uint64_t channels = 1; channels <= 4; ++channels) {
        Bytes src(5 * 4 * channels);
        std::generate(src.begin(), src.end(), [&] { return random.byte(); });
        EXPECT_TRUE(resizesTo(byteBicubicResizer, {0, bicubic, 5, 4, 5, 4, channels}, src, src));
    }
}

TEST(ResizerByteBicubic, TheLastSampleComesThrough) {
    // 3 to 6: the last position is 2.25, behind the last sample.
    Bytes const src{0, 0, 0, 0, 0, 0, 0, 0, 77};
    Bytes const dst = model::resized(byteBicubicResizer.model, {0, bicubic, 3, 3, 6, 6, 1}, src);
    EXPECT_EQ(dst.back(), 77);
    EXPECT_TRUE(resizesTo(byteBicubicResizer, {0, bicubic, 3, 3, 6, 6, 1}, src, dst));
}

// Its only column is of the right border from the start.
TEST(ResizerByteBicubic, OneColumnOfThree) {
    EXPECT_TRUE(resizesTo(byteBicubicResizer, {0, bicubic, 3, 3, 1, 3, 1}, threeRows({10, 20, 30}),
                          Bytes{20, 20, 20}));
    auto const probe = probeAfterRun({0, bicubic, 3, 3, 1, 3, 1});
    EXPECT_EQ(probe->xn, 0U);
    EXPECT_EQ(probe->xt, 0U);
}

TEST(ResizerByteBicubic, KeepsRowsUnlessAQuarterOrLessIsLeft) {
    EXPECT_EQ(probeAfterRun({0, bicubic, 5, 8, 6, 2, 3})->bx[0].size, 0U);
    EXPECT_EQ(probeAfterRun({0, bicubic, 5, 9, 6, 2, 3})->bx[3].size, 0U);
    auto const buffered = probeAfterRun({0, bicubic, 5, 7, 6, 2, 3});
    for (auto const& row : buffered->bx) {
        EXPECT_EQ(row.size, 18U);
    }
}

// Both forms, at heights around a quarter and rows that skip and repeat.
TEST(ResizerByteBicubic, HeightsAroundAQuarter) {
    Random random;
    for (std::uint64_t src_h = 3; src_h <= 41; ++src_h) {
        for (std::uint64_t dst_h = 1; dst_h <= 24; ++dst_h) {
            model::Resize const request{0, bicubic, 4, src_h, 3, dst_h, 1 + src_h % 4};
            Bytes src(request.src_w * src_h * request.channels);
            std::generate(src.begin(), src.end(), [&] { return random.byte(); });
            ASSERT_TRUE(resizesAsModelled(byteBicubicResizer, request, src));
        }
    }
}

TEST(ResizerByteBicubic, BuildsItsTablesAtTheFirstRun) {
    Probe probe(paramOf({0, bicubic, 5, 5, 5, 5, 1}, scalarAlign));
    EXPECT_EQ(probe.iy.data, nullptr);
    EXPECT_EQ(probe.ix.data, nullptr);
    EXPECT_EQ(probe.xt, 0U);
    Bytes const src(25);
    Bytes dst(25);
    probe.Run(src.data(), 5, dst.data(), 5);
    std::int32_t const* const before = probe.iy.data;
    EXPECT_NE(before, nullptr);
    probe.Run(src.data(), 5, dst.data(), 5);
    EXPECT_EQ(probe.iy.data, before);
}

}  // namespace
}  // namespace ox::test::resizer_byte_bicubic
