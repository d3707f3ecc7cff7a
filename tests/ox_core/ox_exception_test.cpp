// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_exception.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <type_traits>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_status.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

static_assert(std::is_base_of_v<std::exception, Exception>);
static_assert(sizeof(Exception) == 8 + 4 + 5124);
static_assert(std::is_same_v<std::underlying_type_t<Status>, std::uint32_t>);
static_assert(StatusAssertionFailed == 2 && StatusNullPointer == 4 && StatusOutOfRange == 5 &&
              StatusInvalidParameter == 6 && StatusNotInitialized == 7 && StatusNotSupported == 8 &&
              StatusInputNotInitialized == 14 && StatusCapacityExceeded == 19 &&
              StatusUnsupportedFormat == 29);

TEST(Exception, HoldsStatusAndFormattedText) {
    Exception const exception(nullptr, StatusOutOfRange, "reuse", "src/ox_cv/ox_row_window", 12,
                              "%s has %d rows", "frame", 3);
    EXPECT_EQ(exception.status, StatusOutOfRange);
    EXPECT_STREQ(exception.what(), "frame has 3 rows");
}

TEST(Exception, CanReplaceACause) {
    Exception const cause(nullptr, StatusCapacityExceeded, "resize", "file", 1, "no memory");
    Exception const exception(&cause, cause.status, "reuse", "file", 2, "Buffer: %s", cause.what());
    EXPECT_EQ(exception.status, StatusCapacityExceeded);
    EXPECT_STREQ(exception.what(), "Buffer: no memory");
}

TEST(Exception, IsCaughtAsAStandardException) {
    try {
        throw Exception(nullptr, StatusNotSupported, "f", "file", 1, "100%%");
    } catch (std::exception const& exception) {
        EXPECT_STREQ(exception.what(), "100%");
        return;
    }
    FAIL();
}

TEST(Exception, CutsALongText) {
    std::string const text(6000, 'x');
    Exception const exception(nullptr, StatusNotSupported, "f", "file", 1, "%s", text.c_str());
    EXPECT_EQ(std::string(exception.what()), text.substr(0, 5123));
}

TEST(Exception, NeedsNoMemoryForItsText) {
    std::uint64_t const before = allocationCalls();
    Exception const exception(nullptr, StatusNotSupported, "f", "file", 1, "%s %d", "text", 7);
    Exception const copy = exception;
    EXPECT_EQ(allocationCalls(), before);
    EXPECT_STREQ(copy.what(), "text 7");
    EXPECT_EQ(copy.status, StatusNotSupported);
}

TEST(Place, AssertsWithTheExpressionAsText) {
    constexpr impl::Place here{"file"};
    int const rows = 3;
    expectException(StatusAssertionFailed, "Assertion failed: rows == 4",
                    [&] { OX_ASSERT(rows == 4); });
    expectException(StatusAssertionFailed, "Assertion failed: initialized()",
                    [&] { here.require(rows == 4, "initialized()"); });
    EXPECT_NO_THROW(OX_ASSERT(rows == 3));
}

TEST(Place, FillsTheTextOfAFailure) {
    constexpr impl::Place here{"file"};
    expectException(StatusOutOfRange, "plain", [&] { here.fail(StatusOutOfRange, "plain"); });
    Exception const cause(nullptr, StatusNullPointer, "f", "file", 1, "first");
    expectException(StatusNullPointer, "4 of 7, -1: first", [&] {
        here.fail({cause, "f"}, "%lu of %u, %d: %s", 4UL, 7U, -1, cause.what());
    });
}

void expectCaller(impl::Failure const& failure, char const* function, int line) {
    EXPECT_STREQ(failure.function, function);
    EXPECT_EQ(failure.line, line);
}

TEST(Failure, NamesTheFunctionAndLineThatReport) {
    expectCaller(StatusOutOfRange, __func__, __LINE__);
    expectCaller({StatusOutOfRange, "reuse"}, "reuse", __LINE__);
    expectCaller(Exception(nullptr, StatusOutOfRange, "f", "file", 1, "first"), __func__, __LINE__);
}

}  // namespace

}  // namespace ox::test
