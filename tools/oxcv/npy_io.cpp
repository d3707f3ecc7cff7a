// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <limits>

#include "failure.h"
#include "file_kinds.h"
#include "frame_bytes.h"
#include "halves.h"
#include "npy_header.h"
#include "ox_core/ox_impl_format_facts.h"
#include "parse.h"
#include "vector_limits.h"

namespace oxcv {

namespace {

using Shape = std::vector<std::int64_t>;

/// What an array may be read as, the likeliest first; the other formats must be asked for.
constexpr std::array likelyFormats{ox::FRAME_GRAY8,   ox::FRAME_BGR24,   ox::FRAME_BGR_PLANAR,
                                   ox::FRAME_C2_8U,   ox::FRAME_C4_8U,   ox::FRAME_C1_16U,
                                   ox::FRAME_C1_32U,  ox::FRAME_BGR_32F, ox::FRAME_BGR_32F_PLANAR,
                                   ox::FRAME_GRAY_32F};

bool holds(ox::FrameFormat format) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    return facts.pixel_group == 1 && !facts.planes[1].half_width;
}

constexpr char const* halfType = "<f2";

bool isOfFloats(ox::FrameFormat format) {
    return format == ox::FRAME_GRAY_32F || isColourOfFloats(format);
}

std::string typeOf(ox::FrameFormat format) {
    std::uint16_t const bits = ox::impl::factsOf(format).planes[0].bits;
    bool const floats = isOfFloats(format);
    std::string const order = bits == 8 ? "|" : "<";
    return order + (floats ? "f" : "u") + std::to_string(bits / 8);
}

/// The axes of one frame.
Shape shapeOf(ox::FrameFormat format, ox::Size size) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    Shape shape{size.height, size.width};
    if (facts.plane_count > 1) {
        shape.insert(shape.begin(), facts.plane_count);
    } else if (facts.planes[0].channels > 1) {
        shape.push_back(facts.planes[0].channels);
    }
    return shape;
}

