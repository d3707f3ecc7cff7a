#include "failure.h"
#include "file_kinds.h"
#include "frame_bytes.h"

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
        _info.frames = countFrames(*_source, frameBytes(_info.format, _info.size));
    }

    bool read(ox::Frame& frame) override {
        return readFrame(*_source, _info.format, _info.size, planesInOrder, ++_number, frame);
    }

  private:
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
