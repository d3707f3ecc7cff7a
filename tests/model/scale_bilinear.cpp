// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "model/scale.h"

namespace model {

namespace {

// Source coordinates with 16 fractional bits, for the centres of the destination's samples.
std::vector<std::int32_t> coordinates(int src, int dst, std::string const& limit) {
    std::int32_t const extent = wrapped(std::int64_t{src} * 65536);
    std::int32_t const step = extent / dst;
    std::int32_t const first = wrapped(std::int64_t{step} - 65536) / 2;
    std::vector<std::int32_t> table;
    for (std::int64_t i = 0; i < dst; ++i) {
        table.push_back(std::max(wrapped(first + i * step), 0));
    }
    if (table.back() >= extent) {
        refuseAssertion(limit);
    }
    return table;
}

std::uint64_t blend(std::uint64_t a, std::uint64_t b, std::uint64_t weight_of_b) {
    return (b * weight_of_b + a * (65536 - weight_of_b)) >> 16;
}

std::uint64_t blendColumns(std::span<std::uint8_t const> row, Cut cut, int width,
                           std::int32_t coordinate, std::size_t channel) {
    int const x = coordinate >> 16;
    int const neighbour = x < width - 1 ? x + 1 : x;
    return blend(elementAt(row, cut, x, channel), elementAt(row, cut, neighbour, channel),
                 static_cast<std::uint64_t>(coordinate & 0xFFFF));
}

void requireScalable(int format, std::string const& name) {
    if (!isScalable(format)) {
        refuse(NotSupported, "Failure in " + name + "::produce(...) : unsupported frame format.");
    }
}

}  // namespace

void BilinearX::arm(Source source, int width, int) {
    _src = source.geometry();
    _xs = coordinates(_src.width, width, "_src_xs[dst_width - 1] < (src_size.width << SHIFT)");
    band().arm(source, 1);
    begin({_src.format, width, _src.height});
}

void BilinearX::produce(Row const& out) {
    auto const src_planes = planesOf(_src);
    SourceRow const from = band().at(0);
    if (src_planes[0].width == outPlanes()[0].width) {
        copyRow(from, out);
        return;
    }
    requireScalable(_src.format, "ScalerBilinearX");
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        Cut const cut = cutOf(_src.format, p);
        fillElements(out[p], cut, outPlanes()[p].width,
                     [&](std::size_t element, std::size_t channel) {
                         return blendColumns(from[p], cut, src_planes[p].width,
                                             entryAt(_xs, element), channel);
                     });
    }
}

void BilinearRows::makeYs(Geometry src, int height, std::string const& limit) {
    _ys = coordinates(src.height, height, limit);
}

void BilinearRows::armBand(Source source, Geometry out) {
    auto const planes = planesOf(out);
    int size = planes.size() > 1 && planes[0].rows != planes[1].rows ? 4 : 2;
    if (source.frame) {
        size = std::min(size, source.geometry().height);
    }
    band().arm(source, size);
    begin(out);
}

int BilinearRows::place() {
    int const place = target(row()) - band().first();
    if (place < 0 || place >= band().size()) {
        refuseAssertion("0 <= window_row && window_row < window_size");
    }
    return place;
}

BilinearRows::TwoRows BilinearRows::rowsFor(std::size_t plane) {
    int const upper = place();
    int const distance = plane == 0 ? 1 : 2;
    int const lower = upper + distance < band().size() ? upper + distance : upper;
    auto const weight = static_cast<std::uint64_t>(_ys[static_cast<std::size_t>(row())] & 0xFFFF);
    return {band().at(upper), band().at(lower), weight};
}

void BilinearY::arm(Source source, int, int height) {
    _src = source.geometry();
    makeYs(_src, height, "_src_ys[dst_height - 1] < (src_layout.size.height << SHIFT)");
    armBand(source, {_src.format, _src.width, height});
}

void BilinearY::produce(Row const& out) {
    int const upper = place();
    if (geometry().height == _src.height) {
        copyRow(band().at(upper), out);
        return;
    }
    requireScalable(_src.format, "ScalerBilinearY");
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        Cut const cut = cutOf(_src.format, p);
        TwoRows const rows = rowsFor(p);
        fillElements(out[p], cut, outPlanes()[p].width,
                     [&](std::size_t element, std::size_t channel) {
                         auto const x = static_cast<std::int64_t>(element);
                         return blend(elementAt(rows.upper[p], cut, x, channel),
                                      elementAt(rows.lower[p], cut, x, channel), rows.weight);
                     });
    }
}

void BilinearXY::arm(Source source, int width, int height) {
    Geometry const src = source.geometry();
    _xs = coordinates(src.width, width, "_src_xs[dst_size.width - 1] < (src_size.width << SHIFT)");
    makeYs(src, height, "_src_ys[dst_size.height - 1] < (src_size.height << SHIFT)");
    _src_planes = planesOf(src);
    armBand(source, {src.format, width, height});
}

void BilinearXY::produce(Row const& out) {
    int const format = geometry().format;
    place();
    requireScalable(format, "ScalerBilinearXY");
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        Cut const cut = cutOf(format, p);
        TwoRows const rows = rowsFor(p);
        auto const across = [&](SourceRow const& row, std::size_t element, std::size_t channel) {
            return blendColumns(row[p], cut, _src_planes[p].width, entryAt(_xs, element), channel);
        };
        fillElements(out[p], cut, outPlanes()[p].width,
                     [&](std::size_t element, std::size_t channel) {
                         return blend(across(rows.upper, element, channel),
                                      across(rows.lower, element, channel), rows.weight);
                     });
    }
}

}  // namespace model
