// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// How the scalers cut rows into elements.
#pragma once

#include "model/image.h"

namespace model {

// An element is `channels` samples of `sample_bytes` bytes.
struct Cut {
    std::size_t channels;
    std::size_t sample_bytes;
};

// The formats that the scalers take. The packed formats of pixel pairs are cut into three and four
// bytes, whatever they hold.
inline bool isScalable(int format) {
    return format == Gray8 || (format >= Bgr24 && format <= C1_32u);
}

inline Cut cutOf(int format, std::size_t plane) {
    switch (format) {
        case Bgr24:
        case Yuyv:
        case Yuv444:
        case C3_8u:
            return {3, 1};
        case Uyvy:
        case C4_8u:
            return {4, 1};
        case C2_8u:
            return {2, 1};
        case Nv12:
        case Nv21:
        case Nv16:
            return {plane == 0 ? 1U : 2U, 1};
        case C1_16u:
            return {1, 2};
        case C1_32u:
            return {1, 4};
        default:
            return {1, 1};
    }
}

inline std::size_t sampleByte(Cut cut, std::size_t element, std::size_t channel) {
    return (element * cut.channels + channel) * cut.sample_bytes;
}

// A channel of an element; behind the row's end, that channel of the last whole element.
inline std::uint64_t elementAt(std::span<std::uint8_t const> row, Cut cut, std::int64_t element,
                               std::size_t channel) {
    std::size_t place = sampleByte(cut, static_cast<std::size_t>(element), channel);
    if (place >= row.size()) {
        place = sampleByte(cut, row.size() / (cut.channels * cut.sample_bytes) - 1, channel);
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < cut.sample_bytes; ++i) {
        value |= static_cast<std::uint64_t>(row[place + i]) << (8 * i);
    }
    return value;
}

// Fills the first `width` elements of a row with value(element, channel), of which the low bits are
// kept. What doesn't fit into the row is left out.
template <class Value>
void fillElements(std::span<std::uint8_t> row, Cut cut, int width, Value value) {
    for (std::size_t element = 0; element < static_cast<std::size_t>(width); ++element) {
        for (std::size_t channel = 0; channel < cut.channels; ++channel) {
            std::size_t const place = sampleByte(cut, element, channel);
            if (place >= row.size()) {
                return;
            }
            std::uint64_t const bits = value(element, channel);
            for (std::size_t i = 0; i < cut.sample_bytes; ++i) {
                row[place + i] = static_cast<std::uint8_t>((bits >> (8 * i)) & 0xFF);
            }
        }
    }
}

// An entry of a table that has one for each column; the last one behind its end.
template <class Entry>
Entry const& entryAt(std::vector<Entry> const& table, std::size_t index) {
    return index < table.size() ? table[index] : table.back();
}

// 32-bit arithmetic that wraps.
inline std::int32_t wrapped(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value & 0xFFFFFFFF));
}

}  // namespace model
