// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The operations' names, each with the digest of all that it gave.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

namespace ox::test {

class Table {
  public:
    void add(std::string const& operation, std::uint64_t digest);

    // Lines "operation,digest", sorted, behind a line of names.
    void print(std::FILE* file) const;

    // Adds the lines of such a file; false if it can't be read.
    bool read(char const* path);

    // Tells each operation that one of the two lacks, or has with another digest.
    // @return how many there are
    int compare(Table const& expected) const;

    std::size_t size() const { return _digests.size(); }

  private:
    std::map<std::string, std::uint64_t> _digests;
};

}  // namespace ox::test
