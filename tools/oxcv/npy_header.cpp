// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "npy_header.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "failure.h"

namespace oxcv {

namespace {

constexpr std::string_view magic = "\x93NUMPY";
/// Magic, two bytes of version, two of length; versions from 2 on have four of length.
constexpr std::size_t prefixBytes = 10;
constexpr std::size_t longestText = 1U << 16U;
constexpr std::size_t mostAxes = 8;

[[noreturn]] void fail(ByteSource const& source, std::string const& what) {
    throw Failure(source.name() + ": " + what);
}

std::string readExactly(ByteSource& source, std::size_t count) {
    std::string bytes(count, '\0');
    if (source.read(bytes.data(), count) != count) {
        source.check();
        fail(source, "the NumPy header is truncated");
    }
    return bytes;
}

/// A little-endian number.
std::size_t toNumber(std::string_view bytes) {
    std::size_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

/// The text of the dictionary.
std::string readText(ByteSource& source) {
    std::string const prefix = readExactly(source, prefixBytes);
    if (!prefix.starts_with(magic)) {
        fail(source, "no NumPy array");
    }
    std::string length = prefix.substr(magic.size() + 2);
    if (prefix[magic.size()] > 1) {
        length += readExactly(source, 2);
    }
    std::size_t const bytes = toNumber(length);
    if (bytes > longestText) {
        fail(source, "the NumPy header is too long");
    }
    return readExactly(source, bytes);
}

/// What stands behind `'key':`, without blanks in front.
std::string_view valueOf(ByteSource const& source, std::string_view text, std::string const& key) {
    std::size_t const place = text.find("'" + key + "':");
    if (place == std::string_view::npos) {
        fail(source, "the NumPy header has no '" + key + "'");
    }
    std::string_view value = text.substr(place + key.size() + 3);
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    return value;
}

std::string parseType(ByteSource const& source, std::string_view value) {
    std::size_t const end = value.find('\'', 1);
    if (!value.starts_with('\'') || end == std::string_view::npos) {
        fail(source, "the NumPy array isn't of plain numbers");
    }
    return std::string(value.substr(1, end - 1));
}

std::vector<std::int64_t> parseShape(ByteSource const& source, std::string_view value) {
    std::vector<std::int64_t> shape;
    char const* place = value.data();
    char const* const end = value.data() + value.size();
    while (place != end && (*place == '(' || *place == ',' || *place == ' ')) {
        ++place;
        std::int64_t extent = 0;
        auto const [stop, error] = std::from_chars(place, end, extent);
        if (error == std::errc()) {
            shape.push_back(extent);
            place = stop;
        }
        if (error == std::errc::result_out_of_range || extent < 0 || shape.size() > mostAxes) {
            fail(source, "bad shape of the NumPy array");
        }
    }
    if (place == end || *place != ')') {
        fail(source, "bad shape of the NumPy array");
    }
    return shape;
}

}  // namespace

NpyHeader readNpyHeader(ByteSource& source) {
    std::string const text = readText(source);
    if (!valueOf(source, text, "fortran_order").starts_with("False")) {
        fail(source, "NumPy arrays in Fortran order aren't supported");
    }
    return {parseType(source, valueOf(source, text, "descr")),
            parseShape(source, valueOf(source, text, "shape"))};
}

std::string makeNpyHeader(NpyHeader const& header) {
    std::string text = "{'descr': '" + header.type + "', 'fortran_order': False, 'shape': (";
    for (std::size_t i = 0; i < header.shape.size(); ++i) {
        text += (i == 0 ? "" : ", ") + std::to_string(header.shape[i]);
    }
    text += "), }";
    text.resize(npyHeaderBytes - prefixBytes - 1, ' ');
    std::string bytes(magic);
    bytes += {'\x01', '\x00', static_cast<char>(npyHeaderBytes - prefixBytes), '\x00'};
    return bytes + text + "\n";
}

}  // namespace oxcv
