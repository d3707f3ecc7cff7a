// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What a name given for an output stands for.

#pragma once

#include <optional>
#include <string>

namespace oxcv {

/// One of three: a descriptor of this process, as /dev/stdout or /dev/fd/3 name it; a device, a
/// pipe and the like, to be opened; or a regular file, to be replaced or made.
struct OutputTarget {
    std::optional<int> descriptor;
    std::string path;       ///< with no symbolic link at its end
    bool replaced = false;  ///< whether that is a regular file
};

/// Follows symbolic links, also to files that don't exist yet.
/// @param path not empty
/// @param name for messages
/// @throws Failure if the file can't be looked at, or may not be written
OutputTarget findTarget(std::string const& path, std::string const& name);

}  // namespace oxcv
