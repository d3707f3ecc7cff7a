// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdio>

#include <jpeglib.h>

#include <jerror.h>

#include <array>
#include <string>

#include "c_library_calls.h"
#include "failure.h"
#include "file_kinds.h"

namespace oxcv {

namespace {

/// What libjpeg's callbacks find through `err`.
struct JpegErrors : jpeg_error_mgr {
    CallState state{};
    bool warned = false;  ///< by what would have been no error with --tolerant
};

extern "C" void onJpegError(j_common_ptr jpeg) {
    auto* const errors = static_cast<JpegErrors*>(jpeg->err);
    std::array<char, JMSG_LENGTH_MAX> text{};
    jpeg->err->format_message(jpeg, text.data());
    std::snprintf(errors->state.message, sizeof errors->state.message, "%s", text.data());
    std::longjmp(errors->state.place, 1);
}

/// libjpeg paints what is broken gray and goes on with a warning; that is an error here.
extern "C" void onJpegMessage(j_common_ptr jpeg, int level) {
    if (level < 0) {
        static_cast<JpegErrors*>(jpeg->err)->warned = true;
        onJpegError(jpeg);
    }
}

extern "C" void ignoreJpegMessage(j_common_ptr /*jpeg*/, int /*level*/) {}

jpeg_error_mgr* prepare(JpegErrors& errors, bool tolerant) {
    jpeg_std_error(&errors);
    errors.error_exit = onJpegError;
    errors.emit_message = tolerant ? ignoreJpegMessage : onJpegMessage;
    return &errors;
}

/// What libjpeg reads through.
struct JpegSource : jpeg_source_mgr {
    ByteSource* bytes = nullptr;
    bool tolerant = false;
    std::array<unsigned char, 1U << 14U> buffer{};
};

extern "C" void onJpegSourceCall(j_decompress_ptr /*jpeg*/) {}

extern "C" boolean fillJpegBuffer(j_decompress_ptr jpeg) {
    auto* const source = static_cast<JpegSource*>(jpeg->src);
    source->next_input_byte = source->buffer.data();
    source->bytes_in_buffer = source->bytes->read(source->buffer.data(), source->buffer.size());
    if (source->bytes_in_buffer == 0 && source->tolerant) {
        source->buffer[0] = 0xff;
        source->buffer[1] = JPEG_EOI;
        source->bytes_in_buffer = 2;
    }
    if (source->bytes_in_buffer == 0) {
        // A picture that has begun can be taken without its end.
        static_cast<JpegErrors*>(jpeg->err)->warned = jpeg->input_scan_number > 0;
        ERREXIT(jpeg, JERR_INPUT_EOF);
    }
    return TRUE;
}

extern "C" void skipJpegBytes(j_decompress_ptr jpeg, long count) {
    auto left = static_cast<std::size_t>(count > 0 ? count : 0);
    while (left > jpeg->src->bytes_in_buffer) {
        left -= jpeg->src->bytes_in_buffer;
        fillJpegBuffer(jpeg);
    }
    jpeg->src->next_input_byte += left;
    jpeg->src->bytes_in_buffer -= left;
}

/// What libjpeg writes through.
struct JpegTarget : jpeg_destination_mgr {
    OutputFile* file = nullptr;
    std::array<unsigned char, 1U << 14U> buffer{};

    void empty() {
        next_output_byte = buffer.data();
        free_in_buffer = buffer.size();
    }
};

void writeJpegBytes(j_compress_ptr jpeg, std::size_t count) {
    auto* const target = static_cast<JpegTarget*>(jpeg->dest);
    if (!target->file->write(target->buffer.data(), count)) {
        ERREXIT(jpeg, JERR_FILE_WRITE);
    }
    target->empty();
}

extern "C" void startJpegTarget(j_compress_ptr jpeg) {
    static_cast<JpegTarget*>(jpeg->dest)->empty();
}

extern "C" boolean flushJpegBuffer(j_compress_ptr jpeg) {
    writeJpegBytes(jpeg, static_cast<JpegTarget*>(jpeg->dest)->buffer.size());
    return TRUE;
}

extern "C" void finishJpegTarget(j_compress_ptr jpeg) {
    auto const* const target = static_cast<JpegTarget*>(jpeg->dest);
    writeJpegBytes(jpeg, target->buffer.size() - target->free_in_buffer);
}

unsigned char* rowOf(ox::Frame const& frame, std::int64_t y) {
    return frame.planeData(0) + y * frame.layout().plane[0].stride;
}

class JpegReader : public FrameReader {
  public:
    JpegReader(std::unique_ptr<ByteSource> source, bool tolerant) : FrameReader(std::move(source)) {
        _jpeg.err = prepare(_errors, tolerant);
        _input.bytes = _source.get();
        _input.tolerant = tolerant;
        _input.init_source = onJpegSourceCall;
        _input.fill_input_buffer = fillJpegBuffer;
        _input.skip_input_data = skipJpegBytes;
        _input.resync_to_restart = jpeg_resync_to_restart;
        _input.term_source = onJpegSourceCall;
        if (!succeeds(_errors.state, [this] { readHeader(); })) {
            jpeg_destroy_decompress(&_jpeg);
            throwError();
        }
        _info.size = {static_cast<std::int32_t>(_jpeg.image_width),
                      static_cast<std::int32_t>(_jpeg.image_height)};
        _info.format = _jpeg.out_color_space == JCS_GRAYSCALE ? ox::FRAME_GRAY8 : ox::FRAME_BGR24;
        _info.frames = 1;
    }

