// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>

#include "ox_core/ox_frame.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

TEST(FrameWrap, ShowsTheCallersMemory) {
    unsigned char luma[4 * 10]{};
    unsigned char chroma[2 * 8]{};
    unsigned char* const planes[] = {luma, chroma};
    FrameLayout layout(FRAME_NV12, {4, 4}, 1);
    layout.plane[0].stride = 10;
    layout.plane[1].stride = 8;
    Frame const frame = Frame::wrap(layout, planes);
    EXPECT_TRUE(frame.initialized());
    EXPECT_EQ(frame.planeData(0), luma);
    EXPECT_EQ(frame.planeData(1), chroma);
    EXPECT_EQ(frame.layout().plane[0].stride, 10);
    EXPECT_EQ(frame.layout().plane[0].planeBytes, 40U);
    EXPECT_EQ(frame.layout().plane[1].planeBytes, 16U);
    EXPECT_EQ(frame.layout().plane[1].rowBytes, 4U);
    EXPECT_EQ(frame.deviceContext(), DeviceContext());
    fill(frame, 9);
    EXPECT_EQ(luma[33], 9);
    EXPECT_EQ(luma[34], 0);
    EXPECT_EQ(chroma[11], 9);
    EXPECT_EQ(chroma[12], 0);
}

TEST(FrameWrap, RefusesBadLayoutsAndAddresses) {
    unsigned char memory[64];
    unsigned char* const planes[] = {memory, memory, memory, memory};
    unsigned char* const missing[] = {memory, nullptr, memory, memory};
    FrameLayout const layout(FRAME_I420, {4, 4}, 1);
    expectStatus(StatusInvalidParameter, [&] { Frame::wrap(FrameLayout(), planes); });
    expectStatus(StatusInvalidParameter, [&] {
        Frame::wrap(FrameLayout(static_cast<FrameFormat>(22), {4, 4}, 1), planes);
    });
    for (int plane = 0; plane < 3; ++plane) {
        FrameLayout narrow = layout;
        narrow.plane[plane].stride = static_cast<std::int64_t>(layout.plane[plane].rowBytes) - 1;
        expectStatus(StatusInvalidParameter, [&] { Frame::wrap(narrow, planes); });
        narrow.plane[plane].stride = -64;
        expectStatus(StatusInvalidParameter, [&] { Frame::wrap(narrow, planes); });
    }
    expectStatus(StatusNullPointer, [&] { Frame::wrap(layout, missing); });
    expectStatus(StatusNullPointer, [&] { Frame::wrap(layout, nullptr); });
    FrameLayout distant = layout;
    distant.plane[2].stride = std::int64_t{1} << 62;
    expectStatus(StatusCapacityExceeded, [&] { Frame::wrap(distant, planes); });
    EXPECT_NO_THROW(Frame::wrap(layout, planes));
}

// Row routines trust the geometry.
TEST(FrameWrap, RefusesGeometryThatIsNotTheFormats) {
    unsigned char memory[64];
    unsigned char* const planes[] = {memory, memory, memory, memory};
    auto const refused = [&](auto change) {
        FrameLayout layout(FRAME_NV12, {4, 4}, 8);
        change(layout);
        expectStatus(StatusInvalidParameter, [&] { Frame::wrap(layout, planes); });
    };
    refused([](FrameLayout& layout) { layout.planeCount = 1; });
    refused([](FrameLayout& layout) { layout.planeCount = 5; });
    refused([](FrameLayout& layout) { layout.planeCount = -1; });
    refused([](FrameLayout& layout) { layout.format = FRAME_NV16; });
    refused([](FrameLayout& layout) { layout.size.width = 2; });
    refused([](FrameLayout& layout) { layout.plane[0].width = 5; });
    refused([](FrameLayout& layout) { layout.plane[1].height = 3; });
    refused([](FrameLayout& layout) { layout.plane[1].bits = 16; });
    refused([](FrameLayout& layout) { layout.plane[1].channels = 1; });
    refused([](FrameLayout& layout) { layout.plane[0].rowBytes = 3; });
}

