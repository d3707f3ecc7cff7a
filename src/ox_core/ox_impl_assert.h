/// @file
/// The idiom for broken preconditions; the checks stay in released code.

#pragma once

#include "ox_core/ox_exception.h"

/// Throws unless `condition` holds. `text` is the expression that the caller gets to read; `file`
/// is the source path without an ending, such as "src/ox_cv/ox_scaler".
#define OX_ASSERT_TEXT(condition, text, file)                                                     \
    do {                                                                                          \
        if (!(condition)) {                                                                       \
            throw ::ox::Exception(nullptr, ::ox::StatusAssertionFailed, __func__, file, __LINE__, \
                                  "Assertion failed: %s", text);                                  \
        }                                                                                         \
    } while (false)

/// The same where the text is the expression itself.
#define OX_ASSERT(expression, file) OX_ASSERT_TEXT(expression, #expression, file)
