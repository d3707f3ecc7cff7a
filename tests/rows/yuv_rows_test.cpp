// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Rows of YUV pixels from layout to layout.
#include "rows/colour/yuv_rows.h"

#include <gtest/gtest.h>

#include "rows/row_targets.h"
#include "rows/yuv_layouts.h"

namespace ox::test {

namespace {

enum class Lower { None, Other };

class YuvRows : public UsedRowRoutines {
  protected:
    void check(LayoutCase const& from, LayoutCase const& to, std::size_t width, Lower lower,
               bool luma, bool chroma);

  private:
    Random _random{4};
};

rows::YuvSamples<std::uint8_t const> sourceOf(YuvPlanes const& planes) {
    auto const [y, u, v] = planes.samples();
    return {y, u, v};
}

void YuvRows::check(LayoutCase const& from, LayoutCase const& to, std::size_t width, Lower lower,
                    bool luma, bool chroma) {
    YuvPlanes upper_row(from, width, Guard::AtEnd);
    YuvPlanes lower_row(from, width, Guard::AtEnd);
    YuvPlanes dst(to, width, Guard::AtEnd);
    upper_row.draw(_random);
    lower_row.draw(_random);
    rows::YuvRows src{sourceOf(upper_row), {}};
    if (lower == Lower::Other) {
        src.lower = sourceOf(lower_row);
    }
    auto target = dst.samples();
    target.y = luma ? target.y : nullptr;
    target.u = chroma ? target.u : nullptr;
    target.v = chroma ? target.v : nullptr;
    rows::convertYuv(rows::yuvWay(from.layout, to.layout), src, width, target);

    for (std::size_t x = 0; x < width; ++x) {
        ASSERT_EQ(*dst.y(x), luma ? *upper_row.y(x) : 0) << x << " of " << width;
    }
    std::size_t const group = to.pixels_per_chroma;
    for (std::size_t i = 0; i < (width + group - 1) / group; ++i) {
        int u = 0;
        int v = 0;
        int count = 0;
        for (std::size_t x = i * group; x < std::min((i + 1) * group, width); ++x) {
            for (YuvPlanes const* row : {&upper_row, &lower_row}) {
                if (row == &upper_row || lower == Lower::Other) {
                    u += *row->u(x / from.pixels_per_chroma);
                    v += *row->v(x / from.pixels_per_chroma);
                    ++count;
                }
            }
        }
        ASSERT_EQ(*dst.u(i), chroma ? u / count : 0) << i << ", width " << width;
        ASSERT_EQ(*dst.v(i), chroma ? v / count : 0) << i << ", width " << width;
    }
    EXPECT_FALSE(dst.touchedOutside());
}

bool hasLumaPlane(LayoutCase const& layout) {
    return layout.y.step == 1;
}

TEST_P(YuvRows, FromEveryLayoutToEveryOther) {
    for (LayoutCase const& from : yuvLayoutCases) {
        for (LayoutCase const& to : yuvLayoutCases) {
            SCOPED_TRACE(testing::Message() << "layout " << static_cast<int>(from.layout) << " to "
                                            << static_cast<int>(to.layout));
            for (std::size_t const width :
                 {0U, 1U, 2U, 3U, 4U, 31U, 62U, 65U, 130U, 1025U, 2050U}) {
                check(from, to, width, Lower::None, true, true);
                if (hasLumaPlane(to)) {
                    check(from, to, width, Lower::None, true, false);
                    check(from, to, width, Lower::None, false, true);
                }
                if (to.pixels_per_chroma == 2) {
                    check(from, to, width, Lower::Other, true, true);
                }
                if (hasLumaPlane(to) && to.pixels_per_chroma == 2) {
                    check(from, to, width, Lower::Other, false, true);
                }
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_P(YuvRows, FromGray) {
    Random random(3);
    for (LayoutCase const& to : yuvLayoutCases) {
        for (std::size_t const width : {0U, 1U, 2U, 3U, 70U, 131U, 1025U, 2049U}) {
            GuardedMemory gray(width, Guard::AtEnd);
            std::generate_n(gray.data(), width, [&] { return random.byte(); });
            YuvPlanes dst(to, width, Guard::AtEnd);
            dst.draw(random);
            rows::grayToYuv(to.layout, gray.data(), width, dst.samples());
            for (std::size_t x = 0; x < width; ++x) {
                ASSERT_EQ(*dst.y(x), gray.data()[x]) << x << " of " << width;
                ASSERT_EQ(*dst.u(x / to.pixels_per_chroma), 0) << x << " of " << width;
                ASSERT_EQ(*dst.v(x / to.pixels_per_chroma), 0) << x << " of " << width;
            }
            EXPECT_FALSE(dst.touchedOutside());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, YuvRows, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
