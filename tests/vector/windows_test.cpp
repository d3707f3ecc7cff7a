// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Plans of windows: each entry once, in order, out of samples that its window has.
#include "vector/windows.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/random.h"

namespace ox::test {
namespace {

using vector::WindowPlan;
using vector::WindowStep;

// Source pixels `scale` apart.
std::vector<std::uint64_t> drawPixels(double scale, std::uint64_t width, Random& random) {
    std::vector<std::uint64_t> pixels;
    for (std::uint64_t x = 0; x < width; ++x) {
        double const at = (static_cast<double>(x) + random.real(0, 0.9F)) * scale;
        pixels.push_back(static_cast<std::uint64_t>(at));
    }
    return pixels;
}

// Of entries that take the sample of a source pixel and that of the next one, if there is one.
void checkPlan(WindowPlan const& plan, std::vector<std::uint64_t> const& pixels) {
    auto const first = [&](std::uint64_t x) { return pixels.at(x) * plan.channels; };
    auto const behindEntry = [&](std::uint64_t k) {
        std::uint64_t const second = first(k / plan.channels) + plan.channels;
        return std::min(second, plan.row - plan.channels) + k % plan.channels + 1;
    };
    std::uint64_t const entries = plan.width * plan.channels;
    std::uint64_t entry = 0;
    std::uint64_t steps = 0;
    std::uint64_t const counted = vector::planSteps(plan, first, [&](WindowStep const& step) {
        ++steps;
        ASSERT_EQ(step.pixel * plan.channels + step.channel, entry);
        ASSERT_GT(step.entries, 0U);
        ASSERT_LE(step.entries, plan.step_entries);
        ASSERT_LE(step.start, first(step.pixel));
        std::uint64_t const window_end = step.start + plan.window;
        ASSERT_LE(window_end, std::max(plan.row, plan.window));
        for (std::uint64_t const end = entry + step.entries; entry < end; ++entry) {
            ASSERT_LE(behindEntry(entry), window_end) << "entry " << entry;
        }
        // It ends for one of three reasons.
        ASSERT_TRUE(entry == entries || step.entries == plan.step_entries ||
                    first(entry / plan.channels) + plan.channels + entry % plan.channels >=
                        window_end);
    });
    ASSERT_EQ(entry, entries);
    ASSERT_EQ(counted, steps);
    ASSERT_LE(steps, plan.mostSteps());
}

TEST(WindowPlan, OfEveryScale) {
    Random random(11);
    for (double const scale : {0.0, 0.1, 0.5, 0.9, 1.0, 1.5, 2.3, 7.0, 31.0, 100.0}) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            for (std::uint64_t width = 1; width < 150; width += 1 + width / 8) {
                auto const pixels = drawPixels(scale, width, random);
                std::uint64_t const row =
                    (pixels.back() + static_cast<std::uint64_t>(random.between(1, 2))) * channels;
                for (std::uint64_t const window : {16U, 32U, 64U}) {
                    checkPlan({window, row, width, channels, 2 * channels, window / 2}, pixels);
                }
                if (HasFatalFailure()) {
                    FAIL() << scale << ", " << channels << " channels, " << width << " pixels";
                }
            }
        }
    }
}

TEST(WindowPlan, WindowsAreMovedBackIntoTheRow) {
    EXPECT_EQ(vector::windowStart(3, 16, 20), 3U);
    EXPECT_EQ(vector::windowStart(4, 16, 20), 4U);
    EXPECT_EQ(vector::windowStart(5, 16, 20), 4U);
    EXPECT_EQ(vector::windowStart(19, 16, 20), 4U);
}

TEST(WindowPlan, AShortRowHasOneWindow) {
    EXPECT_EQ(vector::windowStart(14, 16, 15), 0U);
    EXPECT_EQ(vector::windowStart(14, 16, 16), 0U);
}

// Of three channels, the window reaches two.
TEST(WindowPlan, AStepMayEndWithinAPixel) {
    std::vector<std::uint64_t> const first{0, 12};
    std::vector<WindowStep> steps;
    WindowPlan const plan{17, 100, 2, 3, 6, 8};
    vector::planSteps(
        plan, [&](std::uint64_t x) { return first[x]; },
        [&](WindowStep const& step) { steps.push_back(step); });
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].entries, 5U);
    EXPECT_EQ(steps[1].pixel, 1U);
    EXPECT_EQ(steps[1].channel, 2U);
    EXPECT_EQ(steps[1].start, 12U);
    EXPECT_EQ(steps[1].entries, 1U);
}

}  // namespace
}  // namespace ox::test
