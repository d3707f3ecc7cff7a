// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Whole-frame operations on vector kernels.

#pragma once

#include "ox_cv/ox_cv_backend.h"

namespace ox {

/// Hands whole planes to vector kernels. Its fixed-point tables aren't those of `CvBackendBase`:
/// the two don't give equal bytes, and each is exact in itself.
///
/// All operations throw `Exception`: `StatusAssertionFailed` for frames that aren't initialized,
/// not on the CPU or not of the size that the operation needs; `StatusOutOfRange` for a region that
/// leaves its frame; `StatusNotSupported` for formats that they don't take. The backend can be used
/// after any failure. Where memory runs out inside a resizer or a warp, the process ends.
///
/// Strides of floats should be multiples of 4 bytes. Those of `Frame::reuse` with alignment 0 are;
/// wrapped frames may have others. Bilinear `resize`, `add` and `mul` drop the low two bits of a
/// stride, on purpose. So they take row y to begin y x (stride mod 4) bytes too early, and their
/// floats are pieced together from the row, the row before it and the bytes between the two. Bytes
/// between rows change; nothing outside the plane does. `mul` clears each row at its real place,
/// and then adds the products at the place that it takes for the row's.
class OX_API CvBackendSimd : public ICvBackend {
  public:
    CvBackendSimd() = default;
    CvBackendSimd(CvBackendSimd const&) = delete;
    CvBackendSimd& operator=(CvBackendSimd const&) = delete;
    ~CvBackendSimd() override;

