// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Whole pixels gathered, on every instruction set that this processor has.
#include "vector/gather.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {
namespace {

class Gather : public RowRoutines {
  protected:
    // Pixels about `scale` apart, the last one at the row's end.
    void check(std::size_t width, double scale, std::size_t pixel_size, Guard guard) {
        std::vector<std::int32_t> offsets;
        for (std::size_t x = 0; x < width; ++x) {
            auto const at = static_cast<std::size_t>(static_cast<double>(x) * scale);
            offsets.push_back(static_cast<std::int32_t>(at * pixel_size));
        }
        std::size_t const row_bytes = static_cast<std::size_t>(offsets.back()) + pixel_size;
        vector::PixelProgram program;
        if (!routines.gather.compile_pixels({offsets.data(), width, pixel_size, row_bytes},
                                            program)) {
            EXPECT_TRUE(row_bytes < 64 || pixel_size > 8);
            return;
        }
        GuardedMemory src(row_bytes, guard);
        GuardedMemory dst(width * pixel_size, guard);
        std::generate_n(src.data(), src.size(), [&] { return random.byte(); });
        routines.gather.copy_pixels(program, src.data(), dst.data());
        for (std::size_t i = 0; i < dst.size(); ++i) {
            auto const offset = static_cast<std::size_t>(offsets[i / pixel_size]);
            ASSERT_EQ(dst.data()[i], src.data()[offset + i % pixel_size])
                << "byte " << i << " of " << width << " pixels of " << pixel_size << " bytes, "
                << scale << " apart";
        }
        EXPECT_EQ(dst.touched(), 0);
    }

    Random random{5};
};

TEST_P(Gather, PixelsOfEverySizeAndScale) {
    for (double const scale : {0.0, 0.1, 0.7, 1.0, 1.5, 2.9, 7.0, 31.0, 100.0}) {
        for (std::size_t pixel_size = 1; pixel_size <= 33; ++pixel_size) {
            for (std::size_t width = 1; width < 150; width += 1 + width / 6) {
                check(width, scale, pixel_size, width % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_P(Gather, NoPixelsHaveNoProgram) {
    vector::PixelProgram program;
    EXPECT_FALSE(routines.gather.compile_pixels({nullptr, 0, 1, 100}, program));
    std::int32_t const offset = 0;
    EXPECT_FALSE(routines.gather.compile_pixels({&offset, 1, 0, 100}, program));
}

TEST(GatherRoutines, WithoutVectorCodeNothingHasAProgram) {
    std::int32_t const offset = 0;
    vector::PixelProgram program;
    EXPECT_FALSE(vector::GatherRoutines{}.compile_pixels({&offset, 1, 1, 100}, program));
}

INSTANTIATE_TEST_SUITE_P(, Gather, testing::ValuesIn(vectorTargets()),
                         [](auto const& target) { return target.param; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Gather);  // without vector code

}  // namespace
}  // namespace ox::test
