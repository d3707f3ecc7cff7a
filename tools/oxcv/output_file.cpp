#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "failure.h"

namespace oxcv {

namespace {

/// Where a signal handler finds the file to remove. The name is set before the file exists: to
/// remove one that isn't there does no harm.
char temporaryPath[PATH_MAX];
volatile std::sig_atomic_t temporaryExists = 0;

void removeTemporary() {
    if (temporaryExists != 0) {
        unlink(temporaryPath);
        temporaryExists = 0;
    }
}

extern "C" void onSignal(int number) {
    removeTemporary();
    static_cast<void>(std::signal(number, SIG_DFL));
    static_cast<void>(std::raise(number));
}

/// Signals that the caller had ignored, as nohup does, stay ignored.
void catchSignals() {
    for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action.sa_handler = onSignal;
            sigaction(number, &action, nullptr);
        }
    }
}

/// The permissions that a file made by open() would have, or those of the file to be replaced.
mode_t permissionsFor(std::string const& target) {
    struct stat facts {};
    if (stat(target.c_str(), &facts) == 0) {
        return facts.st_mode & 07777U;
    }
    mode_t const mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

bool isRegularOrNew(std::string const& path) {
    struct stat facts {};
    return stat(path.c_str(), &facts) != 0 || S_ISREG(facts.st_mode);
}

/// With symbolic links followed, so that they stay links.
std::string resolved(std::string const& path) {
    std::error_code error;
    std::filesystem::path const real = std::filesystem::weakly_canonical(path, error);
    return error ? path : real.string();
}

bool canSeek(int descriptor) {
    struct stat facts {};
    return fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) &&
           (fcntl(descriptor, F_GETFL) & O_APPEND) == 0;
}

}  // namespace

OutputFile::OutputFile(std::string const& path) : _name(path == "-" ? "standard output" : path) {
    if (path == "-") {
        _file = stdout;
    } else if (isRegularOrNew(path)) {
        openBeside(resolved(path));
    } else {
        _file = std::fopen(path.c_str(), "wb");
    }
    if (_file == nullptr) {
        int const error = errno;
        removeTemporary();
        throw Failure(_name + ": " + std::strerror(error));
    }
    int const descriptor = fileno(_file);
    _seekable = canSeek(descriptor);
    _start = _seekable ? lseek(descriptor, 0, SEEK_CUR) : 0;
}

OutputFile::~OutputFile() {
    if (_file != nullptr && _file != stdout) {
        static_cast<void>(std::fclose(_file));  // given up
    }
    removeTemporary();
}

void OutputFile::openBeside(std::string const& target) {
    std::string const pattern = target + ".XXXXXX";
    if (pattern.size() >= sizeof temporaryPath) {
        errno = ENAMETOOLONG;
        return;
    }
    std::memcpy(temporaryPath, pattern.c_str(), pattern.size() + 1);
    catchSignals();
    temporaryExists = 1;
    int const descriptor = mkstemp(temporaryPath);
    if (descriptor < 0) {
        temporaryExists = 0;
        return;
    }
    // Not all file systems keep permissions; the output is no worse for it.
    static_cast<void>(fchmod(descriptor, permissionsFor(target)));
    _target = target;
    _file = fdopen(descriptor, "wb");
}

bool OutputFile::write(void const* data, std::size_t count) noexcept {
    if (_error == 0 && std::fwrite(data, 1, count, _file) != count) {
        _error = errno;
    }
    return _error == 0;
}

void OutputFile::check() const {
    if (_error == EPIPE) {
        throw BrokenPipe();
    }
    if (_error != 0) {
        throw Failure(_name + ": " + std::strerror(_error));
    }
}

void OutputFile::patch(std::uint64_t offset, void const* data, std::size_t count) {
    off_t const place = _start + static_cast<off_t>(offset);
    if (std::fflush(_file) != 0 ||
        pwrite(fileno(_file), data, count, place) != static_cast<ssize_t>(count)) {
        _error = errno;
    }
    check();
}

void OutputFile::close() {
    bool const failed = _file == stdout ? std::fflush(_file) != 0 : std::fclose(_file) != 0;
    if (failed && _error == 0) {
        _error = errno;
    }
    _file = nullptr;
}

void OutputFile::commit() {
    close();
    if (_error == 0 && !_target.empty()) {
        if (std::rename(temporaryPath, _target.c_str()) == 0) {
            temporaryExists = 0;
        } else {
            _error = errno;
        }
    }
    check();
}

}  // namespace oxcv
