// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Area scaling: taps for vector code, tables worked out by hand, and sums of rows.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>
#include <vector>

#include "rows/area/axis.h"
#include "rows/area/rows.h"
#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test::area_taps {

namespace {

using rows::WholeRow;
using Table = std::vector<rows::AreaWeight>;
using Kernels = std::vector<std::vector<std::int16_t>>;

constexpr int shift = 15;
constexpr std::uint16_t one = 1 << shift;

std::vector<int> firstsOf(rows::TapAxis const& axis) {
    std::vector<int> firsts;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        EXPECT_EQ(axis.starts[i].weights, i);
        firsts.push_back(axis.starts[i].first);
    }
    return firsts;
}

Kernels kernelsOf(rows::TapAxis const& axis) {
    Kernels kernels;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        kernels.emplace_back(axis.weightRow(i), axis.weightRow(i) + axis.taps);
    }
    return kernels;
}

void expectTaps(Table const& table, std::uint16_t full, WholeRow const& row,
                std::vector<int> const& firsts, Kernels const& kernels) {
    rows::TapAxis axis;
    ASSERT_TRUE(rows::describeAreaTaps({table.data(), full, shift}, row, axis));
    EXPECT_EQ(firstsOf(axis), firsts);
    EXPECT_EQ(kernelsOf(axis), kernels);
    EXPECT_EQ(axis.taps, kernels[0].size());
    EXPECT_EQ(axis.shift, shift);
}

bool isDescribed(Table const& table, std::uint16_t full, WholeRow const& row) {
    rows::TapAxis axis;
    return rows::describeAreaTaps({table.data(), full, shift}, row, axis);
}

TEST(AreaTaps, Reductions) {
    // 6 to 2 and 5 to 2
    expectTaps({{0, 10922}, {3, 10922}, {6, 10922}}, 10922, {2, 5, 2}, {0, 3},
               {{10922, 10922, 10922}, {10922, 10922, 10922}});
    expectTaps({{0, 13107}, {2, 6553}, {5, 13107}}, 13107, {2, 4, 2}, {0, 2},
               {{13107, 13107, 6554}, {6553, 13107, 13107}});
}

TEST(AreaTaps, ElementsBehindTheRowAreItsLastOne) {
    Table const thirds{{0, 10922}, {3, 10922}, {6, 10922}, {9, 10922}};
    expectTaps(thirds, 10922, {3, 4, 3}, {0, 3, 4},
               {{10922, 10922, 10922}, {10922, 21844, 0}, {32766, 0, 0}});
    // The entry behind the table is its last one: nothing is between, and the rest is the whole.
    expectTaps(thirds, 10922, {2, 5, 1}, {0, 3}, {{10922, 10922, 10922}, {10922, 0, 0}});
}

TEST(AreaTaps, NotForOtherWeights) {
    EXPECT_FALSE(isDescribed({{0, one}, {1, one}}, one, {1, 0, 1}));  // not a word
    EXPECT_FALSE(isDescribed({{5, 100}, {4, 100}}, 100, {1, 5, 1}));  // indices that have wrapped
}

// 40000 is more than one by more than a 255th of it, 32768 isn't.
TEST(AreaTaps, SumsThatLeaveAByteKeepItsLowBits) {
    for (std::uint16_t const weight : {std::uint16_t{20000}, std::uint16_t{16384}}) {
        rows::TapAxis axis;
        Table const table{{0, weight}, {2, weight}};
        ASSERT_TRUE(rows::describeAreaTaps({table.data(), weight, shift}, {1, 1, 1}, axis));
        EXPECT_EQ(axis.keeps_low_bytes, weight == 20000);
    }
}

TEST(AreaTaps, NotForMoreCellsThanStartsCanCount) {
    for (bool const longer : {false, true}) {
        std::int64_t const cells = longer ? 65536 : 65535;
        Table const table(static_cast<std::size_t>(cells) + 1, {7, 100});
        EXPECT_EQ(isDescribed(table, 100, {cells, 7, cells}), !longer);
    }
}

using Pairs = std::vector<std::tuple<int, int, int>>;

Pairs blendOf(Table const& table, std::uint16_t full, WholeRow const& row) {
    std::vector<rows::PixelPair> pixels;
    Pairs pairs;
    if (rows::describeAreaBlend({table.data(), full, shift}, row, pixels)) {
        for (rows::PixelPair const& pixel : pixels) {
            pairs.emplace_back(pixel.left, pixel.right, pixel.weight);
        }
    }
    return pairs;
}

