/// @file
/// Whole-frame operations.

#pragma once

#include <cstdint>

#include "ox_core/ox_api.h"
#include "ox_core/ox_device_context.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"

namespace ox {

/// Values of integer property 1; the numbers are those of `ScaleMethod`.
enum ResizeMethod : std::uint32_t {
    ResizeNearestNeighbour = 0,
    ResizeBilinear = 1,
    ResizeArea = 2,
};

/// What every backend offers. A rectangle without two positive sides, as `emptyRoi()`, stands for
/// the whole frame. Frames must be on the CPU; destinations are allocated by the caller. A backend
/// serves one thread at a time.
class OX_API ICvBackend {
  public:
    /// Converts the region of `src` to `dst`'s format; `dst` has the region's size.
    virtual void colorCvt(Frame const& src, Frame& dst, Rect src_roi) = 0;
    /// Scales the region of `src` to the region of `dst`; the formats are equal.
    virtual void resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) = 0;
    /// Scales the region of `src` to `dst`'s size and converts it to `dst`'s format.
    virtual void convert(Frame const& src, Frame& dst, Rect src_roi) = 0;
    /// Adds `value` to the floats of a frame, in place.
    virtual void add(Frame& src_dst, float value, Rect src_roi) = 0;
    /// Multiplies the floats of a frame by `value`, in place.
    virtual void mul(Frame& src_dst, float value, Rect src_roi) = 0;
    /// Warps `src` by an affine matrix of two rows.
    virtual void warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                            bool flag) = 0;
    /// @return 1, or 0 for a property that doesn't exist
    virtual int setIntProperty(int id, int value) = 0;
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
