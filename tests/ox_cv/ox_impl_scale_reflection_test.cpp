// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Taps outside the source, folded back into it.
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "ox_cv/ox_impl_scale_weights.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

using Taps = std::vector<int>;

struct Folded {
    int start;
    Taps weights;

    bool operator==(Folded const&) const = default;
};

void PrintTo(Folded const& folded, std::ostream* out) {
    *out << folded.start << ": " << testing::PrintToString(folded.weights);
}

// Folds weights into a row that held `before`; as many elements as that are returned.
template <class Weight = signed char>
Folded foldInto(Taps const& before, Taps const& weights, int start, int src_size) {
    std::vector<Weight> const taps(weights.begin(), weights.end());
    std::vector<Weight> border(before.begin(), before.end());
    int const capacity = static_cast<int>(border.size());
    border.insert(border.end(), 64, 77);
    border.insert(border.begin(), 64, 77);
    int const first =
        impl::_reflectWeights<Weight>(taps.data(), {static_cast<int>(taps.size()), start, src_size},
                                      border.data() + 64, capacity);
    auto const begin = border.begin() + 64;
    auto const end = begin + capacity;
    EXPECT_EQ(Taps(border.begin(), begin), Taps(64, 77)) << "written before the row";
    EXPECT_EQ(Taps(end, border.end()), Taps(64, 77)) << "written behind the row";
    return {first, Taps(begin, end)};
}

template <class Weight = signed char>
Folded fold(Taps const& weights, int start, int src_size) {
    return foldInto<Weight>(Taps(weights.size(), 55), weights, start, src_size);
}

TEST(ReflectWeights, InsideTheyStayWhereTheyAre) {
    EXPECT_EQ(fold({1, 2, 4}, 0, 3), (Folded{0, {1, 2, 4}}));
    EXPECT_EQ(fold({1, 2, 4}, 5, 8), (Folded{5, {1, 2, 4}}));
}

TEST(ReflectWeights, TheFirstSampleComesTwice) {
    EXPECT_EQ(fold({1, 2, 4, 8}, -1, 10), (Folded{0, {3, 4, 8, 0}}));
    EXPECT_EQ(fold({1, 2, 4, 8}, -2, 10), (Folded{0, {6, 9, 0, 0}}));
    EXPECT_EQ(fold({1, 2, 4, 8}, -4, 10), (Folded{0, {8, 4, 2, 1}}));
}

TEST(ReflectWeights, TheLastSampleComesTwice) {
    EXPECT_EQ(fold({1, 2, 4, 8}, 7, 10), (Folded{6, {0, 1, 2, 12}}));
    EXPECT_EQ(fold({1, 2, 4, 8}, 8, 10), (Folded{6, {0, 0, 9, 6}}));
    EXPECT_EQ(fold({1, 2, 4, 8}, 10, 10), (Folded{6, {8, 4, 2, 1}}));
}

// Samples 1 1 0 | 0 1 | 1 0, and all alike.
TEST(ReflectWeights, ShortSourcesAreCrossedSeveralTimes) {
    EXPECT_EQ(fold({1, 2, 4, 8, 16, 32, 64}, -3, 2), (Folded{0, {76, 51, 0, 0, 0, 0, 0}}));
    EXPECT_EQ(fold({1, 2, 4, 8, 16, 32, 64}, -3, 1), (Folded{0, {127, 0, 0, 0, 0, 0, 0}}));
    // 0 1 2 2 1 0 | 0 1 2 | 2 1 0 0 1 2
    EXPECT_EQ(
        fold<short>({1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384}, -6, 3),
        (Folded{0,
                {1 + 32 + 64 + 2048 + 4096, 2 + 16 + 128 + 1024 + 8192, 4 + 8 + 256 + 512 + 16384,
                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}}));
}

TEST(ReflectWeights, SumsWrap) {
    EXPECT_EQ(fold({100, 100}, -1, 4), (Folded{0, {200 - 256, 0}}));
    EXPECT_EQ(fold({-100, -100}, -1, 4), (Folded{0, {256 - 200, 0}}));
    EXPECT_EQ(fold<short>({30000, 30000}, -1, 4), (Folded{0, {60000 - 65536, 0}}));
}

TEST(ReflectWeights, WhatLiesBehindTheTapsIsKept) {
    EXPECT_EQ(foldInto({50, 51, 52, 53, 54}, {1, 2, 4}, -1, 10), (Folded{0, {3, 4, 0, 53, 54}}));
    EXPECT_EQ(foldInto({50, 51, 52, 53}, {1, 2, 4}, 8, 10), (Folded{7, {0, 1, 6, 53}}));
}

// No window of an unchanging filter lies that far off. Whatever is left, nothing else is written.
TEST(ReflectWeights, WindowsFarOutsideWriteNothingElse) {
    for (int start = -25; start <= 30; ++start) {
        Folded const folded = foldInto({50, 51, 52, 53}, {1, 2, 4}, start, 10);
        EXPECT_GE(folded.start, 0) << start;
        EXPECT_LE(folded.start, 7) << start;
    }
}

TEST(ReflectWeights, NeedARow) {
    signed char const weights[] = {1};
    expectException(StatusNullPointer,
                    "Failure in _reflectWeights(...) : Parameter 'p_borderWieghts' is null.", [&] {
                        impl::_reflectWeights<signed char>(weights, {1, 0, 1}, nullptr, 1);
                    });
}

template <class Weight>
void expectLimit(int limit) {
    std::vector<Weight> const weights(static_cast<std::size_t>(limit) + 1, 1);
    std::vector<Weight> border(weights.size());
    expectException(StatusOutOfRange,
                    "Failure in _reflectWeights(...) : Parameter 'aperture' is out of range.", [&] {
                        impl::_reflectWeights<Weight>(weights.data(), {limit + 1, 0, 8192},
                                                      border.data(), limit + 1);
                    });
    EXPECT_EQ(
        impl::_reflectWeights<Weight>(weights.data(), {limit, 0, 20000}, border.data(), limit), 0);
}

TEST(ReflectWeights, AreAsManyAsTheirSumAtMost) {
    expectLimit<signed char>(64);
    expectLimit<short>(16384);
}

}  // namespace

}  // namespace ox::test
