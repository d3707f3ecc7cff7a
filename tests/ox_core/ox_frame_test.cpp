// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(!std::is_polymorphic_v<Frame>);
static_assert(sizeof(Frame) ==
              sizeof(FrameLayout) + sizeof(std::shared_ptr<Buffer>) + 4 * sizeof(unsigned char*));

Frame makeFrame(FrameFormat format, Size size) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(), 0);
    return frame;
}

DeviceContext otherDevice() {
    return DeviceContext(7, std::make_shared<int>(1));
}

void expectNotInitialized(Frame const& frame) {
    EXPECT_FALSE(frame.initialized());
    EXPECT_EQ(frame.format(), FRAME_FORMAT_NONE);
    EXPECT_EQ(frame.size(), Size());
    EXPECT_EQ(frame.layout().planeCount, 0);
    EXPECT_EQ(frame.planeData(0), nullptr);
    EXPECT_EQ(frame.deviceContext(), DeviceContext());
}

TEST(Frame, StartsNotInitialized) {
    Frame const frame;
    expectNotInitialized(frame);
    EXPECT_EQ(static_cast<void const*>(&frame), static_cast<void const*>(&frame.layout()));
}

TEST(Frame, ReuseGivesWritableStorageForEveryFormat) {
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        Frame const frame = makeFrame(format, {5, 3});
        EXPECT_TRUE(frame.initialized());
        EXPECT_EQ(frame.format(), format);
        EXPECT_EQ(frame.size(), (Size{5, 3}));
        EXPECT_EQ(frame.width(), 5);
        EXPECT_EQ(frame.height(), 3);
        fill(frame, 0x5A);
        EXPECT_TRUE(isFilledWith(frame, 0x5A));
    }
}

TEST(Frame, PlanesAreAlignedWithRoomBehindTheLast) {
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        Frame const frame = makeFrame(format, {5, 3});
        FrameLayout const& layout = frame.layout();
        for (int i = 0; i < layout.planeCount; ++i) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frame.planeData(i)) % 64, 0U);
            EXPECT_EQ(layout.plane[i].stride, 64);
        }
        int const last = layout.planeCount - 1;
        std::memset(frame.planeData(last), 1, layout.plane[last].planeBytes + 64);
    }
}

TEST(Frame, PlaneDataPastTheLastPlaneIsNull) {
    Frame const frame = makeFrame(FRAME_NV12, {4, 4});
    EXPECT_NE(frame.planeData(0), nullptr);
    EXPECT_NE(frame.planeData(1), nullptr);
    for (int const index : {2, 3, 4, 1000, -1}) {
        EXPECT_EQ(frame.planeData(index), nullptr) << index;
    }
    TestFrame const wrapped(FRAME_NV12, {4, 4});
    EXPECT_EQ(wrapped.frame().planeData(2), nullptr);
}

TEST(Frame, PlanesLieAtTheirOffsets) {
    Frame const frame = makeFrame(FRAME_I420, {6, 4});
    for (int i = 1; i < 3; ++i) {
        auto const distance = static_cast<std::uint64_t>(frame.planeData(i) - frame.planeData(0));
        EXPECT_EQ(distance, frame.layout().offset[i] - frame.layout().offset[0]);
    }
}

TEST(Frame, ReuseHonoursTheAlignment) {
    Frame frame;
    frame.reuse(FRAME_BGR24, {5, 3}, DeviceContext(), 4);
    EXPECT_EQ(frame.layout().plane[0].stride, 16);
    frame.reuse(FRAME_BGR24, {5, 3}, DeviceContext(), 32);
    EXPECT_EQ(frame.layout().plane[0].stride, 32);
}

TEST(Frame, ReuseKeepsAFrameThatAgrees) {
    Frame frame = makeFrame(FRAME_I420, {6, 4});
    Frame const copy = frame;
    fill(frame, 9);
    std::uint64_t const calls = allocationCalls();
    for (unsigned long const alignment : {0UL, 1UL, 32UL, 64UL}) {
        frame.reuse(FRAME_I420, {6, 4}, DeviceContext(), alignment);
    }
    EXPECT_EQ(allocationCalls(), calls);
    EXPECT_EQ(frame.planeData(0), copy.planeData(0));
    EXPECT_TRUE(isFilledWith(frame, 9));
}

