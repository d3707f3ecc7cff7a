// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_state.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace ox::test::scale_tables {

namespace {

using Nearest = std::vector<std::uint16_t>;
using Bilinear = std::vector<std::int32_t>;
using Weights = std::vector<std::pair<int, int>>;

Nearest nearest(int src, int dst) {
    Nearest table;
    impl::buildNearestTable(src, dst, table);
    return table;
}

Bilinear bilinear(int src, int dst) {
    Bilinear table;
    impl::buildBilinearTable(src, dst, table);
    return table;
}

struct AreaTable {
    std::vector<impl::AreaWeight> weights;
    std::uint16_t full_weight = 0;
};

AreaTable area(int src, int dst, int precision) {
    AreaTable table;
    table.full_weight = impl::buildAreaTable(src, dst, precision - 1, table.weights);
    return table;
}

Weights weightsOf(AreaTable const& table) {
    Weights weights;
    for (impl::AreaWeight const entry : table.weights) {
        weights.emplace_back(entry.index, entry.weight);
    }
    return weights;
}

std::pair<int, int> entryOf(AreaTable const& table, std::size_t i) {
    return {table.weights[i].index, table.weights[i].weight};
}

TEST(ScaleTables, CoordinatesWrapIn32Bits) {
    EXPECT_EQ(impl::toCoordinate(1), 65536);
    EXPECT_EQ(impl::toCoordinate(32767), 2147418112);
    EXPECT_EQ(impl::toCoordinate(32768), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(impl::toCoordinate(65536), 0);
    EXPECT_EQ(impl::coordinateStep(5, 2), 163840);
    EXPECT_EQ(impl::coordinateStep(2, 3), 43690);
    EXPECT_EQ(impl::coordinateStep(32768, 3), -715827882);  // -2^31 / 3, towards zero
}

TEST(NearestTable, SamplesTheCentreOfEachDestinationPixel) {
    EXPECT_EQ(nearest(5, 2), (Nearest{1, 3}));
    EXPECT_EQ(nearest(4, 4), (Nearest{0, 1, 2, 3}));
    EXPECT_EQ(nearest(3, 2), (Nearest{0, 2}));              // from 0.75, 1.5 apart
    EXPECT_EQ(nearest(2, 6), (Nearest{0, 0, 0, 1, 1, 1}));  // 21845 apart: 54612, 76457
    EXPECT_EQ(nearest(1, 3), (Nearest{0, 0, 0}));
}

// 26214, not 26214.4, apart: the third lies at 65535.
TEST(NearestTable, TruncatedStepKeepsSamplesUnderTheirColumn) {
    EXPECT_EQ(nearest(2, 5), (Nearest{0, 0, 0, 1, 1}));
    EXPECT_EQ(nearest(2, 3), (Nearest{0, 0, 1}));  // 21845, 65535, 109225
    EXPECT_EQ(nearest(4, 3), (Nearest{0, 1, 3}));  // half of 87381 is 43690: 131071
}

TEST(NearestTable, OneDestinationPixelTakesTheMiddle) {
    EXPECT_EQ(nearest(1, 1), (Nearest{0}));
    EXPECT_EQ(nearest(4, 1), (Nearest{2}));
    EXPECT_EQ(nearest(5, 1), (Nearest{2}));
    EXPECT_EQ(nearest(32767, 1), (Nearest{16383}));
}

TEST(NearestTable, LargeSidesWrap) {
    EXPECT_EQ(nearest(32768, 1), (Nearest{49152}));         // -2^30 >> 16, in 16 bits
    EXPECT_EQ(nearest(32768, 2), (Nearest{57344, 40960}));  // from -2^29, -2^30 apart
    EXPECT_EQ(nearest(40000, 1), (Nearest{52768}));         // (40000 - 65536) / 2
    EXPECT_EQ(nearest(65536, 3), (Nearest{0, 0, 0}));
    EXPECT_EQ(nearest(65538, 2), (Nearest{0, 1}));  // as 2 columns
}

TEST(NearestTable, IsRebuiltInPlace) {
    Nearest table{9, 9, 9, 9, 9, 9, 9};
    impl::buildNearestTable(5, 2, table);
    EXPECT_EQ(table, (Nearest{1, 3}));
    impl::buildNearestTable(4, 4, table);
    EXPECT_EQ(table, (Nearest{0, 1, 2, 3}));
}

TEST(BilinearTable, ClampsTheStartOfAnUpScale) {
    EXPECT_EQ(bilinear(2, 4), (Bilinear{0, 16384, 49152, 81920}));  // the first one is -16384
    // step 28086, from (28086 - 65536) / 2 = -18725: the running position isn't clamped
    EXPECT_EQ(bilinear(3, 7), (Bilinear{0, 9361, 37447, 65533, 93619, 121705, 149791}));
}

TEST(BilinearTable, DownScalesFromBetweenTheFirstTwo) {
    EXPECT_EQ(bilinear(4, 2), (Bilinear{32768, 163840}));
    EXPECT_EQ(bilinear(3, 2), (Bilinear{16384, 114688}));
    EXPECT_EQ(bilinear(4, 1), (Bilinear{98304}));
    EXPECT_EQ(bilinear(32767, 1), (Bilinear{16383 << 16}));
}

TEST(BilinearTable, EqualSidesAreWholeCoordinates) {
    EXPECT_EQ(bilinear(3, 3), (Bilinear{0, 65536, 131072}));
}

// step 21845: -43691 / 2 is -21845, not -21846.
TEST(BilinearTable, StartIsHalvedTowardsZero) {
    EXPECT_EQ(bilinear(1, 3), (Bilinear{0, 0, 21845}));
}

TEST(BilinearTable, LargeSidesWrap) {
    EXPECT_EQ(bilinear(32768, 1), (Bilinear{1073709056}));  // (-2^31 - 65536) is 2^31 - 65536
    EXPECT_EQ(bilinear(40000, 2), (Bilinear{0, 0}));        // negative steps
    EXPECT_EQ(bilinear(65536, 2), (Bilinear{0, 0}));
}

TEST(AreaTable, EvenCells) {
    AreaTable const table = area(4, 2, 16);
    EXPECT_EQ(table.full_weight, 16384);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 16384}, {2, 16384}, {4, 16384}}));
}

