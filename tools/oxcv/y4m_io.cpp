// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <charconv>

#include "failure.h"
#include "file_kinds.h"
#include "frame_bytes.h"
#include "ox_core/ox_impl_format_facts.h"
#include "parse.h"
#include "printable.h"

namespace oxcv {

namespace {

constexpr std::string_view streamMagic = "YUV4MPEG2";
constexpr std::string_view frameMagic = "FRAME";
constexpr std::size_t longestLine = 4096;
constexpr std::string_view defaultChroma = "420";
constexpr char const* defaultRate = "25:1";

struct Chroma {
    std::string_view name;
    ox::FrameFormat format;
};

/// The first name of each format is the one that is written: the library's chroma samples are
/// means, so they lie in the middle of their pixels, as those of JPEG files do.
constexpr std::array chromas{
    Chroma{"420jpeg", ox::FRAME_I420},  Chroma{"420", ox::FRAME_I420},
    Chroma{"420mpeg2", ox::FRAME_I420}, Chroma{"420paldv", ox::FRAME_I420},
    Chroma{"422", ox::FRAME_YV16},      Chroma{"444", ox::FRAME_YUV444_PLANAR},
    Chroma{"mono", ox::FRAME_GRAY8},
};

/// Streams hold Y, U, V.
PlaneOrder orderOf(ox::FrameFormat format) {
    return format == ox::FRAME_YV16 ? PlaneOrder{0, 2, 1} : planesInOrder;
}

/// A line without its end, or nothing if there is no whole line within reason.
std::optional<std::string> readLine(ByteSource& source) {
    std::string line;
    for (char c = 0; line.size() < longestLine && source.read(&c, 1) == 1; line += c) {
        if (c == '\n') {
            return line;
        }
    }
    return std::nullopt;
}

/// Calls visit(rest) for each word after the magic that begins with `tag`, without it.
template <class Visitor>
void forEachParameter(std::string_view line, char tag, Visitor visit) {
    std::size_t start = line.find(' ');
    while (start != std::string_view::npos) {
        std::size_t const end = line.find(' ', start + 1);
        std::string_view const word = line.substr(start + 1, end - start - 1);
        if (!word.empty() && word.front() == tag) {
            visit(word.substr(1));
        }
        start = end;
    }
}

/// What the first word with the tag says; empty if there is none.
std::string_view parameter(std::string_view line, char tag) {
    std::string_view found;
    forEachParameter(
        line, tag, [&](std::string_view text) { found = found.data() == nullptr ? text : found; });
    return found;
}

/// A comment that many programs write and read.
std::optional<ox::TensorRange> rangeOf(std::string_view line) {
    constexpr std::string_view full = "COLORRANGE=FULL";
    constexpr std::string_view limited = "COLORRANGE=LIMITED";
    std::optional<ox::TensorRange> range;
    forEachParameter(line, 'X', [&](std::string_view text) {
        if (text == full || text == limited) {
            range = text == full ? ox::TENSOR_RANGE_FULL : ox::TENSOR_RANGE_LIMITED;
        }
    });
    return range;
}

class Y4mReader : public FrameReader {
  public:
    explicit Y4mReader(std::unique_ptr<ByteSource> source) : FrameReader(std::move(source)) {
        std::optional<std::string> const line = readLine(*_source);
        _source->check();
        if (!line || !line->starts_with(streamMagic)) {
            throw Failure(_source->name() + ": no Y4M header");
        }
        _info.size = {side(*line, 'W'), side(*line, 'H')};
        _info.format = formatOf(parameter(*line, 'C'));
        std::string_view const rate = parameter(*line, 'F');
        bool const plain = rate.find_first_not_of("0123456789:") == std::string_view::npos;
        _info.rate = plain ? std::string(rate) : std::string();
        _info.range = rangeOf(*line);
        std::uint64_t const line_bytes = frameMagic.size() + 1;
        _info.frames = countFrames(*_source, line_bytes + frameBytes(_info.format, _info.size));
    }

    bool read(ox::Frame& frame) override {
        ++_number;
        if (_source->peek(1).empty()) {
            _source->check();
            return false;
        }
        std::optional<std::string> const line = readLine(*_source);
        bool const good = line && line->starts_with(frameMagic);
        if (!good ||
            !readFrame(*_source, _info.format, _info.size, orderOf(_info.format), _number, frame)) {
            throw Failure(_source->name() + ": frame " + std::to_string(_number) +
                          (good ? " is truncated: 0 bytes" : " has no FRAME line"));
        }
        return true;
    }

  private:
    int side(std::string_view line, char tag) const {
        std::string_view const text = parameter(line, tag);
        int number = 0;
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number <= 0) {
            throw Failure(_source->name() + ": bad " + tag + " in the Y4M header");
        }
        return number;
    }

    ox::FrameFormat formatOf(std::string_view tag) const {
        std::string_view const name = tag.empty() ? defaultChroma : tag;
        auto const* const chroma = std::find_if(chromas.begin(), chromas.end(),
                                                [&](Chroma const& c) { return c.name == name; });
        if (chroma == chromas.end()) {
            throw Failure(_source->name() + ": Y4M chroma " + inQuotes(name) + " isn't supported");
        }
        return chroma->format;
    }

    std::int64_t _number = 0;
};

class Y4mWriter : public FrameWriter {
  public:
    Y4mWriter(OutputFile& file, OutputRequest const& request)
        : FrameWriter(file), _rate(request.rate.empty() ? defaultRate : request.rate) {}

    void write(ox::Frame const& frame) override {
        if (!_begun) {
            put(header(frame));
            _begun = true;
        }
        put(std::string(frameMagic) + "\n");
        writeFrame(_file, orderOf(frame.format()), frame);
    }

  private:
    void put(std::string const& text) {
        static_cast<void>(_file.write(text.data(), text.size()));  // writeFrame checks
    }

    std::string header(ox::Frame const& frame) const {
        auto const* const chroma =
            std::find_if(chromas.begin(), chromas.end(),
                         [&](Chroma const& c) { return c.format == frame.format(); });
        return std::string(streamMagic) + " W" + std::to_string(frame.width()) + " H" +
               std::to_string(frame.height()) + " F" + _rate + " Ip A1:1 C" +
               std::string(chroma->name) + "\n";
    }

    std::string _rate;
    bool _begun = false;
};

}  // namespace

std::unique_ptr<FrameReader> makeY4mReader(std::unique_ptr<ByteSource> source,
                                           InputRequest const& /*request*/) {
    return std::make_unique<Y4mReader>(std::move(source));
}

std::unique_ptr<FrameWriter> makeY4mWriter(OutputFile& file, OutputRequest const& request) {
    return std::make_unique<Y4mWriter>(file, request);
}

ox::FrameFormat y4mFormat(ox::FrameFormat format) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    if (format == ox::FRAME_GRAY8 || format == ox::FRAME_YUV444_PLANAR) {
        return format;
    }
    if (format == ox::FRAME_YUV444) {
        return ox::FRAME_YUV444_PLANAR;
    }
    bool const half_width = facts.pixel_group == 2 || facts.planes[1].half_width;
    return half_width && !facts.planes[1].half_height ? ox::FRAME_YV16 : ox::FRAME_I420;
}

}  // namespace oxcv
