// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "temporary_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "signals.h"

namespace oxcv {

/// Where a signal handler finds a file to remove. The name is set before the file exists: to remove
/// one that isn't there does no harm.
struct TemporaryFile::Slot {
    bool taken = false;
    char path[PATH_MAX]{};
    volatile std::sig_atomic_t exists = 0;

    static Slot all[2];

    void remove() {
        if (exists != 0) {
            unlink(path);
            exists = 0;
        }
    }
    static void removeAll() {
        for (Slot& slot : all) {
            slot.remove();
        }
    }
};

TemporaryFile::Slot TemporaryFile::Slot::all[2];

namespace {

/// The start of a name, without a part of a character of UTF-8 at its end.
std::string_view startOf(std::string_view name, std::size_t bytes) {
    std::size_t end = std::min(bytes, name.size());
    while (end > 0 && end < name.size() &&
           (static_cast<unsigned char>(name[end]) & 0xc0U) == 0x80U) {
        --end;
    }
    return name.substr(0, end);
}

/// The target's name, as much of it as leaves room for what mkstemp() replaces.
/// @return empty if there is no room for even that
std::string patternBeside(std::string const& target) {
    constexpr std::string_view ending = ".XXXXXX";
    std::size_t const name = target.rfind('/') + 1;  // 0 if there is no slash
    if (name + ending.size() >= PATH_MAX) {
        return {};
    }
    std::size_t const room = std::min<std::size_t>(NAME_MAX, PATH_MAX - 1 - name);
    std::string pattern = target.substr(0, name);
    pattern += startOf(std::string_view(target).substr(name), room - ending.size());
    return pattern += ending;
}

/// The permissions that a file made by open() would have, or those of the file to be replaced.
mode_t permissionsFor(std::string const& target) {
    struct stat facts {};
    if (stat(target.c_str(), &facts) == 0) {
        return facts.st_mode & 07777U;
    }
    mode_t const mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

}  // namespace

TemporaryFile::TemporaryFile()
    : _slot(std::find_if(std::begin(Slot::all), std::end(Slot::all),
                         [](Slot const& slot) { return !slot.taken; })) {
    assert(_slot != std::end(Slot::all));
    _slot->taken = true;
}

TemporaryFile::~TemporaryFile() {
    _slot->remove();
    _slot->taken = false;
}

int TemporaryFile::open(std::string const& target) {
    std::string const pattern = patternBeside(target);
    if (pattern.empty()) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(_slot->path, pattern.c_str(), pattern.size() + 1);
    cleanOnSignals(Slot::removeAll);
    _slot->exists = 1;
    int const descriptor = mkstemp(_slot->path);
    if (descriptor < 0) {
        _slot->exists = 0;
        return -1;
    }
    _target = target;
    // Not all file systems keep permissions; the output is no worse for it.
    static_cast<void>(fchmod(descriptor, permissionsFor(target)));
    return descriptor;
}

bool TemporaryFile::takeName() {
    if (std::rename(_slot->path, _target.c_str()) != 0) {
        return false;
    }
    _slot->exists = 0;
    return true;
}

}  // namespace oxcv
