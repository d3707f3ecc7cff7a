// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_device_context.h"

#include <gtest/gtest.h>

#include <memory>

namespace ox::test {

namespace {

TEST(DeviceContext, DefaultIsTheCpu) {
    EXPECT_EQ(DeviceContext(), DeviceContext::cpuContext());
    EXPECT_EQ(DeviceContext(), DeviceContext(0, std::make_shared<int>(1)));
    EXPECT_NE(DeviceContext(), DeviceContext(1, nullptr));
}

TEST(DeviceContext, ComparesByIdentityAlone) {
    DeviceContext const a(7, std::make_shared<int>(1));
    DeviceContext const b(7, std::make_shared<int>(2));
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, DeviceContext(7, nullptr));
    EXPECT_NE(a, DeviceContext(8, nullptr));
    EXPECT_NE(DeviceContext(std::uint64_t{1} << 32, nullptr), DeviceContext());
}

TEST(DeviceContext, CopiesShareTheState) {
    auto const state = std::make_shared<int>(5);
    {
        DeviceContext const context(7, state);
        DeviceContext const copy = context;
        EXPECT_EQ(state.use_count(), 3);
        EXPECT_EQ(copy, context);
    }
    EXPECT_EQ(state.use_count(), 1);
}

}  // namespace

}  // namespace ox::test
