// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Failures are compared by status and by their whole text.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>

#include "ox_core/ox_exception.h"

namespace ox::test {

// Expects that `action` throws an `ox::Exception` of that status with exactly that text.
template <class Action>
void expectException(Status status, std::string const& text, Action&& action,
                     char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
    try {
        action();
    } catch (Exception const& exception) {
        if (exception.status != status || exception.what() != text) {
            ADD_FAILURE_AT(file, line)
                << "got status " << exception.status << ", \"" << exception.what()
                << "\"; expected status " << status << ", \"" << text << "\"";
        }
        return;
    } catch (std::exception const& exception) {
        ADD_FAILURE_AT(file, line) << "got a foreign exception, \"" << exception.what() << "\"";
        return;
    }
    ADD_FAILURE_AT(file, line) << "nothing was thrown; expected status " << status << ", \"" << text
                               << "\"";
}

// The same where only the status is fixed.
template <class Action>
void expectStatus(Status status, Action&& action, char const* file = __builtin_FILE(),
                  int line = __builtin_LINE()) {
    try {
        action();
    } catch (Exception const& exception) {
        if (exception.status != status) {
            ADD_FAILURE_AT(file, line) << "got status " << exception.status << ", \""
                                       << exception.what() << "\"; expected status " << status;
        }
        return;
    }
    ADD_FAILURE_AT(file, line) << "nothing was thrown; expected status " << status;
}

}  // namespace ox::test
