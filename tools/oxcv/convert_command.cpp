// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "backends.h"
#include "commands.h"
#include "failure.h"
#include "library_calls.h"
#include "notes.h"
#include "parse.h"
#include "progress.h"

namespace oxcv {

namespace {

double fractionDone(FrameReader const& reader, std::int64_t frames,
                    std::optional<std::int64_t> limit) {
    double const by_bytes = reader.fractionRead().value_or(0);
    double const by_count = limit ? static_cast<double>(frames) / static_cast<double>(*limit) : 0;
    return std::max(by_bytes, by_count);
}

/// The steps' own failures don't know the file.
ox::Frame runSteps(StepRunner& runner, std::string const& input, ox::Frame& frame) {
    return attempt(input, [&] {
        try {
            return runner.run(frame);
        } catch (Failure const& failure) {
            throw Failure(input + ": " + failure.what());
        }
    });
}

/// @return frames converted
std::int64_t pump(ConvertOptions const& options, FrameReader& reader, StepRunner& runner,
                  FrameWriter& writer) {
    std::string const input = nameOf(options.input);
    std::string const output = nameOf(options.output);
    std::optional<std::int64_t> const limit = options.frames;
    Progress progress;
    ox::Frame frame;
    std::int64_t frames = 0;
    while ((!limit || frames < *limit) && attempt(input, [&] { return reader.read(frame); })) {
        ox::Frame const result = runSteps(runner, input, frame);
        attempt(output, [&] { writer.write(result); });
        ++frames;
        progress.update(frames, fractionDone(reader, frames, limit));
    }
    return frames;
}

}  // namespace

void convert(ConvertOptions options) {
    Notes notes(options.verbose);
    Backend backend(options.backend, notes);
    auto const [input_kind, reader] = openInput(options.input);
    checkPixels(nameOf(options.input), reader->info().size, options.max_pixels);
    FileKind const& output_kind = outputKind(options.output, *input_kind);
    if (options.output.halves && output_kind.name != "npy") {
        throw UsageError("--halves: only npy arrays hold them");
    }
    if (!options.steps.format && options.output.path != "-") {
        ox::FrameFormat const named = formatByEnding(options.output.path);
        if (named != ox::FRAME_FORMAT_NONE) {
            options.steps.format = named;
        }
    }
    options.output.rate = reader->info().rate;
    options.output.frames = expectedFrames(reader->info().frames, options.frames);

    StepRunner runner(options.steps, backend, output_kind.storedAs);
    OutputFile file(options.output.path);
    auto const writer = output_kind.makeWriter(file, options.output);
    if (pump(options, *reader, runner, *writer) == 0) {
        throw Failure(nameOf(options.input) + ": there are no frames");
    }
    writer->finish();
    file.commit();
}

}  // namespace oxcv
