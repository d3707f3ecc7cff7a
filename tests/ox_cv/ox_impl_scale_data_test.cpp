// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_data.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "ox_cv/scale_data_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/allocation_counter.h"

namespace ox::test {

namespace {

TEST(ScaleData, HalvesByABox) {
    Bytes8 const data(BoxKernel(), 4, 2);
    EXPECT_EQ(data.starts(), (Sources{{0, 0}, {2, 16}}));
    EXPECT_EQ(data.row(0, 3), (Taps{32, 32, 0}));
    EXPECT_EQ(data.row(16, 3), (Taps{32, 32, 0}));
    EXPECT_EQ(data.aperture(), 2);
    EXPECT_EQ(data.srcSize(), 4);
    EXPECT_EQ(data.dstSize(), 2);
    EXPECT_EQ(data.kernels().rowCount(), 17);
}

TEST(ScaleData, TakesPartsOfPixels) {
    Bytes8 const data(BoxKernel(), 5, 2);
    EXPECT_EQ(data.starts(), (Sources{{0, 0}, {2, 16}}));
    EXPECT_EQ(data.row(0, 4), (Taps{26, 25, 13, 0}));
    EXPECT_EQ(data.row(16, 4), (Taps{13, 25, 26, 0}));
    EXPECT_EQ(data.aperture(), 3);
    Words16 const fine(BoxKernel(), 5, 2);
    EXPECT_EQ(fine.row(0, 4), (Taps{6554, 6553, 3277, 0}));
    EXPECT_EQ(fine.row(16, 4), (Taps{3277, 6553, 6554, 0}));
}

TEST(ScaleData, EqualSizesHaveASingleTap) {
    Bytes8 const data(BoxKernel(), 3, 3);
    EXPECT_EQ(data.starts(), (Sources{{0, 0}, {1, 0}, {2, 16}}));
    EXPECT_EQ(data.row(0, 2), (Taps{64, 0}));
    EXPECT_EQ(data.row(16, 2), (Taps{64, 0}));
    EXPECT_EQ(data.aperture(), 1);
    Words16 const one(BoxKernel(), 1, 1);
    EXPECT_EQ(one.starts(), (Sources{{0, 16}}));
    EXPECT_EQ(one.row(16, 2), (Taps{16384, 0}));
}

// Position 3 is 3.5 x 1.66666663 - 0.833333313: 5, but 4.99999952 if the product were rounded too.
TEST(ScaleData, PositionsAreRoundedOnce) {
    Bytes8 const data(BoxKernel(), 10, 6);
    EXPECT_EQ(data.starts(), (Sources{{0, 0}, {1, 1}, {3, 2}, {5, 0}, {6, 1}, {8, 16}}));
    EXPECT_EQ(data.row(0, 3), (Taps{38, 26, 0}));
    EXPECT_EQ(data.row(1, 3), (Taps{13, 38, 13}));
    EXPECT_EQ(data.row(2, 3), (Taps{26, 38, 0}));
    EXPECT_EQ(data.row(16, 3), (Taps{26, 38, 0}));
}

// Windows of 4 from -1.5 on. Rows of inner positions are shared, those of border positions aren't.
TEST(ScaleData, BorderRowsAreReflected) {
    Bytes8 const data(TestKernel(4.0F), 10, 10);
    EXPECT_EQ(
        data.starts(),
        (Sources{
            {0, 16}, {0, 17}, {0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {5, 18}, {5, 19}}));
    EXPECT_EQ(data.row(0, 5), (Taps{8, 16, 16, 16, 8}));
    EXPECT_EQ(data.row(16, 5), (Taps{32, 24, 8, 0, 0}));
    EXPECT_EQ(data.row(17, 5), (Taps{24, 16, 16, 8, 0}));
    EXPECT_EQ(data.row(18, 5), (Taps{0, 8, 16, 16, 24}));
    EXPECT_EQ(data.row(19, 5), (Taps{0, 0, 8, 24, 32}));
    EXPECT_EQ(data.aperture(), 5);
}

// Both positions want all of the source, in the same weights.
TEST(ScaleData, BorderRowsAreNeverShared) {
    Bytes8 const data(TestKernel(8.0F), 4, 2);
    EXPECT_EQ(data.starts(), (Sources{{0, 16}, {0, 17}}));
    EXPECT_EQ(data.row(16, 9), (Taps{16, 16, 16, 16, 0, 0, 0, 0, 0}));
    EXPECT_EQ(data.row(17, 9), (Taps{16, 16, 16, 16, 0, 0, 0, 0, 0}));
    EXPECT_EQ(data.aperture(), 8);
}

// Windows of 4.75 at -1.75, -0.5, 5.75 and 7. The last has five taps; the sixth weight, 20, is that
// of the row before.
TEST(ScaleData, BorderRowsCarryWeightsOver) {
    Bytes8 const data(TestKernel(4.75F), 10, 8);
    EXPECT_EQ(data.starts(),
              (Sources{{0, 16}, {0, 17}, {0, 0}, {2, 1}, {3, 2}, {4, 3}, {4, 18}, {5, 19}}));
    EXPECT_EQ(data.row(16, 6), (Taps{28, 23, 13, 0, 0, 0}));
    EXPECT_EQ(data.row(17, 6), (Taps{20, 14, 14, 13, 3, 0}));
    EXPECT_EQ(data.row(18, 6), (Taps{0, 3, 13, 14, 14, 20}));
    EXPECT_EQ(data.row(19, 6), (Taps{0, 0, 13, 23, 28, 20}));
    EXPECT_EQ(data.row(0, 6), (Taps{3, 13, 14, 14, 13, 7}));
    EXPECT_EQ(data.row(1, 6), (Taps{13, 13, 15, 13, 10, 0}));
    EXPECT_EQ(data.aperture(), 6);
}

// Nothing goes over to the next `reuse`.
TEST(ScaleData, CarriedWeightsEndWithTheReuse) {
    Bytes8 data(TestKernel(4.75F), 10, 8);
    TestKernel kernel(4.75F);
    data.reuse(kernel, 10, 8);
    EXPECT_EQ(data.row(16, 6), (Taps{28, 23, 13, 0, 0, 0}));
}

// A little more than 1 and 1 are 2 in single precision. With room for 2, position 2 is an inner
// one.
TEST(ScaleData, TheRoomIsAFloat) {
    Bytes8 const data(TestKernel(1.00000012F), 4, 4);
    EXPECT_EQ(data.starts(), (Sources{{0, 16}, {0, 0}, {2, 1}, {2, 17}}));
    EXPECT_EQ(data.row(0, 2), (Taps{0, 64}));
    EXPECT_EQ(data.row(1, 2), (Taps{64, 0}));
    EXPECT_EQ(data.row(17, 2), (Taps{0, 64}));
    EXPECT_EQ(data.aperture(), 2);
}

// 17 to 16: positions k x 1.0625 - 0.46875 have phases of odd 32nds.
TEST(ScaleData, SixteenPhasesAreExact) {
    Words16 const data(TestKernel(2.0F), 17, 16);
    EXPECT_EQ(data.starts()[1], Source(0, 0));
    EXPECT_EQ(data.row(0, 3), (Taps{3328, 8192, 4864}));  // 19 / 32
    EXPECT_EQ(data.row(1, 3), (Taps{2816, 8192, 5376}));
    EXPECT_EQ(data.row(16, 3), (Taps{12032, 4352, 0}));
}

// 18 to 17: the phases of positions 1 and 2 are 0.588 and 0.647. Those of the border aren't
// touched: 0.529 and not 0.5.
TEST(ScaleData, SeventeenPhasesAreSixteenths) {
    Words16 const data(TestKernel(2.0F), 18, 17);
    EXPECT_EQ(data.starts()[1], Source(0, 0));
    EXPECT_EQ(data.row(0, 3), (Taps{3584, 8192, 4608}));  // 9 / 16
    EXPECT_EQ(data.row(1, 3), (Taps{3072, 8192, 5120}));
    EXPECT_EQ(data.row(16, 3), (Taps{12047, 4337, 0}));
    EXPECT_EQ(data.row(17, 3), (Taps{0, 4337, 12047}));
}

// The period counts, not the size: 170 positions of 17 phases, 320 of 16.
TEST(ScaleData, PhasesRepeatWithThePeriod) {
    EXPECT_EQ(Words16(TestKernel(2.0F), 180, 170).row(0, 3), (Taps{3584, 8192, 4608}));
    EXPECT_EQ(Words16(TestKernel(2.0F), 340, 320).row(0, 3), (Taps{3328, 8192, 4864}));
}

TEST(ScaleData, ThereAreSixteenInnerRowsAtMost) {
    Bytes8 const data(BoxKernel(), 1000, 999);
    std::set<int> rows;
    for (Source const& source : data.starts()) {
        rows.insert(source.second);
    }
    EXPECT_EQ(rows.size(), 17U);
    EXPECT_EQ(*rows.rbegin(), 16);
}

TEST(ScaleData, TellsTheKernelTheScale) {
    TestKernel kernel(1.0F);
    Bytes8 data;
    data.reuse(kernel, 10, 3);
    data.reuse(kernel, 7, 7);
    EXPECT_EQ(kernel.scales, (std::vector<float>{10.0F / 3.0F, 1.0F}));
}

TEST(ScaleData, TakesUpTo8192Samples) {
    Bytes8 const data(BoxKernel(), 8192, 256);
    ASSERT_EQ(data.starts().size(), 256U);
    EXPECT_EQ(data.starts()[0], Source(0, 0));
    EXPECT_EQ(data.starts()[254], Source(8128, 0));
    EXPECT_EQ(data.starts()[255], Source(8160, 16));
    EXPECT_EQ(data.row(0, 33), [] {
        Taps twos(33, 2);
        twos[32] = 0;
        return twos;
    }());
    EXPECT_EQ(Bytes8(BoxKernel(), 8192, 8192).starts()[8191], Source(8191, 16));
    EXPECT_EQ(Bytes8(BoxKernel(), 32, 1).aperture(), 32);
}

TEST(ScaleData, ClearKeepsTheAperture) {
    Bytes8 data(BoxKernel(), 9, 3);
    data.clear();
    data.expectEmpty();
    EXPECT_EQ(data.aperture(), 3);
    BoxKernel kernel;
    data.reuse(kernel, 4, 4);
    EXPECT_EQ(data.aperture(), 1);
}

TEST(ScaleData, ASecondReuseAllocatesNothing) {
    BoxKernel kernel;
    Words16 data(kernel, 10, 6);
    std::uint64_t const calls = allocationCalls();
    data.reuse(kernel, 10, 6);
    data.reuse(kernel, 8, 5);
    EXPECT_EQ(allocationCalls(), calls);
}

}  // namespace

}  // namespace ox::test
