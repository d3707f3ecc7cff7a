// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "printable.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace oxcv {

namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

/// Characters that have no picture, or change that of others.
constexpr std::array unfit{
    Range{0x0000, 0x001f},    // control characters
    Range{0x007f, 0x009f},    // more of them
    Range{0x00ad, 0x00ad},    // soft hyphen
    Range{0x061c, 0x061c},    // direction of writing
    Range{0x200b, 0x200f},    // no width, direction
    Range{0x2028, 0x202e},    // ends of lines and paragraphs, direction
    Range{0x2060, 0x206f},    // no width, direction
    Range{0xd800, 0xdfff},    // halves of pairs
    Range{0xfeff, 0xfeff},    // byte order
    Range{0xfff9, 0xfffb},    // annotations
    Range{0xe0000, 0xe0fff},  // tags
};

/// A character of UTF-8.
struct Character {
    std::size_t bytes;
    bool fit;
};

/// How a first byte begins, and the least character that takes as many bytes.
struct Lead {
    unsigned mask;
    unsigned bits;
    std::uint32_t least;
};

constexpr std::array leads{Lead{0x80, 0x00, 0}, Lead{0xe0, 0xc0, 0x80}, Lead{0xf0, 0xe0, 0x800},
                           Lead{0xf8, 0xf0, 0x10000}};

/// The character at the start of a text; one unfit byte if there is none.
Character characterAt(std::string_view text) {
    constexpr std::uint32_t last_code = 0x10ffff;
    constexpr Character none{1, false};
    auto const byte = [&](std::size_t i) { return unsigned{static_cast<unsigned char>(text[i])}; };
    auto const* const lead = std::find_if(leads.begin(), leads.end(), [&](Lead const& candidate) {
        return (byte(0) & candidate.mask) == candidate.bits;
    });
    auto const bytes = static_cast<std::size_t>(lead - leads.begin()) + 1;
    if (lead == leads.end() || text.size() < bytes) {
        return none;
    }
    std::uint32_t code = byte(0) & ~lead->mask;
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xc0U) != 0x80U) {
            return none;
        }
        code = code << 6U | (byte(i) & 0x3fU);
    }
    if (code < lead->least || code > last_code) {
        return none;
    }
    return {bytes, std::none_of(unfit.begin(), unfit.end(), [code](Range const& range) {
                return code >= range.first && code <= range.last;
            })};
}

constexpr std::string_view digits = "0123456789abcdef";

std::string escaped(std::string_view bytes) {
    std::string text;
    for (char const c : bytes) {
        auto const number = static_cast<unsigned char>(c);
        text += {'\\', 'x', digits[number / 16], digits[number % 16]};
    }
    return text;
}

/// 16 bits, as JSON writes them.
std::string codeUnit(std::uint32_t unit) {
    return {'\\',
            'u',
            digits[unit >> 12U & 15U],
            digits[unit >> 8U & 15U],
            digits[unit >> 4U & 15U],
            digits[unit & 15U]};
}

}  // namespace

std::string printable(std::string_view text, std::size_t most) {
    std::string result;
    for (std::size_t length = 0; !text.empty();) {
        Character const character = characterAt(text);
        std::string_view const bytes = text.substr(0, character.bytes);
        std::string const piece = character.fit ? std::string(bytes) : escaped(bytes);
        length += character.fit ? 1 : piece.size();
        if (length > most) {
            return result + "...";
        }
        result += piece;
        text.remove_prefix(character.bytes);
    }
    return result;
}

std::string inQuotes(std::string_view value) {
    std::string text = "'";
    text.append(printable(value, longestValue)).append("'");
    return text;
}

std::string jsonString(std::string_view text) {
    constexpr std::uint32_t notUtf8 = 0xdc00;
    std::string result = "\"";
    while (!text.empty()) {
        Character const character = characterAt(text);
        auto const first = static_cast<unsigned char>(text.front());
        // Halves of pairs are the only unfit characters that begin so; no decoder takes them.
        bool const half = !character.fit && first == 0xed;
        std::string_view const bytes = text.substr(0, half ? 1 : character.bytes);
        if (bytes == "\"" || bytes == "\\") {
            result.append("\\").append(bytes);
        } else if (bytes.size() == 1 && !character.fit) {
            bool const is_ascii = first < 0x80;
            result += codeUnit(is_ascii ? first : notUtf8 + first);
        } else {
            result += bytes;
        }
        text.remove_prefix(bytes.size());
    }
    return result + "\"";
}

std::string displayName(std::string const& path, char const* standard) {
    return path == "-" ? standard : printable(path, longestName);
}

}  // namespace oxcv