// 65536 / 3 is 21845: the second cell's weights, 10922 and 21845, sum to 32767 only.
TEST(AreaTable, TruncatedRatio) {
    AreaTable const table = area(3, 2, 16);
    EXPECT_EQ(table.full_weight, 21845);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 21845}, {1, 10922}, {3, 21845}}));
}

TEST(AreaTable, UpScalingIsLimitedToOne) {
    AreaTable const table = area(2, 3, 16);  // ratio 49152
    EXPECT_EQ(table.full_weight, 32768);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 32768}, {0, 16384}, {1, 32768}, {2, 32768}}));
}

TEST(AreaTable, EqualSidesHaveFullWeights) {
    AreaTable const table = area(2, 2, 16);
    EXPECT_EQ(table.full_weight, 32768);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 32768}, {1, 32768}, {2, 32768}}));
}

TEST(AreaTable, EightBitPrecision) {
    AreaTable const table = area(3, 2, 8);  // 256 / 3; 2 x 85 - 128
    EXPECT_EQ(table.full_weight, 85);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 85}, {1, 42}, {3, 85}}));
    EXPECT_EQ(weightsOf(area(2, 3, 8)), (Weights{{0, 128}, {0, 64}, {1, 128}, {2, 128}}));
}

TEST(AreaTable, WeightsAreNeverNegative) {
    AreaTable const table = area(100, 99, 8);  // 12672 / 100 is 126, where 126.72 is due
    EXPECT_EQ(table.full_weight, 126);
    EXPECT_EQ(entryOf(table, 62), std::pair(62, 2));  // 126 x 63 - 128 x 62
    EXPECT_EQ(entryOf(table, 63), std::pair(63, 0));  // 126 x 64 - 128 x 63
    EXPECT_EQ(entryOf(table, 98), std::pair(98, 0));  // -70
    EXPECT_EQ(entryOf(table, 99), std::pair(100, 126));
}

TEST(AreaTable, RatioMayVanish) {
    AreaTable const table = area(1000, 1, 8);
    EXPECT_EQ(table.full_weight, 0);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 0}, {1000, 0}}));
}

// i x src is 59999 x 40000, which 32 bits don't hold.
TEST(AreaTable, IndexIsComputedIn64Bits) {
    EXPECT_EQ(entryOf(area(40000, 60000, 16), 59999), std::pair(39999, 32768));
}

TEST(AreaTable, IndicesKeep16Bits) {
    AreaTable const table = area(70000, 2, 16);  // ratio 65536 / 70000
    EXPECT_EQ(weightsOf(table), (Weights{{0, 0}, {35000, 0}, {70000 - 65536, 0}}));
}

// dst << 15 wraps to 1310720000, so the ratio is 7661; 98304 << 15 wraps to a negative number.
TEST(AreaTable, LargeSidesWrap) {
    AreaTable const table = area(171073, 171072, 16);
    EXPECT_EQ(table.full_weight, 7661);
    EXPECT_EQ(entryOf(table, 0), std::pair(0, 7661));
    EXPECT_EQ(entryOf(table, 1), std::pair(1, 0));
    EXPECT_EQ(entryOf(table, 98304), std::pair(98304 - 65536, 32768));
    AreaTable const negative = area(65537, 65536, 16);  // -2^31 / 65537 is -32767
    EXPECT_EQ(negative.full_weight, 32769);
}

TEST(AreaTable, RestOfAWeightWrapsIn16Bits) {
    EXPECT_EQ(rows::restWeight(32768, 16384), 16384);
    EXPECT_EQ(rows::restWeight(100, 100), 0);
    EXPECT_EQ(rows::restWeight(7661, 32768), 40429);
}

TEST(AreaTable, IsRebuiltInPlace) {
    AreaTable table;
    impl::buildAreaTable(9, 7, 15, table.weights);
    EXPECT_EQ(impl::buildAreaTable(4, 2, 15, table.weights), 16384);
    EXPECT_EQ(weightsOf(table), (Weights{{0, 16384}, {2, 16384}, {4, 16384}}));
}

}  // namespace

}  // namespace ox::test::scale_tables
