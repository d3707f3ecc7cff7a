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
/// leaves its frame; `StatusNotSupported` for formats that they don't take.
class OX_API CvBackendSimd : public ICvBackend {
  public:
    CvBackendSimd() = default;
    CvBackendSimd(CvBackendSimd const&) = delete;
    CvBackendSimd& operator=(CvBackendSimd const&) = delete;
    ~CvBackendSimd() override;

    /// 4:2:0 sources need even sides. Whole `FRAME_NV12` frames whose planes have equal strides go
    /// to `FRAME_BGR24` through `NV12toBGR_neon`, with its own coefficients, which leaves the last
    /// width mod 8 columns unwritten; with a region, if only the frame's own rectangle, the pair is
    /// converted in full. The float formats hold 0 to 255, in the channel order of the other side.
    void colorCvt(Frame const& src, Frame& dst, Rect src_roi) override;
    /// For formats of 8 and 32 bits a channel, plane by plane, by the method of property 1. A
    /// region of width or height 1 goes to the nearest sample. Float formats aren't averaged by
    /// area: `StatusNotSupported`. Rows have at most 2^31 - 1 bytes: `StatusCapacityExceeded`.
    /// Bilinear floats take strides in whole floats: the low two bits don't count, on purpose, and
    /// rows so set apart are taken a little before their start, inside the plane.
    void resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) override;
    /// Scales first, in `src`'s format, then converts; only what of the two is needed. A pair that
    /// `colorCvt` refuses is refused after the scaling.
    void convert(Frame const& src, Frame& dst, Rect src_roi) override;
    /// For the float formats.
    void add(Frame& src_dst, float value, Rect src_roi) override;
    /// For the float formats; of any other the region is cleared before the operation throws, on
    /// purpose. Products are rounded once; one of exactly -0 becomes +0.
    void mul(Frame& src_dst, float value, Rect src_roi) override;
    /// Warps the region of `src` into the whole of `dst`, whose format is the same; what it doesn't
    /// cover becomes 0. Meant for formats of 8 bits a channel: of others only the first width x
    /// channels bytes of a row are taken. The matrix applies to each plane in the plane's own
    /// coordinates, subsampled or not.
    /// @param matrix from `roi`'s coordinates to `dst`'s; with `flag` set, from `dst`'s to `roi`'s
    /// @throws Exception `StatusNotSupported` for a singular matrix; planes may be written by then
    void warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                    bool flag) override;

    /// Property 1 is the `ResizeMethod` of `resize`, property 2 that of `warpAffine`, both
    /// `ResizeBilinear` at first.
    /// @throws Exception `StatusAssertionFailed` for a value that isn't one; the old one stays
    int setIntProperty(int id, int value) override;
    int getIntProperty(int id) const override;
    /// The CPU's.
    DeviceContext getDeviceContext() const override;

    /// Fills the colour scratch frame with the region as `FRAME_YUV444_PLANAR`. Whatever the
    /// format, three bytes a pixel are taken for packed BGR.
    /// @throws Exception `StatusNotSupported` where these pass the row's bytes
    void roiToYuv444(Frame& src, Rect const& roi);

  private:
    friend class CvBackendSimdProbe;  // of the tests, which look at the scratch frames

    void runRoute(Frame& region, Frame& dst);
    void throughScratch(Frame const& region, Frame& dst, FrameFormat through);
    void bgrToI420(Frame& region, Frame& dst);
    void bgrToNv12(Frame& region, Frame& dst);
    void convertOddEdges(Frame& region, Frame& dst);
    void convertStrip(Frame& region, Frame& dst, Rect strip);

    DeviceContext _device_context;  ///< never read
    std::int32_t _resize_method = ResizeBilinear;
    std::int32_t _warp_method = ResizeBilinear;
    Frame _resize_frame;  ///< scratch of `convert`
    Frame _color_frame;   ///< scratch of `colorCvt`, `mul` and `roiToYuv444`
};

}  // namespace ox
