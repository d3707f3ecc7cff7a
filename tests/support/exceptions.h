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

// The same where the text is a fixed one in front of the text of a cause, which isn't fixed.
template <class Action>
void expectTextAfter(Status status, std::string const& start, Action&& action,
                     char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
    std::string text;
    expectStatus(
        status,
        [&] {
            try {
                action();
            } catch (Exception const& exception) {
                text = exception.what();
                throw;
            }
        },
        file, line);
    if (text.compare(0, start.size(), start) != 0 || text.size() == start.size()) {
        ADD_FAILURE_AT(file, line)
            << "got \"" << text << "\"; expected a text after \"" << start << "\"";
    }
}

}  // namespace ox::test
