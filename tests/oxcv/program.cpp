// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "support/random.h"
#include "support/test_frame.h"

namespace oxcv::test {

namespace {

struct Pipe {
    int reader;
    int writer;
};

Pipe openPipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        std::abort();
    }
    return {ends[0], ends[1]};
}

// A terminal of our own; what is written to it is read from the other end.
Pipe openTerminal() {
    int const reader = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (reader < 0 || grantpt(reader) != 0 || unlockpt(reader) != 0) {
        std::abort();
    }
    return {reader, open(ptsname(reader), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

std::string readAll(int descriptor) {
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(descriptor, buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

void writeAll(int descriptor, std::string const& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        ssize_t const count = ::write(descriptor, text.data() + done, text.size() - done);
        if (count <= 0) {
            return;  // the program has read enough
        }
        done += static_cast<std::size_t>(count);
    }
}

void addOption(char const* variable, std::string const& option) {
    char const* const before = std::getenv(variable);
    setenv(variable, (before != nullptr ? before + (":" + option) : option).c_str(), 1);
}

// So that a finding of the sanitizers isn't taken for a failure that the program reports.
void markSanitizerFindings() {
    static bool const marked = [] {
        addOption("ASAN_OPTIONS", "exitcode=99:allocator_may_return_null=1");
        addOption("UBSAN_OPTIONS", "exitcode=99");
        addOption("TSAN_OPTIONS", "exitcode=99:allocator_may_return_null=1");
        std::signal(SIGPIPE, SIG_IGN);
        return true;
    }();
    static_cast<void>(marked);
}

// What the sanitizers remark on an allocation that fails is no finding, nor the program's own
// words.
std::string withoutRemarks(std::string const& text) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Sanitizer failed to allocate") == std::string::npos) {
            kept += line + (lines.eof() ? "" : "\n");
        }
    }
    return kept;
}

}  // namespace

Program::Program(Words const& arguments, ErrorOutput error_output) {
    start(join({OXCV_PROGRAM}, arguments), error_output);
}

Program::Program(std::string const& script, Words const& arguments) {
    start(join({"/bin/sh", "-c", script, OXCV_PROGRAM}, arguments), ErrorOutput::Pipe);
}

void Program::start(Words words, ErrorOutput error_output) {
    markSanitizerFindings();
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    Pipe const in = openPipe();
    Pipe const out = openPipe();
    Pipe const err = error_output == ErrorOutput::Terminal ? openTerminal() : openPipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.reader, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.writer, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.writer, STDERR_FILENO);
    if (posix_spawn(&_id, pointers.front(), &actions, nullptr, pointers.data(), environ) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_destroy(&actions);
    close(in.reader);
    close(out.writer);
    close(err.writer);
    _in = in.writer;
    _out = out.reader;
    _err = err.reader;
}

Program::~Program() {
    close(_in);
    close(_err);
    closeOutput();
}

void Program::closeOutput() {
    close(_out);
    _out = -1;
}

void Program::feed(std::string const& input) const {
    writeAll(_in, input);
}

Result Program::finish(std::string const& input) {
    std::thread feeder([&] {
        feed(input);
        close(_in);
        _in = -1;
    });
    Result result;
    std::thread listener([&] { result.err = withoutRemarks(readAll(_err)); });
    result.out = readAll(_out);
    feeder.join();
    listener.join();
    int status = 0;
    rusage usage{};
    wait4(_id, &status, 0, &usage);
    result.peak_kilobytes = usage.ru_maxrss;
    result.status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}

Result run(Words const& arguments, std::string const& input) {
    return Program(arguments).finish(input);
}

Result runByShell(std::string const& script, Words const& arguments, std::string const& input) {
    return Program(script, arguments).finish(input);
}

ProgramTest::ProgramTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "oxcv-test.XXXXXX").string();
    _directory = mkdtemp(pattern.data());
}

ProgramTest::~ProgramTest() {
    std::filesystem::remove_all(_directory);
}

Words ProgramTest::files() const {
    Words names;
    for (auto const& entry : std::filesystem::directory_iterator(_directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool ProgramTest::somethingAppears() const {
    for (int i = 0; i < 1000 && files().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return !files().empty();
}

std::string ProgramTest::write(std::string const& name, std::string const& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string ProgramTest::read(std::string const& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string ProgramTest::converted(std::string const& input, Words const& options,
                                   std::string const& output) const {
    Result const result = run(join({"convert", "-", path(output)}, options), input);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return read(output);
}

std::string npyHeader(std::string const& type, std::string const& shape) {
    std::string text =
        "{'descr': '" + type + "', 'fortran_order': False, 'shape': (" + shape + "), }";
    text.resize(117, ' ');
    return std::string("\x93NUMPY\x01\x00\x76\x00", 10) + text + "\n";
}

Words rawInput(ox::FrameFormat format, ox::Size size) {
    return {"--input-kind",   "raw",
            "--input-format", ox::toString(format),
            "--input-size",   std::to_string(size.width) + "x" + std::to_string(size.height)};
}

Words join(Words first, Words const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

ox::Frame blankFrame(ox::FrameFormat format, ox::Size size) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    frame.setZero();
    return frame;
}

ox::Frame randomFrame(ox::FrameFormat format, ox::Size size, unsigned seed) {
    ox::Frame frame = blankFrame(format, size);
    ox::test::Random random(seed);
    ox::test::fillFloats(frame, random, 0, 255);
    return frame;
}

std::string bytesOf(ox::Frame const& frame) {
    std::string bytes;
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        ox::FramePlane const& plane = frame.layout().plane[i];
        for (int y = 0; y < plane.height; ++y) {
            unsigned char const* const row = ox::test::rowOf(frame, i, y);
            bytes.append(row, row + plane.rowBytes);
        }
    }
    return bytes;
}

void setBytes(ox::Frame const& frame, std::string const& bytes) {
    std::size_t taken = 0;
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        ox::FramePlane const& plane = frame.layout().plane[i];
        for (int y = 0; y < plane.height; ++y) {
            bytes.copy(reinterpret_cast<char*>(ox::test::rowOf(frame, i, y)), plane.rowBytes,
                       taken);
            taken += plane.rowBytes;
        }
    }
}

}  // namespace oxcv::test
