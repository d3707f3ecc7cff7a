// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "model/scale.h"

namespace model {

namespace {

// Sums are 32 bits wide over 8-bit samples and 64 over the others; only the low 32 of them matter
// where a wide sum isn't needed.
std::uint64_t scaledDown(std::uint64_t sum, Cut cut, int shift) {
    return (cut.sample_bytes == 1 ? sum & 0xFFFFFFFF : sum) >> shift;
}

std::uint16_t restOf(std::uint16_t full, std::uint16_t weight) {
    return static_cast<std::uint16_t>((full - weight) & 0xFFFF);
}

[[noreturn]] void refuseFormat(std::string const& name) {
    refuse(NotSupported, "Failure in " + name + "::produce(...) : unsupported frame format.");
}

}  // namespace

void AreaTable::make(int src, int dst, int precision) {
    shift = precision - 1;
    if (src == _src && dst == _dst) {
        return;
    }
    _src = src;
    _dst = dst;
    std::int32_t const one = 1 << shift;
    std::int32_t const ratio = wrapped(std::int64_t{dst} * one) / src;
    full = static_cast<std::uint16_t>(std::min(one, ratio));
    entries.clear();
    for (std::int64_t i = 0; i < dst; ++i) {
        std::int64_t const index = i * src / dst;
        std::int32_t const overlap = wrapped(ratio * (index + 1) - i * one);
        entries.push_back({static_cast<std::uint16_t>(index & 0xFFFF),
                           static_cast<std::uint16_t>(std::clamp(overlap, 0, one))});
    }
    entries.push_back({static_cast<std::uint16_t>(src & 0xFFFF), full});
}

void AreaX::arm(Source source, int width, int) {
    _src = source.geometry();
    _table.make(_src.width, width, precision);
    band().arm(source, 1);
    begin({_src.format, width, _src.height});
}

std::uint64_t AreaX::sumUp(std::span<std::uint8_t const> row, Cut cut, std::size_t element,
                           std::size_t channel) const {
    auto const& entry = entryAt(_table.entries, element);
    return elementAt(row, cut, entry.index, channel) * entry.weight +
           elementAt(row, cut, entry.index + 1, channel) * restOf(_table.full, entry.weight);
}

std::uint64_t AreaX::sumDown(std::span<std::uint8_t const> row, Cut cut, std::size_t element,
                             std::size_t channel) const {
    auto const& begin = entryAt(_table.entries, element);
    auto const& end = entryAt(_table.entries, element + 1);
    std::uint64_t sum = elementAt(row, cut, begin.index, channel) * begin.weight;
    for (int k = begin.index + 1; k < end.index; ++k) {
        sum += elementAt(row, cut, k, channel) * _table.full;
    }
    return sum + elementAt(row, cut, end.index, channel) * restOf(_table.full, end.weight);
}

void AreaX::produce(Row const& out) {
    int const src_width = planesOf(_src)[0].width;
    SourceRow const from = band().at(0);
    if (src_width == outPlanes()[0].width) {
        copyRow(from, out);
        return;
    }
    if (!isScalable(_src.format)) {
        refuseFormat("ScalerAreaX");
    }
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        Cut const cut = cutOf(_src.format, p);
        bool const up = outPlanes()[p].width >= src_width;
        fillElements(out[p], cut, outPlanes()[p].width,
                     [&](std::size_t element, std::size_t channel) {
                         std::uint64_t const sum = up ? sumUp(from[p], cut, element, channel)
                                                      : sumDown(from[p], cut, element, channel);
                         return scaledDown(sum, cut, _table.shift);
                     });
    }
    if (_src.format == C1_32u) {
        refuseFormat("ScalerAreaX");
    }
}

void AreaY::arm(Source source, int, int height) {
    _src = source.geometry();
    Geometry const out{_src.format, _src.width, height};
    _table.make(_src.height, height, precision);
    auto const planes = planesOf(out);
    _subsampled = planes.size() > 1 && planes[0].rows != planes[1].rows;
    int count = 1;
    if (height < _src.height) {
        auto const& second = _table.entries[1];
        count = second.index + (second.weight == _table.full ? 0 : 2);
    } else if (height > _src.height) {
        count = 2;
    }
    band().arm(source, std::min(_subsampled ? 2 * count : count, _src.height));
    begin(out);
}

int AreaY::target(int row) const {
    auto const index = static_cast<std::size_t>(row);
    return _subsampled ? 2 * _table.entries[index / 2].index : _table.entries[index].index;
}

// Full planar chroma has rows of its own, two luma rows apart; interleaved chroma goes with luma.
AreaY::Rows AreaY::rowsOf(std::size_t plane) {
    bool const own = plane > 0 && (_src.format == I420 || _src.format == Yv12);
    auto const index = static_cast<std::size_t>(own ? row() / 2 : row());
    auto const& begin = _table.entries[index];
    int const scale = own ? 2 : 1;
    return {begin, _table.entries[index + 1], scale * begin.index - band().first(), scale};
}

// A row below the band is left out where it is the last one of a sum, and is the plane's last row
// elsewhere: the band then stands at the bottom.
std::vector<std::pair<std::span<std::uint8_t const>, std::uint64_t>> AreaY::weightedRows(
    std::size_t plane) {
    Rows const rows = rowsOf(plane);
    int const bottom = band().size() - 1;
    std::vector<std::pair<std::span<std::uint8_t const>, std::uint64_t>> result;
    auto const add = [&](int k, std::uint64_t weight) {
        result.emplace_back(band().at(std::min(rows.place + k * rows.step, bottom))[plane], weight);
    };
    auto const addRest = [&](int k, std::uint16_t weight) {
        std::uint16_t const rest = restOf(_table.full, weight);
        if (rest != 0 && rows.place + k * rows.step <= bottom) {
            add(k, rest);
        }
    };
    add(0, rows.begin.weight);
    if (geometry().height > _src.height) {
        addRest(1, rows.begin.weight);
        return result;
    }
    int k = 1;
    for (; k < rows.end.index - rows.begin.index; ++k) {
        add(k, _table.full);
    }
    addRest(k, rows.end.weight);
    return result;
}

void AreaY::produce(Row const& out) {
    if (geometry().height == _src.height) {
        copyRow(band().at(rowsOf(0).place), out);
        return;
    }
    if (!isScalable(_src.format)) {
        refuseFormat("ScalerAreaY");
    }
    bool const one_channel = _src.format == Uyvy || _src.format == C2_8u || _src.format == C4_8u;
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        if (out[p].empty()) {
            continue;
        }
        Cut const cut = one_channel ? Cut{1, 1} : cutOf(_src.format, p);
        auto const rows = weightedRows(p);
        fillElements(
            out[p], cut, outPlanes()[p].width, [&](std::size_t element, std::size_t channel) {
                std::uint64_t sum = 0;
                for (auto const& [row, weight] : rows) {
                    sum +=
                        weight * elementAt(row, cut, static_cast<std::int64_t>(element), channel);
                }
                return scaledDown(sum, cut, _table.shift);
            });
    }
    if (_src.format == C1_32u) {
        refuseFormat("ScalerAreaY");
    }
}

}  // namespace model
