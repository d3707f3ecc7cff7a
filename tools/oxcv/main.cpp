#include <cerrno>
#include <cstdio>
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

/// One line, whatever the text: parts of it may come from a file that nobody has looked at.
void report(char const* text) noexcept {
    try {
        std::fprintf(stderr, "oxcv: %s\n", oxcv::printable(text, oxcv::longestLine).c_str());
    } catch (std::bad_alloc const&) {
        std::fputs("oxcv: memory is exhausted\n", stderr);
    }
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
    try {
        return run(argc, argv);
    } catch (oxcv::BrokenPipe const&) {
        return statusFailed;
    } catch (oxcv::UsageError const& error) {
        report(error.what());
        return statusUsage;
    } catch (std::bad_alloc const&) {
        report("memory is exhausted");
    } catch (std::exception const& error) {
        report(error.what());
    }
    return statusFailed;
}
