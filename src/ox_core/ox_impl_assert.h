/// @file
/// The idiom for broken preconditions; the checks stay in released code.

#pragma once

#include "ox_core/ox_exception.h"

namespace ox::impl {

/// Apart from the checks, so that these stay small.
[[noreturn, gnu::cold, gnu::noinline]] inline void throwAssertion(char const* function,
                                                                  char const* file, int line,
                                                                  char const* text) {
    throw Exception(nullptr, StatusAssertionFailed, function, file, line, "Assertion failed: %s",
                    text);
}

}  // namespace ox::impl

/// Throws unless `condition` holds. `text` is the expression that the caller gets to read; `file`
/// is the source path without an ending, such as "src/ox_cv/ox_scaler".
#define OX_ASSERT_TEXT(condition, text, file)                           \
    do {                                                                \
        if (!(condition)) {                                             \
            ::ox::impl::throwAssertion(__func__, file, __LINE__, text); \
        }                                                               \
    } while (false)

/// The same where the text is the expression itself.
#define OX_ASSERT(expression, file) OX_ASSERT_TEXT(expression, #expression, file)
