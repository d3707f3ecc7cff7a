// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "output_target.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>

#include "failure.h"

namespace oxcv {

namespace {

using std::filesystem::path;

/// As many as the system follows.
constexpr int mostLinks = 40;

[[noreturn]] void refuse(std::string const& name, int error) {
    throw Failure(name + ": " + std::strerror(error));
}

path directoryOf(path const& file) {
    return file.has_parent_path() ? file.parent_path() : path(".");
}

bool areSame(path const& one, path const& other) {
    std::error_code error;
    return std::filesystem::equivalent(one, other, error) && !error;
}

/// The number of a name such as /dev/fd/3, if the directory is that of this process's descriptors.
std::optional<int> ownDescriptor(path const& file) {
    std::string const digits = file.filename().string();
    int number = 0;
    auto const [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || stop != digits.data() + digits.size()) {
        return std::nullopt;
    }
    path const directory = directoryOf(file);
    bool const own =
        areSame(directory, "/proc/self/fd") || areSame(directory, "/proc/thread-self/fd");
    return own ? std::optional(number) : std::nullopt;
}

/// Links that the system makes up don't always lead where their text says.
bool isMadeUp(path const& link) {
    struct statfs facts {};
    return statfs(directoryOf(link).c_str(), &facts) == 0 && facts.f_type == PROC_SUPER_MAGIC;
}

bool isLink(path const& file) {
    struct stat facts {};
    return lstat(file.c_str(), &facts) == 0 && S_ISLNK(facts.st_mode);
}

/// A write-protected file isn't replaced, not even for root.
void checkWritable(path const& file, mode_t mode, std::string const& name) {
    if ((mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        refuse(name, EACCES);
    }
    if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) {
        refuse(name, errno);
    }
}

/// Whether that is a regular file, or none yet.
bool isReplaced(path const& file, std::string const& name) {
    struct stat facts {};
    if (stat(file.c_str(), &facts) != 0) {
        if (errno != ENOENT) {
            refuse(name, errno);
        }
        return true;
    }
    if (S_ISREG(facts.st_mode)) {
        checkWritable(file, facts.st_mode, name);
    }
    return S_ISREG(facts.st_mode);
}

}  // namespace

OutputTarget findTarget(std::string const& given, std::string const& name) {
    path file = given;
    for (int links = 0; links <= mostLinks; ++links) {
        if (std::optional<int> const descriptor = ownDescriptor(file)) {
            return {descriptor, {}, false};
        }
        if (!isLink(file)) {
            return {std::nullopt, file.string(), isReplaced(file, name)};
        }
        if (isMadeUp(file)) {
            return {std::nullopt, file.string(), false};
        }
        std::error_code error;
        path const target = std::filesystem::read_symlink(file, error);
        if (error) {
            refuse(name, error.value());
        }
        file = file.parent_path() / target;
    }
    refuse(name, ELOOP);
}

}  // namespace oxcv
