// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/scale.h"

namespace model {

namespace {

constexpr std::int64_t one = 65536;

bool hasHalfRows(int format) {
    return format >= I420 && format <= Nv21;
}

// A sample times a fraction of a column. Wide samples overflow 32 bits and wrap: to a signed
// product for 16-bit samples, to an unsigned one for 32-bit samples.
std::int64_t part(std::uint64_t sample, std::int64_t fraction, Cut cut) {
    std::int64_t const product = static_cast<std::int64_t>(sample) * fraction;
    if (cut.sample_bytes == 4) {
        return (product & 0xFFFFFFFF) >> 16;
    }
    return wrapped(product) >> 16;
}

}  // namespace

void AreaXY::arm(Source source, int width, int height) {
    Geometry const src = source.geometry();
    Geometry const dst{src.format, width, height};
    if (width > src.width || height > src.height) {
        refuse(NotSupported,
               "Failure in scaleAreaXY::reuse(...) : the area method is implemented for "
               "down-scaling only.");
    }
    if (src.width != _src.width || src.height != _src.height || width != _dst.width ||
        height != _dst.height) {
        _chroma_step = 0;
        _step_x = wrapped(src.width * one) / width;
        _step_y = wrapped(src.height * one) / height;
    }
    _src = src;
    _dst = dst;
    if (hasHalfRows(src.format)) {
        _chroma_step = wrapped(planesOf(src)[1].rows * one) / planesOf(dst)[1].rows;
    }
    _count = (_step_y >> 16) + (_step_y % one != 0 ? 2 : 0);
    band().arm(source, _chroma_step != 0 ? 3 * _count : _count);
    begin(dst);
}

int AreaXY::target(int row) const {
    if (_chroma_step != 0) {
        return 2 * ((row / 2 * _chroma_step) >> 16);
    }
    return (row * _step_y) >> 16;
}

std::vector<AreaXY::WeightedRow> AreaXY::rowsOf(std::size_t plane) {
    bool const own = plane > 0 && hasHalfRows(_src.format);
    std::int32_t const top = own ? row() / 2 * _chroma_step : row() * _step_y;
    std::int32_t const bottom = top + _step_y;
    int const scale = own ? 2 : 1;
    std::vector<WeightedRow> rows;
    for (int e = 0; e < _count; ++e) {
        int const r = (top >> 16) + e;
        std::int32_t weight = 0;
        if (e == 0) {
            weight = 65536 - (top & 0xFFFF);
        } else if (r < bottom >> 16) {
            weight = 65536;
        } else if (r == bottom >> 16) {
            weight = bottom & 0xFFFF;
        }
        if (weight != 0) {
            rows.push_back({band().at(scale * r - band().first())[plane], weight});
        }
    }
    return rows;
}

std::uint64_t AreaXY::element(std::vector<WeightedRow> const& rows, Cut cut, std::size_t element,
                              std::size_t channel) const {
    std::int64_t const left = static_cast<std::int64_t>(element) * _step_x;
    std::int64_t const right = left + _step_x;
    std::uint32_t total = 0;
    for (WeightedRow const& entry : rows) {
        auto const sample = [&](std::int64_t x) { return elementAt(entry.row, cut, x, channel); };
        std::int64_t const begin = left / one;
        std::int64_t const end = right / one;
        std::int64_t sum = left % one == 0 ? static_cast<std::int64_t>(sample(begin))
                                           : part(sample(begin), one - left % one, cut);
        if (right % one != 0) {
            sum += part(sample(end), right % one, cut);
        }
        for (std::int64_t x = begin + 1; x < end; ++x) {
            sum += static_cast<std::int64_t>(sample(x));
        }
        total += static_cast<std::uint32_t>(((entry.weight * sum) >> 16) & 0xFFFFFFFF);
    }
    auto const area = static_cast<std::uint64_t>(_step_x) * static_cast<std::uint64_t>(_step_y);
    return (static_cast<std::uint64_t>(total) << 32) / area;
}

void AreaXY::produce(Row const& out) {
    auto const refuseFormat = [] {
        refuse(NotSupported, "Failure in scaleAreaXY::produce(...) : unsupported frame format.");
    };
    if (!isScalable(_src.format)) {
        refuseFormat();
    }
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        if (out[p].empty()) {
            continue;
        }
        Cut const cut = cutOf(_src.format, p);
        auto const rows = rowsOf(p);
        fillElements(out[p], cut, outPlanes()[p].width, [&](std::size_t x, std::size_t channel) {
            // Four channels: the fourth repeats the third.
            return element(rows, cut, x, channel == 3 ? 2 : channel);
        });
    }
    if (_src.format == C1_32u) {
        refuseFormat();
    }
}

}  // namespace model
