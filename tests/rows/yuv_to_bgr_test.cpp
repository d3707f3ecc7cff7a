// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines from YUV to BGR, of every instruction set that this processor has.
#include <array>

#include "rows/row_targets.h"
#include "rows/yuv_layouts.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

std::array<int, 3> bgrOf(int y, int u, int v) {
    int const luma = 297 * (y - 16);
    auto const byte = [](int sum) { return std::clamp(sum, 0, 65535) / 256; };
    return {byte(luma + 516 * (u - 128)), byte(luma - 207 * (v - 128) - 100 * (u - 128)),
            byte(luma + 408 * (v - 128))};
}

class YuvToBgrRoutines : public RowRoutines {
  protected:
    void check(LayoutCase const& layout, std::size_t width, Guard guard) {
        YuvPlanes row(layout, width, guard);
        row.draw(_random);
        auto const [y, u, v] = row.samples();
        GuardedMemory bgr(3 * width, guard);
        routines.colour.yuv_to_bgr[indexOf(layout.layout)]({y, u, v}, width, bgr.data());
        for (std::size_t x = 0; x < width; ++x) {
            std::size_t const chroma = x / layout.pixels_per_chroma;
            std::array<int, 3> const expected = bgrOf(*row.y(x), *row.u(chroma), *row.v(chroma));
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_EQ(bgr.data()[3 * x + c], expected[c])
                    << "pixel " << x << " of " << width << ", channel " << c << ", layout "
                    << static_cast<int>(layout.layout);
            }
        }
        EXPECT_EQ(bgr.touched(), 0);
    }

    void checkLuma(LayoutCase const& layout, std::size_t width, Guard guard) {
        YuvPlanes row(layout, width, guard);
        row.draw(_random);
        GuardedMemory luma(width, guard);
        routines.colour.luma[indexOf(layout.layout)](row.y(0), width, luma.data());
        for (std::size_t x = 0; x < width; ++x) {
            ASSERT_EQ(luma.data()[x], *row.y(x)) << x << " of " << width;
        }
        EXPECT_EQ(luma.touched(), 0);
    }

  private:
    Random _random{5};
};

TEST_P(YuvToBgrRoutines, EveryLayoutAndWidth) {
    for (LayoutCase const& layout : yuvLayoutCases) {
        for (std::size_t width = 0; width <= 205; ++width) {
            check(layout, width, width % 4 < 2 ? Guard::AtEnd : Guard::AtStart);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(YuvToBgrRoutines, EveryColour) {
    constexpr std::size_t width = 256;
    int const step = emulated() ? 15 : 1;
    std::array<std::uint8_t, width> y{};
    std::array<std::uint8_t, width> u{};
    std::array<std::uint8_t, width> v{};
    std::array<std::uint8_t, 3 * width> bgr{};
    for (std::size_t x = 0; x < width; ++x) {
        y[x] = static_cast<std::uint8_t>(x);
    }
    for (int cu = 0; cu < 256; cu += step) {
        u.fill(static_cast<std::uint8_t>(cu));
        for (int cv = 0; cv < 256; cv += step) {
            v.fill(static_cast<std::uint8_t>(cv));
            routines.colour.yuv_to_bgr[indexOf(YuvLayout::FullPlanes)](
                {y.data(), u.data(), v.data()}, width, bgr.data());
            for (std::size_t x = 0; x < width; ++x) {
                std::array<int, 3> const expected = bgrOf(static_cast<int>(x), cu, cv);
                bool const right = bgr[3 * x] == expected[0] && bgr[3 * x + 1] == expected[1] &&
                                   bgr[3 * x + 2] == expected[2];
                ASSERT_TRUE(right) << "Y, U, V " << x << ", " << cu << ", " << cv;
            }
        }
    }
}

TEST_P(YuvToBgrRoutines, LumaOfEveryLayoutAndWidth) {
    for (LayoutCase const& layout : yuvLayoutCases) {
        for (std::size_t width = 0; width <= 205; ++width) {
            checkLuma(layout, width, width % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, YuvToBgrRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