// 3 to 4: the last cell has 2 of 32768 left for a fourth pixel.
TEST(AreaBlend, Enlargements) {
    Table const table{{0, one}, {0, 10922}, {1, 21844}, {2, 32766}, {3, one}};
    EXPECT_EQ(blendOf(table, one, {4, 2, 4}),
              (Pairs{{0, 0, 0}, {0, 1, 43692}, {1, 2, 21848}, {2, 2, 4}}));
    EXPECT_EQ(blendOf(table, one, {4, 1, 4}),
              (Pairs{{0, 0, 0}, {0, 1, 43692}, {1, 1, 21848}, {1, 1, 4}}));
}

TEST(AreaBlend, WithoutAWeightThePixelIsTheNext) {
    EXPECT_EQ(blendOf({{0, 0}, {1, one}}, one, {1, 1, 1}), (Pairs{{1, 1, 0}}));
}

TEST(AreaBlend, NotWhereWeightsAreNotOne) {
    EXPECT_EQ(blendOf({{0, 100}, {1, 100}}, one - 1, {1, 1, 1}), Pairs{});
}

// Rows of a destination row, by every instruction set and none.
class AreaRows : public UsedRowRoutines {
  protected:
    AreaRows() { taps.reserve(4); }

    void SetUp() override {
        for (auto& row : _samples) {
            std::generate(row.begin(), row.end(), [&] { return _random.byte(); });
            _rows.push_back(row.data());
        }
    }

    rows::RowCut cut(std::int64_t middle_end, std::uint16_t first, std::uint16_t full,
                     std::uint16_t rest) const {
        auto const next = static_cast<std::size_t>(std::max<std::int64_t>(middle_end, 1));
        return {_rows.data(), 5, _rows.back(), middle_end, first, full, rest, _rows[next], shift};
    }

    // The low bits of sums of the first rows.
    template <class Sample>
    void check(rows::RowCut const& cut, std::size_t samples) {
        GuardedMemory dst(samples * sizeof(Sample), Guard::AtEnd);
        rows::chooseSumRowCut({1, 8 * static_cast<int>(sizeof(Sample))})(
            taps, cut, static_cast<std::int64_t>(samples), dst.data());
        for (std::size_t i = 0; i < samples; ++i) {
            auto const at = [&](std::int64_t row) -> std::uint64_t {
                Sample sample = 0;
                std::memcpy(&sample, _rows[static_cast<std::size_t>(row)] + i * sizeof(Sample),
                            sizeof sample);
                return sample;
            };
            std::uint64_t sum = at(0) * cut.first_weight;
            for (std::int64_t k = 1; k < cut.middle_end; ++k) {
                sum += at(k) * cut.full_weight;
            }
            sum += at(std::max<std::int64_t>(cut.middle_end, 1)) * cut.rest;
            Sample written = 0;
            std::memcpy(&written, dst.data() + i * sizeof(Sample), sizeof written);
            ASSERT_EQ(written, static_cast<Sample>(sum >> shift)) << "sample " << i;
        }
    }

    void checkAll(rows::RowCut const& cut) {
        for (std::size_t samples = 1; samples <= 100 && !HasFatalFailure(); ++samples) {
            check<std::uint8_t>(cut, samples);
            check<std::uint16_t>(cut, samples);
            check<std::uint32_t>(cut, samples);
        }
    }

    rows::CutTaps taps;

  private:
    Random _random;
    std::array<std::array<unsigned char, 400>, 5> _samples{};
    std::vector<unsigned char const*> _rows;
};

TEST_P(AreaRows, OneRowTwoAndMore) {
    for (int pass = 0; pass < 2; ++pass) {
        checkAll(cut(1, one, one, 0));
        checkAll(cut(1, 0, one, one));
        checkAll(cut(1, 20000, one, 12768));
        checkAll(cut(1, 20000, one, 100));
        checkAll(cut(3, 10922, 10922, 2));
        checkAll(cut(2, 10922, 10922, 0));
        checkAll(cut(1, 10922, 10922, 0));
    }
}

// Sums that leave a byte, weights that aren't words, no weights, and more rows than there is room
// for.
TEST_P(AreaRows, WhatTapsCantDo) {
    checkAll(cut(1, one, one, one));
    checkAll(cut(2, 20000, 20000, 0));
    checkAll(cut(1, 40000, 40000, 0));
    checkAll(cut(1, 0, one, 0));
    checkAll(cut(4, 100, 100, 0));
}

INSTANTIATE_TEST_SUITE_P(, AreaRows, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test::area_taps
