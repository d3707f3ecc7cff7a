// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace oxcv {

namespace {

constexpr std::chrono::milliseconds patience{1000};
constexpr std::chrono::milliseconds interval{200};
/// Back to the line's start, and wipe it.
constexpr char const* wipeLine = "\r\x1b[K";

}  // namespace

Progress::Progress() : _terminal(isatty(STDERR_FILENO) == 1), _next(_start + patience) {}

Progress::~Progress() {
    wipe();
}

void Progress::wipe() {
    if (_shown) {
        std::fputs(wipeLine, stderr);
        _shown = false;
    }
}

void Progress::update(std::int64_t frames, double fraction) {
    Clock::time_point const now = Clock::now();
    if (!_terminal || now < _next) {
        return;
    }
    _next = now + interval;
    _shown = true;
    double const seconds = std::chrono::duration<double>(now - _start).count();
    std::fprintf(stderr, "%s%" PRId64 " frames, %.1f frames/s", wipeLine, frames,
                 static_cast<double>(frames) / seconds);
    if (fraction > 0) {
        auto const left = static_cast<std::int64_t>(seconds * (1 / fraction - 1));
        std::fprintf(stderr, ", %.0f%%, %" PRId64 ":%02" PRId64 " left", 100 * fraction, left / 60,
                     left % 60);
    }
    std::fflush(stderr);
}

}  // namespace oxcv
