// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Affine warps of every kind, size and placement in memory, against the model.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "simd/vector_targets.h"
#include "simd/warp_planes.h"
#include "support/sparse_memory.h"

namespace ox::test::warp_affine_sweep {
namespace {

using Limits = std::numeric_limits<float>;

struct Extent {
    int width;
    int height;
};

int draws(int count) {
    return emulated() ? count / 10 : count;
}

float oneOf(Random& random, std::initializer_list<float> values) {
    return values.begin()[random.next() % values.size()];
}

// The four numbers of a matrix that aren't offsets.
struct Linear {
    float xx;
    float xy;
    float yx;
    float yy;
};

Linear turn(float angle, float x_scale, float y_scale) {
    float const sine = std::sin(angle);
    float const cosine = std::cos(angle);
    return {cosine * x_scale, -sine * y_scale, sine * x_scale, cosine * y_scale};
}

Linear drawLinear(Random& random) {
    auto const number = [&](float most) { return random.real(-most, most); };
    switch (random.between(0, 9)) {
        case 0:
            return {oneOf(random, {1, -1}), 0, 0, oneOf(random, {1, -1})};
        case 1:
            return {0, oneOf(random, {1, -1}), oneOf(random, {1, -1}), 0};
        case 2:
            return {oneOf(random, {0.5F, 2, -2, 0.25F, 3}), 0, 0,
                    oneOf(random, {0.5F, 2, -0.5F, 4})};
        case 3:
            return {number(3), 0, 0, number(3)};
        case 4:
            return {1, number(2), 0, 1};
        case 5:
            return {1, 0, number(2), -1};
        case 6:
            return turn(number(3.15F), random.real(0.2F, 3), random.real(0.2F, 3));
        case 7:
            return turn(number(0.02F), 1, 1);
        case 8:
            return turn(number(3.15F), 1, oneOf(random, {1, -1}));
        default:
            return {number(2), number(2), number(2), number(2)};
    }
}

// Second rows that are nearly a multiple of the first, and numbers of any size.
Linear drawUnruly(Random& random) {
    auto const number = [&](float most) { return random.real(-most, most); };
    float const power = std::ldexp(1.0F, random.between(-24, 24));
    float const other = std::ldexp(1.0F, random.between(-24, 24));
    switch (random.between(0, 3)) {
        case 0: {
            float const x = number(2);
            float const y = number(2);
            float const ratio = number(2);
            return {x, y, x * ratio, y * ratio + number(1e-5F)};
        }
        case 1:
            return {number(power), number(1), number(1), number(other)};
        case 2:
            return {number(power), number(power), number(power), number(power)};
        default:
            return {number(power), 0, number(other), number(1)};
    }
}

// Most matrices bring the source's middle into the destination.
model::Matrix matrixOf(Linear const& linear, Extent from, Extent to, Random& random) {
    auto const middle = [](int size) { return static_cast<float>(size - 1) * 0.5F; };
    auto const offset = [&](float x, float y, int size) {
        float const centred = middle(size) - (x * middle(from.width) + y * middle(from.height));
        switch (random.between(0, 5)) {
            case 0:
                return std::round(centred);
            case 1:
                return std::round(centred) + oneOf(random, {0.5F, -0.5F, 0.25F});
            case 2:
                return centred + random.real(-50, 50);
            case 3:
                return 0.0F;
            default:
                return centred + random.real(-1, 1);
        }
    };
    return {linear.xx, linear.xy, offset(linear.xx, linear.xy, to.width),
            linear.yx, linear.yy, offset(linear.yx, linear.yy, to.height)};
}

model::Pixels drawPixels(Random& random, Extent extent, int channels) {
    model::Pixels pixels = model::makePixels(extent.width, extent.height, channels, 0);
    bool const extreme = random.between(0, 3) == 0;
    for (std::uint8_t& byte : pixels.bytes) {
        byte = random.byte();
        byte = extreme ? (byte < 128 ? std::uint8_t{0} : std::uint8_t{255}) : byte;
    }
    return pixels;
}

std::string tell(model::Warp const& warp, Extent from, Extent to, int channels) {
    std::string text = std::to_string(from.width) + "x" + std::to_string(from.height) + " to " +
                       std::to_string(to.width) + "x" + std::to_string(to.height) + ", " +
                       std::to_string(channels) + " channels, flags " + std::to_string(warp.flags);
    for (float const number : warp.matrix) {
        char digits[40];
        std::snprintf(digits, sizeof digits, ", %.9g", static_cast<double>(number));
        text += digits;
    }
    return text;
}

class WarpAffineSweep : public testing::Test {
  protected:
    void check(model::Matrix const& matrix, Extent from, Extent to) {
        if (HasFailure()) {
            return;
        }
        int const channels = random.between(1, 4);
        model::Warp const warp = drawWarp(matrix);
        model::Pixels const src = drawPixels(random, from, channels);
        SCOPED_TRACE(tell(warp, from, to, channels));
        PlacedPixels const src_plane(src, drawPlanePlacement(random));
        if (model::warpIsRefused(warp, static_cast<std::uint64_t>(channels), src_plane.height(),
                                 src_plane.stride())) {
            PlacedPixels const none(model::makePixels(to.width, to.height, channels, 0));
            EXPECT_EQ(createWarp(warp, src_plane, none, channels), nullptr);
        } else if (model::warpIsFinite(warp, src)) {
            compareEverywhere(warp, src, to, src_plane);
            ++compared;
        }
    }

