// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Scales a picture while it comes in, and never holds it whole: rows are read, scaled and written
/// one at a time.
///
///     stream_resize 6000x4000 1500x1000 < rows.bgr24 > small.bgr24
///     stream_resize                     # a picture of 3000x2000, computed as it is read

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <vector>

#include "ox_cv/ox_cv.h"

namespace {

// [source]
/// Rows of FRAME_BGR24 from a pipe or a file, without gaps.
class RowsOfFile : public ox::IRowProducer {
  public:
    RowsOfFile(std::FILE* file, ox::Size size)
        : _file(file), _layout(ox::FRAME_BGR24, size, 1), _skipped(_layout.plane[0].rowBytes) {}

    ox::FrameLayout const& layout() override { return _layout; }

    void produce(ox::RowData& row) override {
        read(row[0]);
        _is_read = true;
    }

    /// A row that the scaler doesn't need is skipped by `next` alone.
    bool next() override {
        if (!_is_read) {
            read(_skipped.data());
        }
        _is_read = false;
        return ++_row < _layout.size.height;
    }

  private:
    void read(unsigned char* row) {
        std::size_t const bytes = _layout.plane[0].rowBytes;
        if (std::fread(row, 1, bytes, _file) != bytes) {
            throw std::runtime_error("the picture ends early");
        }
    }

    std::FILE* _file;
    ox::FrameLayout _layout;
    std::vector<unsigned char> _skipped;
    int _row = 0;
    bool _is_read = false;
};
// [source]

/// A ramp from the left to the right.
class Ramp : public ox::IRowProducer {
  public:
    explicit Ramp(ox::Size size) : _layout(ox::FRAME_BGR24, size, 1) {}

    ox::FrameLayout const& layout() override { return _layout; }

    void produce(ox::RowData& row) override {
        for (std::int64_t x = 0; x < _layout.size.width; ++x) {
            auto const level = static_cast<unsigned char>(256 * x / _layout.size.width);
            row[0][3 * x] = row[0][3 * x + 1] = row[0][3 * x + 2] = level;
        }
    }

    bool next() override { return ++_row < _layout.size.height; }

  private:
    ox::FrameLayout _layout;
    int _row = 0;
};

// [drain]
/// Hands each row of the scaled picture to `take`.
template <class Take>
void scaleRows(ox::IRowProducer& source, ox::Size size, Take take) {
    ox::Scaler scaler;
    scaler.reuse(source, size, ox::OX_SCALE_AREA);
    std::vector<unsigned char> line(scaler.layout().plane[0].rowBytes);
    ox::RowData row;
    row[0] = line.data();
    for (int y = 0; y < size.height; ++y) {
        scaler.produce(row);
        scaler.next();
        take(line);
    }
}
// [drain]

bool parse(char const* text, ox::Size& size) {
    return std::sscanf(text, "%dx%d", &size.width, &size.height) == 2 && !size.empty();
}

}  // namespace

int main(int count, char** arguments) try {
    ox::Size from{3000, 2000};
    ox::Size to{300, 200};
    if (count == 3 && parse(arguments[1], from) && parse(arguments[2], to)) {
        RowsOfFile source(stdin, from);
        scaleRows(source, to, [](std::vector<unsigned char> const& line) {
            if (std::fwrite(line.data(), 1, line.size(), stdout) != line.size()) {
                throw std::runtime_error("nothing can be written");
            }
        });
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    if (count != 1) {
        std::fputs("usage: stream_resize [WIDTHxHEIGHT WIDTHxHEIGHT] < in > out\n", stderr);
        return 2;
    }
    Ramp source(from);
    int rows = 0;
    int middle = 0;
    scaleRows(source, to, [&](std::vector<unsigned char> const& line) {
        if (++rows == to.height / 2) {
            middle = line[line.size() / 2];
        }
    });
    std::printf("%d rows, middle %d\n", rows, middle);
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "stream_resize: %s\n", error.what());
    return 1;
}
