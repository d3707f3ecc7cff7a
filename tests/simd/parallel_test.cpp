// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

#include "simd/processor_figures.h"

namespace ox::test {
namespace {

struct Block {
    std::uint64_t thread;
    std::uint64_t begin;
    std::uint64_t end;

    bool operator==(Block const&) const = default;
};

using Blocks = std::vector<Block>;

std::ostream& operator<<(std::ostream& out, Block const& block) {
    return out << block.thread << ": " << block.begin << " to " << block.end;
}

class Parallel : public testing::Test {
  protected:
    Parallel() { Simd::UseHardwareThreads(8); }
    ~Parallel() override { Simd::UseHardwareThreads(0); }

    // The blocks by thread number, and whether this thread ran one of them.
    Blocks blocksOf(std::uint64_t begin, std::uint64_t end, std::uint64_t threads,
                    std::uint64_t align = 1) {
        std::mutex mutex;
        Blocks blocks;
        ran_here = false;
        auto const caller = std::this_thread::get_id();
        Simd::Parallel(
            begin, end,
            [&](std::uint64_t thread, std::uint64_t block_begin, std::uint64_t block_end) {
                std::lock_guard const lock(mutex);
                blocks.push_back({thread, block_begin, block_end});
                ran_here = ran_here || std::this_thread::get_id() == caller;
            },
            threads, align);
        std::sort(blocks.begin(), blocks.end(),
                  [](Block const& a, Block const& b) { return a.thread < b.thread; });
        return blocks;
    }

