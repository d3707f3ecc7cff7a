// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scale_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace ox::test {

namespace {

static_assert(std::is_abstract_v<IKernel> && std::has_virtual_destructor_v<IKernel>);
static_assert(std::is_base_of_v<IKernel, BoxKernel>);
static_assert(sizeof(BoxKernel) == sizeof(void*) + 2 * sizeof(float));

float justAbove(float x) {
    return std::nextafter(x, std::numeric_limits<float>::infinity());
}

BoxKernel boxOf(float scale) {
    BoxKernel kernel;
    kernel.setScale(scale);
    return kernel;
}

TEST(BoxKernel, IsAsWideAsTheScale) {
    EXPECT_EQ(BoxKernel().aperture(), 0.0F);
    EXPECT_EQ(boxOf(2.5F).aperture(), 2.5F);
    EXPECT_EQ(boxOf(1.0F).aperture(), 1.0F);
}

// The bounds, 1.001 and 1.501, are sums of floats, the nearest ones.
TEST(BoxKernel, IsOneUpToAThousandthOutside) {
    struct {
        float scale;
        float bound;
    } const cases[] = {{0.0F, 0.001F}, {2.0F, 1.001F}, {3.0F, 1.501F}, {32.0F, 16.001F}};
    for (auto const& each : cases) {
        SCOPED_TRACE(each.scale);
        BoxKernel kernel = boxOf(each.scale);
        for (float const inside : {0.0F, each.scale / 2, each.bound}) {
            EXPECT_EQ(kernel.value(inside), 1.0F);
            EXPECT_EQ(kernel.value(-inside), 1.0F);
        }
        for (float const outside : {justAbove(each.bound), each.bound + 1, 1e30F}) {
            EXPECT_EQ(kernel.value(outside), 0.0F);
            EXPECT_EQ(kernel.value(-outside), 0.0F);
        }
    }
}

TEST(BoxKernel, TakesTheLastScale) {
    BoxKernel kernel = boxOf(5.0F);
    kernel.setScale(2.0F);
    EXPECT_EQ(kernel.aperture(), 2.0F);
    EXPECT_EQ(kernel.value(1.5F), 0.0F);
}

TEST(BoxKernel, CopiesAreIndependent) {
    BoxKernel kernel = boxOf(3.0F);
    BoxKernel copy = kernel;
    kernel.setScale(1.0F);
    EXPECT_EQ(copy.aperture(), 3.0F);
    EXPECT_EQ(copy.value(1.5F), 1.0F);
    copy = kernel;
    EXPECT_EQ(copy.value(1.5F), 0.0F);
}

TEST(BoxKernel, BearsNumbersThatAreNone) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    BoxKernel box = boxOf(2.0F);
    EXPECT_EQ(box.value(nan), 0.0F);
    EXPECT_EQ(box.value(infinity), 0.0F);
    EXPECT_EQ(boxOf(infinity).value(1e38F), 1.0F);
    EXPECT_EQ(boxOf(nan).value(0.0F), 0.0F);
}

TEST(MaxAperture, IsTheSumOfTheWeights) {
    EXPECT_EQ(impl::maxAperture<signed char>(), 64);
    EXPECT_EQ(impl::maxAperture<short>(), 16384);
}

}  // namespace

}  // namespace ox::test
