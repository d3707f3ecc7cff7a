// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "failure.h"
#include "printable.h"

namespace oxcv {

namespace {

bool canSeek(int descriptor) {
    struct stat facts {};
    return fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) &&
           (fcntl(descriptor, F_GETFL) & O_APPEND) == 0;
}

/// A duplicate of a descriptor that is open for writing; -1 with `errno` set if it isn't.
int duplicate(int descriptor) {
    int const flags = fcntl(descriptor, F_GETFL);
    if (flags >= 0 && (flags & O_ACCMODE) == O_RDONLY) {
        errno = EBADF;
        return -1;
    }
    return dup(descriptor);
}

/// A stream that owns a descriptor; null if there is none, or no memory.
std::FILE* streamOf(int descriptor) {
    std::FILE* const stream = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
    if (stream == nullptr && descriptor >= 0) {
        close(descriptor);
    }
    return stream;
}

}  // namespace

OutputFile::OutputFile(std::string const& path) : _name(displayName(path, "standard output")) {
    _file = path == "-" ? stdout : open(findTarget(path, _name));
    if (_file == nullptr) {
        throw Failure(_name + ": " + std::strerror(errno));
    }
    int const descriptor = fileno(_file);
    _seekable = canSeek(descriptor);
    _start = _seekable ? lseek(descriptor, 0, SEEK_CUR) : 0;
}

OutputFile::~OutputFile() {
    if (_file != nullptr && _file != stdout) {
        static_cast<void>(std::fclose(_file));  // given up
    }
}

std::FILE* OutputFile::open(OutputTarget const& target) {
    _replaces = target.replaced;
    if (_replaces) {
        return streamOf(_temporary.open(target.path));
    }
    return target.descriptor ? streamOf(duplicate(*target.descriptor))
                             : std::fopen(target.path.c_str(), "wb");
}

bool OutputFile::write(void const* data, std::size_t count) noexcept {
    if (_error == 0 && std::fwrite(data, 1, count, _file) != count) {
        _error = errno;
    }
    return _error == 0;
}

void OutputFile::check() const {
    if (_error == EPIPE) {
        throw BrokenPipe();
    }
    if (_error != 0) {
        throw Failure(_name + ": " + std::strerror(_error));
    }
}

void OutputFile::patch(std::uint64_t offset, void const* data, std::size_t count) {
    off_t const place = _start + static_cast<off_t>(offset);
    if (std::fflush(_file) != 0 ||
        pwrite(fileno(_file), data, count, place) != static_cast<ssize_t>(count)) {
        _error = errno;
    }
    check();
}

void OutputFile::complete() {
    if (_file != nullptr) {
        bool const failed = _file == stdout ? std::fflush(_file) != 0 : std::fclose(_file) != 0;
        if (failed && _error == 0) {
            _error = errno;
        }
        _file = nullptr;
    }
    check();
}

void OutputFile::commit() {
    complete();
    if (_replaces && !_temporary.takeName()) {
        _error = errno;
    }
    check();
}

}  // namespace oxcv
