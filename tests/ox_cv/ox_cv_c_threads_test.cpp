// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Each thread has a text of its own for its last failure.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "ox_cv/c_handles.h"

namespace ox::test::c_threads {

namespace {

TEST(CLastError, IsTheThreadsOwn) {
    ox_backend* backend = nullptr;
    expectRefused(ox_backend_create(3, &backend), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'kind' is invalid 3.");
    char const* const text = ox_last_error();
    auto const fail_often = [](std::string& before, int kind, bool& kept) {
        before = ox_last_error();
        std::string const expected = "Parameter 'kind' is invalid " + std::to_string(kind) + ".";
        kept = true;
        for (int i = 0; i < 200; ++i) {
            ox_backend* none = nullptr;
            ox_backend_create(kind, &none);
            kept = kept && ox_last_error() == expected;
        }
    };
    std::string before[2]{"?", "?"};
    bool kept[2]{};
    std::thread first(fail_often, std::ref(before[0]), 4, std::ref(kept[0]));
    std::thread second(fail_often, std::ref(before[1]), 5, std::ref(kept[1]));
    first.join();
    second.join();
    EXPECT_EQ(before[0], "");
    EXPECT_EQ(before[1], "");
    EXPECT_TRUE(kept[0] && kept[1]);
    EXPECT_STREQ(text, "Parameter 'kind' is invalid 3.");
}

}  // namespace

}  // namespace ox::test::c_threads