TEST(Frame, ReuseLeavesOtherHandlesTheirPixels) {
    Frame frame = makeFrame(FRAME_GRAY8, {6, 4});
    Frame const copy = frame;
    fill(copy, 9);
    frame.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(), 0);
    EXPECT_NE(frame.planeData(0), copy.planeData(0));
    fill(frame, 1);
    EXPECT_EQ(copy.size(), (Size{6, 4}));
    EXPECT_TRUE(isFilledWith(copy, 9));
}

TEST(Frame, ReuseTakesStorageThatIsLargeEnoughAndNotShared) {
    Frame frame = makeFrame(FRAME_I420, {60, 40});
    std::uint64_t const calls = allocationCalls();
    frame.reuse(FRAME_BGR24, {20, 20}, DeviceContext(), 0);
    frame.reuse(FRAME_I420, {60, 40}, DeviceContext(), 0);
    EXPECT_EQ(allocationCalls(), calls);
    fill(frame, 9);
    EXPECT_TRUE(isFilledWith(frame, 9));
}

TEST(Frame, ReuseGivesUpStorageThatDoesNotFit) {
    std::int64_t const before = liveAllocations();
    {
        Frame frame = makeFrame(FRAME_GRAY8, {4, 4});
        std::int64_t const one = liveAllocations();
        frame.reuse(FRAME_GRAY8, {400, 400}, DeviceContext(), 0);
        EXPECT_EQ(liveAllocations(), one);
        frame.clear();
        EXPECT_EQ(liveAllocations(), before);
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(Frame, KeepsTheStateOfItsDevice) {
    auto const state = std::make_shared<int>(1);
    Frame frame;
    frame.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(7, state), 0);
    EXPECT_EQ(state.use_count(), 2);
    {
        DeviceContext const context = frame.deviceContext();
        EXPECT_EQ(state.use_count(), 3);
    }
    frame.clear();
    EXPECT_EQ(state.use_count(), 1);
}

TEST(Frame, ReuseChangesTheContext) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {4, 4}, otherDevice(), 0);
    EXPECT_EQ(frame.deviceContext(), otherDevice());
    EXPECT_NE(frame.deviceContext(), DeviceContext());
    frame.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(), 0);
    EXPECT_EQ(frame.deviceContext(), DeviceContext());
}

TEST(Frame, ReuseRefusesWhatIsNoFrame) {
    struct {
        FrameFormat format;
        Size size;
        Status status;
    } const cases[] = {
        {FRAME_GRAY8, {0, 4}, StatusInvalidParameter},
        {FRAME_GRAY8, {4, 0}, StatusInvalidParameter},
        {FRAME_I420, {-4, 4}, StatusInvalidParameter},
        {FRAME_FORMAT_NONE, {4, 4}, StatusUnsupportedFormat},
        {FRAME_BGR24,
         {std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max()},
         StatusCapacityExceeded},
        {FRAME_GRAY8,
         {std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max()},
         StatusCapacityExceeded},
    };
    for (auto const& wrong : cases) {
        SCOPED_TRACE(describe(wrong.format, wrong.size));
        Frame frame = makeFrame(FRAME_GRAY8, {4, 4});
        expectStatus(wrong.status,
                     [&] { frame.reuse(wrong.format, wrong.size, DeviceContext(), 0); });
        expectNotInitialized(frame);
        frame.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(), 0);
        EXPECT_TRUE(frame.initialized());
    }
}

TEST(Frame, ReuseRefusesFormatsWithoutPlanes) {
    for (FrameFormat const format : unknownFormats()) {
        Frame frame = makeFrame(FRAME_GRAY8, {4, 4});
        expectStatus(StatusUnsupportedFormat, [&] {
            frame.reuse(format, {4, 4}, DeviceContext(), 0);
        });
        expectNotInitialized(frame);
    }
}

TEST(Frame, ReuseReportsExhaustedMemory) {
    for (std::uint64_t k = 1;; ++k) {
        Frame frame = makeFrame(FRAME_GRAY8, {4, 4});
        Frame const copy = frame;
        FailingAllocation const failing(k);
        try {
            frame.reuse(FRAME_GRAY8, {40, 40}, DeviceContext(), 0);
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusCapacityExceeded);
            expectNotInitialized(frame);
            continue;
        }
        EXPECT_GT(k, 1U);
        break;
    }
}

