// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "ox_cv/ox_row_copier.h"
#include "ox_cv/refusal_texts.h"
#include "ox_cv/row_window_frames.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test {

namespace {

static_assert(!std::is_polymorphic_v<RowWindow>);
static_assert(!std::is_copy_constructible_v<RowWindow> && !std::is_copy_assignable_v<RowWindow>);

TEST(RowWindow, StartsEmpty) {
    RowWindow window;
    EXPECT_FALSE(window.initialized());
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(window.windowSize(), 0);
    EXPECT_EQ(window.layout().planeCount, 0);
    EXPECT_FALSE(window.next());
    expectException(StatusAssertionFailed, rowOutsideWindow, [&] { window.rowData(0); });
}

TEST(RowWindow, RefusesSourcesThatAreNotInitialized) {
    RowWindow window;
    RowCopier empty;
    expectException(StatusInputNotInitialized, "Frame is not initialized.",
                    [&] { window.reuse(Frame(), 1); });
    expectException(StatusInputNotInitialized, "Row producer is not initialized.",
                    [&] { window.reuse(empty, 1); });
    EXPECT_FALSE(window.initialized());
}

TEST(RowWindow, SizeLiesBetweenOneAndTheHeight) {
    TestFrame const source(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    for (int const size :
         {0, -1, 6, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        RowWindow window;
        expectException(StatusOutOfRange, windowSizeOutOfRange,
                        [&] { window.reuse(source.frame(), size); });
        expectException(StatusOutOfRange, windowSizeOutOfRange, [&] { window.reuse(probe, size); });
        EXPECT_FALSE(window.initialized());
    }
    for (int const size : {1, 5}) {
        RowWindow window;
        window.reuse(source.frame(), size);
        EXPECT_EQ(window.windowSize(), size);
        window.reuse(probe, size);
        EXPECT_EQ(window.windowSize(), size);
    }
}

TEST(RowWindow, ABadSizeLeavesItAsItWas) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 2);
    window.next();
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { window.reuse(source.frame(), 6); });
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(window.windowSize(), 2);
    EXPECT_EQ(byteAt(window, 1), 2);
}

TEST(RowWindow, ABadIndexLeavesItAsItWas) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.next();
    for (int const index :
         {-1, 2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        expectException(StatusAssertionFailed, rowOutsideWindow, [&] { window.rowData(index); });
    }
    EXPECT_EQ(probe.produceCalls(), 0);
    EXPECT_EQ(probe.nextCalls(), 0);
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(byteAt(window, 0), 1);
}

TEST(RowWindow, ClearGivesEverythingUp) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    std::int64_t const before = liveAllocations();
    RowWindow window;
    window.reuse(probe, 2);
    EXPECT_GT(liveAllocations(), before);
    window.clear();
    EXPECT_EQ(liveAllocations(), before);
    EXPECT_FALSE(window.initialized());
    EXPECT_EQ(window.windowSize(), 0);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(window.layout().planeCount, 0);
    EXPECT_FALSE(window.next());
    window.reuse(source.frame(), 2);
    EXPECT_EQ(byteAt(window, 1), 1);
}

// What a buffer says that doesn't get its bytes.
std::string refusalOf(unsigned long bytes) {
    try {
        FailingAllocation const failing(1);
        Buffer().resize(bytes, false);
    } catch (Exception const& exception) {
        return exception.what();
    }
    return {};
}

TEST(RowWindow, IsEmptyAfterAFailedAllocation) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(source.frame(), 1);
    // the row arrays, twice 3 x 32 bytes in blocks of 64, then 3 rows of 64 bytes per plane
    for (std::uint64_t k = 1; k <= 4; ++k) {
        expectException(StatusCapacityExceeded,
                        "Data buffer allocation failure: " + refusalOf(k == 1 ? 256 : 192), [&] {
                            FailingAllocation const failing(k);
                            window.reuse(probe, 3);
                        });
        EXPECT_FALSE(window.initialized());
        EXPECT_EQ(window.layout().planeCount, 0);
        EXPECT_EQ(probe.produceCalls(), 0);
    }
    expectException(StatusCapacityExceeded, "Buffer allocation failure: " + refusalOf(256), [&] {
        FailingAllocation const failing(1);
        window.reuse(source.frame(), 3);
    });
    EXPECT_FALSE(window.initialized());
    window.reuse(probe, 3);
    EXPECT_EQ(byteAt(window, 2), 2);
}

}  // namespace

}  // namespace ox::test
