// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The text in front of a NumPy array.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "byte_source.h"

namespace oxcv {

struct NpyHeader {
    std::string type;  ///< as "<f4" or "|u1"
    std::vector<std::int64_t> shape;
};

/// The length of every header that is written, so that a header can be overwritten in place.
constexpr std::size_t npyHeaderBytes = 128;

/// @throws Failure for anything but a whole header of an array in C order
NpyHeader readNpyHeader(ByteSource& source);

/// The bytes in front of an array of two axes or more.
std::string makeNpyHeader(NpyHeader const& header);

}  // namespace oxcv
