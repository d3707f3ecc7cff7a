// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// A line of progress on the terminal.

#pragma once

#include <chrono>
#include <cstdint>

namespace oxcv {

/// Shows nothing unless standard error is a terminal, nor in the first second.
class Progress {
  public:
    Progress();
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    /// Wipes the line.
    ~Progress();

    /// Makes room for another line; the next update shows this one again.
    void wipe();

    /// @param fraction done, 0 if unknown
    void update(std::int64_t frames, double fraction);

  private:
    using Clock = std::chrono::steady_clock;

    bool _terminal;
    bool _shown = false;
    Clock::time_point _start = Clock::now();
    Clock::time_point _next;
};

}  // namespace oxcv
