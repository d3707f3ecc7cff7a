// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "failure.h"

namespace oxcv {

void openStandardDescriptors() {
    constexpr char const* path = "/dev/null";
    // In rising order, so that each takes the lowest free number, its own.
    for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0) {
            continue;
        }
        int const access = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (open(path, access) != descriptor) {
            throw Failure(std::string(path) + ": " + std::strerror(errno));
        }
    }
}

}  // namespace oxcv
