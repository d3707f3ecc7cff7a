// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "signals.h"

#include <algorithm>
#include <array>
#include <csignal>

namespace oxcv {

namespace {

/// By default all signals but these end a program.
constexpr std::array harmless{SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP,
                              SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH};

void (*cleaner)() = nullptr;

/// Signals are blocked during this function, so the signal raised here arrives after its return.
extern "C" void onSignal(int number) {
    cleaner();
    static_cast<void>(std::signal(number, SIG_DFL));
    static_cast<void>(std::raise(number));
}

void catchSignal(int number) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
        action.sa_handler = onSignal;
        sigfillset(&action.sa_mask);
        sigaction(number, &action, nullptr);  // refused for SIGKILL
    }
}

}  // namespace

void ignoreWriteSignals() {
    for (int const number : {SIGPIPE, SIGXFSZ}) {
        static_cast<void>(std::signal(number, SIG_IGN));
    }
}

void cleanOnSignals(void (*clean)()) {
    cleaner = clean;
    int const last = SIGRTMAX;
    for (int number = 1; number <= last; ++number) {
        if (std::find(harmless.begin(), harmless.end(), number) == harmless.end()) {
            catchSignal(number);
        }
    }
}

void cleanUp() {
    if (cleaner != nullptr) {
        cleaner();
    }
}

}  // namespace oxcv
