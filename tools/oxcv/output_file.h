// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// An output that appears whole or not at all.

#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "output_target.h"
#include "temporary_file.h"

namespace oxcv {

/// Bytes go to a temporary file beside the target, which takes the target's name on `commit`. It is
/// removed if there is no `commit`, and by signals that end the program. Descriptors that are open
/// already, devices and pipes are written directly. There can be two at a time.
class OutputFile {
  public:
    /// @param path "-" is standard output
    /// @throws Failure if the file can't be made
    explicit OutputFile(std::string const& path);
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;
    ~OutputFile();

    /// For messages.
    std::string const& name() const { return _name; }

    /// Appends bytes. Throws nothing, so that C libraries can call it.
    /// @return false after an error, which `check` reports
    bool write(void const* data, std::size_t count) noexcept;

    /// @throws BrokenPipe, Failure if writing has failed
    void check() const;

    /// True if bytes already written can be changed.
    bool seekable() const { return _seekable; }
    /// Changes bytes at `offset` from where this output began.
    void patch(std::uint64_t offset, void const* data, std::size_t count);

    /// Writes out what is still in memory. From here on little can fail.
    void complete();
    /// Makes the output appear.
    void commit();

  private:
    /// @return null if that failed, with `errno` set
    std::FILE* open(OutputTarget const& target);

    std::string _name;
    TemporaryFile _temporary;
    bool _replaces = false;  ///< whether the temporary file is written
    std::FILE* _file = nullptr;
    bool _seekable = false;
    std::int64_t _start = 0;  ///< file offset where this output begins
    int _error = 0;
};

}  // namespace oxcv
