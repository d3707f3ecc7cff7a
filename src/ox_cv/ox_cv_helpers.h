/// @file
/// Free functions of the library.

#pragma once

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"

namespace ox {

/// A rectangle of zeros, which stands for no region.
OX_API Rect const& emptyRoi();

/// A frame that isn't initialized, which stands for no frame.
OX_API Frame const& emptyFrame();

/// Inverts an affine transform.
/// @param matrix six numbers, row-major, two rows of three
/// @param inverse receives six numbers of the same form; zeros if the matrix can't be inverted
/// @return whether the determinant (in single precision) differs from zero
OX_API bool invertAffineTransform(float const* matrix, float* inverse);

/// Converts `FRAME_NV12` to `FRAME_BGR24` with coefficients of its own, in blocks of eight columns
/// and two rows: the last width mod 8 columns and an odd last row stay unwritten.
/// @param width, height in pixels
/// @param src_stride bytes between rows of both source planes
OX_API void NV12toBGR_neon(unsigned char const* y, unsigned char const* uv, unsigned char* bgr,
                           int width, int height, int src_stride, int dst_stride);

}  // namespace ox
