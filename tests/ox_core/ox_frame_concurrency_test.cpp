// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "ox_core/ox_frame.h"
#include "ox_core/ox_tensor.h"
#include "support/allocation_counter.h"
#include "support/random.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

constexpr int threadCount = 4;
constexpr int rounds = emulated() ? 50 : 500;

template <class Action>
void runOnThreads(Action action) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back(action, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(Concurrency, FrameHandlesMayBeDroppedAnywhere) {
    std::int64_t const before = liveAllocations();
    {
        Frame frame;
        frame.reuse(FRAME_GRAY8, {8, 8}, DeviceContext(7, std::make_shared<int>(1)), 0);
        fill(frame, 5);
        std::vector<Frame> handles(threadCount, frame);
        frame.clear();
        runOnThreads([&handles](int i) {
            Frame& own = handles[static_cast<std::size_t>(i)];
            for (int round = 0; round < rounds; ++round) {
                Frame const copy = own;
                Frame const region = getRegion(own, {i, i, 2, 2});
                EXPECT_TRUE(isFilledWith(region, 5));
            }
            own.clear();
        });
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST(Concurrency, RowsOfOneFrameBelongToWhoeverWritesThem) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {100, threadCount}, DeviceContext(), 0);
    runOnThreads([&frame](int i) {
        Frame own = frame;
        fill(getRegion(own, {0, i, 100, 1}), static_cast<unsigned char>(i));
    });
    for (int i = 0; i < threadCount; ++i) {
        EXPECT_TRUE(isFilledWith(getRegion(frame, {0, i, 100, 1}), static_cast<unsigned char>(i)));
    }
}

TEST(Concurrency, ReuseOfAHandleLeavesThoseOfOtherThreads) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {8, 8}, DeviceContext(), 0);
    fill(frame, 5);
    std::vector<Frame> handles(threadCount, frame);
    runOnThreads([&handles](int i) {
        Frame& own = handles[static_cast<std::size_t>(i)];
        own.reuse(FRAME_GRAY8, {16, 8}, DeviceContext(), 0);
        fill(own, static_cast<unsigned char>(i));
    });
    EXPECT_TRUE(isFilledWith(frame, 5));
}

TEST(Concurrency, TensorHandlesMayBeDroppedAnywhere) {
    std::int64_t const before = liveAllocations();
    {
        Tensor tensor;
        tensor.reuse(TensorLayout(TENSOR_FLOAT_32, TENSOR_FORMAT_NONE, {1, {4}}, {1, {4}},
                                  TENSOR_CHANNEL_ORDER_NONE),
                     DeviceContext());
        std::vector<Tensor> handles(threadCount, tensor);
        tensor = Tensor();
        runOnThreads([&handles](int i) {
            Tensor& own = handles[static_cast<std::size_t>(i)];
            for (int round = 0; round < rounds; ++round) {
                Tensor const copy = own;
                EXPECT_TRUE(copy.initialized());
            }
            own = Tensor();
        });
    }
    EXPECT_EQ(liveAllocations(), before);
}

}  // namespace

}  // namespace ox::test
