// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "failure.h"
#include "options.h"
#include "printable.h"
#include "signals.h"
#include "standard_descriptors.h"

namespace {

constexpr int statusFailed = 1;
constexpr int statusUsage = 2;

void reportShortage() noexcept {
    std::fputs("oxcv: memory is exhausted\n", stderr);
}

/// One line, whatever the text: parts of it may come from a file that nobody has looked at.
void report(char const* text) noexcept {
    try {
        std::fprintf(stderr, "oxcv: %s\n", oxcv::printable(text, oxcv::longestLine).c_str());
    } catch (std::bad_alloc const&) {
        reportShortage();
    }
}

bool isShortage(std::exception_ptr const& active) {
    if (active == nullptr) {
        return true;  // there was no memory even for the exception
    }
    try {
        std::rethrow_exception(active);
    } catch (std::bad_alloc const&) {
        return true;
    } catch (...) {
        return false;
    }
}

[[noreturn]] void onTerminate() noexcept {
    if (isShortage(std::current_exception())) {
        reportShortage();
        oxcv::cleanUp();
        std::_Exit(statusFailed);
    }
    std::abort();
}

int run(int argc, char** argv) {
    oxcv::openStandardDescriptors();
    oxcv::ignoreWriteSignals();
    int const status = oxcv::runCommandLine(argc, argv);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        if (errno == EPIPE) {
            throw oxcv::BrokenPipe();
        }
        throw oxcv::Failure("standard output can't be written");
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(onTerminate);
    try {
        return run(argc, argv);
    } catch (oxcv::BrokenPipe const&) {
        return statusFailed;
    } catch (oxcv::UsageError const& error) {
        report(error.what());
        return statusUsage;
    } catch (std::bad_alloc const&) {
        reportShortage();
    } catch (std::exception const& error) {
        report(error.what());
    }
    return statusFailed;
}
