// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame_layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::frame_layout {

namespace {

constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

static_assert(sizeof(FramePlane) == 40 && offsetof(FramePlane, width) == 0 &&
              offsetof(FramePlane, height) == 4 && offsetof(FramePlane, bits) == 8 &&
              offsetof(FramePlane, channels) == 10 && offsetof(FramePlane, stride) == 16 &&
              offsetof(FramePlane, rowBytes) == 24 && offsetof(FramePlane, planeBytes) == 32);
static_assert(offsetof(FrameLayout, format) == 0 && offsetof(FrameLayout, planeCount) == 4 &&
              offsetof(FrameLayout, size) == 8 && offsetof(FrameLayout, plane) == 16 &&
              offsetof(FrameLayout, offset) == 176 && sizeof(FrameLayout) == 208);

struct Plane {
    int width;
    int height;
    int bits;
    int channels;
    unsigned row_bytes;
};

struct Geometry {
    FrameFormat format;
    std::vector<Plane> planes;  // of a frame of 5 x 3
};

std::vector<Geometry> geometries() {
    Plane const full{5, 3, 8, 1, 5};
    Plane const triple{5, 3, 8, 3, 15};
    Plane const quarter{3, 2, 8, 1, 3};
    Plane const quarter_pair{3, 2, 8, 2, 6};
    Plane const half{3, 3, 8, 1, 3};
    Plane const half_pair{3, 3, 8, 2, 6};
    Plane const macro_pixels{6, 3, 8, 2, 12};
    Plane const floats{5, 3, 32, 1, 20};
    return {{FRAME_GRAY8, {full}},
            {FRAME_RGB24, {triple}},
            {FRAME_RGB_PLANAR, {full, full, full}},
            {FRAME_BGR24, {triple}},
            {FRAME_BGR_PLANAR, {full, full, full}},
            {FRAME_I420, {full, quarter, quarter}},
            {FRAME_YV12, {full, quarter, quarter}},
            {FRAME_NV12, {full, quarter_pair}},
            {FRAME_NV21, {full, quarter_pair}},
            {FRAME_YV16, {full, half, half}},
            {FRAME_YUYV, {macro_pixels}},
            {FRAME_UYVY, {macro_pixels}},
            {FRAME_NV16, {full, half_pair}},
            {FRAME_YUV444, {triple}},
            {FRAME_YUV444_PLANAR, {full, full, full}},
            {FRAME_C2_8U, {{5, 3, 8, 2, 10}}},
            {FRAME_C3_8U, {triple}},
            {FRAME_C4_8U, {{5, 3, 8, 4, 20}}},
            {FRAME_C1_16U, {{5, 3, 16, 1, 10}}},
            {FRAME_C1_32U, {{5, 3, 32, 1, 20}}},
            {FRAME_GRAY_32F, {floats}},
            {FRAME_BGR_32F, {{5, 3, 32, 3, 60}}},
            {FRAME_BGR_32F_PLANAR, {floats, floats, floats}}};
}

void expectPlane(FramePlane const& got, Plane const& expected, std::int64_t stride) {
    EXPECT_EQ(got.width, expected.width);
    EXPECT_EQ(got.height, expected.height);
    EXPECT_EQ(got.bits, expected.bits);
    EXPECT_EQ(got.channels, expected.channels);
    EXPECT_EQ(got.rowBytes, expected.row_bytes);
    EXPECT_EQ(got.stride, stride);
    EXPECT_EQ(got.planeBytes, static_cast<std::uint64_t>(expected.height * stride));
}

void expectZero(FramePlane const& plane) {
    EXPECT_EQ(plane.width, 0);
    EXPECT_EQ(plane.height, 0);
    EXPECT_EQ(plane.bits, 0);
    EXPECT_EQ(plane.channels, 0);
    EXPECT_EQ(plane.stride, 0);
    EXPECT_EQ(plane.rowBytes, 0U);
    EXPECT_EQ(plane.planeBytes, 0U);
}

void expectZero(FrameLayout const& layout) {
    EXPECT_EQ(layout.format, FRAME_FORMAT_NONE);
    EXPECT_EQ(layout.planeCount, 0);
    EXPECT_EQ(layout.size, Size());
    for (int i = 0; i < 4; ++i) {
        expectZero(layout.plane[i]);
        EXPECT_EQ(layout.offset[i], 0U);
    }
}

TEST(FrameLayout, PlanesOfEveryFormat) {
    ASSERT_EQ(geometries().size(), allFormats().size());
    for (Geometry const& geometry : geometries()) {
        SCOPED_TRACE(toString(geometry.format));
        FrameLayout const layout(geometry.format, {5, 3}, 64);
        EXPECT_EQ(layout.format, geometry.format);
        EXPECT_EQ(layout.size, (Size{5, 3}));
        ASSERT_EQ(layout.planeCount, static_cast<int>(geometry.planes.size()));
        for (std::size_t i = 0; i < geometry.planes.size(); ++i) {
            expectPlane(layout.plane[i], geometry.planes[i], 64);
        }
        for (std::size_t i = geometry.planes.size(); i < 4; ++i) {
            expectZero(layout.plane[i]);
            EXPECT_EQ(layout.offset[i], 0U);
        }
    }
}

TEST(FrameLayout, PlanesDoNotOverlap) {
    for (FrameFormat const format : allFormats()) {
        FrameLayout const layout(format, {5, 3}, 1);
        for (int i = 1; i < layout.planeCount; ++i) {
            EXPECT_GE(layout.offset[i], layout.offset[i - 1] + layout.plane[i - 1].planeBytes);
        }
    }
}

TEST(FrameLayout, TotalIsTheEndOfTheLastPlane) {
    EXPECT_EQ(FrameLayout().totalBytes(), 0U);
    EXPECT_EQ(FrameLayout(FRAME_GRAY8, {5, 3}, 1).totalBytes(), 15U);
    EXPECT_EQ(FrameLayout(FRAME_I420, {5, 3}, 1).totalBytes(), 27U);
    EXPECT_EQ(FrameLayout(FRAME_I420, {5, 3}, 8).totalBytes(), 56U);
}

TEST(FrameLayout, ChromaOfOddSizesIsRoundedUp) {
    FrameLayout const layout(FRAME_I420, {3, 3}, 64);
    EXPECT_EQ(layout.plane[0].height, 3);
    EXPECT_EQ(layout.plane[1].height, 2);
    EXPECT_EQ(layout.plane[2].height, 2);
    EXPECT_EQ(layout.plane[0].width, 3);
    EXPECT_EQ(layout.plane[1].width, 2);
    EXPECT_EQ(layout.plane[2].width, 2);
    FrameLayout const even(FRAME_NV12, {4, 6}, 64);
    EXPECT_EQ(even.plane[1].width, 2);
    EXPECT_EQ(even.plane[1].height, 3);
}

TEST(FrameLayout, MacroPixelRowsAreWhole) {
    FrameLayout const one(FRAME_YUYV, {1, 1}, 1);
    EXPECT_EQ(one.plane[0].width, 2);
    EXPECT_EQ(one.plane[0].rowBytes, 4U);
    FrameLayout const even(FRAME_UYVY, {6, 1}, 1);
    EXPECT_EQ(even.plane[0].width, 6);
    EXPECT_EQ(even.plane[0].rowBytes, 12U);
    EXPECT_EQ(even.size.width, 6);
    EXPECT_EQ(one.size.width, 1);
}

TEST(FrameLayout, StridesAreMultiplesOfTheAlignment) {
    auto const stride = [](FrameFormat format, int width, unsigned long alignment) {
        return FrameLayout(format, {width, 2}, alignment).plane[0].stride;
    };
    EXPECT_EQ(stride(FRAME_GRAY8, 63, 64), 64);
    EXPECT_EQ(stride(FRAME_GRAY8, 64, 64), 64);
    EXPECT_EQ(stride(FRAME_GRAY8, 65, 64), 128);
    EXPECT_EQ(stride(FRAME_GRAY8, 65, 1), 65);
    EXPECT_EQ(stride(FRAME_BGR24, 5, 4), 16);
    EXPECT_EQ(stride(FRAME_BGR_32F, 5, 48), 96);
    EXPECT_EQ(stride(FRAME_GRAY8, 65, 0), 128);
    EXPECT_EQ(FrameLayout(FRAME_NV12, {130, 2}, 64).plane[1].stride, 192);
}

TEST(FrameLayout, DefaultAndClearedLayoutsAreZero) {
    expectZero(FrameLayout());
    FrameLayout layout(FRAME_I420, {5, 3}, 64);
    layout.clear();
    expectZero(layout);
}

TEST(FrameLayout, FormatsWithoutPlanesGiveNone) {
    for (FrameFormat const format : unknownFormats()) {
        FrameLayout const layout(format, {5, 3}, 64);
        EXPECT_EQ(layout.planeCount, 0) << format;
        expectZero(layout.plane[0]);
    }
}

TEST(FrameLayout, SidesThatAreNotPositiveGiveNoColumnsOrRows) {
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        for (int const side : {0, -1, -2, std::numeric_limits<std::int32_t>::min()}) {
            FrameLayout const narrow(format, {side, 3}, 64);
            FrameLayout const flat(format, {3, side}, 64);
            ASSERT_GT(narrow.planeCount, 0);
            for (int i = 0; i < narrow.planeCount; ++i) {
                EXPECT_EQ(narrow.plane[i].width, 0);
                EXPECT_EQ(narrow.plane[i].rowBytes, 0U);
                EXPECT_GT(narrow.plane[i].height, 0);
                EXPECT_EQ(flat.plane[i].height, 0);
                EXPECT_EQ(flat.plane[i].planeBytes, 0U);
                EXPECT_GT(flat.plane[i].width, 0);
            }
        }
    }
}