    ~JpegReader() override { jpeg_destroy_decompress(&_jpeg); }

    bool read(ox::Frame& frame) override {
        if (_done) {
            return false;
        }
        _done = true;
        frame.reuse(_info.format, _info.size, ox::DeviceContext(), 0);
        if (!succeeds(_errors.state, [&] { readRows(frame); })) {
            throwError();
        }
        return true;
    }

  private:
    void readHeader() {
        jpeg_create_decompress(&_jpeg);
        _jpeg.src = &_input;
        jpeg_read_header(&_jpeg, TRUE);
        _jpeg.out_color_space =
            _jpeg.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_EXT_BGR;
    }

    void readRows(ox::Frame const& frame) {
        jpeg_start_decompress(&_jpeg);
        while (_jpeg.output_scanline < _jpeg.output_height) {
            JSAMPROW row = rowOf(frame, _jpeg.output_scanline);
            jpeg_read_scanlines(&_jpeg, &row, 1);
        }
        jpeg_finish_decompress(&_jpeg);
    }

    [[noreturn]] void throwError() const {
        _source->check();
        throw Failure(_source->name() + ": " + _errors.state.message +
                      (_errors.warned ? "; --tolerant takes it all the same" : ""));
    }

    JpegErrors _errors{};
    JpegSource _input{};
    jpeg_decompress_struct _jpeg{};
    bool _done = false;
};

class JpegWriter : public FrameWriter {
  public:
    JpegWriter(OutputFile& file, int quality) : FrameWriter(file), _quality(quality) {
        _jpeg.err = prepare(_errors, false);
        _output.file = &file;
        _output.init_destination = startJpegTarget;
        _output.empty_output_buffer = flushJpegBuffer;
        _output.term_destination = finishJpegTarget;
    }

    ~JpegWriter() override { jpeg_destroy_compress(&_jpeg); }

    void write(ox::Frame const& frame) override {
        checkSingleFrame(_file, _frames++);
        if (!succeeds(_errors.state, [&] { compress(frame); })) {
            _file.check();
            throw Failure(_file.name() + ": " + _errors.state.message);
        }
    }

  private:
    void compress(ox::Frame const& frame) {
        jpeg_create_compress(&_jpeg);
        _jpeg.dest = &_output;
        bool const gray = frame.format() == ox::FRAME_GRAY8;
        _jpeg.image_width = static_cast<JDIMENSION>(frame.width());
        _jpeg.image_height = static_cast<JDIMENSION>(frame.height());
        _jpeg.input_components = gray ? 1 : 3;
        _jpeg.in_color_space = gray                                ? JCS_GRAYSCALE
                               : frame.format() == ox::FRAME_RGB24 ? JCS_EXT_RGB
                                                                   : JCS_EXT_BGR;
        jpeg_set_defaults(&_jpeg);
        jpeg_set_quality(&_jpeg, _quality, TRUE);
        jpeg_start_compress(&_jpeg, TRUE);
        while (_jpeg.next_scanline < _jpeg.image_height) {
            JSAMPROW row = rowOf(frame, _jpeg.next_scanline);
            jpeg_write_scanlines(&_jpeg, &row, 1);
        }
        jpeg_finish_compress(&_jpeg);
    }

    JpegErrors _errors{};
    JpegTarget _output{};
    jpeg_compress_struct _jpeg{};
    int _quality;
    int _frames = 0;
};

}  // namespace

std::unique_ptr<FrameReader> makeJpegReader(std::unique_ptr<ByteSource> source,
                                            InputRequest const& request) {
    return std::make_unique<JpegReader>(std::move(source), request.tolerant);
}

std::unique_ptr<FrameWriter> makeJpegWriter(OutputFile& file, OutputRequest const& request) {
    return std::make_unique<JpegWriter>(file, request.quality);
}

}  // namespace oxcv