// Row loops would run the wrong way, or on and on.
TEST(FrameWrap, RefusesSidesBelowZero) {
    unsigned char memory[64];
    unsigned char* const planes[] = {memory, memory, memory, memory};
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        for (Size const size :
             {Size{-1, 4}, Size{4, -1}, Size{-3, -2}, Size{std::numeric_limits<int>::min(), 1}}) {
            expectException(StatusInvalidParameter,
                            "Failure in Frame::wrap(...) : size is below zero.",
                            [&] { Frame::wrap(FrameLayout(format, size, 1), planes); });
        }
        for (Size const size : {Size{0, 4}, Size{4, 0}, Size{0, 0}}) {
            EXPECT_EQ(Frame::wrap(FrameLayout(format, size, 64), planes).size(), size);
        }
    }
    expectException(StatusInvalidParameter, "Failure in Frame::wrap(...) : layout has no planes.",
                    [&] {
                        Frame::wrap(FrameLayout(FRAME_FORMAT_NONE, {-1, 4}, 1), planes);
                    });
}

TEST(FrameWrap, OffsetsAndPlaneSizesOfTheLayoutDoNotCount) {
    unsigned char memory[64]{};
    unsigned char* const planes[] = {memory, memory + 16};
    FrameLayout layout(FRAME_NV12, {4, 4}, 1);
    layout.offset[0] = 3;
    layout.offset[1] = 1000;
    layout.plane[1].planeBytes = 0;
    Frame frame = Frame::wrap(layout, planes);
    EXPECT_EQ(frame.planeData(0), memory);
    EXPECT_EQ(frame.planeData(1), memory + 16);
    EXPECT_EQ(frame.layout().offset[0], 0U);
    EXPECT_EQ(frame.layout().offset[1], 0U);
    EXPECT_EQ(frame.layout().plane[1].planeBytes, 8U);
    EXPECT_EQ(getRegion(frame, {2, 2, 2, 2}).planeData(1), memory + 22);
}

TEST(FrameWrap, ReuseKeepsMemoryThatAgrees) {
    TestFrame wrapped(FRAME_NV12, {5, 3}, Placement{7});
    unsigned char const* const memory = wrapped.frame().planeData(0);
    wrapped.frame().reuse(FRAME_NV12, {5, 3}, DeviceContext(), 0);
    EXPECT_EQ(wrapped.frame().planeData(0), memory);
    EXPECT_EQ(wrapped.layout().plane[0].stride, 12);
}

TEST(FrameWrap, ReuseOtherwiseGivesStorageOfItsOwn) {
    for (Size const size : {Size{4, 3}, Size{5, 2}, Size{50, 30}}) {
        TestFrame wrapped(FRAME_NV12, {5, 3}, Placement{7});
        Frame frame = wrapped.frame();
        frame.reuse(FRAME_NV12, size, DeviceContext(), 0);
        EXPECT_NE(frame.planeData(0), wrapped.frame().planeData(0));
        fill(frame, 9);
        EXPECT_TRUE(isFilledWith(wrapped.frame(), 0));
        wrapped.expectGapsUntouched();
    }
    struct {
        FrameFormat format;
        DeviceContext context;
        unsigned long alignment;
    } const cases[] = {{FRAME_NV21, DeviceContext(), 0},
                       {FRAME_NV12, DeviceContext(7, std::make_shared<int>(1)), 0},
                       {FRAME_NV12, DeviceContext(), 16}};
    for (auto const& [format, context, alignment] : cases) {
        TestFrame wrapped(FRAME_NV12, {5, 3});
        Frame frame = wrapped.frame();
        frame.reuse(format, {5, 3}, context, alignment);
        EXPECT_NE(frame.planeData(0), wrapped.frame().planeData(0));
        EXPECT_EQ(frame.deviceContext(), context);
    }
}

}  // namespace

}  // namespace ox::test
