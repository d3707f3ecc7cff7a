/// @file
/// How the entries of a row are spread over the steps of a program: a step makes those whose
/// samples lie in one window of the source row.

#pragma once

#include <algorithm>
#include <cstdint>

namespace ox::vector {

/// Where the window begins that is to reach what is at `first`: there, or moved back as far as
/// keeps it in the row. A row that is shorter has one window, which its owner reads from a copy.
constexpr std::uint64_t windowStart(std::uint64_t first, std::uint64_t window, std::uint64_t row) {
    return std::min(first, row < window ? 0 : row - window);
}

/// What is planned for. Samples may be bytes or floats; entries are the samples of the result, each
/// of which takes those of its channel from all of its source pixels.
struct WindowPlan {
    std::uint64_t window;  ///< samples that a step loads
    std::uint64_t row;     ///< samples of the source row
    std::uint64_t width;   ///< pixels of the result
    std::uint64_t channels;
    std::uint64_t reach;         ///< samples of a pixel's source pixels; none is behind the row
    std::uint64_t step_entries;  ///< that a step takes

    /// Of a step that isn't full, the next pixel's samples end behind the window.
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
        // A window that was moved back has all that is left of the row, so that this suits it too.
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
