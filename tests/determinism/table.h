// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The operations' names, each with the digest of all that it gave.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace ox::test {

class Table {
  public:
    void add(std::string const& operation, std::uint64_t digest) {
        _lines.emplace_back(operation, digest);
    }

    // To be called before the others, after all lines were added.
    // @return false if an operation is there twice, which is told
    bool sort();

    // Lines "operation,digest" behind a line of names.
    void print(std::FILE* file) const;

    // Adds the lines of such a file; false if it can't be read.
    bool read(char const* path);

    // Tells each operation that one of the two lacks, or has with another digest.
    // @return how many there are
    int compare(Table const& expected) const;

    std::size_t size() const { return _lines.size(); }

  private:
    std::vector<std::pair<std::string, std::uint64_t>> _lines;
};

}  // namespace ox::test
