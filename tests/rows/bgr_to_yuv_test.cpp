// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines from BGR to YUV and gray, of every instruction set that this processor has.
#include <array>
#include <memory>
#include <optional>

#include "rows/row_targets.h"
#include "rows/yuv_layouts.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

struct Sums {
    int y;
    int u;
    int v;
};

// With 8 fractional bits.
Sums sumsOf(std::uint8_t const* bgr) {
    int const b = bgr[0];
    int const g = bgr[1];
    int const r = bgr[2];
    return {65 * r + 129 * g + 25 * b + 16 * 256, 112 * b - 74 * g - 38 * r + 128 * 256,
            112 * r - 94 * g - 18 * b + 128 * 256};
}

// Samples that have an address.
struct Wanted {
    bool y = true;
    bool u = true;
    bool v = true;
};

class BgrToYuvRoutines : public RowRoutines {
  protected:
    void check(LayoutCase const& layout, std::size_t width, bool two_rows, Wanted wanted,
               Guard guard);
    void checkGray(std::size_t width, Guard guard);

    std::unique_ptr<GuardedMemory> drawRow(std::size_t width, Guard guard) {
        auto row = std::make_unique<GuardedMemory>(3 * width, guard);
        // Often at the ends of the range.
        std::generate_n(row->data(), row->size(), [&] {
            int const draw = _random.between(0, 8);
            return draw == 0 ? std::uint8_t{0} : draw == 1 ? std::uint8_t{255} : _random.byte();
        });
        return row;
    }

  private:
    Random _random{6};
};

void BgrToYuvRoutines::check(LayoutCase const& layout, std::size_t width, bool two_rows,
                             Wanted wanted, Guard guard) {
    auto const upper = drawRow(width, guard);
    auto const lower = drawRow(width, guard);
    YuvPlanes planes(layout, width, guard);
    auto samples = planes.samples();
    samples.y = wanted.y ? samples.y : nullptr;
    samples.u = wanted.u ? samples.u : nullptr;
    samples.v = wanted.v ? samples.v : nullptr;
    routines.colour.bgr_to_yuv[indexOf(layout.layout)](
        {upper->data(), two_rows ? lower->data() : nullptr}, width, samples);
    std::size_t const group = layout.pixels_per_chroma;
    for (std::size_t x = 0; x < width; ++x) {
        ASSERT_EQ(*planes.y(x), wanted.y ? sumsOf(upper->data() + 3 * x).y / 256 : 0)
            << "pixel " << x;
    }
    for (std::size_t i = 0; i < (width + group - 1) / group; ++i) {
        int u = 0;
        int v = 0;
        int count = 0;
        for (std::size_t x = i * group; x < std::min((i + 1) * group, width); ++x) {
            for (GuardedMemory const* row : {upper.get(), lower.get()}) {
                if (row == upper.get() || two_rows) {
                    Sums const sums = sumsOf(row->data() + 3 * x);
                    u += sums.u;
                    v += sums.v;
                    ++count;
                }
            }
        }
        ASSERT_EQ(*planes.u(i), wanted.u ? u / (256 * count) : 0) << "sample " << i;
        ASSERT_EQ(*planes.v(i), wanted.v ? v / (256 * count) : 0) << "sample " << i;
    }
    EXPECT_FALSE(planes.touchedOutside());
}

void BgrToYuvRoutines::checkGray(std::size_t width, Guard guard) {
    auto const row = drawRow(width, guard);
    GuardedMemory gray(width, guard);
    routines.colour.bgr_to_gray(row->data(), width, gray.data());
    for (std::size_t x = 0; x < width; ++x) {
        std::uint8_t const* const p = row->data() + 3 * x;
        ASSERT_EQ(gray.data()[x], (28 * p[0] + 152 * p[1] + 76 * p[2]) / 256) << "pixel " << x;
    }
    EXPECT_EQ(gray.touched(), 0);
}

TEST_P(BgrToYuvRoutines, EveryLayoutAndWidth) {
    for (LayoutCase const& layout : yuvLayoutCases) {
        for (std::size_t width = 0; width <= 205; ++width) {
            Guard const guard = width % 4 < 2 ? Guard::AtEnd : Guard::AtStart;
            check(layout, width, layout.pixels_per_chroma == 2 && width % 3 == 0, {}, guard);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(BgrToYuvRoutines, SamplesWithoutAnAddressAreLeftOut) {
    for (YuvLayout const layout :
         {YuvLayout::HalfPlanes, YuvLayout::PairsUv, YuvLayout::PairsVu, YuvLayout::FullPlanes}) {
        LayoutCase const& each = yuvLayoutCases[indexOf(layout)];
        for (std::size_t const width : {1U, 2U, 15U, 70U, 131U}) {
            check(each, width, false, {true, false, false}, Guard::AtEnd);
            check(each, width, false, {false, true, true}, Guard::AtEnd);
            check(each, width, false, {true, true, false}, Guard::AtEnd);
            check(each, width, false, {false, false, true}, Guard::AtEnd);
        }
    }
}

TEST_P(BgrToYuvRoutines, Gray) {
    for (std::size_t width = 0; width <= 205; ++width) {
        checkGray(width, width % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
    }
}

// Each channel at its ends and in between.
TEST_P(BgrToYuvRoutines, ColoursAtTheEnds) {
    std::vector<std::uint8_t> const values{0, 1, 2, 15, 64, 127, 128, 129, 200, 253, 254, 255};
    std::vector<std::uint8_t> bgr;
    for (std::uint8_t const b : values) {
        for (std::uint8_t const g : values) {
            for (std::uint8_t const r : values) {
                bgr.insert(bgr.end(), {b, g, r});
            }
        }
    }
    std::size_t const width = bgr.size() / 3;
    std::vector<std::uint8_t> y(width);
    std::vector<std::uint8_t> u(width);
    std::vector<std::uint8_t> v(width);
    routines.colour.bgr_to_yuv[indexOf(YuvLayout::FullPlanes)]({bgr.data(), nullptr}, width,
                                                               {y.data(), u.data(), v.data()});
    for (std::size_t x = 0; x < width; ++x) {
        Sums const sums = sumsOf(bgr.data() + 3 * x);
        ASSERT_EQ(y[x], sums.y / 256) << x;
        ASSERT_EQ(u[x], sums.u / 256) << x;
        ASSERT_EQ(v[x], sums.v / 256) << x;
    }
}

INSTANTIATE_TEST_SUITE_P(, BgrToYuvRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
