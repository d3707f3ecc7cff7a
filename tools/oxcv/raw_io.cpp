// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include "failure.h"
#include "file_kinds.h"
#include "frame_bytes.h"
#include "ox_core/ox_impl_format_facts.h"

namespace oxcv {

namespace {

/// The options without which raw frames mean nothing.
std::string missingOptions(StreamInfo const& info) {
    std::string missing = info.format == ox::FRAME_FORMAT_NONE ? "--input-format" : "";
    if (info.size.empty()) {
        missing += missing.empty() ? "--input-size" : " and --input-size";
    }
    return missing;
}

/// The strides asked for. Where the first plane's is the only one, chroma's follows from it.
/// @param name of the source
PlaneStrides stridesOf(std::string const& name, StreamInfo const& info, PlaneStrides strides) {
    if (strides[0] == 0) {
        return strides;
    }
    ox::FrameLayout const layout(info.format, info.size, 1);
    for (std::size_t i = 0; i < static_cast<std::size_t>(layout.planeCount); ++i) {
        ox::impl::PlaneFacts const& facts = ox::impl::factsOf(info.format).planes[i];
        std::int64_t const pairs = std::int64_t{strides[0]} / 2 + strides[0] % 2;
        std::int64_t const derived = facts.half_width ? pairs * facts.channels : strides[0];
        std::int64_t const stride = strides[i] != 0 ? strides[i] : derived;
        std::uint64_t const row = layout.plane[i].rowBytes;
        if (stride > std::numeric_limits<std::int32_t>::max() ||
            static_cast<std::uint64_t>(stride) < row) {
            throw UsageError(name + ": rows of plane " + std::to_string(i) + " have " +
                             std::to_string(row) + " bytes, so --input-stride can't be " +
                             std::to_string(stride));
        }
        strides[i] = static_cast<std::int32_t>(stride);
    }
    return strides;
}

class RawReader : public FrameReader {
  public:
    RawReader(std::unique_ptr<ByteSource> source, InputRequest const& request)
        : FrameReader(std::move(source)) {
        ox::FrameFormat const by_ending = formatByEnding(request.path);
        _info.format = request.format != ox::FRAME_FORMAT_NONE ? request.format : by_ending;
        _info.size = request.size;
        if (std::string const missing = missingOptions(_info); !missing.empty()) {
            throw UsageError(_source->name() + ": raw frames need " + missing);
        }
        _strides = stridesOf(_source->name(), _info, request.strides);
        _info.frames = countFrames(*_source, frameBytes(_info.format, _info.size, _strides));
    }

    bool read(ox::Frame& frame) override {
        return readFrame(*_source, _info.format, _info.size, planesInOrder, ++_number, frame,
                         _strides);
    }

  private:
    PlaneStrides _strides{};
    std::int64_t _number = 0;
};

class RawWriter : public FrameWriter {
  public:
    using FrameWriter::FrameWriter;

    void write(ox::Frame const& frame) override { writeFrame(_file, planesInOrder, frame); }
};

}  // namespace

std::unique_ptr<FrameReader> makeRawReader(std::unique_ptr<ByteSource> source,
                                           InputRequest const& request) {
    return std::make_unique<RawReader>(std::move(source), request);
}

std::unique_ptr<FrameWriter> makeRawWriter(OutputFile& file, OutputRequest const& /*request*/) {
    return std::make_unique<RawWriter>(file);
}

ox::FrameFormat rawFormat(ox::FrameFormat format) {
    return format;
}

}  // namespace oxcv
