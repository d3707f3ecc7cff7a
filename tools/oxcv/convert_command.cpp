#include <algorithm>

#include "backends.h"
#include "commands.h"
#include "failure.h"
#include "notes.h"
#include "progress.h"

namespace oxcv {

namespace {

/// How many frames will be converted, as far as that can be told. Where the source doesn't tell,
/// the caller's limit counts as a promise to a writer that has to know.
std::optional<std::int64_t> expectedFrames(std::optional<std::int64_t> in_source,
                                           std::optional<std::int64_t> limit) {
    if (in_source && limit) {
        return std::min(*in_source, *limit);
    }
    return in_source ? in_source : limit;
}

double fractionDone(FrameReader const& reader, std::int64_t frames,
                    std::optional<std::int64_t> limit) {
    double const by_bytes = reader.fractionRead().value_or(0);
    double const by_count = limit ? static_cast<double>(frames) / static_cast<double>(*limit) : 0;
    return std::max(by_bytes, by_count);
}

/// @return frames converted
std::int64_t pump(FrameReader& reader, Pipeline& pipeline, FrameWriter& writer,
                  std::optional<std::int64_t> limit) {
    Progress progress;
    ox::Frame frame;
    std::int64_t frames = 0;
    while ((!limit || frames < *limit) && reader.read(frame)) {
        writer.write(pipeline.run(frame));
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
    FileKind const& output_kind = outputKind(options.output, *input_kind);
    if (!options.steps.format && options.output.path != "-") {
        ox::FrameFormat const named = formatByEnding(options.output.path);
        if (named != ox::FRAME_FORMAT_NONE) {
            options.steps.format = named;
        }
    }
    options.output.rate = reader->info().rate;
    options.output.frames = expectedFrames(reader->info().frames, options.frames);

    Pipeline pipeline(options.steps, backend, output_kind.storedAs);
    OutputFile file(options.output.path);
    auto const writer = output_kind.makeWriter(file, options.output);
    if (pump(*reader, pipeline, *writer, options.frames) == 0) {
        throw Failure((options.input.path == "-" ? "standard input" : options.input.path) +
                      ": there are no frames");
    }
    writer->finish();
    file.commit();
}

}  // namespace oxcv