    /// Each format to itself, as a copy, and these pairs (`FRAME_` left out):
    ///
    /// | from | to |
    /// |---|---|
    /// | `GRAY8` | `BGR24` |
    /// | `RGB24` | `BGR24`, `RGB_PLANAR`, `BGR_32F`, `BGR_32F_PLANAR` |
    /// | `RGB_PLANAR` | `RGB24`, `BGR_32F`, `BGR_32F_PLANAR` |
    /// | `BGR24` | `RGB24`, `BGR_PLANAR`, `BGR_32F`, `BGR_32F_PLANAR`, `GRAY8` |
    /// | `BGR24` | `I420`, `NV12`, `YUV444`, `YUV444_PLANAR` |
    /// | `BGR_PLANAR` | `BGR24`, `BGR_32F`, `BGR_32F_PLANAR` |
    /// | `I420` | `GRAY8`, `RGB24`, `BGR24`, `NV12` |
    /// | `NV12` | `GRAY8`, `RGB24`, `BGR24`, `I420`, `NV21` |
    /// | `NV21` | `GRAY8`, `RGB24`, `BGR24`, `I420`, `NV12` |
    /// | `YUV444` | `GRAY8`, `BGR24`, `YUV444_PLANAR` |
    /// | `YUV444_PLANAR` | `GRAY8`, `BGR24`, `YUV444` |
    /// | `BGR_32F` | `RGB24`, `BGR24`, `RGB_PLANAR`, `BGR_PLANAR` |
    /// | `BGR_32F_PLANAR` | `RGB24`, `BGR24`, `RGB_PLANAR`, `BGR_PLANAR` |
    ///
    /// `CvBackendBase` has others, from `YV12`, `YV16`, `YUYV`, `UYVY` and `NV16` among them.
    ///
    /// The float formats hold 0 to 255, in the channel order of the other side, their names
    /// notwithstanding: `FRAME_RGB24` or `FRAME_RGB_PLANAR` to `FRAME_BGR_32F_PLANAR` gives planes
    /// R, G, B, and floats go to these formats as if red came first. Through `FRAME_BGR24` they are
    /// B, G, R, as `CvBackendBase` has them.
    ///
    /// Whole `FRAME_NV12` frames whose planes have equal strides go to `FRAME_BGR24` through
    /// `NV12toBGR_neon`, with its own coefficients, which leaves the last width mod 8 columns
    /// unwritten. The kernel of the other 4:2:0 pairs takes frames of unequal strides, and any
    /// frame with a region, if only its own rectangle: in full, with slightly different bytes.
    /// @throws Exception `StatusNotSupported` for any other pair; `StatusAssertionFailed` for a
    ///         region with an odd side of `FRAME_I420`, `FRAME_NV12` or `FRAME_NV21`, unless it is
    ///         copied. `dst` is as it was then.
    void colorCvt(Frame const& src, Frame& dst, Rect src_roi) override;
    /// For formats of 8 and 32 bits a channel, plane by plane, by `PropertyResizeMethod`. A source
    /// region of width or height 1 goes to the nearest sample.
    ///
    /// `FRAME_YUYV` and `FRAME_UYVY` are taken for pixels of two channels, a luma and a chroma
    /// sample, so U and V get mixed; `Packed422Resizer` scales these by their packing.
    /// `FRAME_C1_32U` is taken for floats: nearest moves its numbers as they are, bilinear blends
    /// the floats that their bits would be.
    ///
    /// Area gives each sample of a side the weight 2048 / ratio, cut off to a whole number. So a
    /// side that shrinks by more than 2048 comes out black, one that shrinks by 1025 (a weight of 1
    /// for 1.998) at half its brightness, by 1000 a little darker than it is. Two steps help.
    /// @throws Exception `StatusAssertionFailed` for formats of 16 bits; `StatusNotSupported` for
    ///         area on formats of 32 bits; `StatusCapacityExceeded` for rows of 2^31 bytes and
    ///         more, and where memory is exhausted
    void resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) override;
    /// Does only what is needed of scaling and conversion. For a `src` of `FRAME_I420`,
    /// `FRAME_NV12` or `FRAME_NV21`, an odd side of `dst` is refused too, after the scaling. A
    /// region without columns or rows is converted to another format as if its samples were zeros.
    ///
    /// `FRAME_NV12` goes to `FRAME_BGR24` as a whole frame here, also with a region. So the last
    /// columns of a `dst` stay unwritten if its width isn't a multiple of 8; `resize` and then
    /// `colorCvt` with a region write them.
    /// @throws Exception what `resize` and `colorCvt` throw; `StatusInvalidParameter` for a `dst`
    ///         without columns or rows, if both size and format change
    void convert(Frame const& src, Frame& dst, Rect src_roi) override;
    /// For the float formats; on their strides see above.
    void add(Frame& src_dst, float value, Rect src_roi) override;
    /// For the float formats. In any other format the region is cleared before the operation
    /// throws, on purpose. Products are rounded once; a product of -0 becomes +0.
    void mul(Frame& src_dst, float value, Rect src_roi) override;
    /// Warps the region of `src` into the whole of `dst`, which has the same format. Pixels of
    /// `dst` that the region doesn't cover become 0. Meant for formats of 8 bits a channel: of
    /// others only the first width x channels bytes of a row are taken. The matrix applies to each
    /// plane in the plane's own coordinates, subsampled or not.
    /// @param matrix NaN in it isn't refused; what `dst` then holds isn't defined
    /// @throws Exception `StatusNotSupported`, "Can't create context.", for a matrix that has no
    ///         inverse in single precision (its determinant is 0, or too large), and for a plane of
    ///         `src` of more than 2^32 bytes from the first row to the end of the last one's
    ///         stride; planes before that one are written by then. `StatusCapacityExceeded` where
    ///         memory is exhausted
    void warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                    bool invert) override;

    /// Takes both properties. `ResizeArea` is bilinear for warps.
    /// @throws Exception `StatusAssertionFailed` for a value that isn't one; the old one stays
    int setIntProperty(int id, int value) override;
    int getIntProperty(int id) const override;
    /// The CPU's.
    DeviceContext getDeviceContext() const override;

    /// Fills the colour scratch frame with the region as `FRAME_YUV444_PLANAR`. In every format,
    /// each three bytes of a row are taken for a pixel of packed BGR.
    /// @throws Exception `StatusNotSupported` if a row has fewer than three bytes a pixel
    void roiToYuv444(Frame& src, Rect const& roi);

  private:
    friend class CvBackendSimdProbe;  // of the tests, which look at the scratch frames

    DeviceContext _device_context;  ///< never read
    ResizeMethod _resize_method = ResizeBilinear;
    ResizeMethod _warp_method = ResizeBilinear;
    Frame _resize_frame;  ///< scratch of `convert`
    Frame _color_frame;   ///< scratch of `colorCvt`, `mul` and `roiToYuv444`
};

}  // namespace ox
