// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/convolution.h"

#include <algorithm>

#include "model/elements.h"

namespace model {

namespace {

constexpr int not_initialized = 7;
constexpr int input_not_initialized = 14;

// What a pass along the rows takes.
bool hasColumns(int format) {
    return isScalable(format) && format != BgrPlanar && format != Yuyv && format != Uyvy;
}

// What a pass over rows of bytes takes.
bool hasByteRows(int format) {
    return isScalable(format) && format != BgrPlanar && format <= C4_8u;
}

// A band that has never been armed, but for the count of rows that it took from streams.
void forget(Band& band) {
    static Image const other = makeImage(Gray8, 1, 1, 0);
    band.arm(other, 1);
}

// The sum of a sample's taps in fixed point, cut to the sample's range. Sums over 32-bit samples
// have 64 bits, all others 32.
std::uint64_t sampleOf(std::int64_t sum, int unit, std::size_t sample_bytes) {
    std::int64_t const kept = sample_bytes == 4 ? sum : wrapped(sum);
    std::int64_t const most = (std::int64_t{1} << (8 * sample_bytes)) - 1;
    return static_cast<std::uint64_t>(std::clamp(kept / unit, std::int64_t{0}, most));
}

void requirePlanes(Geometry geometry, int status, std::string const& text) {
    if (planesOf(geometry).empty()) {
        refuse(status, text);
    }
}

}  // namespace

Outcome attempt(std::function<void()> const& operation) {
    try {
        operation();
        return {};
    } catch (Failure const& failure) {
        return {false, failure.status, failure.text};
    }
}

void ConvolutionPass::startArming() {
    if (!_armed) {
        forget(_band);
    }
    _armed = false;
}

void ConvolutionPass::finishArming(Source source, int band_size) {
    _band.arm(source, band_size);
    _armed = true;
}

void ConvolutionX::arm(Filter& filter, Source source, int width) {
    Geometry const src = source.geometry();
    bool const kept = knows(filter, src.format) && width == _out.width;
    startArming();
    if (!kept) {
        requirePlanes(src, not_initialized,
                      "Failure in ScaleX::reuse(...) : source frame is not initialized.");
        _filter = &filter;
        _out = {src.format, width, src.height};
        auto const from = planesOf(src);
        auto const to = planesOf(_out);
        for (std::size_t p = 0; p < from.size(); ++p) {
            _taps[p].make(filter, from[p].width, to[p].width);
        }
    }
    _src_height = src.height;
    finishArming(source, 1);
}

void ConvolutionX::read(int row, Row const& out) {
    if (!armed()) {
        refuse(not_initialized, "Failure in ScaleX::produce(...): the scaler is not initialized.");
    }
    _band.advanceTo(row);
    if (!hasColumns(_out.format)) {
        refuse(NotSupported, "Failure in ScaleX::produce(...) : unsupported format.");
    }
    for (std::size_t p = 0; p < planesOf(_out).size(); ++p) {
        if (!out[p].empty()) {
            produce(p, out[p]);
        }
    }
}

void ConvolutionX::produce(std::size_t plane, std::span<std::uint8_t> out) {
    AxisTaps const& taps = _taps[plane];
    Cut const cut = cutOf(_out.format, plane);
    std::span<std::uint8_t const> const from = _band.at(0)[plane];
    auto const sum = [&](AxisTaps::Entry entry, std::size_t channel) {
        std::int64_t total = 0;
        for (int k = 0; k < taps.aperture(); ++k) {
            int const element = entry.start + k;
            // Taps behind the row's end add nothing.
            if (sampleByte(cut, static_cast<std::size_t>(element), channel) < from.size()) {
                auto const sample =
                    static_cast<std::int64_t>(elementAt(from, cut, element, channel));
                total += sample * taps.weights(entry)[static_cast<std::size_t>(k)];
            }
        }
        return total;
    };
    fillElements(out, cut, static_cast<int>(taps.entries().size()),
                 [&](std::size_t element, std::size_t channel) {
                     return sampleOf(sum(taps.entries()[element], channel), taps.unit(),
                                     cut.sample_bytes);
                 });
}

void ConvolutionY::arm(Filter& filter, Source source, int height) {
    Geometry const src = source.geometry();
    bool const kept =
        knows(filter, src.format) && src.height == _src.height && height == _out.height;
    startArming();
    if (!kept) {
        requirePlanes(src, not_initialized,
                      "Failure in ScaleY::reuse(...) : source frame is not initialized.");
        _filter = &filter;
        _out = {src.format, src.width, height};
        auto const from = planesOf(src);
        auto const to = planesOf(_out);
        for (std::size_t p = 0; p < from.size(); ++p) {
            _taps[p].make(filter, from[p].rows, to[p].rows);
        }
    }
    _src = src;
    _row = 0;
    finishArming(source, tallest());
}

// Over all planes, also those that only an earlier format had.
int ConvolutionY::tallest() const {
    int most = 0;
    for (AxisTaps const& taps : _taps) {
        most = std::max(most, taps.aperture());
    }
    return most;
}

// The band goes down by as much as the first plane's taps begin later than at the last step.
void ConvolutionY::next() {
    _row = std::min(_row + 1, _out.height);
    if (_row < _out.height) {
        int const start = _taps[0].entries()[static_cast<std::size_t>(_row)].start;
        _band.advanceTo(_band.first() + start - _start);
        _start = start;
    }
}

void ConvolutionY::read(int row, Row const& out) {
    if (!armed()) {
        refuse(not_initialized, "The scaler is not initialized.");
    }
    while (_row < std::min(row, _out.height)) {
        next();
    }
    if (!hasByteRows(_out.format)) {
        refuse(NotSupported, "Failure in ScaleY::produce(...) : unsupported frame format.");
    }
    for (std::size_t p = 0; p < planesOf(_out).size(); ++p) {
        if (!out[p].empty()) {
            produce(p, out[p]);
        }
    }
}

void ConvolutionY::produce(std::size_t plane, std::span<std::uint8_t> out) {
    AxisTaps const& taps = _taps[plane];
    int const own = planeRow(_out, planesOf(_out)[plane], _row);
    AxisTaps::Entry const entry = entryAt(taps.entries(), static_cast<std::size_t>(own));
    std::vector<std::int64_t> sums(planesOf(_src)[plane].row_bytes, 0);
    for (int k = 0; k < taps.aperture(); ++k) {
        SourceRow const from = _band.at(k);
        for (std::size_t b = 0; b < sums.size(); ++b) {
            sums[b] +=
                std::int64_t{from[plane][b]} * taps.weights(entry)[static_cast<std::size_t>(k)];
        }
    }
    for (std::size_t b = 0; b < std::min(sums.size(), out.size()); ++b) {
        out[b] = static_cast<std::uint8_t>(sampleOf(sums[b], taps.unit(), 1));
    }
}

void Convolution::arm(Filter& filter, Source source, int width, int height, int precision) {
    std::string const failure = "Failure in ScalerConvolutional::reuse(...) : ";
    if (source.frame) {
        requirePlanes(source.geometry(), input_not_initialized,
                      failure + "frame is not initialized.");
    }
    if (width <= 0 || height <= 0) {
        refuse(input_not_initialized, failure + "parameter 'dst_size' is empty.");
    }
    requirePlanes(source.geometry(), input_not_initialized, failure + "layout is not initialized.");
    _precision = precision;
    if (!selected()) {
        refuse(InvalidParameter, "Parameter 'precision' is incorrect.");
    }
    Pair& pair = precision == 8 ? _narrow : _wide;
    pair.x.arm(filter, source, width);
    pair.y.arm(filter, pair.x, height);
}

Convolution::Pair const* Convolution::selected() const {
    if (_precision == 8) {
        return &_narrow;
    }
    return _precision == 16 ? &_wide : nullptr;
}

bool Convolution::armed() const {
    return selected() && selected()->y.armed();
}

Geometry Convolution::geometry() const {
    if (!selected()) {
        refuse(not_initialized, "instance not initialized");
    }
    return selected()->y.geometry();
}

void Convolution::read(int row, Row const& out) {
    if (!selected()) {
        refuse(not_initialized,
               "Failure in ScalerConvolutional::produce(...) : instance not initialized");
    }
    (_precision == 8 ? _narrow : _wide).y.read(row, out);
}

}  // namespace model
