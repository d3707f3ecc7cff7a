// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Affine matrices: where a warp moves pixels.

#pragma once

#include <array>

#include "ox_core/ox_geometry.h"

namespace oxcv {

/// Two rows of three: x' = m0 x + m1 y + m2, y' = m3 x + m4 y + m5, where (0, 0) is the middle of
/// the top left pixel.
using Matrix = std::array<float, 6>;

/// Whether a matrix has an inverse in the range of floats, and the inverse has one too.
bool isInvertible(Matrix const& matrix);

/// Turns a picture counter-clockwise, as seen, about its middle ((w - 1) / 2, (h - 1) / 2). Whole
/// quarters of a turn are exact.
Matrix rotation(double degrees, ox::Size size);

}  // namespace oxcv