TEST(Frame, CopiesShowTheSamePixels) {
    std::int64_t const before = liveAllocations();
    {
        Frame frame = makeFrame(FRAME_I420, {6, 4});
        Frame const copy = frame;
        Frame assigned;
        assigned = frame;
        EXPECT_EQ(copy.planeData(2), frame.planeData(2));
        EXPECT_EQ(assigned.layout().format, FRAME_I420);
        fill(assigned, 9);
        EXPECT_TRUE(isFilledWith(frame, 9));
        assigned.clear();
        expectNotInitialized(assigned);
        EXPECT_TRUE(isFilledWith(frame, 9));
        frame.clear();
        EXPECT_TRUE(isFilledWith(copy, 9));
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(Frame, SetZeroClearsThePixels) {
    for (FrameFormat const format : allFormats()) {
        Random random;
        TestFrame target(format, {5, 3}, random, Placement{4});
        target.frame().setZero();
        EXPECT_TRUE(isFilledWith(target.frame(), 0));
        target.expectGapsUntouched();
    }
    Frame empty;
    empty.setZero();
    expectNotInitialized(empty);
}

TEST(FrameCopy, MakesTheTargetTheSame) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame const source(format, {5, 3}, random, Placement{4});
        Frame fresh;
        source.frame().copyTo(fresh);
        EXPECT_TRUE(samePixels(fresh, source.frame()));
        Frame other = makeFrame(FRAME_BGR24, {9, 9});
        source.frame().copyTo(other);
        EXPECT_TRUE(samePixels(other, source.frame()));
        EXPECT_NE(other.planeData(0), source.frame().planeData(0));
    }
}

TEST(FrameCopy, IsInPlaceWhereFormatAndSizeAgree) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame const source(format, {5, 3}, random);
        TestFrame target(format, {5, 3}, Placement{12});
        unsigned char const* const memory = target.frame().planeData(0);
        source.frame().copyTo(target.frame());
        EXPECT_EQ(target.frame().planeData(0), memory);
        EXPECT_TRUE(samePixels(target.frame(), source.frame()));
        target.expectGapsUntouched();
    }
}

TEST(FrameCopy, OtherHandlesOfATargetThatDiffersKeepTheirPixels) {
    Frame const source = makeFrame(FRAME_GRAY8, {4, 4});
    Frame target = makeFrame(FRAME_GRAY8, {3, 3});
    Frame const copy = target;
    fill(source, 5);
    fill(copy, 9);
    source.copyTo(target);
    EXPECT_TRUE(isFilledWith(target, 5));
    EXPECT_TRUE(isFilledWith(copy, 9));
}

TEST(FrameCopy, OfNothingClearsTheTarget) {
    Frame target = makeFrame(FRAME_GRAY8, {4, 4});
    Frame const copy = target;
    Frame().copyTo(target);
    expectNotInitialized(target);
    EXPECT_TRUE(copy.initialized());
}

TEST(FrameCopy, OntoItselfAndBetweenOverlappingRows) {
    Frame frame = makeFrame(FRAME_GRAY8, {6, 1});
    fill(frame, 0, {{1, 2, 3, 4, 5, 6}});
    frame.copyTo(frame);
    EXPECT_EQ(bytesOf(frame, 0, 0), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    Frame right = getRegion(frame, {1, 0, 5, 1});
    getRegion(frame, {0, 0, 5, 1}).copyTo(right);
    EXPECT_EQ(bytesOf(frame, 0, 0), (std::vector<int>{1, 1, 2, 3, 4, 5}));
}

// Rows are copied from the top down.
TEST(FrameCopy, UpwardsAndDownwardsInOneFrame) {
    Frame frame = makeFrame(FRAME_GRAY8, {3, 3});
    fill(frame, 0, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    Frame upper = getRegion(frame, {0, 0, 2, 2});
    getRegion(frame, {1, 1, 2, 2}).copyTo(upper);
    EXPECT_EQ(bytesOf(frame, 0, 0), (std::vector<int>{5, 6, 3}));
    EXPECT_EQ(bytesOf(frame, 0, 1), (std::vector<int>{8, 9, 6}));
    EXPECT_EQ(bytesOf(frame, 0, 2), (std::vector<int>{7, 8, 9}));
    Frame lower = getRegion(frame, {0, 1, 3, 2});
    getRegion(frame, {0, 0, 3, 2}).copyTo(lower);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(bytesOf(frame, 0, y), (std::vector<int>{5, 6, 3}));
    }
}

}  // namespace

}  // namespace ox::test
