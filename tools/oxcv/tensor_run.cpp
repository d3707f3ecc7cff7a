// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "tensor_run.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "failure.h"
#include "printable.h"

namespace oxcv {

namespace {

/// The tool's own failure in a call, which may be left out; others aren't caught.
template <class Call>
std::exception_ptr failureOf(Call call) {
    try {
        call();
    } catch (Failure const&) {
        return std::current_exception();
    } catch (UsageError const&) {
        return std::current_exception();
    }
    return nullptr;
}

/// Frames of a file, unless it can be opened only once or doesn't tell.
std::optional<std::int64_t> framesOf(InputRequest const& request) {
    std::error_code error;
    if (request.path == "-" || !std::filesystem::is_regular_file(request.path, error)) {
        return std::nullopt;
    }
    std::optional<std::int64_t> frames;
    bool const failed =
        failureOf([&] { frames = openInput(request).reader->info().frames; }) != nullptr;
    return failed ? 0 : frames;  // the failure is told when it is the file's turn
}

}  // namespace

TensorRun::TensorRun(TensorOptions const& options, std::vector<std::string> const& inputs,
                     TensorArray& array)
    : _options(options), _inputs(inputs), _array(array), _turns(inputs.size()) {}

void TensorRun::run(PictureMaker& maker) {
    auto const wanted =
        std::min(static_cast<std::uint64_t>(_options.jobs), std::uint64_t{_inputs.size()});
    std::vector<std::thread> helpers;
    try {
        while (helpers.size() + 1 < wanted) {
            helpers.emplace_back([this] { help(); });
        }
    } catch (std::system_error const&) {
        // As many threads as the system gives do the same work.
    } catch (std::bad_alloc const&) {
    }
    work(maker);
    std::for_each(helpers.begin(), helpers.end(), [](std::thread& helper) { helper.join(); });
    _turns.rethrow();
}

void TensorRun::help() noexcept {
    try {
        PictureMaker maker(_options);
        work(maker);
    } catch (...) {
        // There is no memory for one more thread; the others do its work.
    }
}

void TensorRun::work(PictureMaker& maker) noexcept {
    try {
        std::size_t item = 0;
        while (_turns.take(item)) {
            doFile(maker, item);
        }
    } catch (...) {
        _turns.stop(std::current_exception());
    }
}

void TensorRun::doFile(PictureMaker& maker, std::size_t item) {
    std::exception_ptr const failure = failureOf([&] {
        maker.open(_inputs[item]);
        if (!maker.next()) {
            throw Failure(maker.name() + ": there are no frames");
        }
    });
    if (!_turns.await(item)) {
        return;
    }
    if (item == 0 && _array.needsCount()) {
        expectFrames(failure == nullptr ? maker.reader().info().frames : 0);
    }
    handOver(maker, item, failure);
    maker.close();
    _turns.pass(!reachedLimit());
}

void TensorRun::handOver(PictureMaker& maker, std::size_t item, std::exception_ptr failure) {
    MappedFile file{_inputs[item], 0, maker.mapping()};
    for (bool more = failure == nullptr; more;) {
        _array.write(maker.picture());
        ++file.frames;
        ++_frames;
        _progress.update(_frames, fractionDone(maker.reader(), item));
        more = false;
        failure = failureOf([&] { more = !reachedLimit() && maker.next(); });
    }
    if (file.frames > 0) {
        _files.push_back(std::move(file));
    }
    if (failure != nullptr) {
        leaveOut(failure);
    }
}

void TensorRun::leaveOut(std::exception_ptr const& failure) {
    if (!_options.keep_going) {
        std::rethrow_exception(failure);
    }
    ++_failures;
    _progress.wipe();
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "oxcv: %s\n", printable(error.what(), longestLine).c_str());
    }
}

void TensorRun::expectFrames(std::optional<std::int64_t> of_first) {
    std::optional<std::int64_t> total = of_first;
    for (std::size_t i = 1; i < _inputs.size() && total; ++i) {
        std::optional<std::int64_t> const frames = framesOf(requestFor(_options, _inputs[i]));
        bool const fits = frames && !__builtin_add_overflow(*total, *frames, &*total);
        total = fits ? total : std::nullopt;
    }
    _array.expect(expectedFrames(total, _options.frames));
}

double TensorRun::fractionDone(FrameReader const& reader, std::size_t item) const {
    double const files = static_cast<double>(item) + reader.fractionRead().value_or(0);
    double const by_files = files / static_cast<double>(_inputs.size());
    double const by_count =
        _options.frames ? static_cast<double>(_frames) / static_cast<double>(*_options.frames) : 0;
    return std::max(by_files, by_count);
}

}  // namespace oxcv
