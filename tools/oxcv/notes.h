// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Remarks on standard error, for `--verbose`.

#pragma once

#include <set>
#include <string>

namespace oxcv {

/// Says each remark once, however many frames it holds for.
class Notes {
  public:
    explicit Notes(bool wanted) : _wanted(wanted) {}

    void say(std::string const& remark);

  private:
    bool _wanted;
    std::set<std::string> _said;
};

}  // namespace oxcv
