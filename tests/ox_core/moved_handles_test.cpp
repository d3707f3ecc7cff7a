// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Handles that were moved from: as if newly made, and ready for the next `reuse`.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "ox_core/ox_frame.h"
#include "ox_core/ox_tensor.h"
#include "support/test_frame.h"

namespace ox::test {
namespace {

// Plain records are copied, not moved from.
static_assert(std::is_trivially_copyable_v<FrameLayout> &&
              std::is_trivially_copyable_v<FramePlane> &&
              std::is_trivially_copyable_v<TensorLayout> &&
              std::is_trivially_copyable_v<TensorSize> && std::is_trivially_copyable_v<Size> &&
              std::is_trivially_copyable_v<Rect>);
static_assert(std::is_nothrow_move_constructible_v<Frame> &&
              std::is_nothrow_move_assignable_v<Frame> &&
              std::is_nothrow_move_constructible_v<Tensor> &&
              std::is_nothrow_move_assignable_v<Tensor>);

TensorLayout sixBytes() {
    return {TENSOR_FLOAT_16, TENSOR_FORMAT_NONE, {1, {3}}, {1, {2}}, TENSOR_CHANNEL_ORDER_NONE};
}

DeviceContext device(std::uint64_t identity) {
    return DeviceContext(identity, std::make_shared<int>(1));
}

Frame makeGray(unsigned char value, DeviceContext const& context = {}) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {5, 4}, context, 0);
    fill(frame, value);
    return frame;
}

Tensor makeTensor(unsigned char value, DeviceContext const& context = {}) {
    Tensor tensor;
    tensor.reuse(sixBytes(), context);
    std::memset(tensor.data(), value, 6);
    return tensor;
}

void expectNew(Frame const& frame) {
    EXPECT_FALSE(frame.initialized());
    EXPECT_EQ(frame.format(), FRAME_FORMAT_NONE);
    EXPECT_EQ(frame.size(), Size());
    EXPECT_EQ(frame.layout().plane[0].rowBytes, 0U);
    EXPECT_EQ(frame.planeData(0), nullptr);
    EXPECT_EQ(frame.deviceContext(), DeviceContext());
}

void expectNew(Tensor const& tensor) {
    EXPECT_FALSE(tensor.initialized());
    EXPECT_EQ(tensor.data(), nullptr);
    EXPECT_EQ(tensor.layout().totalBytes(), 0U);
    EXPECT_EQ(tensor.layout().size().count, 0U);
    EXPECT_EQ(tensor.deviceContext(), DeviceContext());
}

// Handles may be looked at after they were moved from: that is what is tested here.
// NOLINTBEGIN(bugprone-use-after-move)

TEST(MovedFrom, FrameIsAsNewlyMade) {
    Frame source = makeGray(7, device(3));
    unsigned char const* const pixels = source.planeData(0);
    Frame const constructed = std::move(source);
    expectNew(source);
    EXPECT_EQ(constructed.planeData(0), pixels);
    EXPECT_EQ(constructed.deviceContext(), device(3));
    EXPECT_TRUE(isFilledWith(constructed, 7));

    Frame other = constructed;
    Frame assigned = makeGray(9);
    assigned = std::move(other);
    expectNew(other);
    EXPECT_EQ(assigned.planeData(0), pixels);
}

TEST(MovedFrom, FrameGetsStorageFromReuse) {
    Frame source = makeGray(7);
    Frame const taken = std::move(source);
    source.reuse(FRAME_GRAY8, {5, 4}, DeviceContext(), 0);
    ASSERT_NE(source.planeData(0), nullptr);
    EXPECT_NE(source.planeData(0), taken.planeData(0));
    fill(source, 8);
    EXPECT_TRUE(isFilledWith(taken, 7));
}

TEST(MovedFrom, QueueOfFramesIsFilledInALoop) {
    std::vector<Frame> queue;
    Frame frame;
    for (unsigned char turn = 1; turn <= 3; ++turn) {
        frame.reuse(FRAME_NV12, {6, 4}, DeviceContext(), 0);
        fill(frame, turn);
        queue.push_back(std::move(frame));
    }
    for (unsigned char turn = 1; turn <= 3; ++turn) {
        EXPECT_TRUE(isFilledWith(queue[turn - 1U], turn));
    }
}

TEST(MovedFrom, WrappedMemoryIsGivenUp) {
    unsigned char memory[20]{};
    unsigned char* const planes[] = {memory};
    Frame source = Frame::wrap(FrameLayout(FRAME_GRAY8, {5, 4}, 1), planes);
    Frame const taken = std::move(source);
    expectNew(source);
    EXPECT_EQ(taken.planeData(0), memory);
    source.reuse(FRAME_GRAY8, {5, 4}, DeviceContext(), 0);
    fill(source, 1);
    EXPECT_TRUE(isFilledWith(taken, 0));
}

TEST(MovedFrom, TargetGivesItsHandleUp) {
    Frame target = makeGray(1);
    Frame const second_handle = target;
    Frame source = makeGray(2);
    target = std::move(source);
    fill(target, 3);
    EXPECT_TRUE(isFilledWith(second_handle, 1));

    auto const state = std::make_shared<int>(5);
    DeviceContext context(7, state);
    context = DeviceContext(8, nullptr);
    EXPECT_EQ(state.use_count(), 1);
}

TEST(MovedFrom, TensorIsAsNewlyMade) {
    Tensor source = makeTensor(7, device(3));
    unsigned char const* const data = source.data();
    Tensor const constructed = std::move(source);
    expectNew(source);
    EXPECT_EQ(constructed.data(), data);
    EXPECT_EQ(constructed.layout().totalBytes(), 6U);

    Tensor other = constructed;
    Tensor assigned = makeTensor(9);
    assigned = std::move(other);
    expectNew(other);
    EXPECT_EQ(assigned.data(), data);
    other.reuse(sixBytes(), DeviceContext());
    ASSERT_NE(other.data(), nullptr);
    std::memset(other.data(), 1, 6);
    EXPECT_EQ(assigned.data()[5], 7);
}

TEST(MovedFrom, DeviceContextIsTheCpus) {
    auto const state = std::make_shared<int>(5);
    DeviceContext source(7, state);
    DeviceContext const constructed = std::move(source);
    EXPECT_EQ(source, DeviceContext());
    EXPECT_EQ(constructed, DeviceContext(7, nullptr));
    EXPECT_EQ(state.use_count(), 2);

    DeviceContext other = constructed;
    DeviceContext assigned;
    assigned = std::move(other);
    EXPECT_EQ(other, DeviceContext());
    EXPECT_EQ(assigned, constructed);
    EXPECT_EQ(state.use_count(), 3);
}

// Through a reference: the compiler warns of moves that are plainly to oneself.
template <class Handle>
void moveToSelf(Handle& handle) {
    Handle& same = handle;
    handle = std::move(same);
}

TEST(MovedFrom, MoveToSelfKeeps) {
    Frame frame = makeGray(7);
    moveToSelf(frame);
    EXPECT_TRUE(isFilledWith(frame, 7));

    Tensor tensor = makeTensor(7);
    moveToSelf(tensor);
    ASSERT_TRUE(tensor.initialized());
    EXPECT_EQ(tensor.data()[5], 7);

    DeviceContext context = device(7);
    moveToSelf(context);
    EXPECT_EQ(context, device(7));
}

// NOLINTEND(bugprone-use-after-move)

}  // namespace
}  // namespace ox::test
