// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Free functions of the library.

#pragma once

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"
#include "ox_core/ox_tensor.h"
#include "ox_cv/ox_cv_backend.h"

namespace ox {

/// A rectangle of zeros, which stands for no region.
OX_API Rect const& emptyRoi();

/// A frame that isn't initialized, which stands for no frame.
OX_API Frame const& emptyFrame();

/// Inverts an affine transform.
/// @param matrix six numbers, row-major, two rows of three
/// @param inverse receives six numbers of the same form; zeros if the matrix can't be inverted. It
///        may be `matrix`
/// @return whether the determinant (in single precision) differs from zero
OX_API bool invertAffineTransform(float const* matrix, float* inverse);

/// Converts `FRAME_NV12` to `FRAME_BGR24` with coefficients of its own, in blocks of eight columns
/// and two rows: the last width mod 8 columns and an odd last row stay unwritten.
/// @param width, height in pixels
/// @param bgr must have no byte in common with the source
/// @param src_stride bytes between rows of both source planes
OX_API void NV12toBGR_neon(unsigned char const* y, unsigned char const* uv, unsigned char* bgr,
                           int width, int height, int src_stride, int dst_stride);

/// Converts a frame through a `CvBackendSimd` of its own; callers with many frames keep one. `dst`
/// gets the format and `src`'s size, and may be another handle on `src`'s pixels, or `src` itself.
/// It is cleared if `src` isn't initialized or `format` is `FRAME_FORMAT_NONE`. To `src`'s own
/// format it is `Frame::copyTo`.
///
/// Columns that the conversion leaves unwritten are 0: from `FRAME_NV12` to `FRAME_BGR24` the last
/// width mod 8. A backend's `colorCvt` converts them as well, if the whole frame is its region.
/// @throws Exception what `Frame::reuse` throws, `dst` being not initialized then, and what
///         `CvBackendSimd::colorCvt` throws, `dst` having the format and size by then
OX_API void colorConvert(Frame const& src, FrameFormat format, Frame& dst);

/// Scales a frame through a `CvBackendSimd` of its own; callers with many frames keep one. `dst`
/// gets `src`'s format and the size, and may be another handle on `src`'s pixels, or `src` itself.
/// It is cleared if `src` isn't initialized or a side of `size` isn't positive, and becomes a copy
/// if the size is `src`'s. A `src` without columns or rows gives zeros. Of `FRAME_YUYV` and
/// `FRAME_UYVY` luma and chroma are mixed; see `resizePacked422`.
/// @throws Exception what `CvBackendSimd::setIntProperty`, `Frame::reuse` and
///         `CvBackendSimd::resize` throw; a bad `method` leaves `dst` as it was, a failed
///         `Frame::reuse` not initialized, a failed `resize` with the new format and size
OX_API void resizeFrame(Frame const& src, Size const& size, Frame& dst, ResizeMethod method);

/// Scales `FRAME_YUYV` or `FRAME_UYVY` into `dst`, of the same format and of any size, by their
/// packing. `resizeFrame` and the backends' `resize` would mix luma and chroma. The same as
/// `Packed422Resizer::resize` of a new object; callers with many frames keep such an object.
/// @param backend its `PropertyResizeMethod` counts
/// @throws Exception as `Packed422Resizer::resize`; `dst` is untouched then
OX_API void resizePacked422(ICvBackend& backend, Frame const& src, Frame& dst);

/// Half precision to single, of a whole tensor with its padding. `dst` gets `src`'s format and
/// size, twice its strides and channel order 0, and may be another handle on `src`'s numbers, or
/// `src` itself.
/// @throws Exception `StatusAssertionFailed` if `src` isn't an initialized `TENSOR_FLOAT_16` tensor
///         on the CPU or `dst` is elsewhere, and `StatusCapacityExceeded` for a stride of 2^30 and
///         more, both of which leave `dst` as it was; `StatusCapacityExceeded` if memory is
///         exhausted, which leaves `dst` without storage
OX_API void tensorFp16ToFp32(Tensor const& src, Tensor& dst);

/// Half precision (IEEE 754 binary16, as bits) to single. Exact; from four numbers on signalling
/// NaNs are quieted.
/// @param src, dst of `count` numbers, which must not overlap
OX_API void convertFp16ToFp32(unsigned short const* src, unsigned long count, float* dst);

/// Single precision to half. Four numbers or more are rounded to nearest, ties to even; fewer are
/// truncated, and what is above 65504 becomes infinite. The difference is on purpose.
/// @param src, dst of `count` numbers, which must not overlap
OX_API void convertFp32ToFp16(float const* src, unsigned long count, unsigned short* dst);

}  // namespace ox
