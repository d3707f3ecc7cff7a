// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How the tool's own failures travel to main.

#pragma once

#include <stdexcept>

namespace oxcv {

/// A command failed: exit status 1, the text on standard error.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The command line asks for something that makes no sense: exit status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The reader of the output has gone: exit status 1, without a text.
class BrokenPipe : public std::runtime_error {
  public:
    BrokenPipe() : std::runtime_error("broken pipe") {}
};

}  // namespace oxcv
