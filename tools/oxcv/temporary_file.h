// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// A file that takes another's name when it is whole, and vanishes otherwise.

#pragma once

#include <string>

namespace oxcv {

/// Lies beside the target, with the target's permissions if that exists. The temporary file is
/// removed with this object, and by every signal that ends the program. There can be two at a time.
class TemporaryFile {
  public:
    TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;
    ~TemporaryFile();

    /// @return a descriptor for writing, or -1 with `errno` set
    int open(std::string const& target);
    /// @return false if that failed, with `errno` set
    bool takeName();

  private:
    struct Slot;

    Slot* _slot = nullptr;
    std::string _target;
};

}  // namespace oxcv
