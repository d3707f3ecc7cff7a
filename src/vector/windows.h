// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How the entries of a row are spread over the steps of a program: the source samples of a step's
/// entries lie in one window of the source row.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace ox::vector {

/// Bytes of a program's table, as many as the longest register has.
struct alignas(64) RegisterBytes {
    std::array<std::uint8_t, 64> bytes;
};

/// The start of the window that has to reach sample `first`: `first` itself, or further left where
/// the window would leave the row. A row shorter than a window has one window, at 0; the caller
/// loads it from a padded copy.
constexpr std::uint64_t windowStart(std::uint64_t first, std::uint64_t window, std::uint64_t row) {
    return std::min(first, row < window ? 0 : row - window);
}

/// The row to plan for. Samples are bytes or floats. Entries are the samples of the result; an
/// entry is made from the samples of its own channel in all source pixels of its pixel.
struct WindowPlan {
    std::uint64_t window;  ///< samples that a step loads
    std::uint64_t row;     ///< samples of the source row
    std::uint64_t width;   ///< pixels of the result
    std::uint64_t channels;
    std::uint64_t reach;         ///< samples of a pixel's source pixels; none is behind the row
    std::uint64_t step_entries;  ///< that a step takes

    /// An upper bound: a step with fewer than `step_entries` ends where the window does.
    constexpr std::uint64_t mostSteps() const {
        return row / (window - reach + 1) + width * channels / step_entries + 2;
    }
};

struct WindowStep {
    std::uint64_t pixel;    ///< that its first entry is of
    std::uint64_t channel;  ///< of that pixel
    std::uint64_t start;    ///< of its window
    std::uint64_t entries;
};

/// Calls visit(step) for the steps of a row, in order.
/// @param first first(x) is the sample that pixel x begins at; never falling, and in the row
/// @return steps
template <class First, class Visit>
[[gnu::always_inline]] inline std::uint64_t planSteps(WindowPlan const& plan, First first,
                                                      Visit visit) {
    std::uint64_t steps = 0;
    for (WindowStep step{}; step.pixel < plan.width; ++steps) {
        std::uint64_t const begin = first(step.pixel);
        step.start = windowStart(begin, plan.window, plan.row);
        std::uint64_t const touched = (step.channel + plan.step_entries - 1) / plan.channels + 1;
        std::uint64_t end = std::min(step.pixel + touched, plan.width);
        std::uint64_t part = 0;  // entries of the pixel at `end`
        // Also right for a window that was moved back: it has all that is left of the row.
        std::uint64_t const last = begin + plan.window - plan.reach;
        if (first(end - 1) > last) {
            for (end = step.pixel + 1; first(end) <= last;) {
                ++end;
            }
            part = last + plan.channels - std::min(first(end), last + plan.channels);
        }
        std::uint64_t const passed =
            std::min((end - step.pixel) * plan.channels + part, step.channel + plan.step_entries);
        step.entries = passed - step.channel;
        visit(static_cast<WindowStep const&>(step));
        step.pixel += passed / plan.channels;
        step.channel = passed % plan.channels;
    }
    return steps;
}

}  // namespace ox::vector
