// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/liar.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "fuzz/pictures.h"
#include "ox_core/ox_exception.h"

namespace ox::fuzz {

namespace {

// Small ones, so that what is written is small; large ones, for which there is no memory; and
// those without sense. None between: to fill memory takes its time.
template <class Number>
Number drawLie(Input& input) {
    using Limits = std::numeric_limits<Number>;
    constexpr Number senseless[]{static_cast<Number>(-1), 0, Limits::max(), Limits::min(),
                                 Limits::max() / 65536 + 1};
    return input.byte() % 4 == 0 ? input.pick(senseless)
                                 : static_cast<Number>(input.between(0, 200));
}

// The sides of a frame as they may be claimed: those that take no memory to speak of.
std::int32_t drawFalseSide(Input& input) {
    return std::clamp<std::int32_t>(drawLie<std::int32_t>(input), -5, 200);
}

void lie(Input& input, FrameLayout& layout) {
    FramePlane& plane = layout.plane[input.between(0, 3)];
    switch (input.between(0, 10)) {
        case 0:
            layout.format = formatOf(drawFormat(input));
            break;
        case 1:
            layout.planeCount = drawLie<std::int32_t>(input);
            break;
        case 2:
            layout.size.width = drawFalseSide(input);
            break;
        case 3:
            layout.size.height = drawFalseSide(input);
            break;
        case 4:
            plane.width = drawLie<std::int32_t>(input);
            break;
        case 5:
            plane.height = drawLie<std::int32_t>(input);
            break;
        case 6:
            plane.bits = input.number<std::uint16_t>();
            break;
        case 7:
            plane.channels = input.number<std::uint16_t>();
            break;
        case 8:
            plane.stride = drawLie<std::int64_t>(input);
            break;
        case 9:
            plane.rowBytes = drawLie<std::uint64_t>(input);
            break;
        default:
            layout.plane[0].rowBytes = static_cast<std::uint64_t>(input.between(0, 300));
            break;
    }
}

}  // namespace

Liar::Liar(Input& input) {
    model::Geometry const truth = drawGeometry(input);
    _size = {truth.width, truth.height};
    FrameLayout const first(formatOf(truth.format), _size, 64);
    for (int i = input.between(1, 3); i > 0; --i) {
        FrameLayout layout = _told.empty() ? first : _told.back();
        for (int lies = input.between(0, 3); lies > 0; --lies) {
            lie(input, layout);
        }
        _told.push_back(layout);
    }
    std::fill(std::begin(_row_bytes), std::end(_row_bytes), ~std::uint64_t{0});
    for (FrameLayout const& told : _told) {
        FrameLayout const promised(told.format, told.size, 64);
        for (int i = 0; i < 4; ++i) {
            _row_bytes[i] = std::min({_row_bytes[i], told.plane[i].rowBytes,
                                      promised.plane[i].rowBytes, first.plane[i].rowBytes});
        }
    }
    _until_throw = input.oneIn(4) ? input.between(0, 40) : -1;
    _answers = input.byte();
    _foreign = input.oneIn(2);
}

FrameLayout const& Liar::layout() {
    return _told[_asked++ % _told.size()];
}

void Liar::produce(RowData& row) {
    if (_until_throw >= 0 && _until_throw-- == 0) {
        if (_foreign) {
            throw Thrown();
        }
        throw Exception(nullptr, StatusNotSupported, "produce", "", 0, "a liar's");
    }
    for (int i = 0; i < 4; ++i) {
        if (row[i] != nullptr) {
            std::memset(row[i], 0xC0 + i, _row_bytes[i]);
        }
    }
}

bool Liar::next() {
    _answers = static_cast<std::uint8_t>(_answers * 5 + 1);
    return _answers % 4 != 0;
}

}  // namespace ox::fuzz
