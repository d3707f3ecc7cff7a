// Rows of YUV samples from layout to layout, as planes.
#include "rows/colour/runs.h"

#include <gtest/gtest.h>

#include "rows/yuv_layouts.h"

namespace ox::test {

namespace {

bool isSplit(LayoutCase const& layout) {
    return layout.y.step == 1 && layout.pixels_per_chroma == 2;
}

// Pairs are copied to planes and back; for pairs to pairs there is no routine.
bool isCopied(LayoutCase const& from, LayoutCase const& to) {
    bool const planes = from.layout == YuvLayout::HalfPlanes || to.layout == YuvLayout::HalfPlanes;
    return isSplit(from) && isSplit(to) && planes;
}

void check(LayoutCase const& from, LayoutCase const& to, std::size_t width, bool luma,
           bool chroma) {
    Random random(width);
    YuvPlanes src(from, width, Guard::AtEnd);
    YuvPlanes dst(to, width, Guard::AtEnd);
    src.draw(random);
    auto const [y, u, v] = src.samples();
    auto target = dst.samples();
    target.y = luma ? target.y : nullptr;
    target.u = chroma ? target.u : nullptr;
    target.v = chroma ? target.v : nullptr;
    bool const copied = isCopied(from, to);
    ASSERT_EQ(rows::copyPlanes(from.layout, to.layout, {y, u, v}, width, target), copied);
    for (std::size_t x = 0; x < width; ++x) {
        ASSERT_EQ(*dst.y(x), copied && luma ? *src.y(x) : 0) << x << " of " << width;
    }
    for (std::size_t i = 0; i < width / 2; ++i) {
        ASSERT_EQ(*dst.u(i), copied && chroma ? *src.u(i) : 0) << i << " of " << width / 2;
        ASSERT_EQ(*dst.v(i), copied && chroma ? *src.v(i) : 0) << i << " of " << width / 2;
    }
    EXPECT_FALSE(dst.touchedOutside());
}

TEST(YuvRuns, CopyPlanes) {
    for (LayoutCase const& from : yuvLayoutCases) {
        for (LayoutCase const& to : yuvLayoutCases) {
            SCOPED_TRACE(testing::Message() << "layout " << static_cast<int>(from.layout) << " to "
                                            << static_cast<int>(to.layout));
            for (std::size_t const width : {0U, 2U, 4U, 62U, 130U, 2050U}) {
                check(from, to, width, true, true);
                check(from, to, width, true, false);
                check(from, to, width, false, true);
            }
        }
    }
}

}  // namespace

}  // namespace ox::test
