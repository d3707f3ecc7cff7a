// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "ox_core/ox_frame.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

struct PlaneOfRegion {
    int column_byte;  // from the plane's start to the region's first byte in its row
    int row;
    int width;
    int height;
    unsigned row_bytes;
};

struct Case {
    FrameFormat format;
    Rect region;  // of a frame of 8 x 6
    std::vector<PlaneOfRegion> planes;
};

std::vector<Case> cases() {
    return {
        {FRAME_GRAY8, {2, 1, 4, 3}, {{2, 1, 4, 3, 4}}},
        {FRAME_BGR24, {2, 1, 4, 3}, {{6, 1, 4, 3, 12}}},
        {FRAME_C2_8U, {3, 5, 5, 1}, {{6, 5, 5, 1, 10}}},
        {FRAME_C4_8U, {3, 5, 5, 1}, {{12, 5, 5, 1, 20}}},
        {FRAME_C1_16U, {3, 0, 1, 1}, {{6, 0, 1, 1, 2}}},
        {FRAME_C1_32U, {3, 0, 1, 1}, {{12, 0, 1, 1, 4}}},
        {FRAME_BGR_32F, {7, 5, 1, 1}, {{84, 5, 1, 1, 12}}},
        {FRAME_BGR_32F_PLANAR,
         {7, 5, 1, 1},
         {{28, 5, 1, 1, 4}, {28, 5, 1, 1, 4}, {28, 5, 1, 1, 4}}},
        {FRAME_RGB_PLANAR, {1, 2, 3, 4}, {{1, 2, 3, 4, 3}, {1, 2, 3, 4, 3}, {1, 2, 3, 4, 3}}},
        {FRAME_I420, {2, 2, 4, 4}, {{2, 2, 4, 4, 4}, {1, 1, 2, 2, 2}, {1, 1, 2, 2, 2}}},
        {FRAME_YV12, {3, 1, 3, 3}, {{3, 1, 3, 3, 3}, {1, 0, 2, 2, 2}, {1, 0, 2, 2, 2}}},
        {FRAME_NV12, {2, 2, 4, 4}, {{2, 2, 4, 4, 4}, {2, 1, 2, 2, 4}}},
        {FRAME_NV21, {3, 3, 1, 1}, {{3, 3, 1, 1, 1}, {2, 1, 1, 1, 2}}},
        {FRAME_NV12, {7, 5, 1, 1}, {{7, 5, 1, 1, 1}, {6, 2, 1, 1, 2}}},
        {FRAME_YV16, {3, 3, 3, 3}, {{3, 3, 3, 3, 3}, {1, 3, 2, 3, 2}, {1, 3, 2, 3, 2}}},
        {FRAME_NV16, {5, 1, 2, 2}, {{5, 1, 2, 2, 2}, {4, 1, 1, 2, 2}}},
        {FRAME_YUYV, {2, 1, 4, 2}, {{4, 1, 4, 2, 8}}},
        {FRAME_YUYV, {3, 1, 3, 2}, {{4, 1, 4, 2, 8}}},
        {FRAME_UYVY, {7, 0, 1, 6}, {{12, 0, 2, 6, 4}}},
        {FRAME_UYVY, {1, 0, 2, 1}, {{0, 0, 2, 1, 4}}},
    };
}

void checkCase(Case const& expected, Frame frame) {
    Frame const region = getRegion(frame, expected.region);
    EXPECT_TRUE(region.initialized());
    EXPECT_EQ(region.format(), expected.format);
    EXPECT_EQ(region.size(), (Size{expected.region.width, expected.region.height}));
    ASSERT_EQ(region.layout().planeCount, static_cast<int>(expected.planes.size()));
    for (int i = 0; i < region.layout().planeCount; ++i) {
        PlaneOfRegion const& wanted = expected.planes[static_cast<std::size_t>(i)];
        FramePlane const& got = region.layout().plane[i];
        FramePlane const& whole = frame.layout().plane[i];
        EXPECT_EQ(region.planeData(i), rowOf(frame, i, wanted.row) + wanted.column_byte);
        EXPECT_EQ(got.width, wanted.width);
        EXPECT_EQ(got.height, wanted.height);
        EXPECT_EQ(got.rowBytes, wanted.row_bytes);
        EXPECT_EQ(got.stride, whole.stride);
        EXPECT_EQ(got.bits, whole.bits);
        EXPECT_EQ(got.channels, whole.channels);
        EXPECT_EQ(got.planeBytes, static_cast<std::uint64_t>(wanted.height * whole.stride));
    }
}

