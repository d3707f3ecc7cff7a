/// @file
/// What both backends ask of the frames that they are given.

#pragma once

#include "ox_core/ox_frame.h"
#include "ox_core/ox_impl_place.h"

namespace ox::impl {

/// Throws unless both frames are on the CPU.
inline void requireCpu(Place here, Frame const& src, Frame const& dst) {
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
}

/// A second handle on `frame`, narrowed to `roi` if that is one.
inline Frame selectRegion(Frame frame, Rect roi) {
    return roi.empty() ? frame : getRegion(frame, roi);
}

}  // namespace ox::impl
