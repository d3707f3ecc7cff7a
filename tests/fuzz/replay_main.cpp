// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// ox_fuzz_replay FOLDER: runs each target with the inputs that are kept for it, the files of
// FOLDER/NAME. A finding ends the process, after the name of the file. OX_TEST_TARGET in the
// environment names an instruction set to run on.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/targets.h"
#include "support/test_target.h"

namespace {

using Path = std::filesystem::path;

std::vector<Path> filesOf(Path const& folder) {
    std::vector<Path> files;
    if (std::filesystem::is_directory(folder)) {
        for (auto const& entry : std::filesystem::directory_iterator(folder)) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(ox::fuzz::Target const& target, Path const& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> const bytes{std::istreambuf_iterator<char>(file), {}};
    std::fprintf(stderr, "%s\n", path.c_str());
    ox::fuzz::Input input(bytes);
    target.run(input);
}

constexpr int skipped = 77;  // as the other test programs say it

// As they do it.
int takeTarget() {
    char const* const wanted = std::getenv("OX_TEST_TARGET");
    if (wanted == nullptr) {
        return 0;
    }
    if (std::getenv("OX_TEST_UNLESS_BEST") != nullptr && ox::test::isBestTarget(wanted)) {
        return skipped;
    }
    ox::test::TargetChoice const choice = ox::test::takeTestTarget(wanted);
    return choice == ox::test::TargetChoice::Taken     ? 0
           : choice == ox::test::TargetChoice::Lacking ? skipped
                                                       : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (int const status = takeTarget(); status != 0) {
        return status;
    }
    // A target may work in a folder of its own.
    Path const folder = std::filesystem::absolute(argc > 1 ? argv[1] : ".");
    std::size_t count = 0;
    for (ox::fuzz::Target const& target : ox::fuzz::targets()) {
        for (Path const& path : filesOf(folder / target.name)) {
            replay(target, path);
            ++count;
        }
    }
    std::fprintf(stderr, "%zu inputs\n", count);
    return count == 0 ? 1 : 0;  // no folder of inputs
}