/// The size of frames of `format` whose axes are `shape`; empty if there are none.
ox::Size sizeOf(ox::FrameFormat format, Shape const& shape) {
    std::size_t const rows_axis = ox::impl::factsOf(format).plane_count > 1 ? 1 : 0;
    if (shape.size() < rows_axis + 2) {
        return {};
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    ox::Size const size{static_cast<std::int32_t>(std::min(shape[rows_axis + 1], most)),
                        static_cast<std::int32_t>(std::min(shape[rows_axis], most))};
    return shapeOf(format, size) == shape ? size : ox::Size{};
}

struct Match {
    ox::FrameFormat format = ox::FRAME_FORMAT_NONE;
    ox::Size size;
    std::int64_t frames = 0;
};

bool matches(ox::FrameFormat format, NpyHeader const& header, std::size_t leading, Match& match) {
    Shape const shape(header.shape.begin() + static_cast<std::ptrdiff_t>(leading),
                      header.shape.end());
    ox::Size const size = sizeOf(format, shape);
    bool const has_halves = header.type == halfType && isOfFloats(format);
    if ((typeOf(format) != header.type && !has_halves) || size.empty() || !holds(format)) {
        return false;
    }
    match = {format, size, leading == 0 ? 1 : header.shape.front()};
    return true;
}

/// A single frame is likelier than several: three axes of which the last is 3 are one picture.
Match matchHeader(NpyHeader const& header, ox::FrameFormat asked) {
    Match match;
    std::vector<ox::FrameFormat> candidates(likelyFormats.begin(), likelyFormats.end());
    if (asked != ox::FRAME_FORMAT_NONE) {
        candidates = {asked};
    }
    for (std::size_t leading = 0; leading < 2 && leading < header.shape.size(); ++leading) {
        for (ox::FrameFormat const format : candidates) {
            if (matches(format, header, leading, match)) {
                return match;
            }
        }
    }
    return match;
}

class NpyReader : public FrameReader {
  public:
    NpyReader(std::unique_ptr<ByteSource> source, InputRequest const& request)
        : FrameReader(std::move(source)) {
        NpyHeader const header = readNpyHeader(*_source);
        Match const match = matchHeader(header, request.format);
        if (match.format == ox::FRAME_FORMAT_NONE) {
            throw Failure(_source->name() + ": the NumPy array's type and shape fit no " +
                          (request.format != ox::FRAME_FORMAT_NONE ? shortName(request.format)
                                                                   : std::string("format")));
        }
        _info.format = match.format;
        _info.size = match.size;
        _info.frames = match.frames;
        _has_halves = header.type == halfType;
        _info.note = _has_halves ? "in half precision" : "";
    }

    bool read(ox::Frame& frame) override {
        if (_number == *_info.frames) {
            return false;
        }
        ++_number;
        bool const good =
            _has_halves
                ? _halves.read(*_source, _info.format, _info.size, _number, frame)
                : readFrame(*_source, _info.format, _info.size, planesInOrder, _number, frame);
        if (!good) {
            throw Failure(_source->name() + ": frame " + std::to_string(_number) + " of " +
                          std::to_string(*_info.frames) + " is missing");
        }
        return true;
    }

  private:
    std::int64_t _number = 0;
    bool _has_halves = false;
    Halves _halves;
};

/// The number of frames stands in front of them. In seekable outputs it is corrected at the end. In
/// others it must be right from the start.
class NpyWriter : public FrameWriter {
  public:
    NpyWriter(OutputFile& file, OutputRequest const& request)
        : FrameWriter(file), _expected(request.frames), _has_halves(request.halves) {}

    void write(ox::Frame const& frame) override {
        if (_written == 0) {
            if (_has_halves && !isOfFloats(frame.format())) {
                throw Failure(_file.name() + ": --halves needs floats, not " +
                              shortName(frame.format()));
            }
            _format = frame.format();
            _size = frame.size();
            std::string const bytes = header(_expected.value_or(1));
            static_cast<void>(_file.write(bytes.data(), bytes.size()));  // writeFrame checks
        } else if (!_file.seekable() && _written == _expected.value_or(1)) {
            throw Failure(
                _file.name() +
                ": can't seek back to note how many frames there are; --frames N says it");
        }
        if (_has_halves) {
            _halves.write(_file, frame);
        } else {
            writeFrame(_file, planesInOrder, frame);
        }
        ++_written;
    }

    void finish() override {
        if (_written == _expected.value_or(1)) {
            return;
        }
        if (!_file.seekable()) {
            throw Failure(_file.name() + ": " + std::to_string(*_expected) +
                          " frames were announced, but there are " + std::to_string(_written));
        }
        std::string const bytes = header(_written);
        _file.patch(0, bytes.data(), bytes.size());
    }

  private:
    std::string header(std::int64_t frames) const {
        Shape shape = shapeOf(_format, _size);
        if (frames != 1) {
            shape.insert(shape.begin(), frames);
        }
        return makeNpyHeader({_has_halves ? halfType : typeOf(_format), shape});
    }

    std::optional<std::int64_t> _expected;
    bool _has_halves;
    Halves _halves;
    std::int64_t _written = 0;
    ox::FrameFormat _format = ox::FRAME_FORMAT_NONE;
    ox::Size _size;
};

}  // namespace

std::unique_ptr<FrameReader> makeNpyReader(std::unique_ptr<ByteSource> source,
                                           InputRequest const& request) {
    return std::make_unique<NpyReader>(std::move(source), request);
}

std::unique_ptr<FrameWriter> makeNpyWriter(OutputFile& file, OutputRequest const& request) {
    return std::make_unique<NpyWriter>(file, request);
}

ox::FrameFormat npyFormat(ox::FrameFormat format) {
    return holds(format) ? format : ox::FRAME_BGR24;
}

}  // namespace oxcv
