// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "parse.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "failure.h"
#include "printable.h"
#include "routes.h"

namespace oxcv {

namespace {

constexpr std::string_view formatPrefix = "frame_";

/// Indexed by `ox::ResizeMethod`.
constexpr std::array<std::string_view, 3> methodNames{"nearest", "bilinear", "area"};

/// The whole text as a decimal number, which is finite.
template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number = 0;
    if (std::is_floating_point_v<Number> && text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    char const* const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    if constexpr (std::is_floating_point_v<Number>) {
        return std::isfinite(number) ? std::optional(number) : std::nullopt;
    }
    return number;
}

/// A number of at least 1.
template <class Number>
std::optional<Number> parsePositive(std::string_view text) {
    std::optional<Number> const number = parseNumber<Number>(text);
    return number.value_or(0) > 0 ? number : std::nullopt;
}

/// So many numbers with commas between them.
template <class Number, std::size_t Count>
std::optional<std::array<Number, Count>> parseList(std::string_view text) {
    std::array<Number, Count> numbers{};
    for (std::size_t i = 0; i < Count; ++i) {
        bool const last = i + 1 == Count;
        std::size_t const comma = text.find(',');
        auto const number = parseNumber<Number>(text.substr(0, comma));
        if (!number || last != (comma == std::string_view::npos)) {
            return std::nullopt;
        }
        numbers[i] = *number;
        text.remove_prefix(last ? text.size() : comma + 1);
    }
    return numbers;
}

/// Three numbers, or one in place of all three.
template <class Number>
std::optional<std::array<Number, 3>> parseTriple(std::string_view text) {
    if (auto const number = parseNumber<Number>(text)) {
        return std::array{*number, *number, *number};
    }
    return parseList<Number, 3>(text);
}

/// A positive side, or 0 for an empty text.
std::optional<int> parseSide(std::string_view text) {
    return text.empty() ? std::optional<int>(0) : parsePositive<int>(text);
}

std::optional<ox::ResizeMethod> methodByName(std::string const& name) {
    auto const* const method = std::find(methodNames.begin(), methodNames.end(), toLower(name));
    if (method == methodNames.end()) {
        return std::nullopt;
    }
    return static_cast<ox::ResizeMethod>(method - methodNames.begin());
}

int scaledSide(int side, int other, int other_scaled) {
    std::int64_t const scaled =
        (std::int64_t{2} * side * other_scaled + other) / (std::int64_t{2} * other);
    if (scaled > std::numeric_limits<int>::max()) {
        throw Failure("the size asked for is too large");
    }
    return static_cast<int>(std::max<std::int64_t>(scaled, 1));
}

}  // namespace

SizeRequest parseSizeRequest(std::string const& text) {
    std::size_t const cross = text.find_first_of("xX");
    if (cross != std::string::npos && text.size() > 1) {
        std::string_view const view(text);
        auto const width = parseSide(view.substr(0, cross));
        auto const height = parseSide(view.substr(cross + 1));
        if (width && height) {
            return {*width, *height};
        }
    }
    throw UsageError(inQuotes(text) + " is no size such as 640x480, 640x or x480");
}

ox::Size parseSize(std::string const& text) {
    SizeRequest const request = parseSizeRequest(text);
    if (request.width == 0 || request.height == 0) {
        throw UsageError(inQuotes(text) + " is no size such as 640x480");
    }
    return {request.width, request.height};
}

ox::Rect parseRect(std::string const& text) {
    auto const numbers = parseList<int, 4>(text);
    if (numbers) {
        auto const [x, y, w, h] = *numbers;
        if (x >= 0 && y >= 0 && w > 0 && h > 0) {
            return {x, y, w, h};
        }
    }
    throw UsageError(inQuotes(text) + " is no region X,Y,W,H such as 16,0,320,240");
}

std::string parsePath(std::string const& text) {
    if (text.empty()) {
        throw UsageError("the name is empty");
    }
    return text;
}

std::int64_t parseCount(std::string const& text) {
    auto const count = parsePositive<std::int64_t>(text);
    if (!count) {
        throw UsageError(inQuotes(text) + " is no positive number");
    }
    return *count;
}

int parseQuality(std::string const& text) {
    constexpr int most = 100;
    auto const quality = parsePositive<int>(text);
    if (quality.value_or(most + 1) > most) {
        throw UsageError(inQuotes(text) + " is no number from 1 to " + std::to_string(most));
    }
    return *quality;
}

float parseFloat(std::string const& text) {
    auto const number = parseNumber<float>(text);
    if (!number) {
        throw UsageError(inQuotes(text) + " is no finite number such as 0.0039 or -0.5");
    }
    return *number;
}

std::array<float, 3> parseThree(std::string const& text) {
    auto const numbers = parseTriple<float>(text);
    if (!numbers) {
        throw UsageError(inQuotes(text) + " is neither a finite number nor three such as 0.5,1,2");
    }
    return *numbers;
}

std::array<float, 3> parseFactors(std::string const& text) {
    auto const numbers = parseTriple<float>(text);
    return numbers ? *numbers : std::array{parseFloat(text), 0.0F, 0.0F};
}

std::array<std::uint8_t, 3> parseBytes(std::string const& text) {
    auto const bytes = parseTriple<std::uint8_t>(text);
    if (!bytes) {
        throw UsageError(inQuotes(text) +
                         " is neither a number from 0 to 255 nor three such as 0,128,255");
    }
    return *bytes;
}

std::array<std::int32_t, 3> parseStrides(std::string const& text) {
    auto const three = parseList<std::int32_t, 3>(text);
    auto const two = parseList<std::int32_t, 2>(text);
    auto const one = parsePositive<std::int32_t>(text);
    if (three && *std::min_element(three->begin(), three->end()) > 0) {
        return *three;
    }
    if (two && *std::min_element(two->begin(), two->end()) > 0) {
        return {(*two)[0], (*two)[1], 0};
    }
    if (!one) {
        throw UsageError(inQuotes(text) + " is no stride such as 1024, or 1024,512,512");
    }
    return {*one, 0, 0};
}

std::int32_t parseInteger(std::string const& text) {
    auto const number = parseNumber<std::int32_t>(text);
    if (!number) {
        throw UsageError(inQuotes(text) + " is no whole number such as 128 or -5");
    }
    return *number;
}

std::string parseChoice(std::vector<std::string> const& choices, std::string const& text) {
    auto const found = std::find(choices.begin(), choices.end(), toLower(text));
    if (found == choices.end()) {
        throw UsageError(inQuotes(text) + " is none of " + joined(choices, ", "));
    }
    return *found;
}

std::string joined(std::vector<std::string> const& words, std::string_view separator) {
    std::string text;
    for (std::string const& word : words) {
        text.append(text.empty() ? "" : separator).append(word);
    }
    return text;
}

ox::ResizeMethod parseMethod(std::string const& name) {
    auto const method = methodByName(name);
    if (!method) {
        throw UsageError("there is no method " + inQuotes(name) +
                         ", only nearest, bilinear and area");
    }
    return *method;
}

ox::ScalerPrecision parsePrecision(std::string const& text) {
    for (auto const precision : {ox::OX_SCALER_FIXED_POINT_8S, ox::OX_SCALER_FIXED_POINT_16S}) {
        if (text == std::to_string(static_cast<unsigned>(precision))) {
            return precision;
        }
    }
    throw UsageError("weights have 8 or 16 bits, not " + inQuotes(text));
}

ox::ResizeMethod parseWarpMethod(std::string const& name) {
    auto const method = methodByName(name);
    if (!method || *method == ox::ResizeArea) {
        throw UsageError("there is no warp method " + inQuotes(name) +
                         ", only nearest and bilinear");
    }
    return *method;
}

Matrix parseMatrix(std::string const& text) {
    auto const matrix = parseList<float, 6>(text);
    if (!matrix) {
        throw UsageError(inQuotes(text) + " is no matrix A,B,C,D,E,F such as 1,0,16,0,1,-8.5");
    }
    if (!isInvertible(*matrix)) {
        throw UsageError("the matrix " + inQuotes(text) + " can't be inverted");
    }
    return *matrix;
}

double parseAngle(std::string const& text) {
    auto const degrees = parseNumber<double>(text);
    if (!degrees) {
        throw UsageError(inQuotes(text) + " is no number of degrees such as 90 or -7.5");
    }
    return *degrees;
}

ox::Size resolveSize(SizeRequest const& request, ox::Size source) {
    if (request.height == 0) {
        return {request.width, scaledSide(source.height, source.width, request.width)};
    }
    if (request.width == 0) {
        return {scaledSide(source.width, source.height, request.height), request.height};
    }
    return {request.width, request.height};
}

ox::FrameFormat formatByName(std::string_view name) {
    std::string wanted = toLower(name);
    if (wanted.starts_with(formatPrefix)) {
        wanted.erase(0, formatPrefix.size());
    }
    for (ox::FrameFormat const format : allFormats()) {
        if (toLower(shortName(format)) == wanted) {
            return format;
        }
    }
    return ox::FRAME_FORMAT_NONE;
}

ox::FrameFormat parseFormat(std::string const& name) {
    ox::FrameFormat const format = formatByName(name);
    if (format == ox::FRAME_FORMAT_NONE) {
        throw UsageError("there is no format " + inQuotes(name) + "; 'oxcv formats' lists them");
    }
    return format;
}

std::string shortName(ox::FrameFormat format) {
    return std::string(ox::toString(format)).substr(formatPrefix.size());
}

std::string toText(ox::Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string toLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

}  // namespace oxcv
