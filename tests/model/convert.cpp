// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/convert.h"

#include <algorithm>

#include "model/convert_rows.h"

namespace model {

namespace {

std::string const unsupportedText =
    "Failure in ImplFormatConverter::get_context(...) : unsupported format.";

bool isKnown(int format) {
    return (format >= Gray8 && format <= Yuv444Planar) || format == Bgr32f ||
           format == Bgr32fPlanar;
}

}  // namespace

// The number of source rows that the conversion looks at.
int Converter::selectWindow(int from, int to) {
    if (!isKnown(from) || !isKnown(to)) {
        refuse(UnsupportedFormat, unsupportedText);
    }
    if (isYuv(to)) {
        _yuv = to;
    }
    if (isYuv(from)) {
        bool const direct = to == Gray8 || to == Bgr24;
        if (!direct && _yuv == 0) {
            return 0;
        }
        return direct ? 1 : yuvLayout(_yuv).rows;
    }
    if (from == Bgr32fPlanar) {
        refuse(UnsupportedFormat, unsupportedText);
    }
    if (!canBecome(from, to)) {
        refuse(NotSupported, unsupportedText);
    }
    return from == Bgr24 && isYuv(to) ? yuvLayout(to).rows : 1;
}

void Converter::arm(Source source, int format) {
    if (format == 0) {
        refuse(UnsupportedFormat, "Invalid value for parameter 'dst_format'.");
    }
    Geometry const from = source.geometry();
    if (format == from.format) {
        _copy.arm(source);
        return;
    }
    _copy.clear();
    band().arm(source, selectWindow(from.format, format));
    _from = from.format;
    begin({format, from.width, from.height});
}

Outcome Converter::run(Source source, Image& dst) {
    return drain([&] { arm(source, dst.format); }, *this, dst);
}

Geometry Converter::geometry() const {
    return _copy.armed() ? _copy.geometry() : Stage::geometry();
}

void Converter::read(int row, Row const& out) {
    if (_copy.armed()) {
        _copy.read(row, out);
    } else {
        Stage::read(row, out);
    }
}

void Converter::produce(Row const& out) {
    int const place = row() - band().first();
    RowPair rows{band().at(place), {}, place + 1 < band().size()};
    if (rows.has_lower) {
        rows.lower = band().at(place + 1);
    }
    convertRow(_from, geometry().format, _yuv, rows, geometry().width, out);
}

Outcome convert(Image const& src, Image& dst) {
    return Converter().run(src, dst);
}

namespace {

std::uint8_t narrow(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 65535) / 256);
}

}  // namespace

void nv12ToBgrDirect(Image const& src, Image& dst) {
    int const rows = dst.height / 2 * 2;
    int const columns = dst.width / 8 * 8;
    for (int y = 0; y < rows; ++y) {
        SourceRow const from = src.shown(y);
        Row const out = dst.writable(y);
        for (int x = 0; x < columns; ++x) {
            auto const pair = static_cast<std::size_t>(x / 2 * 2);
            auto const pixel = static_cast<std::size_t>(3 * x);
            int const u = from[1][pair] - 128;
            int const v = from[1][pair + 1] - 128;
            int const luma = 298 * std::max(from[0][static_cast<std::size_t>(x)] - 16, 0);
            out[0][pixel] = narrow(luma + 128 + 516 * u);
            out[0][pixel + 1] = narrow(luma + 128 - 208 * v - 100 * u);
            out[0][pixel + 2] = narrow(luma + 128 + 409 * v);
        }
    }
}

}  // namespace model
