// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Constant arithmetic on planes of floats, in place.
///
/// All four take a plane's start, the bytes from one row to the next, and a rectangle in pixels of
/// that plane. Each element is rounded once; nothing is fused. Rows needn't be aligned.

#pragma once

#include "ox_core/ox_api.h"
#include "ox_core/ox_geometry.h"

namespace ox {

/// Adds `value` to each float.
OX_API void addConstant_32f_C1(float value, unsigned char* data, int stride, Rect rect);
/// Adds `values[c]` to channel c of three interleaved ones.
OX_API void addConstant_32f_C3(float const* values, unsigned char* data, unsigned long stride,
                               Rect rect);
/// Multiplies each float by `value`.
OX_API void mulConstant_32f_C1(float value, unsigned char* data, int stride, Rect rect);
/// Multiplies channel c of three interleaved ones by `values[c]`.
OX_API void mulConstant_32f_C3(float const* values, unsigned char* data, unsigned long stride,
                               Rect rect);

}  // namespace ox
