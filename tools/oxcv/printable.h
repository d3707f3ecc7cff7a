/// @file
/// Texts that nobody has looked at, for messages: what people typed, names and contents of files.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace oxcv {

constexpr std::size_t longestValue = 60;   ///< characters of a value in a message
constexpr std::size_t longestName = 1000;  ///< of a file's name
constexpr std::size_t longestLine = 5000;  ///< of a message

/// The text in UTF-8 with what isn't fit to be printed as bytes "\x1b": control characters, those
/// that turn the direction of writing or can't be seen, and bytes that aren't UTF-8. Behind `most`
/// characters it goes on as "...". What comes out goes in again unchanged.
std::string printable(std::string_view text, std::size_t most);

/// A value between quotation marks.
std::string inQuotes(std::string_view value);

/// A file in messages.
/// @param path "-" is one of the standard streams, whose name is `standard`
std::string displayName(std::string const& path, char const* standard);

}  // namespace oxcv
