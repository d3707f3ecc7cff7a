// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "determinism/table.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <cstring>

namespace ox::test {

namespace {

char const* const heading = "operation,digest\n";

}  // namespace

bool Table::sort() {
    std::sort(_lines.begin(), _lines.end());
    auto const twice = std::adjacent_find(
        _lines.begin(), _lines.end(),
        [](auto const& one, auto const& next) { return one.first == next.first; });
    if (twice != _lines.end()) {
        std::fprintf(stderr, "ox_determinism: '%s' is there twice.\n", twice->first.c_str());
    }
    return twice == _lines.end();
}

void Table::print(std::FILE* file) const {
    std::fputs(heading, file);
    for (auto const& [operation, digest] : _lines) {
        std::fprintf(file, "%s,%016" PRIx64 "\n", operation.c_str(), digest);
    }
}

bool Table::read(char const* path) {
    std::FILE* const file = std::fopen(path, "r");
    if (file == nullptr) {
        return false;
    }
    char line[200];
    bool good = std::fgets(line, sizeof line, file) != nullptr && std::strcmp(line, heading) == 0;
    while (good && std::fgets(line, sizeof line, file) != nullptr) {
        char* const comma = std::strrchr(line, ',');
        good = comma != nullptr;
        if (good) {
            add(std::string(line, comma), std::strtoull(comma + 1, nullptr, 16));
        }
    }
    std::fclose(file);
    return good;
}

int Table::compare(Table const& expected) const {
    int count = 0;
    auto const tell = [&](std::string const& operation, char const* what) {
        std::printf("%s: %s\n", operation.c_str(), what);
        ++count;
    };
    auto one = _lines.begin();
    auto other = expected._lines.begin();
    while (one != _lines.end() || other != expected._lines.end()) {
        if (other == expected._lines.end() || (one != _lines.end() && one->first < other->first)) {
            tell(one++->first, "not in the file");
        } else if (one == _lines.end() || other->first < one->first) {
            tell(other++->first, "not computed");
        } else {
            if (one->second != other->second) {
                tell(one->first, "other bytes");
            }
            ++one;
            ++other;
        }
    }
    return count;
}

}  // namespace ox::test
