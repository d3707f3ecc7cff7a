// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Source coordinates of 16.16 fixed point.

#pragma once

#include <cstdint>

namespace ox::rows {

constexpr int coordinateBits = 16;
constexpr std::int32_t coordinateOne = 1 << coordinateBits;
constexpr std::int32_t coordinateMask = coordinateOne - 1;

}  // namespace ox::rows
