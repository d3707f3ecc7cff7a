// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Results worked out by hand, by each routine: the row is long enough for the vector ones.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "simd/number_draws.h"
#include "simd/simd.h"
#include "simd/vector_targets.h"

namespace ox::test {
namespace {

using ByteRow = std::vector<std::uint8_t>;

// Runs `check` with the scalar and the vector routines behind every kernel.
void withEachRoutine(std::function<void()> const& check) {
    for (VectorTarget const& target : vectorTargets()) {
        SCOPED_TRACE(target.name);
        UsedTarget const used(target.name.c_str());
        check();
    }
    SCOPED_TRACE("scalar");
    VectorRoutinesOff const off;
    check();
}

ByteRow repeated(ByteRow const& pixel, std::size_t count) {
    ByteRow row;
    for (std::size_t i = 0; i < count; ++i) {
        row.insert(row.end(), pixel.begin(), pixel.end());
    }
    return row;
}

constexpr std::size_t width = 34;  // one block of 32, and one that overlaps it

int grayOf(ByteRow const& bgr) {
    ByteRow gray(width);
    Simd::ConvertBgrToGray(repeated(bgr, width).data(), width, 1, 3 * width, gray.data(), width);
    EXPECT_EQ(gray, ByteRow(width, gray[0]));
    return gray[0];
}

TEST(KernelCases, Gray) {
    withEachRoutine([] {
        EXPECT_EQ(grayOf({255, 255, 255}), 255);
        EXPECT_EQ(grayOf({0, 0, 0}), 0);
        EXPECT_EQ(grayOf({0, 255, 0}), 150);
        EXPECT_EQ(grayOf({255, 0, 0}), 29);
        EXPECT_EQ(grayOf({0, 0, 255}), 76);
    });
}

TEST(KernelCases, GrayToBgr) {
    withEachRoutine([] {
        ByteRow gray(17);
        ByteRow expected;
        for (std::size_t i = 0; i < 17; ++i) {
            gray[i] = static_cast<std::uint8_t>(10 * i);
            expected.insert(expected.end(), 3, gray[i]);
        }
        ByteRow bgr(3 * 17);
        Simd::ExpandGrayToBgr(gray.data(), 17, 1, 17, bgr.data(), 3 * 17);
        EXPECT_EQ(bgr, expected);
    });
}

TEST(KernelCases, SwapOf17PixelsLeavesTheNextByte) {
    withEachRoutine([] {
        ByteRow src(3 * 17);
        ByteRow expected(3 * 17 + 1, 77);
        for (std::size_t i = 0; i < 17; ++i) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                src[3 * i + channel] = static_cast<std::uint8_t>(3 * i + channel);
                expected[3 * i + 2 - channel] = src[3 * i + channel];
            }
        }
        ByteRow dst(3 * 17 + 1, 77);
        Simd::SwapRedBlue(src.data(), 17, 1, 3 * 17, dst.data(), 3 * 17);
        EXPECT_EQ(dst, expected);
    });
}

TEST(KernelCases, FloatsToBytesOfTheWholeRange) {
    std::vector<float> const floats{
        -1.0F,  255.5F, 300.0F, infinity, -infinity, notANumber, signallingNaN, 254.99F,
        254.9F, -0.0F,  0.99F,  1.0F,     254.0F,    255.0F,     1e20F,         smallestNormal};
    ByteRow const expected{0, 255, 255, 255, 0, 0, 0, 254, 254, 0, 0, 1, 254, 255, 255, 0};
    float const lower = 0.0F;
    float const upper = 255.0F;
    withEachRoutine([&] {
        ByteRow bytes(16);
        Simd::ScaleFloatsToBytes(floats.data(), 16, &lower, &upper, bytes.data());
        EXPECT_EQ(bytes, expected);
    });
}

// An exchanged range gives all its bytes but to the NaN, which the scalar routine takes for the
// lower end.
TEST(KernelCases, FloatsToBytesOfAnExchangedRange) {
    std::vector<float> const floats(16, notANumber);
    float const lower = 1.0F;
    float const upper = 0.0F;
    ByteRow bytes(16);
    Simd::Base::ScaleFloatsToBytes(floats.data(), 16, &lower, &upper, bytes.data());
    EXPECT_EQ(bytes, ByteRow(16, 255));
    Simd::Neon::ScaleFloatsToBytes(floats.data(), 16, &lower, &upper, bytes.data());
    EXPECT_EQ(bytes, ByteRow(16, 0));
}