TEST(FrameRegion, GeometryOfEveryKindOfFormat) {
    for (Case const& expected : cases()) {
        SCOPED_TRACE(describe(expected.format, {expected.region.width, expected.region.height}));
        Frame owned;
        owned.reuse(expected.format, {8, 6}, DeviceContext(), 0);
        checkCase(expected, owned);
        checkCase(expected, TestFrame(expected.format, {8, 6}, Placement{5}).frame());
    }
}

TEST(FrameRegion, OfTheWholeFrameIsTheFrame) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame source(format, {7, 5}, random, Placement{4});
        Frame const region = getRegion(source.frame(), {0, 0, 7, 5});
        EXPECT_EQ(region.planeData(0), source.frame().planeData(0));
        EXPECT_TRUE(samePixels(region, source.frame()));
    }
}

TEST(FrameRegion, NeverReachesOutsideTheFrame) {
    for (FrameFormat const format : allFormats()) {
        for (Guard const guard : {Guard::AtStart, Guard::AtEnd}) {
            TestFrame source(format, {5, 5}, Placement{0, guard});
            for (int x = 0; x < 5; ++x) {
                for (int y = 0; y < 5; ++y) {
                    Frame const region = getRegion(source.frame(), {x, y, 5 - x, 5 - y});
                    fill(region, 1);
                    fill(getRegion(source.frame(), {x, y, 1, 1}), 2);
                }
            }
            source.expectGapsUntouched();
        }
    }
}

TEST(FrameRegion, WritesShowInTheSource) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {4, 3}, DeviceContext(), 0);
    fill(frame, 1);
    Frame const copy = frame;
    fill(getRegion(frame, {1, 1, 2, 1}), 9);
    for (Frame const& source : {frame, copy}) {
        EXPECT_EQ(bytesOf(source, 0, 0), (std::vector<int>{1, 1, 1, 1}));
        EXPECT_EQ(bytesOf(source, 0, 1), (std::vector<int>{1, 9, 9, 1}));
        EXPECT_EQ(bytesOf(source, 0, 2), (std::vector<int>{1, 1, 1, 1}));
    }
}

TEST(FrameRegion, OfRowsThatLieFarApart) {
    unsigned char byte = 0;
    unsigned char* const planes[] = {&byte, &byte};
    FrameLayout layout(FRAME_NV12, {4, 4}, 1);
    layout.plane[0].stride = std::int64_t{1} << 40;
    layout.plane[1].stride = std::int64_t{1} << 41;
    Frame frame = Frame::wrap(layout, planes);
    Frame const region = getRegion(frame, {2, 2, 2, 2});
    auto const distance = [&](int plane) {
        return reinterpret_cast<std::uintptr_t>(region.planeData(plane)) -
               reinterpret_cast<std::uintptr_t>(&byte);
    };
    EXPECT_EQ(distance(0), (std::uintptr_t{1} << 41) + 2);
    EXPECT_EQ(distance(1), (std::uintptr_t{1} << 41) + 2);
    EXPECT_EQ(region.layout().plane[0].planeBytes, std::uint64_t{1} << 41);
}

