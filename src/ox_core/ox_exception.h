// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The one way in which the namespace `ox` reports failure.

#pragma once

#include <exception>

#include "ox_core/ox_api.h"
#include "ox_core/ox_status.h"

namespace ox {

/// Thrown by value, caught by reference. The text lies inside the object, so that an exhausted heap
/// can be reported too; a longer text is cut.
class OX_API Exception : public std::exception {
  public:
    /// @param cause the exception that this one replaces, or null
    /// @param function, file, line where it was raised; visible in a debugger, but not kept
    /// @param format printf-style format of the text, filled from the arguments behind it
    Exception(Exception const* cause, Status status, char const* function, char const* file,
              int line, char const* format, ...) __attribute__((format(printf, 7, 8)));
    Exception(Exception const&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    ~Exception() override;

    char const* what() const noexcept override;

    Status status;

  private:
    static constexpr int textCapacity = 5124;
    char _text[textCapacity];
};

static_assert(sizeof(Exception) == 8 + 4 + 5124, "status and text follow the base without a gap");

}  // namespace ox
