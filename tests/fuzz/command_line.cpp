// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The tool's command line, in this process and a temporary folder: words of a grammar, and words of
// any bytes. It may refuse them; it may not fail otherwise, nor leave files that aren't whole.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "failure.h"
#include "fuzz/targets.h"
#include "options.h"
#include "ox_core/ox_exception.h"

namespace ox::fuzz {

namespace {

// Standard input is empty and standard output goes nowhere.
void silence() {
    int const nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    close(nothing);
}

int runTool(std::vector<std::string> words) {
    words.insert(words.begin(), "oxcv");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    try {
        return oxcv::runCommandLine(static_cast<int>(words.size()), arguments.data());
    } catch (oxcv::Failure const&) {
        return 1;
    } catch (oxcv::UsageError const&) {
        return 2;
    } catch (oxcv::BrokenPipe const&) {
        return 1;
    } catch (Exception const&) {
        return 1;
    } catch (std::bad_alloc const&) {
        return 1;
    }
}

constexpr std::array inputs{"in.png", "in.jpg", "in.y4m", "in.npy", "in.nv12", "in.bgr24", "-"};
constexpr std::array outputs{"out.png",  "out.jpg",  "out.y4m", "out.npy",
                             "out.nv12", "out.i420", "out",     "-"};
constexpr std::array options{
    "--add",         "--backend",      "--bars",        "--colour",       "--fit",
    "--format",      "--frames",       "--halves",      "--input-format", "--input-kind",
    "--input-size",  "--input-stride", "--invert",      "--keep-going",   "--kernel",
    "--layout",      "--mapping",      "--matrix",      "--max-pixels",   "--mean",
    "--method",      "--mul",          "--output-kind", "--precision",    "--quality",
    "--quant-scale", "--range",        "--raw",         "--recipe",       "--roi",
    "--rotate",      "--scale",        "--size",        "--std",          "--tolerant",
    "--type",        "--version",      "--warp",        "--warp-method",  "--zero-point",
    "--help",        "--verbose"};
constexpr std::array values{
    "1",        "0",       "7x7",      "3x",          "x3",       "50%",     "1,1,3,2", "nearest",
    "bilinear", "area",    "lanczos3", "box",         "8",        "16",      "simd",    "base",
    "png",      "jpeg",    "y4m",      "npy",         "raw",      "I420",    "NV12",    "BGR24",
    "GRAY8",    "BGR_32F", "YUYV",     "1,0,1,0,1,0", "45",       "-90.5",   "0.5",     "1e9",
    "nan",      "-1",      "1,2,3",    "letterbox",   "crop",     "stretch", "nchw",    "nhwc",
    "uint8",    "float16", "float32",  "rgb",         "bt709",    "full",    "out.txt", "123456",
    "5x4",      "4x4",     "auto",     "gray",        "triangle", "C1_16U",  "YUV444"};

// A file that would take the name of an output once it's whole.
bool isTemporary(std::string const& name) {
    return std::any_of(outputs.begin(), outputs.end(), [&](std::string const output) {
        return name.size() == output.size() + 7 && name.compare(0, output.size(), output) == 0 &&
               name[output.size()] == '.';
    });
}

// Words of an input's own. They name no file elsewhere and, with two digits in a row at most, no
// picture that takes long.
std::string freeWord(Input& input) {
    std::string word;
    int digits = 0;
    for (int i = input.between(0, 12); i > 0; --i) {
        char letter = static_cast<char>(input.byte());
        digits = letter >= '0' && letter <= '9' ? digits + 1 : 0;
        if (letter == '\0' || letter == '/' || digits > 2) {
            letter = '.';
        }
        word += letter;
    }
    return word;
}

std::string drawValue(Input& input) {
    return input.byte() % 8 == 0 ? freeWord(input) : std::string(input.pick(values));
}

std::vector<std::string> drawWords(Input& input) {
    constexpr std::array commands{"convert", "convert", "tensor", "info", "formats"};
    std::vector<std::string> words{input.pick(commands)};
    if (words[0] != "formats") {
        words.push_back(input.pick(inputs));
    }
    if (words[0] == "tensor" && input.oneIn(2)) {
        words.push_back(input.pick(inputs));
    }
    if (words[0] == "convert" || words[0] == "tensor") {
        words.push_back(input.pick(outputs));
    }
    for (int i = input.between(0, 6); i > 0; --i) {
        words.push_back(input.pick(options));
        if (input.byte() % 8 != 0) {
            words.push_back(drawValue(input));
        }
    }
    if (input.oneIn(8)) {
        words.insert(words.begin() + input.between(0, static_cast<int>(words.size())),
                     "-" + freeWord(input));
    }
    return words;
}

// Where the tool works, with a small file of each kind. Gone with the process.
class Folder {
  public:
    Folder()
        : _path(std::filesystem::exists("/dev/shm") ? "/dev/shm/ox_fuzz_XXXXXX"
                                                    : "/tmp/ox_fuzz_XXXXXX") {
        if (mkdtemp(_path.data()) == nullptr || chdir(_path.c_str()) != 0) {
            fail("there is no temporary folder");
        }
        silence();
        std::ofstream("in.bgr24", std::ios::binary) << std::string(std::size_t{5} * 4 * 3, 'x');
        for (char const* const name : {"in.png", "in.jpg", "in.y4m", "in.npy", "in.nv12"}) {
            if (runTool({"convert", "in.bgr24", name, "--input-size", "5x4"}) != 0) {
                fail("%s isn't made", name);
            }
            std::filesystem::permissions(name, std::filesystem::perms::owner_read);
        }
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() { std::filesystem::remove_all(_path); }

    // Removes outputs, of which there may be none that isn't whole.
    void sweep() const {
        for (auto const& entry : std::filesystem::directory_iterator(_path)) {
            std::string const name = entry.path().filename();
            if (isTemporary(name)) {
                fail("\"%s\" is left", name.c_str());
            }
            if (name.compare(0, 3, "in.") != 0) {
                std::filesystem::remove_all(entry.path());
            }
        }
    }

  private:
    std::string _path;
};

}  // namespace

void command_line(Input& input) {
    static Folder const folder;
    std::vector<std::string> const words = drawWords(input);
    runTool(words);
    folder.sweep();
}

}  // namespace ox::fuzz