TEST(FrameRegion, SetZeroStaysInside) {
    TestFrame target(FRAME_NV12, {6, 6});
    fill(target.frame(), 7);
    getRegion(target.frame(), {2, 2, 2, 2}).setZero();
    EXPECT_EQ(bytesOf(target.frame(), 0, 2), (std::vector<int>{7, 7, 0, 0, 7, 7}));
    EXPECT_EQ(bytesOf(target.frame(), 0, 4), (std::vector<int>{7, 7, 7, 7, 7, 7}));
    EXPECT_EQ(bytesOf(target.frame(), 1, 0), (std::vector<int>{7, 7, 7, 7, 7, 7}));
    EXPECT_EQ(bytesOf(target.frame(), 1, 1), (std::vector<int>{7, 7, 0, 0, 7, 7}));
}

TEST(FrameRegion, SharesTheStorage) {
    std::int64_t const before = liveAllocations();
    {
        Frame region;
        {
            Frame frame;
            frame.reuse(FRAME_GRAY8, {4, 3}, DeviceContext(7, nullptr), 0);
            fill(frame, 5);
            region = getRegion(frame, {1, 1, 2, 2});
        }
        EXPECT_TRUE(isFilledWith(region, 5));
        EXPECT_EQ(region.deviceContext(), DeviceContext(7, nullptr));
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(FrameRegion, OfARegion) {
    Frame frame;
    frame.reuse(FRAME_NV12, {8, 8}, DeviceContext(), 0);
    Frame outer = getRegion(frame, {2, 2, 6, 6});
    Frame const inner = getRegion(outer, {2, 4, 2, 2});
    EXPECT_EQ(inner.planeData(0), rowOf(frame, 0, 6) + 4);
    EXPECT_EQ(inner.planeData(1), rowOf(frame, 1, 3) + 4);
}

TEST(FrameRegion, ReuseToAnotherSizeLeavesTheSource) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(), 0);
    fill(frame, 5);
    Frame region = getRegion(frame, {1, 1, 2, 2});
    unsigned char const* const place = region.planeData(0);
    region.reuse(FRAME_GRAY8, {2, 2}, DeviceContext(), 0);
    EXPECT_EQ(region.planeData(0), place);
    region.reuse(FRAME_GRAY8, {3, 2}, DeviceContext(), 0);
    fill(region, 1);
    EXPECT_TRUE(isFilledWith(frame, 5));
}

TEST(FrameRegion, WithAZeroSideHasNothingToTouch) {
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        TestFrame source(format, {5, 5});
        for (Rect const rect : {Rect{1, 1, 0, 3}, Rect{1, 1, 3, 0}, Rect{5, 5, 0, 0}, Rect{}}) {
            Frame const region = getRegion(source.frame(), rect);
            EXPECT_EQ(region.size(), (Size{rect.width, rect.height}));
            for (int i = 0; i < region.layout().planeCount; ++i) {
                FramePlane const& plane = region.layout().plane[i];
                EXPECT_TRUE(plane.rowBytes == 0 || plane.height == 0);
            }
            fill(region, 1);
        }
        EXPECT_TRUE(isFilledWith(source.frame(), 0));
    }
}

TEST(FrameRegion, MustLieInsideTheFrame) {
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    Frame frame;
    frame.reuse(FRAME_GRAY8, {8, 6}, DeviceContext(), 0);
    for (Rect const rect :
         {Rect{-1, 0, 2, 2}, Rect{0, -1, 2, 2}, Rect{0, 0, 9, 6}, Rect{0, 0, 8, 7},
          Rect{7, 0, 2, 1}, Rect{0, 5, 1, 2}, Rect{0, 0, -1, 2}, Rect{0, 0, 2, -1},
          Rect{9, 0, 0, 0}, Rect{0, 7, 0, 0}, Rect{highest, 0, highest, 1},
          Rect{0, highest, 1, highest}, Rect{1, 1, highest, highest}}) {
        expectStatus(StatusOutOfRange, [&] { getRegion(frame, rect); });
    }
    Frame none;
    expectStatus(StatusOutOfRange, [&] { getRegion(none, {0, 0, 1, 1}); });
}

}  // namespace

}  // namespace ox::test
