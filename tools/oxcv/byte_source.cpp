// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "byte_source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "failure.h"
#include "printable.h"

namespace oxcv {

namespace {

/// Bytes from the file's current place to its end, if it is a regular file.
std::optional<std::uint64_t> regularBytes(int descriptor) {
    struct stat facts {};
    off_t const place = lseek(descriptor, 0, SEEK_CUR);
    if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode) || place < 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::max<off_t>(facts.st_size - place, 0));
}

}  // namespace

void ByteSource::Closer::operator()(std::FILE* file) const noexcept {
    if (file != stdin) {
        static_cast<void>(std::fclose(file));  // only read from
    }
}

ByteSource::ByteSource(std::string const& path)
    : _name(displayName(path, "standard input")),
      _file(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
    if (!_file) {
        throw Failure(_name + ": " + std::strerror(errno));
    }
    _size = regularBytes(fileno(_file.get()));
}

std::string_view ByteSource::peek(std::size_t count) {
    if (_head.size() < count) {
        std::string more(count - _head.size(), '\0');
        more.resize(readFile(more.data(), more.size()));
        _head += more;
    }
    return std::string_view(_head).substr(0, count);
}

std::size_t ByteSource::read(void* data, std::size_t count) noexcept {
    std::size_t const peeked = std::min(count, _head.size());
    std::memcpy(data, _head.data(), peeked);
    _head.erase(0, peeked);
    std::size_t const taken = peeked + readFile(static_cast<char*>(data) + peeked, count - peeked);
    _position += taken;
    return taken;
}

std::uint64_t ByteSource::skip(std::uint64_t count) noexcept {
    char unwanted[4096];
    std::uint64_t taken = 0;
    while (taken < count) {
        auto const wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(count - taken, sizeof(unwanted)));
        std::size_t const got = read(unwanted, wanted);
        taken += got;
        if (got < wanted) {
            break;
        }
    }
    return taken;
}

std::size_t ByteSource::readFile(char* data, std::size_t count) noexcept {
    std::size_t const taken = std::fread(data, 1, count, _file.get());
    if (taken < count && std::ferror(_file.get()) != 0) {
        _error = errno;
    }
    return taken;
}

void ByteSource::check() const {
    if (_error != 0) {
        throw Failure(_name + ": " + std::strerror(_error));
    }
}

std::optional<std::uint64_t> ByteSource::remaining() const {
    if (!_size) {
        return std::nullopt;
    }
    return *_size - std::min(*_size, _position);
}

}  // namespace oxcv
