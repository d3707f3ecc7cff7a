// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The idiom for failures and broken preconditions. A source file states its name once; the
/// compiler fills in function and line. The checks stay in released code.

#pragma once

#include <algorithm>
#include <string_view>
#include <type_traits>

#include "ox_core/ox_exception.h"

namespace ox::impl {

/// A printf-style text for arguments of these types. It is checked here, because the compiler's
/// check of `Exception` only sees texts that are written in the call.
template <class... Arguments>
struct FailureText {
    consteval FailureText(char const* written) : text(written) {
        std::string_view rest = written;
        for (std::string_view const wanted : {conversionOf(Arguments{})..., std::string_view()}) {
            rest.remove_prefix(std::min(rest.find('%'), rest.size()));
            if (!rest.starts_with(wanted) || wanted.empty() != rest.empty()) {
                throw "the text is made for other arguments";
            }
            rest.remove_prefix(wanted.size());
        }
    }
    char const* text;

  private:
    static constexpr std::string_view conversionOf(char const*) { return "%s"; }
    static constexpr std::string_view conversionOf(int) { return "%d"; }
    static constexpr std::string_view conversionOf(unsigned) { return "%u"; }
    static constexpr std::string_view conversionOf(unsigned long) { return "%lu"; }
};

/// What is reported: a status, or an exception that is replaced. By default the function is the one
/// that reports.
struct Failure {
    Failure(Status reported, char const* in = __builtin_FUNCTION(), int at = __builtin_LINE())
        : cause(nullptr), status(reported), function(in), line(at) {}
    Failure(Exception const& replaced, char const* in = __builtin_FUNCTION(),
            int at = __builtin_LINE())
        : cause(&replaced), status(replaced.status), function(in), line(at) {}

    Exception const* cause;
    Status status;
    char const* function;
    int line;
};

/// A source file as failures name it: its path without an ending, such as "src/ox_cv/ox_scaler".
/// Each source calls its own place `here`.
struct Place {
    char const* file;

// FailureText has checked what the compiler can't see here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    /// Not inlined, as `failAssertion`, so that the code at checks stays small.
    template <class... Arguments>
    [[noreturn, gnu::cold, gnu::noinline]] void fail(
        Failure const& failure, FailureText<std::type_identity_t<Arguments>...> text,
        Arguments... arguments) const {
        throw Exception(failure.cause, failure.status, failure.function, file, failure.line,
                        text.text, arguments...);
    }
#pragma GCC diagnostic pop

    /// Throws unless a precondition holds.
    /// @param expression part of the text
    void require(bool holds, char const* expression, char const* function = __builtin_FUNCTION(),
                 int line = __builtin_LINE()) const {
        if (!holds) {
            failAssertion(function, file, line, expression);
        }
    }

  private:
    [[noreturn, gnu::cold, gnu::noinline]] static void failAssertion(char const* function,
                                                                     char const* file, int line,
                                                                     char const* expression) {
        throw Exception(nullptr, StatusAssertionFailed, function, file, line,
                        "Assertion failed: %s", expression);
    }
};

}  // namespace ox::impl

/// Requires `expression` of the `ox::impl::Place` that is called `here`.
#define OX_ASSERT(expression) here.require(expression, #expression)