TEST(FrameLayout, ByteCountsDoNotWrap) {
    FrameLayout const large(FRAME_GRAY8, {highest, highest}, 1);
    EXPECT_EQ(large.plane[0].planeBytes, 4611686014132420609U);
    EXPECT_EQ(FrameLayout(FRAME_BGR_32F, {highest, 1}, 1).plane[0].rowBytes, 25769803764U);
    auto const refused = [](FrameFormat format, Size size, unsigned long alignment) {
        expectStatus(StatusCapacityExceeded, [=] { FrameLayout(format, size, alignment); });
    };
    refused(FRAME_C2_8U, {highest, highest}, 1);
    refused(FRAME_BGR24, {highest, highest}, 1);
    refused(FRAME_BGR_32F, {highest, highest}, 64);
    refused(FRAME_BGR_PLANAR, {highest, 1 << 30}, 1);
    refused(FRAME_GRAY8, {1, 1}, 1UL << 63);
    refused(FRAME_GRAY8, {1, highest}, 1UL << 62);
    refused(FRAME_GRAY8, {1, 2}, 1UL << 62);
    refused(FRAME_NV12, {1, 1}, 1UL << 62);
    EXPECT_EQ(FrameLayout(FRAME_GRAY8, {1, 1}, 1UL << 62).totalBytes(), 1UL << 62);
    refused(FRAME_YUYV, {highest, 1}, 1);  // no width for a last pair of pixels
    EXPECT_EQ(FrameLayout(FRAME_YUYV, {highest - 1, 1}, 1).plane[0].rowBytes, 4294967292U);
    EXPECT_EQ(FrameLayout(FRAME_I420, {highest, 1}, 1).plane[1].width, 1 << 30);
}

