// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Whole-frame operations on the row pipeline.

#pragma once

#include "ox_cv/ox_cv_backend.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"

namespace ox {

/// Sets up a `FormatConverter` or a `Scaler` for each call and drains it, so it takes every format
/// that those take. Buffers and tables are kept from call to call.
///
/// All operations throw `Exception`: `StatusAssertionFailed` for frames that aren't initialized,
/// not on the CPU or not of the size or format that the operation needs; `StatusOutOfRange` for a
/// region that leaves its frame; what the chain throws. `dst` may then hold some rows of the
/// result. The backend can be used after any failure.
class OX_API CvBackendBase : public ICvBackend {
  public:
    CvBackendBase() = default;
    CvBackendBase(CvBackendBase const&) = delete;
    CvBackendBase& operator=(CvBackendBase const&) = delete;
    ~CvBackendBase() override;

    /// Takes the pairs of `FormatConverter`.
    ///
    /// Whole `FRAME_NV12` frames go to `FRAME_BGR24` through `NV12toBGR_neon`, with its own
    /// coefficients, which leaves an odd last row and the last width mod 8 columns unwritten. With
    /// a region, if only the frame's own rectangle, the same pair is converted in full.
    ///
    /// `NV12toBGR_neon` steps over chroma rows by luma's stride, so a frame whose two strides
    /// differ gets the wrong chroma. Where it would read outside the chroma rows, the pair is
    /// converted in full instead. With a region, chroma is always right.
    ///
    /// Float formats hold 0 to 255 as B, G, R. They are converted from `FRAME_BGR24` alone, and
    /// `FRAME_BGR_32F` back to it; `CvBackendSimd` has other orders.
    /// @throws Exception what `FormatConverter::reuse` throws
    void colorCvt(Frame const& src, Frame& dst, Rect src_roi) override;
    /// Takes the formats of `Scaler`, and every format at equal sizes. Elements of `FRAME_YUYV` are
    /// three bytes, those of `FRAME_UYVY` four, whatever their packing is: luma and chroma are
    /// mixed. `Packed422Resizer` scales these by their packing.
    /// @throws Exception what `Scaler` throws, `StatusNotSupported` for other formats among that
    void resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) override;
    /// Scales first, into a frame that is kept between calls, if both size and format change. At
    /// equal sizes it is `colorCvt`, with the region, and leaves the same columns.
    /// @throws Exception what `colorCvt` and `resize` throw; `StatusInvalidParameter` for a `dst`
    ///         without columns or rows, if both size and format change
    void convert(Frame const& src, Frame& dst, Rect src_roi) override;
    /// For the float formats. The region is cropped to the frame; a block of that size at the top
    /// left of the frame is changed, wherever the region lies. This is on purpose.
    void add(Frame& src_dst, float value, Rect src_roi) override;
    /// As `add`.
    void mul(Frame& src_dst, float value, Rect src_roi) override;
    /// @throws Exception `StatusNotSupported`, always
    void warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                    bool invert) override;

    /// Takes `PropertyResizeMethod` only. Its value isn't checked here: an unknown one makes the
    /// next `resize` between different sizes throw `StatusInvalidParameter`.
    int setIntProperty(int id, int value) override;
    int getIntProperty(int id) const override;
    /// The CPU's.
    DeviceContext getDeviceContext() const override;

  private:
    void _convertFormat(Frame const& src, Frame& dst);

    FormatConverter _format_converter;
    Scaler _scaler;
    std::int32_t _resize_method = ResizeBilinear;
    Frame _temp;  ///< the scaled image between the two steps of `convert`
};

}  // namespace ox
