// The vector routines from BGR to YUV and gray, of every instruction set that this processor has.
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

class BgrToYuvRoutines : public RowRoutines {
  protected:
    void check(LayoutCase const& layout, std::size_t width, bool two_rows, bool chroma,
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
                             bool chroma, Guard guard) {
    auto const upper = drawRow(width, guard);
    auto const lower = drawRow(width, guard);
    YuvPlanes planes(layout, width, guard);
    auto samples = planes.samples();
    if (!chroma) {
        samples.u = nullptr;
        samples.v = nullptr;
    }
    routines.colour.bgr_to_yuv[static_cast<std::size_t>(layout.layout)](
        {upper->data(), two_rows ? lower->data() : nullptr}, width, samples);
    std::size_t const group = layout.pixels_per_chroma;
    for (std::size_t x = 0; x < width; ++x) {
        ASSERT_EQ(*planes.y(x), sumsOf(upper->data() + 3 * x).y / 256) << "pixel " << x;
    }
    for (std::size_t i = 0; chroma && i < width / group; ++i) {
        int u = 0;
        int v = 0;
        int count = 0;
        for (GuardedMemory const* row : {upper.get(), lower.get()}) {
            for (std::size_t x = i * group; (row == upper.get() || two_rows) && x < (i + 1) * group;
                 ++x, ++count) {
                Sums const sums = sumsOf(row->data() + 3 * x);
                u += sums.u;
                v += sums.v;
            }
        }
        ASSERT_EQ(*planes.u(i), u / (256 * count)) << "sample " << i << " of " << width / group;
        ASSERT_EQ(*planes.v(i), v / (256 * count)) << "sample " << i << " of " << width / group;
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
        std::size_t const step = layout.pixels_per_chroma;
        for (std::size_t more = 0; more <= 140; more += step) {
            Guard const guard = more % 4 == 0 ? Guard::AtEnd : Guard::AtStart;
            check(layout, routines.colour.least_pixels + more, step == 2 && more % 3 == 0, true,
                  guard);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(BgrToYuvRoutines, LumaAlone) {
    for (std::size_t layout = 0; layout < 3; ++layout) {
        check(yuvLayoutCases[layout], routines.colour.least_pixels + 6, false, false, Guard::AtEnd);
    }
}

TEST_P(BgrToYuvRoutines, Gray) {
    for (std::size_t more = 0; more <= 140; ++more) {
        checkGray(routines.colour.least_pixels + more,
                  more % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
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
    routines.colour.bgr_to_yuv[static_cast<std::size_t>(rows::YuvLayout::FullPlanes)](
        {bgr.data(), nullptr}, width, {y.data(), u.data(), v.data()});
    for (std::size_t x = 0; x < width; ++x) {
        Sums const sums = sumsOf(bgr.data() + 3 * x);
        ASSERT_EQ(y[x], sums.y / 256) << x;
        ASSERT_EQ(u[x], sums.u / 256) << x;
        ASSERT_EQ(v[x], sums.v / 256) << x;
    }
}

INSTANTIATE_TEST_SUITE_P(, BgrToYuvRoutines, testing::ValuesIn(vectorTargets()),
                         [](auto const& parameter) { return parameter.param; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BgrToYuvRoutines);  // without vector code

}  // namespace

}  // namespace ox::test