    bool ran_here = false;
};

TEST_F(Parallel, DividesTheRangeEvenly) {
    EXPECT_EQ(blocksOf(0, 10, 4), (Blocks{{0, 0, 3}, {1, 3, 6}, {2, 6, 9}, {3, 9, 10}}));
    EXPECT_FALSE(ran_here);
    EXPECT_EQ(blocksOf(0, 9, 4), (Blocks{{0, 0, 3}, {1, 3, 6}, {2, 6, 9}}));
    EXPECT_FALSE(ran_here);
    EXPECT_EQ(blocksOf(0, 2, 2), (Blocks{{0, 0, 1}, {1, 1, 2}}));
    EXPECT_FALSE(ran_here);
    EXPECT_EQ(blocksOf(0, 2, 8), (Blocks{{0, 0, 1}, {1, 1, 2}}));
    EXPECT_EQ(blocksOf(100, 107, 3), (Blocks{{0, 100, 103}, {1, 103, 106}, {2, 106, 107}}));
}

TEST_F(Parallel, OneThreadIsTheCaller) {
    for (std::uint64_t const threads : {0U, 1U}) {
        EXPECT_EQ(blocksOf(3, 40, threads), (Blocks{{0, 3, 40}}));
        EXPECT_TRUE(ran_here);
    }
}

TEST_F(Parallel, SoIsThatOfNoTwoItems) {
    EXPECT_EQ(blocksOf(0, 0, 4), (Blocks{{0, 0, 0}}));
    EXPECT_TRUE(ran_here);
    EXPECT_EQ(blocksOf(7, 7, 4), (Blocks{{0, 7, 7}}));
    EXPECT_TRUE(ran_here);
    EXPECT_EQ(blocksOf(0, 1, 4), (Blocks{{0, 0, 1}}));
    EXPECT_TRUE(ran_here);
    EXPECT_EQ(blocksOf(7, 8, 8), (Blocks{{0, 7, 8}}));
    EXPECT_TRUE(ran_here);
}

TEST_F(Parallel, TakesNoMoreThreadsThanTheHardwareHas) {
    Simd::UseHardwareThreads(3);
    EXPECT_EQ(blocksOf(0, 10, 8), (Blocks{{0, 0, 4}, {1, 4, 8}, {2, 8, 10}}));
    EXPECT_EQ(blocksOf(0, 10, UINT64_MAX), (Blocks{{0, 0, 4}, {1, 4, 8}, {2, 8, 10}}));
    Simd::UseHardwareThreads(1);
    EXPECT_EQ(blocksOf(0, 10, 8), (Blocks{{0, 0, 10}}));
    EXPECT_TRUE(ran_here);
}

TEST_F(Parallel, BlocksStayAsLongAsTheyAre) {
    Blocks const expected{{0, 0, 3}, {1, 3, 6}, {2, 6, 9}, {3, 9, 10}};
    for (std::uint64_t const align : {0U, 1U, 2U, 16U}) {
        EXPECT_EQ(blocksOf(0, 10, 4, align), expected);
    }
}

// Blocks follow one another without a gap, the thread numbers count up from 0.
TEST_F(Parallel, CoversEachItemOnce) {
    for (std::uint64_t threads = 1; threads <= 8; ++threads) {
        for (std::uint64_t const items : {2U, 3U, 7U, 8U, 9U, 15U, 16U, 17U, 100U}) {
            Blocks const blocks = blocksOf(5, 5 + items, threads);
            EXPECT_LE(blocks.size(), threads);
            std::uint64_t at = 5;
            for (std::size_t i = 0; i < blocks.size(); ++i) {
                EXPECT_EQ(blocks[i].thread, i);
                EXPECT_EQ(blocks[i].begin, at);
                EXPECT_LT(at, blocks[i].end);
                at = blocks[i].end;
            }
            EXPECT_EQ(at, 5 + items) << threads << " threads";
        }
    }
}

TEST_F(Parallel, RangesMayEndWhereNumbersDo) {
    EXPECT_EQ(blocksOf(UINT64_MAX - 10, UINT64_MAX, 4),
              (Blocks{{0, UINT64_MAX - 10, UINT64_MAX - 7},
                      {1, UINT64_MAX - 7, UINT64_MAX - 4},
                      {2, UINT64_MAX - 4, UINT64_MAX - 1},
                      {3, UINT64_MAX - 1, UINT64_MAX}}));
    Blocks const whole = blocksOf(0, UINT64_MAX, 2);
    EXPECT_EQ(whole,
              (Blocks{{0, 0, std::uint64_t{1} << 63}, {1, std::uint64_t{1} << 63, UINT64_MAX}}));
}

// What workers write needs no lock to be read afterwards.
TEST_F(Parallel, OrdersTheWorkBeforeTheReturn) {
    std::vector<int> items(1000);
    for (std::uint64_t threads = 1; threads <= 8; ++threads) {
        Simd::Parallel(
            0, items.size(),
            [&](std::uint64_t, std::uint64_t begin, std::uint64_t end) {
                for (std::uint64_t i = begin; i < end; ++i) {
                    ++items[i];
                }
            },
            threads, 1);
        EXPECT_EQ(std::accumulate(items.begin(), items.end(), 0), static_cast<int>(1000 * threads));
    }
}

TEST_F(Parallel, LosesWhatWorkersThrow) {
    std::vector<int> done(4);
    EXPECT_NO_THROW(Simd::Parallel(
        0, 4,
        [&](std::uint64_t thread, std::uint64_t begin, std::uint64_t) {
            done[begin] = 1;
            if (thread % 2 == 0) {
                throw std::runtime_error("lost");
            }
        },
        4, 1));
    EXPECT_EQ(done, (std::vector{1, 1, 1, 1}));
}

TEST_F(Parallel, PassesOnWhatTheCallerThrows) {
    auto const fails = [](std::uint64_t, std::uint64_t, std::uint64_t) {
        throw std::runtime_error("seen");
    };
    EXPECT_THROW(Simd::Parallel(0, 4, fails, 1, 1), std::runtime_error);
    EXPECT_THROW(Simd::Parallel(0, 1, fails, 4, 1), std::runtime_error);
}

TEST_F(Parallel, CountsAreCutToTheHardwareInUse) {
    EXPECT_EQ(Simd::hardwareThreads(), 8U);
    EXPECT_EQ(Simd::SetParallelThreads(5), 5U);
    EXPECT_EQ(Simd::SetParallelThreads(9), 8U);
    EXPECT_EQ(Simd::GetParallelThreads(), 8U);
    EXPECT_EQ(Simd::SetParallelThreads(0), 1U);
    EXPECT_EQ(Simd::GetParallelThreads(), 1U);
}

}  // namespace
}  // namespace ox::test
