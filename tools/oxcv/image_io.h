// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames in and out of files: one interface, one implementation per kind of file.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"
#include "frame_bytes.h"
#include "output_file.h"
#include "ox_core/ox_frame.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace oxcv {

/// What is known of a stream before its frames are read.
struct StreamInfo {
    ox::FrameFormat format = ox::FRAME_FORMAT_NONE;
    ox::Size size;
    std::optional<std::int64_t> frames;
    std::string rate;  ///< frames per second as "25:1"; empty if the kind of file has no rate
    std::string note;  ///< other facts, for people to read
    std::optional<ox::TensorRange> range;  ///< of YUV, if the file says so
};

/// Reads frames, all of one format and size.
class FrameReader {
  public:
    explicit FrameReader(std::unique_ptr<ByteSource> source) : _source(std::move(source)) {}
    FrameReader(FrameReader const&) = delete;
    FrameReader& operator=(FrameReader const&) = delete;
    virtual ~FrameReader() = default;

    StreamInfo const& info() const { return _info; }

    /// Reads the next frame into `frame`, whose storage is kept if it fits.
    /// @return false behind the last frame
    virtual bool read(ox::Frame& frame) = 0;

    /// 0 to 1, if the source's size is known.
    std::optional<double> fractionRead() const;

  protected:
    std::unique_ptr<ByteSource> _source;
    StreamInfo _info;
};

/// Writes frames, all of one format and size.
class FrameWriter {
  public:
    explicit FrameWriter(OutputFile& file) : _file(file) {}
    FrameWriter(FrameWriter const&) = delete;
    FrameWriter& operator=(FrameWriter const&) = delete;
    virtual ~FrameWriter() = default;

    virtual void write(ox::Frame const& frame) = 0;
    /// Completes the file behind the last frame.
    virtual void finish() {}

  protected:
    OutputFile& _file;
};

struct InputRequest {
    std::string path;
    std::string kind;                                ///< empty: found out
    ox::FrameFormat format = ox::FRAME_FORMAT_NONE;  ///< for files that don't state a format
    ox::Size size;                                   ///< of raw frames
    PlaneStrides strides{};                          ///< of raw frames; 0s are found out
    bool tolerant = false;                           ///< takes pictures that are damaged
};

struct OutputRequest {
    std::string path;
    std::string kind;                    ///< empty: found out
    int quality = 95;                    ///< of a JPEG
    bool halves = false;                 ///< of an array: floats in half precision
    std::string rate;                    ///< of a stream; empty: 25 frames a second
    std::optional<std::int64_t> frames;  ///< how many there will be, as far as known
};

/// The request's name for messages.
std::string nameOf(InputRequest const& request);
std::string nameOf(OutputRequest const& request);

/// A kind of file; all of them stand in one table.
struct FileKind {
    std::string_view name;
    std::vector<std::string_view> endings;  ///< of file names, in lower case
    std::string_view magic;                 ///< first bytes; empty if anything may come
    std::unique_ptr<FrameReader> (*makeReader)(std::unique_ptr<ByteSource>, InputRequest const&);
    std::unique_ptr<FrameWriter> (*makeWriter)(OutputFile&, OutputRequest const&);
    /// The format in which a frame of some format is stored: its own, or one to convert it to.
    ox::FrameFormat (*storedAs)(ox::FrameFormat);
};

/// The choices of `--input-kind` and `--output-kind`.
std::vector<std::string> kindNames();

/// Opens a source and finds out its kind: the one asked for, that of the first bytes, that of the
/// file name's ending, or raw if there is no ending and a size.
struct OpenedInput {
    FileKind const* kind;
    std::unique_ptr<FrameReader> reader;
};
OpenedInput openInput(InputRequest const& request);

/// The kind of a file name's ending; null if it names none.
FileKind const* kindByEnding(std::string const& path);

/// Refuses frames before there is memory for one: a few bytes may claim to be a large one.
void checkPixels(std::string const& name, ox::Size size, std::int64_t most);

/// How many frames will come, as far as that can be told. Where the source doesn't tell, the
/// caller's limit counts as a promise to a writer that has to know.
std::optional<std::int64_t> expectedFrames(std::optional<std::int64_t> in_source,
                                           std::optional<std::int64_t> limit);

/// The kind asked for, that of the file name's ending, or for standard output that of the input.
FileKind const& outputKind(OutputRequest const& request, FileKind const& input_kind);

/// The format that a file name's ending names, as in "cat.nv12"; `FRAME_FORMAT_NONE` otherwise.
ox::FrameFormat formatByEnding(std::string const& path);

}  // namespace oxcv
