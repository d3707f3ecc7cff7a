// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines among channels, of every instruction set that this processor has.
#include <memory>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

class ChannelRoutines : public RowRoutines {
  protected:
    std::unique_ptr<GuardedMemory> draw(std::size_t bytes, Guard guard) {
        auto memory = std::make_unique<GuardedMemory>(bytes, guard);
        std::generate_n(memory->data(), bytes, [&] { return _random.byte(); });
        return memory;
    }

    // Leaves out the plane `absent`.
    void checkSplit(rows::SplitRow* split, std::size_t channels, std::size_t width, Guard guard,
                    std::size_t absent = 4) {
        auto const row = draw(channels * width, guard);
        std::vector<std::unique_ptr<GuardedMemory>> planes;
        std::vector<std::uint8_t*> addresses;
        for (std::size_t c = 0; c < channels; ++c) {
            planes.push_back(std::make_unique<GuardedMemory>(width, guard));
            addresses.push_back(c == absent ? nullptr : planes[c]->data());
        }
        split(row->data(), width, addresses.data());
        for (std::size_t c = 0; c < channels; ++c) {
            for (std::size_t x = 0; c != absent && x < width; ++x) {
                ASSERT_EQ(addresses[c][x], row->data()[x * channels + c]) << x << " of " << width;
            }
            EXPECT_EQ(planes[c]->touched(), 0);
        }
    }

    void checkMerge(rows::MergeRow* merge, std::size_t channels, std::size_t width, Guard guard) {
        GuardedMemory row(channels * width, guard);
        std::vector<std::unique_ptr<GuardedMemory>> planes;
        std::vector<std::uint8_t const*> addresses;
        for (std::size_t c = 0; c < channels; ++c) {
            planes.push_back(draw(width, guard));
            addresses.push_back(planes[c]->data());
        }
        merge(addresses.data(), width, row.data());
        for (std::size_t i = 0; i < channels * width; ++i) {
            ASSERT_EQ(row.data()[i], addresses[i % channels][i / channels]) << i << ", " << width;
        }
        EXPECT_EQ(row.touched(), 0);
    }

    void checkSwap(std::size_t width, Guard guard) {
        auto const src = draw(3 * width, guard);
        GuardedMemory dst(3 * width, guard);
        routines.colour.swap_red_blue(src->data(), width, dst.data());
        for (std::size_t i = 0; i < 3 * width; ++i) {
            ASSERT_EQ(dst.data()[i], src->data()[i - i % 3 + (2 - i % 3)]) << i << ", " << width;
        }
        EXPECT_EQ(dst.touched(), 0);
    }

    void checkGrayToBgr(std::size_t width, Guard guard) {
        auto const src = draw(width, guard);
        GuardedMemory dst(3 * width, guard);
        routines.colour.gray_to_bgr(src->data(), width, dst.data());
        for (std::size_t i = 0; i < 3 * width; ++i) {
            ASSERT_EQ(dst.data()[i], src->data()[i / 3]) << i << ", " << width;
        }
        EXPECT_EQ(dst.touched(), 0);
    }

  private:
    Random _random{7};
};

TEST_P(ChannelRoutines, EveryWidth) {
    for (std::size_t width = 0; width <= 205; ++width) {
        Guard const guard = width % 2 == 0 ? Guard::AtEnd : Guard::AtStart;
        checkSplit(routines.colour.split_two, 2, width, guard);
        checkSplit(routines.colour.split_three, 3, width, guard);
        checkMerge(routines.colour.merge_two, 2, width, guard);
        checkMerge(routines.colour.merge_three, 3, width, guard);
        checkSwap(width, guard);
        checkGrayToBgr(width, guard);
    }
}

TEST_P(ChannelRoutines, PlanesThatAreNotThere) {
    for (std::size_t const width : {0U, 1U, 20U, 150U}) {
        for (std::size_t absent = 0; absent < 3; ++absent) {
            checkSplit(routines.colour.split_two, 2, width, Guard::AtEnd, absent);
            checkSplit(routines.colour.split_three, 3, width, Guard::AtEnd, absent);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, ChannelRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
