// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Items that threads take at once and hand over in order.
#include "../../tools/oxcv/turns.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace oxcv::test {

namespace {

TEST(Turns, ItemsAreHandedOverInOrder) {
    constexpr std::size_t items = 200;
    Turns turns(items);
    std::vector<std::size_t> order;
    auto const work = [&] {
        std::size_t item = 0;
        while (turns.take(item) && turns.await(item)) {
            order.push_back(item);
            turns.pass(true);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_EQ(order.size(), items);
    for (std::size_t i = 0; i < items; ++i) {
        EXPECT_EQ(order[i], i);
    }
    turns.rethrow();
}

// An item that was taken meanwhile, and failed, has no say any more.
TEST(Turns, ATurnWithoutMoreToDoIsTheLast) {
    Turns turns(3);
    std::size_t item = 0;
    ASSERT_TRUE(turns.take(item));
    ASSERT_TRUE(turns.take(item));
    ASSERT_TRUE(turns.await(0));
    turns.pass(false);
    EXPECT_FALSE(turns.await(1));
    EXPECT_FALSE(turns.take(item));
    turns.stop(std::make_exception_ptr(std::runtime_error("too late")));
    EXPECT_NO_THROW(turns.rethrow());
}

TEST(Turns, TheFirstFailureIsTold) {
    Turns turns(2);
    turns.stop(std::make_exception_ptr(std::runtime_error("first")));
    turns.stop(std::make_exception_ptr(std::logic_error("second")));
    EXPECT_FALSE(turns.await(0));
    EXPECT_THROW(turns.rethrow(), std::runtime_error);
}

}  // namespace

}  // namespace oxcv::test