TEST(KernelCases, FloatsToBytesOfNaNs) {
    float const lower = 0.0F;
    float const upper = 255.0F;
    for (float const nan : {notANumber, -notANumber, signallingNaN, -signallingNaN}) {
        withEachRoutine([&] {
            std::vector<float> const floats(70, nan);
            ByteRow bytes(70, 1);
            Simd::ScaleFloatsToBytes(floats.data(), 70, &lower, &upper, bytes.data());
            EXPECT_EQ(bytes, ByteRow(70, 0)) << std::hex << bitsOf(nan);
        });
    }
}

TEST(KernelCases, BytesComeBackFromFloats) {
    float const lower = 0.0F;
    float const upper = 255.0F;
    ByteRow bytes(256);
    for (std::size_t i = 0; i < 256; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    withEachRoutine([&] {
        std::vector<float> floats(256);
        ByteRow again(256);
        Simd::ScaleBytesToFloats(bytes.data(), 256, &lower, &upper, floats.data());
        for (std::size_t i = 0; i < 256; ++i) {
            EXPECT_EQ(floats[i], static_cast<float>(i));
        }
        Simd::ScaleFloatsToBytes(floats.data(), 256, &lower, &upper, again.data());
        EXPECT_EQ(again, bytes);
    });
}

struct Yuv {
    int y;
    int u;
    int v;
    bool operator==(Yuv const&) const = default;
};

void PrintTo(Yuv const& colour, std::ostream* out) {
    *out << colour.y << ", " << colour.u << ", " << colour.v;
}

Yuv yuv444Of(ByteRow const& bgr) {
    ByteRow y(width);
    ByteRow u(width);
    ByteRow v(width);
    Simd::ConvertBgrToYuv444(repeated(bgr, width).data(), width, 1, 3 * width, y.data(), width,
                             u.data(), width, v.data(), width);
    EXPECT_EQ(y, ByteRow(width, y[0]));
    EXPECT_EQ(u, ByteRow(width, u[0]));
    EXPECT_EQ(v, ByteRow(width, v[0]));
    return {y[0], u[0], v[0]};
}

// Of a pixel at the top left and another one at the three other corners, in every square.
Yuv i420Of(ByteRow const& corner, ByteRow const& others, std::size_t columns) {
    ByteRow pair = corner;
    pair.insert(pair.end(), others.begin(), others.end());
    ByteRow bgr = repeated(pair, columns / 2);
    ByteRow const second = repeated(others, columns);
    bgr.insert(bgr.end(), second.begin(), second.end());
    ByteRow y(2 * columns);
    ByteRow u(columns / 2);
    ByteRow v(columns / 2);
    Simd::ConvertBgrToI420(bgr.data(), columns, 2, 3 * columns, y.data(), columns, u.data(),
                           columns / 2, v.data(), columns / 2);
    EXPECT_EQ(u, ByteRow(columns / 2, u[0]));
    EXPECT_EQ(v, ByteRow(columns / 2, v[0]));
    return {y[0], u[0], v[0]};
}

TEST(KernelCases, BgrToYuv) {
    withEachRoutine([] {
        EXPECT_EQ(yuv444Of({255, 255, 255}), (Yuv{235, 128, 128}));
        EXPECT_EQ(yuv444Of({0, 0, 0}), (Yuv{16, 128, 128}));
        EXPECT_EQ(yuv444Of({0, 0, 255}), (Yuv{82, 90, 240}));
        for (std::size_t const columns : {16U, 30U, 32U, 34U}) {
            EXPECT_EQ(i420Of({255, 255, 255}, {255, 255, 255}, columns), (Yuv{235, 128, 128}));
            EXPECT_EQ(i420Of({0, 0, 0}, {0, 0, 0}, columns), (Yuv{16, 128, 128}));
            EXPECT_EQ(i420Of({0, 0, 255}, {0, 0, 255}, columns), (Yuv{82, 90, 240}));
            // Red is averaged to 64.
            EXPECT_EQ(i420Of({0, 0, 255}, {0, 0, 0}, columns), (Yuv{82, 119, 156}));
        }
    });
}

ByteRow bgrOfYuv444(std::uint8_t y, std::uint8_t u, std::uint8_t v) {
    ByteRow bgr(3 * width);
    Simd::ConvertYuv444ToBgr(ByteRow(width, y).data(), width, ByteRow(width, u).data(), width,
                             ByteRow(width, v).data(), width, width, 1, bgr.data(), 3 * width);
    ByteRow const pixel(bgr.begin(), bgr.begin() + 3);
    EXPECT_EQ(bgr, repeated(pixel, width));
    return pixel;
}

template <class Kernel>
ByteRow packedOfI420(Kernel const& kernel, std::uint8_t y, std::uint8_t u, std::uint8_t v) {
    ByteRow packed(2 * 3 * width);
    kernel(ByteRow(2 * width, y).data(), width, ByteRow(width / 2, u).data(), width / 2,
           ByteRow(width / 2, v).data(), width / 2, width, 2, packed.data(), 3 * width);
    ByteRow const pixel(packed.begin(), packed.begin() + 3);
    EXPECT_EQ(packed, repeated(pixel, 2 * width));
    return pixel;
}

TEST(KernelCases, YuvToBgr) {
    struct Case {
        std::uint8_t y, u, v;
        ByteRow bgr;
    };
    std::vector<Case> const cases{
        {235, 128, 128, {255, 255, 255}}, {16, 128, 128, {0, 0, 0}},  {0, 128, 128, {0, 0, 0}},
        {255, 128, 128, {255, 255, 255}}, {82, 90, 240, {0, 1, 255}},
    };
    withEachRoutine([&] {
        for (auto const& [y, u, v, bgr] : cases) {
            EXPECT_EQ(bgrOfYuv444(y, u, v), bgr);
            EXPECT_EQ(packedOfI420(Simd::ConvertI420ToBgr, y, u, v), bgr);
            EXPECT_EQ(packedOfI420(Simd::ConvertI420ToRgb, y, u, v),
                      ByteRow(bgr.rbegin(), bgr.rend()));
        }
    });
}

ByteRow bgrOfNv12(std::uint8_t y, std::uint8_t u, std::uint8_t v) {
    ByteRow bgr(2 * 3 * width);
    Simd::ConvertNv12ToBgrDirectly(ByteRow(2 * width, y).data(), width,
                                   repeated({u, v}, width / 2).data(), width, width, 2, bgr.data(),
                                   3 * width);
    ByteRow const pixel(bgr.begin(), bgr.begin() + 3);
    EXPECT_EQ(bgr, repeated(pixel, 2 * width));
    return pixel;
}

TEST(KernelCases, Nv12ToBgrDirectly) {
    withEachRoutine([] {
        EXPECT_EQ(bgrOfNv12(16, 128, 128), (ByteRow{0, 0, 0}));
        EXPECT_EQ(bgrOfNv12(0, 128, 128), (ByteRow{0, 0, 0}));
        EXPECT_EQ(bgrOfNv12(235, 128, 128), (ByteRow{255, 255, 255}));
        EXPECT_EQ(bgrOfNv12(255, 255, 255), (ByteRow{255, 125, 255}));
        EXPECT_EQ(bgrOfNv12(81, 90, 240), (ByteRow{0, 0, 255}));
        EXPECT_EQ(bgrOfNv12(16, 129, 129), (ByteRow{2, 0, 2}));
    });
}

std::vector<int> halvesOf(std::vector<float> const& floats) {
    std::vector<std::uint16_t> halves(floats.size());
    Simd::FloatsToHalves(floats.data(), floats.size(), halves.data());
    return {halves.begin(), halves.end()};
}

TEST(KernelCases, FloatsToHalves) {
    struct Case {
        float number;
        int truncated;
        int rounded;
    };
    Case const cases[]{
        {1.0F, 0x3C00, 0x3C00},     {1.0009765F, 0x3C00, 0x3C01}, {65504.0F, 0x7BFF, 0x7BFF},
        {65505.0F, 0x7C00, 0x7BFF}, {65519.0F, 0x7C00, 0x7BFF},   {65520.0F, 0x7C00, 0x7C00},
        {0x1p-24F, 0x0001, 0x0001}, {0x1.8p-25F, 0x0000, 0x0001}, {-0.0F, 0x8000, 0x8000},
        {infinity, 0x7C00, 0x7C00}, {-infinity, 0xFC00, 0xFC00},  {0x1p-25F, 0x0000, 0x0000},
    };
    for (auto const [number, truncated, rounded] : cases) {
        EXPECT_EQ(halvesOf({number, number, number}), std::vector<int>(3, truncated)) << number;
        for (VectorTarget const& target : vectorTargets()) {
            UsedTarget const used(target.name.c_str());
            EXPECT_EQ(halvesOf({number, number, number, number}), std::vector<int>(4, rounded))
                << number << " by " << target.name;
        }
    }
}

TEST(KernelCases, HalvesToFloats) {
    std::vector<std::uint16_t> const halves{0x0001, 0x03FF, 0x0400, 0x7C00, 0xFC00, 0x8000, 0x3C00};
    std::vector<float> const expected{0x1p-24F,  1023 * 0x1p-24F, 0x1p-14F, infinity,
                                      -infinity, -0.0F,           1.0F};
    withEachRoutine([&] {
        std::vector<float> floats(halves.size());
        Simd::HalvesToFloats(halves.data(), halves.size(), floats.data());
        EXPECT_EQ(floats, expected);
        EXPECT_TRUE(std::signbit(floats[5]));
    });
}

TEST(KernelCases, FiveHalvesAndNone) {
    withEachRoutine([] {
        std::vector<std::uint16_t> halves{9, 9, 9, 9, 9, 9};
        float const floats[]{1.0F, 2.0F, 4.0F, 8.0F, 16.0F};
        Simd::FloatsToHalves(floats, 0, halves.data());
        EXPECT_EQ(halves[0], 9);
        Simd::FloatsToHalves(floats, 5, halves.data());
        EXPECT_EQ(halves, (std::vector<std::uint16_t>{0x3C00, 0x4000, 0x4400, 0x4800, 0x4C00, 9}));
    });
}

TEST(KernelCases, SumsAndProducts) {
    auto const check = [](Simd::ConstantIntoFloats::Function* add,
                          Simd::FloatsIntoFloats::Function* accumulate) {
        float const one = 1.0F;
        float data[]{16777216.0F, 0.5F, infinity, -1.0F, 3.0F};
        add(&one, data, 5);
        EXPECT_EQ(std::vector<float>(data, data + 5),
                  (std::vector<float>{16777216.0F, 1.5F, infinity, 0.0F, 4.0F}));

        float const zero = 0.0F;
        float const numbers[]{-1.0F, infinity, notANumber, -infinity, 2.0F};
        float products[5]{};
        accumulate(numbers, 5, &zero, products);
        EXPECT_EQ(bitsOf(products[0]), 0U);
        EXPECT_TRUE(std::isnan(products[1]));
        EXPECT_TRUE(std::isnan(products[2]));
        EXPECT_TRUE(std::isnan(products[3]));
        EXPECT_EQ(bitsOf(products[4]), 0U);

        // Its square is 1 + 2^-11 + 2^-24, whose last bit a rounded product would lose.
        float const factor = 1.0F + 0x1p-12F;
        std::vector<float> const factors(5, factor);
        std::vector<float> sums(5, -(1.0F + 0x1p-11F));
        accumulate(factors.data(), 5, &factor, sums.data());
        EXPECT_EQ(sums, std::vector<float>(5, 0x1p-24F));
    };
    check(Simd::Base::AddConstantFloats, Simd::Base::AccumulateScaledFloats);
    for (VectorTarget const& target : vectorTargets()) {
        SCOPED_TRACE(target.name);
        check(target.routines.AddConstantFloats, target.routines.AccumulateScaledFloats);
    }
}

TEST(KernelCases, CopyPlaneRows) {
    ByteRow const src{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
    ByteRow dst(20, 0);
    Simd::CopyPlaneRows(src.data(), 8, 2, 2, 3, dst.data(), 10);
    EXPECT_EQ(dst, (ByteRow{1, 2,  3,  4,  5,  6,  0, 0, 0, 0,  //
                            9, 10, 11, 12, 13, 14, 0, 0, 0, 0}));
    Simd::CopyPlaneRows(nullptr, 8, 0, 2, 3, dst.data(), 10);
    Simd::CopyPlaneRows(nullptr, 8, 2, 0, 3, dst.data(), 10);
    EXPECT_EQ(dst[0], 1);
}

}  // namespace
}  // namespace ox::test