    model::Warp drawWarp(model::Matrix const& matrix) {
        model::Warp warp{matrix, static_cast<std::uint32_t>(random.between(0, 7)), {}};
        if (random.between(0, 3) != 0) {
            warp.border = {random.byte(), random.byte(), random.byte(), random.byte()};
        }
        return warp;
    }

    Random random;
    int compared = 0;

  private:
    void compareEverywhere(model::Warp const& warp, model::Pixels const& src, Extent to,
                           PlacedPixels const& src_plane) {
        model::Pixels const before = drawPixels(random, to, src.channels);
        model::Pixels expected = before;
        model::warpPlane(warp, src, expected);
        PlanePlacement const placement = drawPlanePlacement(random);
        auto const run = [&](std::string const& how) {
            PlacedPixels const dst(before, placement);
            WarpHandle const object = createWarp(warp, src_plane, dst, src.channels);
            ASSERT_NE(object, nullptr);
            object->Run(src_plane.data(), dst.data());
            EXPECT_TRUE(dst.hold(expected)) << how;
        };
        for (VectorTarget const& target : vectorTargets()) {
            UsedTarget const used(target.name.c_str());
            run(target.name);
        }
        VectorRoutinesOff const off;
        run("no vector routines");
        EXPECT_TRUE(src_plane.hold(src)) << "the source changed";
    }
};

TEST_F(WarpAffineSweep, SmallPlanes) {
    int const cases = draws(6000);
    for (int i = 0; i < cases; ++i) {
        int const most = i % 4 == 0 ? 40 : 12;
        Extent const from{random.between(0, most), random.between(0, most)};
        Extent const to{random.between(0, most), random.between(0, most)};
        check(matrixOf(drawLinear(random), from, to, random), from, to);
    }
    EXPECT_GT(compared, cases / 2);
}

TEST_F(WarpAffineSweep, NearlySingularAndFarApart) {
    int const cases = draws(3000);
    for (int i = 0; i < cases; ++i) {
        Extent const from{random.between(0, 20), random.between(0, 20)};
        Extent const to{random.between(0, 20), random.between(0, 20)};
        model::Matrix matrix = matrixOf(drawUnruly(random), from, to, random);
        if (i % 5 == 0) {
            matrix[2] += std::ldexp(random.real(-1, 1), random.between(0, 40));
            matrix[5] += std::ldexp(random.real(-1, 1), random.between(0, 40));
        }
        check(matrix, from, to);
    }
    EXPECT_GT(compared, cases / 2);
}

// Blocks are of 16 columns; every length of an interior has its own tail.
TEST_F(WarpAffineSweep, InteriorsOfEveryLength) {
    for (int width = 1; width <= 70; width += emulated() ? 7 : 1) {
        for (int i = 0; i < 4; ++i) {
            Extent const from{width, random.between(2, 5)};
            Extent const to{width + random.between(0, 4), from.height};
            check({1, 0, random.real(-2, 2), 0, 1, random.real(-1, 1)}, from, to);
            check({1, random.real(-0.1F, 0.1F), 0, random.real(-0.01F, 0.01F), 1, 0}, from, to);
        }
    }
}

TEST_F(WarpAffineSweep, LargePlanes) {
    constexpr Extent extents[]{{320, 100}, {75, 400}, {1400, 9}, {3, 3000}, {4100, 3}, {129, 131}};
    for (int i = 0; i < draws(30); ++i) {
        Extent const from = extents[random.between(0, 5)];
        Extent const to = extents[random.between(0, 5)];
        check(matrixOf(drawLinear(random), from, to, random), from, to);
        check({1, 0, 0.5F, 0, 1, 0.5F}, from, from);
    }
}

// What these give isn't fixed, but it lies in the plane.
TEST_F(WarpAffineSweep, NumbersThatAreNoneTouchNothingOutside) {
    constexpr float odd[]{Limits::quiet_NaN(),
                          Limits::infinity(),
                          -Limits::infinity(),
                          Limits::max(),
                          Limits::lowest(),
                          Limits::min(),
                          Limits::denorm_min(),
                          1e20F,
                          -1e10F,
                          0.0F,
                          -0.0F,
                          2147483648.0F};
    for (int i = 0; i < draws(3000); ++i) {
        Extent const from{random.between(0, 9), random.between(0, 9)};
        Extent const to{random.between(0, 9), random.between(0, 9)};
        model::Warp warp = drawWarp(matrixOf(drawLinear(random), from, to, random));
        for (int replaced = random.between(1, 6); replaced > 0; --replaced) {
            warp.matrix[random.next() % 6] = odd[random.next() % std::size(odd)];
        }
        int const channels = random.between(0, 5);
        SCOPED_TRACE(tell(warp, from, to, channels));
        model::Pixels const src = drawPixels(random, from, channels);
        PlacedPixels const src_plane(src, drawPlanePlacement(random));
        PlacedPixels const dst(drawPixels(random, to, channels), drawPlanePlacement(random));
        WarpHandle const object = createWarp(warp, src_plane, dst, channels);
        EXPECT_EQ(object == nullptr,
                  model::warpIsRefused(warp, static_cast<std::uint64_t>(channels),
                                       src_plane.height(), src_plane.stride()));
        if (object != nullptr) {
            object->Run(src_plane.data(), dst.data());
        }
        EXPECT_TRUE(dst.untouchedAround());
        EXPECT_TRUE(src_plane.hold(src)) << "the source changed";
        if (HasFailure()) {
            return;
        }
    }
}

// The same bytes whatever the threads, on any number of planes.
TEST_F(WarpAffineSweep, ThreadsShareTheRows) {
    for (int i = 0; i < draws(60); ++i) {
        Extent const from{random.between(1, 40), random.between(1, 40)};
        Extent const to{random.between(1, 40), random.between(0, 40)};
        int const channels = random.between(1, 4);
        model::Warp warp = drawWarp(matrixOf(turn(random.real(-3, 3), 1, 1), from, to, random));
        warp.flags &= ~std::uint32_t{model::WarpNonByte};
        SCOPED_TRACE(tell(warp, from, to, channels));
        model::Pixels const src = drawPixels(random, from, channels);
        model::Pixels const before = drawPixels(random, to, channels);
        model::Pixels expected = before;
        model::warpPlane(warp, src, expected);
        PlacedPixels const src_plane(src, drawPlanePlacement(random));
        for (std::size_t threads = 1; threads <= 8; ++threads) {
            ParallelThreads const count(8, threads);
            PlacedPixels const first(before, {1, 0, Guard::None});
            PlacedPixels const second(before, {1, 0, Guard::None});
            WarpHandle const object = createWarp(warp, src_plane, first, channels);
            ASSERT_NE(object, nullptr);
            object->Run(src_plane.data(), first.data());
            Simd::UseHardwareThreads(3);  // fewer than there is scratch for
            object->Run(src_plane.data(), second.data());
            EXPECT_TRUE(first.hold(expected)) << threads << " threads";
            EXPECT_TRUE(second.hold(expected)) << threads << " threads, second run";
        }
    }
}

// The last row of a source of four gibibytes lies further from the first than 31 bits tell; a
// destination's may lie anywhere.
TEST_F(WarpAffineSweep, FarRows) {
    constexpr std::size_t src_stride = 0x100000000 / 3;
    constexpr std::size_t dst_stride = std::size_t{3} << 30;
    SparseMemory const src_memory(2 * src_stride + 64);
    SparseMemory const dst_memory(2 * dst_stride + 64);
    for (std::uint32_t const flags : {0U, 2U, 4U, 6U}) {
        for (int channels = 1; channels <= 4; ++channels) {
            model::Warp const warp{{1, 0, 0.5F, 0, 1, 0.25F}, flags, {}};
            model::Pixels const src = drawPixels(random, {16, 3}, channels);
            model::Pixels expected = drawPixels(random, {16, 3}, channels);
            for (std::size_t y = 0; y < 3; ++y) {
                std::size_t const at = y * src.rowBytes();
                std::copy_n(&src.bytes[at], src.rowBytes(), src_memory.data() + y * src_stride);
                std::copy_n(&expected.bytes[at], src.rowBytes(),
                            dst_memory.data() + y * dst_stride);
            }
            WarpHandle const object(Simd::Base::CreateWarpAffine(
                16, 3, src_stride, 16, 3, dst_stride, static_cast<std::uint64_t>(channels),
                warp.matrix.data(), flags, nullptr));
            ASSERT_NE(object, nullptr);
            object->Run(src_memory.data(), dst_memory.data());
            model::warpPlane(warp, src, expected);
            for (std::size_t y = 0; y < 3; ++y) {
                EXPECT_EQ(std::memcmp(dst_memory.data() + y * dst_stride,
                                      &expected.bytes[y * src.rowBytes()], src.rowBytes()),
                          0)
                    << "row " << y << ", flags " << flags << ", " << channels << " channels";
            }
        }
    }
}

}  // namespace
}  // namespace ox::test::warp_affine_sweep
