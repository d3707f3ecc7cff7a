// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "determinism/table.h"

#include <cinttypes>
#include <cstdlib>
#include <fstream>

namespace ox::test {

namespace {

char const* const heading = "operation,digest";

}  // namespace

void Table::add(std::string const& operation, std::uint64_t digest) {
    if (!_digests.emplace(operation, digest).second) {
        std::fprintf(stderr, "ox_determinism: '%s' is there twice.\n", operation.c_str());
        std::exit(2);
    }
}

void Table::print(std::FILE* file) const {
    std::fprintf(file, "%s\n", heading);
    for (auto const& [operation, digest] : _digests) {
        std::fprintf(file, "%s,%016" PRIx64 "\n", operation.c_str(), digest);
    }
}

bool Table::read(char const* path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line) || line != heading) {
        return false;
    }
    while (std::getline(file, line)) {
        std::size_t const comma = line.rfind(',');
        if (comma == std::string::npos) {
            return false;
        }
        add(line.substr(0, comma), std::strtoull(line.c_str() + comma + 1, nullptr, 16));
    }
    return true;
}

int Table::compare(Table const& expected) const {
    int count = 0;
    for (auto const& [operation, digest] : _digests) {
        auto const found = expected._digests.find(operation);
        if (found == expected._digests.end() || found->second != digest) {
            std::printf("%s: %s\n", operation.c_str(),
                        found == expected._digests.end() ? "not in the file" : "other bytes");
            ++count;
        }
    }
    for (auto const& [operation, digest] : expected._digests) {
        if (_digests.count(operation) == 0) {
            std::printf("%s: not computed\n", operation.c_str());
            ++count;
        }
    }
    return count;
}

}  // namespace ox::test
