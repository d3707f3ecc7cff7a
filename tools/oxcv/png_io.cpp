// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <png.h>

#include <cstdio>
#include <new>
#include <string>

#include "c_library_calls.h"
#include "failure.h"
#include "file_kinds.h"

namespace oxcv {

namespace {

extern "C" void onPngError(png_structp png, png_const_charp message) {
    auto* const state = static_cast<CallState*>(png_get_error_ptr(png));
    std::snprintf(state->message, sizeof state->message, "%s", message);
    std::longjmp(state->place, 1);
}

/// Oddities that libpng gets over.
extern "C" void onPngWarning(png_structp /*png*/, png_const_charp /*message*/) {}

extern "C" void readPngBytes(png_structp png, png_bytep data, std::size_t count) {
    if (static_cast<ByteSource*>(png_get_io_ptr(png))->read(data, count) != count) {
        png_error(png, "the picture is truncated");
    }
}

extern "C" void writePngBytes(png_structp png, png_bytep data, std::size_t count) {
    if (!static_cast<OutputFile*>(png_get_io_ptr(png))->write(data, count)) {
        png_error(png, "the picture can't be written");
    }
}

extern "C" void flushPngBytes(png_structp /*png*/) {}

/// One address per row of a packed frame.
std::vector<png_bytep> rowsOf(ox::Frame const& frame) {
    std::vector<png_bytep> rows;
    for (std::int64_t y = 0; y < frame.height(); ++y) {
        rows.push_back(frame.planeData(0) + y * frame.layout().plane[0].stride);
    }
    return rows;
}

class PngReader : public FrameReader {
  public:
    explicit PngReader(std::unique_ptr<ByteSource> source) : FrameReader(std::move(source)) {
        _png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &_state, onPngError, onPngWarning);
        _header = _png != nullptr ? png_create_info_struct(_png) : nullptr;
        if (_header == nullptr) {
            release();
            throw std::bad_alloc();
        }
        if (!succeeds(_state, [this] { readHeader(); })) {
            release();
            throwError();
        }
        _info.size = {static_cast<std::int32_t>(png_get_image_width(_png, _header)),
                      static_cast<std::int32_t>(png_get_image_height(_png, _header))};
        _info.format = png_get_channels(_png, _header) == 1 ? ox::FRAME_GRAY8 : ox::FRAME_BGR24;
        _info.frames = 1;
    }

    ~PngReader() override { release(); }

    bool read(ox::Frame& frame) override {
        if (_done) {
            return false;
        }
        _done = true;
        frame.reuse(_info.format, _info.size, ox::DeviceContext(), 0);
        std::vector<png_bytep> rows = rowsOf(frame);
        bool const good = succeeds(_state, [&] {
            png_read_image(_png, rows.data());
            png_read_end(_png, nullptr);
        });
        if (!good) {
            throwError();
        }
        return true;
    }

  private:
    /// Reads the header and asks for 8 bits of gray or of blue, green, red.
    void readHeader() {
        png_set_read_fn(_png, _source.get(), readPngBytes);
        png_read_info(_png, _header);
        noteWhatIsLost();
        if (png_get_color_type(_png, _header) == PNG_COLOR_TYPE_PALETTE) {
            png_set_palette_to_rgb(_png);
        } else if (png_get_bit_depth(_png, _header) < 8) {
            png_set_expand_gray_1_2_4_to_8(_png);
        }
        png_set_scale_16(_png);
        png_set_strip_alpha(_png);
        png_set_bgr(_png);
        png_set_interlace_handling(_png);
        png_read_update_info(_png, _header);
    }

    void noteWhatIsLost() {
        if (png_get_bit_depth(_png, _header) == 16) {
            _info.note = "16 bits rounded to 8";
        }
        if ((png_get_color_type(_png, _header) & PNG_COLOR_MASK_ALPHA) != 0 ||
            png_get_valid(_png, _header, PNG_INFO_tRNS) != 0) {
            _info.note += _info.note.empty() ? "alpha dropped" : ", alpha dropped";
        }
    }

    void release() { png_destroy_read_struct(&_png, &_header, nullptr); }

    [[noreturn]] void throwError() const {
        _source->check();
        throw Failure(_source->name() + ": " + _state.message);
    }

    CallState _state{};
    png_structp _png = nullptr;
    png_infop _header = nullptr;
    bool _done = false;
};

class PngWriter : public FrameWriter {
  public:
    explicit PngWriter(OutputFile& file) : FrameWriter(file) {
        _png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &_state, onPngError, onPngWarning);
        _header = _png != nullptr ? png_create_info_struct(_png) : nullptr;
    }

    ~PngWriter() override { png_destroy_write_struct(&_png, &_header); }

    void write(ox::Frame const& frame) override {
        checkSingleFrame(_file, _frames++);
        if (_header == nullptr) {
            throw std::bad_alloc();
        }
        std::vector<png_bytep> rows = rowsOf(frame);
        if (!succeeds(_state, [&] { writePicture(frame, rows.data()); })) {
            _file.check();
            throw Failure(_file.name() + ": " + _state.message);
        }
    }

  private:
    void writePicture(ox::Frame const& frame, png_bytepp rows) {
        png_set_write_fn(_png, &_file, writePngBytes, flushPngBytes);
        bool const gray = frame.format() == ox::FRAME_GRAY8;
        png_set_IHDR(_png, _header, static_cast<png_uint_32>(frame.width()),
                     static_cast<png_uint_32>(frame.height()), 8,
                     gray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(_png, _header);
        if (frame.format() == ox::FRAME_BGR24) {
            png_set_bgr(_png);
        }
        png_write_image(_png, rows);
        png_write_end(_png, nullptr);
    }

    CallState _state{};
    png_structp _png = nullptr;
    png_infop _header = nullptr;
    int _frames = 0;
};

}  // namespace

std::unique_ptr<FrameReader> makePngReader(std::unique_ptr<ByteSource> source,
                                           InputRequest const& /*request*/) {
    return std::make_unique<PngReader>(std::move(source));
}

std::unique_ptr<FrameWriter> makePngWriter(OutputFile& file, OutputRequest const& /*request*/) {
    return std::make_unique<PngWriter>(file);
}

ox::FrameFormat pictureFormat(ox::FrameFormat format) {
    bool const direct = format == ox::FRAME_GRAY8 || format == ox::FRAME_RGB24;
    return direct ? format : ox::FRAME_BGR24;
}

void checkSingleFrame(OutputFile const& file, int frames_so_far) {
    if (frames_so_far > 0) {
        throw Failure(file.name() + ": a picture holds one frame; --frames 1 takes the first");
    }
}

}  // namespace oxcv
