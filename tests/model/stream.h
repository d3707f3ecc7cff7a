// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Rows on their way through the model: where they come from, and how whole images are made of them.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "model/image.h"

namespace model {

// How an operation ended. The numbers are those of the library's status values.
struct Outcome {
    bool ok = true;
    int status = 0;
    std::string text;
    bool operator==(Outcome const&) const = default;
};

enum StatusNumber : int {
    AssertionFailed = 2,
    OutOfRange = 5,
    InvalidParameter = 6,
    NotSupported = 8,
    UnsupportedFormat = 29,
};

// A refusal on its way to becoming an Outcome.
struct Failure {
    int status;
    std::string text;
};

[[noreturn]] void refuse(int status, std::string const& text);
[[noreturn]] void refuseAssertion(std::string const& expression);

// Something that yields the rows of an image from top to bottom; rows may be passed over.
class Stream {
  public:
    virtual ~Stream() = default;
    virtual Geometry geometry() const = 0;

    // Writes one row into the planes that are there. Row numbers only rise.
    virtual void read(int row, Row const& out) = 0;
};

// An image that can be read at any row, or a stream.
struct Source {
    Image const* frame = nullptr;
    Stream* stream = nullptr;

    Source(Image const& image) : frame(&image) {}
    Source(Stream& rows) : stream(&rows) {}
    Geometry geometry() const { return frame ? frame->geometry() : stream->geometry(); }
};

void copyRow(SourceRow const& from, Row const& to);

// A source passed on unchanged.
class Copy : public Stream {
  public:
    void arm(Source source) { _source = source; }
    void clear() { _source.reset(); }
    bool armed() const { return _source.has_value(); }

    Geometry geometry() const override { return _source->geometry(); }
    void read(int row, Row const& out) override;

  private:
    std::optional<Source> _source;
};

// Arms a stream and takes all its rows into an image of its geometry. What arming or a row refuses
// becomes the outcome; the rows before a refusal stay written.
Outcome drain(std::function<void()> const& arm, Stream& stream, Image& image);

}  // namespace model