TEST(RowMask, IsOneForPlanesOfHalfTheRows) {
    EXPECT_EQ(rowMask(4, 4), 0U);
    EXPECT_EQ(rowMask(4, 2), 1U);
    EXPECT_EQ(rowMask(5, 5), 0U);
    EXPECT_EQ(rowMask(5, 3), 1U);
    EXPECT_EQ(rowMask(3, 3), 0U);
    EXPECT_EQ(rowMask(3, 2), 1U);
    EXPECT_EQ(rowMask(2, 2), 0U);
    EXPECT_EQ(rowMask(2, 1), 1U);
    EXPECT_EQ(rowMask(1080, 1080), 0U);
    EXPECT_EQ(rowMask(1081, 541), 1U);
    EXPECT_EQ(rowMask(highest, highest), 0U);
    EXPECT_EQ(rowMask(highest, 1 << 30), 1U);
}

TEST(RowMask, IsOneForEveryPlaneOfASingleRow) {
    EXPECT_EQ(rowMask(1, 1), 1U);
}

TEST(RowMask, IsZeroForPlanesWithoutRows) {
    EXPECT_EQ(rowMask(0, 0), 0U);
    EXPECT_EQ(rowMask(2, 0), 0U);
}

}  // namespace

}  // namespace ox::test::frame_layout
