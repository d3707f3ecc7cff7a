// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The program under test, and a directory for its files.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ox_core/ox_frame.h"

namespace oxcv::test {

using Words = std::vector<std::string>;

// The sanitizers reserve more addresses than a limit leaves, and catch signals of their own.
constexpr bool underSanitizer =
#ifdef OXCV_SANITIZED
    true;
#else
    false;
#endif

struct Result {
    int status = -1;  // exit status; minus the signal's number if one ended the program
    std::string out;
    std::string err;
    long peak_kilobytes = 0;  // of memory
};

enum class ErrorOutput { Pipe, Terminal };

// A program that runs, with pipes on its standard input and output.
class Program {
  public:
    explicit Program(Words const& arguments, ErrorOutput error_output = ErrorOutput::Pipe);
    // Started by a shell: `script` ends with `exec "$0" "$@"` and what is to be redirected.
    Program(std::string const& script, Words const& arguments);
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;
    ~Program();

    pid_t id() const { return _id; }
    void closeOutput();
    void feed(std::string const& input) const;
    // Feeds it, reads what it says and waits for its end.
    Result finish(std::string const& input);

  private:
    void start(Words words, ErrorOutput error_output);

    pid_t _id = -1;
    int _in = -1;
    int _out = -1;
    int _err = -1;
};

// Runs the program from start to end.
Result run(Words const& arguments, std::string const& input = {});
// The same by a shell, as above.
Result runByShell(std::string const& script, Words const& arguments, std::string const& input = {});

// A test with an empty directory of its own.
class ProgramTest : public ::testing::Test {
  protected:
    ProgramTest();
    ~ProgramTest() override;

    std::string path(std::string const& name) const { return (_directory / name).string(); }
    // Names of all files in the directory, in order.
    Words files() const;
    // Waits until there are files in the directory.
    bool somethingAppears() const;

    std::string write(std::string const& name, std::string const& bytes) const;
    std::string read(std::string const& name) const;

    // `oxcv convert` of the bytes to a file, which is expected to work; its bytes.
    std::string converted(std::string const& input, Words const& options,
                          std::string const& output) const;

  private:
    std::filesystem::path _directory;
};

// What stands in front of a NumPy array; a shape such as "2, 3".
std::string npyHeader(std::string const& type, std::string const& shape);

// Words such as those that say what raw frames are.
Words rawInput(ox::FrameFormat format, ox::Size size);
Words join(Words first, Words const& second);

// A cleared frame, and one of random pixels; floats are between 0 and 255.
ox::Frame blankFrame(ox::FrameFormat format, ox::Size size);
ox::Frame randomFrame(ox::FrameFormat format, ox::Size size, unsigned seed = 1);

// All rows of all planes without gaps.
std::string bytesOf(ox::Frame const& frame);
void setBytes(ox::Frame const& frame, std::string const& bytes);

}  // namespace oxcv::test
