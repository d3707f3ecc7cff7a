// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_exception.h"

#include <cstdarg>
#include <cstdio>

namespace ox {

Exception::Exception(Exception const* /*cause*/, Status reported, char const* /*function*/,
                     char const* /*file*/, int /*line*/, char const* format, ...)
    : status(reported), _text{} {
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is; the analyzer loses sight of it.
    std::vsnprintf(_text, sizeof _text, format, arguments);
    va_end(arguments);
}

Exception::~Exception() = default;

char const* Exception::what() const noexcept {
    return _text;
}

}  // namespace ox
