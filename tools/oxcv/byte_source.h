// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The bytes of a file or of standard input.

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace oxcv {

class ByteSource {
  public:
    /// @param path "-" is standard input
    /// @throws Failure if the file can't be opened
    explicit ByteSource(std::string const& path);

    /// For messages.
    std::string const& name() const { return _name; }

    /// The next bytes, without taking them; fewer than `count` at the end.
    std::string_view peek(std::size_t count);

    /// Takes the next bytes; fewer than `count` at the end or after an error, which `check`
    /// reports. Throws nothing, so that C libraries can call it.
    std::size_t read(void* data, std::size_t count) noexcept;

    /// Takes bytes that nobody wants, as `read` does.
    std::uint64_t skip(std::uint64_t count) noexcept;

    /// @throws Failure if reading has failed
    void check() const;

    /// Bytes taken so far.
    std::uint64_t position() const { return _position; }
    /// The number of all bytes; nothing for pipes and the like.
    std::optional<std::uint64_t> size() const { return _size; }
    /// Bytes not taken yet, where `size` is known.
    std::optional<std::uint64_t> remaining() const;

  private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept;
    };

    std::size_t readFile(char* data, std::size_t count) noexcept;

    std::string _name;
    std::unique_ptr<std::FILE, Closer> _file;
    std::string _head;  ///< peeked at and not taken yet
    std::optional<std::uint64_t> _size;
    std::uint64_t _position = 0;
    int _error = 0;
};

}  // namespace oxcv
