// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Whole-frame operations.

#pragma once

#include <cstdint>

#include "ox_core/ox_api.h"
#include "ox_core/ox_device_context.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"

namespace ox {

/// The integer properties of backends; each holds a `ResizeMethod`, `ResizeBilinear` at first.
enum CvProperty : std::int32_t {
    PropertyResizeMethod = 1,  ///< of `resize` and `convert`
    PropertyWarpMethod = 2,    ///< of `warpAffine`; not in `CvBackendBase`, which doesn't warp
};

/// Values of the properties; the numbers are those of `ScaleMethod`.
enum ResizeMethod : std::uint32_t {
    ResizeNearestNeighbour = 0,
    ResizeBilinear = 1,
    ResizeArea = 2,
};

/// What every backend offers. A rectangle without two positive sides, as `emptyRoi()`, stands for
/// the whole frame. Frames must be on the CPU; destinations are allocated by the caller. A backend
/// serves one thread at a time.
///
/// Regions of one frame that have no byte in common are as good as two frames (chroma counts: a
/// half-size plane's sample belongs to two columns and rows). Whether `src` and `dst` may have
/// bytes in common:
/// - `colorCvt` to the same format: as in `Frame::copyTo`;
/// - `colorCvt` to another format: no, not even on the very same pixels. `FRAME_RGB24` to
///   `FRAME_BGR24` in place gives other bytes on other processors;
/// - `resize`: no, not even at equal sizes;
/// - `convert` to another size and another format: yes, any; else as `colorCvt` or `resize`,
///   whichever of the two does the work;
/// - `warpAffine`: no.
///
/// `colorConvert` and `resizeFrame` (ox_cv_helpers.h) copy the source first where that is needed.
class OX_API ICvBackend {
  public:
    /// Converts the region of `src` to `dst`'s format; `dst` has the region's size.
    ///
    /// Mind `FRAME_NV12` to `FRAME_BGR24` without a region: it goes in blocks of eight columns (and
    /// in `CvBackendBase` of two rows), and what is left over of `dst` stays as it is. With the
    /// region {0, 0, width, height} every pixel is converted, by other coefficients.
    virtual void colorCvt(Frame const& src, Frame& dst, Rect src_roi) = 0;
    /// Scales the region of `src` to the region of `dst`; the formats are equal. Luma and chroma of
    /// `FRAME_YUYV` and `FRAME_UYVY` are mixed: `Packed422Resizer` scales these by their packing.
    virtual void resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) = 0;
    /// Scales the region of `src` to `dst`'s size and converts it to `dst`'s format. Scaling comes
    /// first, in `src`'s format, so a pair that can't be converted is refused after the work.
    virtual void convert(Frame const& src, Frame& dst, Rect src_roi) = 0;
    /// Adds `value` to the floats of a frame, in place.
    virtual void add(Frame& src_dst, float value, Rect src_roi) = 0;
    /// Multiplies the floats of a frame by `value`, in place.
    virtual void mul(Frame& src_dst, float value, Rect src_roi) = 0;
    /// Warps the region of `src` into the whole of `dst`.
    /// @param matrix two rows of an affine matrix: source pixel (x, y) goes to destination pixel
    ///        (m00 x + m01 y + m02, m10 x + m11 y + m12), counted from the region's and from
    ///        `dst`'s top left pixel
    /// @param invert true inverts `matrix` first; it then leads from destination to source
    virtual void warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                            bool invert) = 0;
    /// @param id a `CvProperty`
    /// @param value a `ResizeMethod`
    /// @return 1, or 0 for a property that doesn't exist
    virtual int setIntProperty(int id, int value) = 0;
    /// @param id a `CvProperty`
    /// @return the value, or -1 for a property that doesn't exist
    virtual int getIntProperty(int id) const = 0;
    virtual DeviceContext getDeviceContext() const = 0;
    virtual ~ICvBackend();

  protected:
    ICvBackend() = default;
    ICvBackend(ICvBackend const&) = default;
    ICvBackend& operator=(ICvBackend const&) = default;
};

}  // namespace ox
