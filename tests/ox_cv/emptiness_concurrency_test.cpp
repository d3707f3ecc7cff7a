// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "ox_cv/ox_cv_helpers.h"

namespace ox::test {

namespace {

// The first use of a constant may come from several threads at once.
template <class Constant>
std::vector<Constant const*> addressesFromThreads(Constant const& (*get)()) {
    constexpr std::size_t count = 4;
    std::vector<Constant const*> addresses(count);
    std::vector<std::thread> threads;
    std::atomic<int> waiting{count};
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            addresses[i] = &get();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return addresses;
}

TEST(EmptyConstants, AreBuiltOnce) {
    for (Rect const* roi : addressesFromThreads(&emptyRoi)) {
        EXPECT_EQ(roi, &emptyRoi());
        EXPECT_TRUE(roi->empty());
    }
    for (Frame const* frame : addressesFromThreads(&emptyFrame)) {
        EXPECT_EQ(frame, &emptyFrame());
        EXPECT_FALSE(frame->initialized());
    }
}

}  // namespace

}  // namespace ox::test
