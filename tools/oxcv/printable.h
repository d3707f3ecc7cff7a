// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Foreign texts made fit for messages: words of the command line, names and contents of files.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace oxcv {

constexpr std::size_t longestValue = 60;   ///< characters of a value in a message
constexpr std::size_t longestName = 1000;  ///< of a file's name
constexpr std::size_t longestLine = 5000;  ///< of a message

/// The text in UTF-8, with unfit bytes written like "\x1b". Unfit are control characters, invisible
/// characters, those that turn the direction of writing, and bytes that aren't UTF-8. A text of
/// more than `most` characters ends with "...". A text that was made printable stays as it is.
std::string printable(std::string_view text, std::size_t most);

/// A value between quotation marks.
std::string inQuotes(std::string_view value);

/// A text as a string of JSON, with quotation marks. Control characters are escaped; a byte
/// that isn't UTF-8 becomes half a pair, U+DC00 + byte, as Python reads and writes names of files.
std::string jsonString(std::string_view text);

/// A file in messages.
/// @param path "-" is one of the standard streams, whose name is `standard`
std::string displayName(std::string const& path, char const* standard);

}  // namespace oxcv
