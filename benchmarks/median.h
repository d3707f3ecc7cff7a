// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The middle of several measurements.

#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ox::benchmarks {

inline double median(std::vector<double> times) {
    auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

}  // namespace ox::benchmarks
