// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "image_io.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "failure.h"
#include "file_kinds.h"
#include "library_calls.h"
#include "parse.h"
#include "printable.h"

namespace oxcv {

namespace {

std::vector<FileKind> const& fileKinds() {
    using namespace std::string_view_literals;
    static std::vector<FileKind> const kinds{
        {"png", {"png"}, "\x89PNG\r\n\x1a\n"sv, makePngReader, makePngWriter, pictureFormat},
        {"jpeg", {"jpg", "jpeg"}, "\xff\xd8\xff"sv, makeJpegReader, makeJpegWriter, pictureFormat},
        {"y4m", {"y4m"}, "YUV4MPEG2 "sv, makeY4mReader, makeY4mWriter, y4mFormat},
        {"npy", {"npy"}, "\x93NUMPY"sv, makeNpyReader, makeNpyWriter, npyFormat},
        {"raw", {"raw", "yuv", "bin"}, ""sv, makeRawReader, makeRawWriter, rawFormat},
    };
    return kinds;
}

template <class Condition>
FileKind const* findKind(Condition condition) {
    auto const found = std::find_if(fileKinds().begin(), fileKinds().end(), condition);
    return found == fileKinds().end() ? nullptr : &*found;
}

FileKind const* kindByName(std::string const& name) {
    return findKind([&](FileKind const& kind) { return kind.name == toLower(name); });
}

std::string endingOf(std::string const& path) {
    std::string const ending = std::filesystem::path(path).extension().string();
    return ending.empty() ? ending : toLower(ending).substr(1);
}

FileKind const* kindByMagic(ByteSource& source) {
    return findKind([&](FileKind const& kind) {
        return !kind.magic.empty() && source.peek(kind.magic.size()) == kind.magic;
    });
}

FileKind const& inputKind(InputRequest const& request, ByteSource& source) {
    if (!request.kind.empty()) {
        return *kindByName(request.kind);
    }
    // Pixels of raw frames may look like any kind of file. So a name that stands for raw frames
    // decides, and so does a size if the name tells nothing. In all other cases the bytes decide.
    FileKind const* kind = kindByEnding(request.path);
    if (kind == nullptr && !request.size.empty()) {
        kind = kindByName("raw");
    }
    if (kind == nullptr || !kind->magic.empty()) {
        FileKind const* const found = kindByMagic(source);
        source.check();
        kind = found != nullptr ? found : kind;
    }
    if (kind == nullptr) {
        throw UsageError(source.name() +
                         ": of no known kind; --input-kind names it, raw frames need --input-size");
    }
    return *kind;
}

}  // namespace

std::optional<double> FrameReader::fractionRead() const {
    std::optional<std::uint64_t> const size = _source->size();
    if (!size || *size == 0) {
        return std::nullopt;
    }
    return static_cast<double>(_source->position()) / static_cast<double>(*size);
}

std::vector<std::string> kindNames() {
    std::vector<std::string> names;
    std::transform(fileKinds().begin(), fileKinds().end(), std::back_inserter(names),
                   [](FileKind const& kind) { return std::string(kind.name); });
    return names;
}

std::string nameOf(InputRequest const& request) {
    return displayName(request.path, "standard input");
}

std::string nameOf(OutputRequest const& request) {
    return displayName(request.path, "standard output");
}

OpenedInput openInput(InputRequest const& request) {
    return attempt(nameOf(request), [&]() -> OpenedInput {
        auto source = std::make_unique<ByteSource>(request.path);
        FileKind const& kind = inputKind(request, *source);
        return {&kind, kind.makeReader(std::move(source), request)};
    });
}

FileKind const& outputKind(OutputRequest const& request, FileKind const& input_kind) {
    if (!request.kind.empty()) {
        return *kindByName(request.kind);
    }
    if (request.path == "-") {
        return input_kind;
    }
    FileKind const* const kind = kindByEnding(request.path);
    if (kind == nullptr) {
        throw UsageError(nameOf(request) + ": the ending names no kind; --output-kind names it");
    }
    return *kind;
}

void checkPixels(std::string const& name, ox::Size size, std::int64_t most) {
    std::int64_t const pixels = std::int64_t{size.width} * size.height;
    if (pixels > most) {
        throw Failure(name + ": frames of " + toText(size) + " have " + std::to_string(pixels) +
                      " pixels, more than the " + std::to_string(most) + " of --max-pixels");
    }
}

std::optional<std::int64_t> expectedFrames(std::optional<std::int64_t> in_source,
                                           std::optional<std::int64_t> limit) {
    if (in_source && limit) {
        return std::min(*in_source, *limit);
    }
    return in_source ? in_source : limit;
}

FileKind const* kindByEnding(std::string const& path) {
    std::string const ending = endingOf(path);
    FileKind const* const kind = findKind([&](FileKind const& candidate) {
        return std::count(candidate.endings.begin(), candidate.endings.end(), ending) != 0;
    });
    bool const raw = kind == nullptr && formatByEnding(path) != ox::FRAME_FORMAT_NONE;
    return raw ? kindByName("raw") : kind;
}

ox::FrameFormat formatByEnding(std::string const& path) {
    return formatByName(endingOf(path));
}

}  // namespace oxcv
