// Area scaling as taps for vector code: tables worked out by hand.
#include "ox_cv/ox_impl_area_taps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include "rows/rows_routines.h"
#include "support/random.h"

namespace ox::test::area_taps {

namespace {

using impl::AreaRow8;
using Table = std::vector<impl::AreaWeight>;
using Kernels = std::vector<std::vector<std::int16_t>>;

constexpr int shift = 15;
constexpr std::uint16_t one = 1 << shift;

std::vector<int> firstsOf(rows::TapAxis const& axis) {
    std::vector<int> firsts;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        EXPECT_EQ(axis.starts[i].kernel, i);
        firsts.push_back(axis.starts[i].first);
    }
    return firsts;
}

Kernels kernelsOf(rows::TapAxis const& axis) {
    Kernels kernels;
    for (std::size_t i = 0; i < axis.starts.size(); ++i) {
        kernels.emplace_back(axis.kernel(i), axis.kernel(i) + axis.taps);
    }
    return kernels;
}

void expectTaps(Table const& table, std::uint16_t full, AreaRow8 const& row,
                std::vector<int> const& firsts, Kernels const& kernels) {
    rows::TapAxis axis;
    ASSERT_TRUE(impl::describeAreaTaps({table.data(), full, shift}, row, axis));
    EXPECT_EQ(firstsOf(axis), firsts);
    EXPECT_EQ(kernelsOf(axis), kernels);
    EXPECT_EQ(axis.taps, kernels[0].size());
    EXPECT_EQ(axis.shift, shift);
}

bool isDescribed(Table const& table, std::uint16_t full, AreaRow8 const& row) {
    rows::TapAxis axis;
    return impl::describeAreaTaps({table.data(), full, shift}, row, axis);
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
    EXPECT_FALSE(isDescribed({{0, 20000}, {2, 20000}}, 20000, {1, 1, 1}));
    EXPECT_TRUE(isDescribed({{0, 16384}, {2, 16384}}, 16384, {1, 1, 1}));
    EXPECT_FALSE(isDescribed({{5, 100}, {4, 100}}, 100, {1, 5, 1}));  // indices that have wrapped
}

TEST(AreaTaps, NotForMoreCellsThanStartsCanCount) {
    for (bool const longer : {false, true}) {
        std::int64_t const cells = longer ? 65536 : 65535;
        Table const table(static_cast<std::size_t>(cells) + 1, {7, 100});
        EXPECT_EQ(isDescribed(table, 100, {cells, 7, cells}), !longer);
    }
}

using Pairs = std::vector<std::tuple<int, int, int>>;

Pairs blendOf(Table const& table, std::uint16_t full, AreaRow8 const& row) {
    std::vector<rows::PixelPair> pixels;
    Pairs pairs;
    if (impl::describeAreaBlend({table.data(), full, shift}, row, pixels)) {
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

// Rows of a destination row.
class AreaRowSums : public testing::Test {
  protected:
    static constexpr std::size_t bytes = 100;

    AreaRowSums() {
        Random random;
        for (auto& row : _samples) {
            std::generate(row.begin(), row.end(), [&] { return random.byte(); });
            _rows.push_back(row.data());
        }
        taps.reserve(4, {__FILE__});
    }

    impl::SumRows::Cut cut(std::int64_t middle_end, std::uint16_t first, std::uint16_t full,
                           std::uint16_t rest) const {
        auto const next = static_cast<std::size_t>(std::max<std::int64_t>(middle_end, 1));
        return {_rows.data(), 5, _rows.back(), middle_end, first, full, rest, _rows[next], shift};
    }

    // By vectors if there are any; then as the plain loop.
    void expectSummed(impl::SumRows::Cut const& cut) {
        std::array<unsigned char, bytes> dst{};
        ASSERT_EQ(taps.sum(cut, bytes, dst.data()), rows::routines().taps.sum_rows != nullptr);
        std::array<unsigned char, bytes> expected = dst;
        alignas(std::uint32_t) std::array<unsigned char, 4 * bytes> sums{};
        if (rows::routines().taps.sum_rows != nullptr) {
            impl::SumRows::row<std::uint8_t, 1>(cut, bytes, sums.data(), expected.data());
        }
        EXPECT_EQ(dst, expected);
    }

    void expectLeftOut(impl::SumRows::Cut const& cut, std::int64_t samples = bytes) {
        std::array<unsigned char, bytes> dst{};
        EXPECT_FALSE(taps.sum(cut, samples, dst.data()));
        EXPECT_EQ(dst, (std::array<unsigned char, bytes>{}));
    }

    impl::AreaRowTaps taps;

  private:
    std::array<std::array<unsigned char, bytes>, 5> _samples{};
    std::vector<unsigned char const*> _rows;
};

TEST_F(AreaRowSums, OneRowTwoAndMore) {
    for (int pass = 0; pass < 2; ++pass) {
        expectSummed(cut(1, one, one, 0));
        expectSummed(cut(1, 0, one, one));
        expectSummed(cut(1, 20000, one, 12768));
        expectSummed(cut(1, 20000, one, 100));
        expectSummed(cut(3, 10922, 10922, 2));
        expectSummed(cut(2, 10922, 10922, 0));
        expectSummed(cut(1, 10922, 10922, 0));
    }
}

TEST_F(AreaRowSums, NotOfOtherWeightsOrMoreRows) {
    expectLeftOut(cut(1, one, one, one));
    expectLeftOut(cut(2, 20000, 20000, 0));
    expectLeftOut(cut(1, 0, one, 0));
    expectLeftOut(cut(4, 100, 100, 0));
    auto const least = static_cast<std::int64_t>(rows::routines().taps.least_row_bytes);
    expectLeftOut(cut(1, one, one, 0), least - 1);
}

}  // namespace

}  // namespace ox::test::area_taps
