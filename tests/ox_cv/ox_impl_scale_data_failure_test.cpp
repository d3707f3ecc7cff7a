// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the tables of an axis refuse, and what is left of them then.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "ox_cv/scale_data_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

constexpr char badSource[] =
    "Failure in ScaleData::reuse(...), parameter 'src_size' is out of range.";
constexpr char badDestination[] =
    "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.";
constexpr char badFactor[] = "Failure in ScaleData::reuse(...), scale factor is out of range.";
constexpr char tooWide[] =
    "Failure in _computeWeights(...): The kernel aperture is greater than "
    "MAX_FIXED_POINT_APERTURE";
constexpr char zeroSum[] = "Failure in computeWeights(...): Kernel has zero weight sum.";

// Windows begin 0.00001 before a sixteenth. From 256 on that is lost, so that phase 0 stands beside
// 0.99999, and 16 rows aren't enough.
TEST(ScaleDataFailure, RefusesASeventeenthInnerRow) {
    TestKernel kernel(2 * (1.03125F + 0.00001F));
    Bytes8 data;
    data.reuse(kernel, 170, 160);
    expectException(StatusAssertionFailed,
                    "Failure in ScaleKernelBuilder::addInnerKernel(...), buffer has already filled",
                    [&] { data.reuse(kernel, 340, 320); });
    data.expectEmpty();
    EXPECT_EQ(data.aperture(), 4);  // of the positions before
}

TEST(ScaleDataFailure, RefusesSizesOutOfReach) {
    struct {
        int src_size;
        int dst_size;
        char const* text;
    } const cases[] = {
        {8193, 300, badSource},
        {8193, 0, badSource},
        {0, 0, badSource},
        {-1, 1, badSource},
        {4, 0, badDestination},
        {4, -1, badDestination},
        {4, 5, badDestination},
        {1, 33, badDestination},
        {1, 8192, badDestination},
        {8192, 255, badFactor},
        {33, 1, badFactor},
        {65, 2, badFactor},
        {std::numeric_limits<int>::max(), 1, badSource},
        {8192, std::numeric_limits<int>::max(), badDestination},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(each.text);
        TestKernel kernel(2.0F);
        Bytes8 data(BoxKernel(), 4, 2);
        expectException(StatusOutOfRange, each.text,
                        [&] { data.reuse(kernel, each.src_size, each.dst_size); });
        data.expectEmpty();
        EXPECT_EQ(data.aperture(), 2);  // not looked at yet
        EXPECT_TRUE(kernel.scales.empty());
    }
}

TEST(ScaleDataFailure, RefusesKernelsThatAreTooWide) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (float const width :
         {70.0F, 64.5F, std::nextafter(64.0F, 65.0F), 1e30F, infinity, notANumber, -notANumber}) {
        TestKernel kernel(width);
        Bytes8 data(BoxKernel(), 4, 2);
        expectException(StatusCapacityExceeded, tooWide, [&] { data.reuse(kernel, 9, 3); });
        data.expectEmpty();
        EXPECT_EQ(kernel.scales, std::vector<float>{3.0F});
        expectException(StatusOutOfRange, badDestination, [&] { data.reuse(kernel, 9, 10); });
    }
    EXPECT_EQ(Words16(TestKernel(70.0F), 9, 3).aperture(), 71);  // from -33.5 on
    EXPECT_EQ(Words16(TestKernel(70.0F), 8, 4).aperture(), 70);
    for (float const width : {16384.5F, infinity, notANumber}) {
        expectException(StatusCapacityExceeded, tooWide, [&] { Words16(TestKernel(width), 9, 3); });
    }
}

// 64 taps from a pixel's edge, 65 from within a pixel.
TEST(ScaleDataFailure, TheLastTapMayBeOneTooMany) {
    EXPECT_EQ(Bytes8(TestKernel(64.0F), 8, 4).aperture(), 64);
    expectException(StatusCapacityExceeded, tooWide, [] { Bytes8(TestKernel(64.0F), 9, 3); });
}

TEST(ScaleDataFailure, RefusesKernelsWithoutWidth) {
    for (float const width : {-1.0F, -1.5F, -1e30F, -std::numeric_limits<float>::infinity()}) {
        expectException(StatusOutOfRange, "Parameter 'aperture' is out of range.",
                        [&] { Bytes8(TestKernel(width), 4, 2); });
    }
    for (float const width : {-0.9F, -0.5F, 0.0F}) {
        expectException(StatusNullPointer, zeroSum, [&] { Bytes8(TestKernel(width), 4, 2); });
    }
}

TEST(ScaleDataFailure, AFailureLeavesItEmpty) {
    bool fails = true;
    TestKernel kernel(2.0F, [&](float) { return fails ? 0.0F : 1.0F; });
    Bytes8 data(BoxKernel(), 9, 3);
    expectException(StatusNullPointer, zeroSum, [&] { data.reuse(kernel, 4, 2); });
    data.expectEmpty();
    EXPECT_EQ(data.aperture(), 0);
    fails = false;
    data.reuse(kernel, 4, 2);
    EXPECT_EQ(data.starts(), (Sources{{0, 0}, {2, 16}}));
    EXPECT_EQ(data.row(0, 3), (Taps{32, 32, 0}));
    EXPECT_EQ(data.aperture(), 2);
}

TEST(ScaleDataFailure, FailedAllocationsLeaveItEmpty) {
    BoxKernel kernel;
    int failures = 0;
    for (bool done = false; !done;) {
        Bytes8 data;
        try {
            FailingAllocation const failing(static_cast<std::uint64_t>(failures) + 1);
            data.reuse(kernel, 10, 6);
            done = true;
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusCapacityExceeded);
            data.expectEmpty();
            ++failures;
        }
        data.reuse(kernel, 10, 6);
        EXPECT_EQ(data.starts().size(), 6U);
    }
    EXPECT_GT(failures, 2);
}

// Kernels of the caller's own may throw what they like.
TEST(ScaleDataFailure, PassesForeignFailuresOn) {
    TestKernel kernel(2.0F, [](float) -> float { throw 7; });
    Bytes8 data(BoxKernel(), 9, 3);
    EXPECT_THROW(data.reuse(kernel, 4, 2), int);
    data.expectEmpty();
}

}  // namespace

}  // namespace ox::test
