/// @file
/// The vector backend, for processes that may run short of memory.

#pragma once

#include <cstdint>

#include "ox_core/ox_frame_layout.h"
#include "ox_cv/ox_cv_backend_simd.h"

namespace oxcv {

/// Its kernels report nothing, and die where there is no memory for their tables and row buffers.
/// This one asks for as much before it lets them begin.
///
/// `resize` and `warpAffine` also throw `ox::Exception` with `StatusCapacityExceeded`.
class VectorBackend : public ox::CvBackendSimd {
  public:
    void resize(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi, ox::Rect dst_roi) override;
    void warpAffine(ox::Frame const& src, ox::Frame& dst, float const (*matrix)[3], ox::Rect roi,
                    bool invert) override;
};

/// Bytes that the kernels take for a frame at most.
std::uint64_t bytesToScale(ox::FrameLayout const& src, ox::FrameLayout const& dst,
                           ox::ResizeMethod method);
std::uint64_t bytesToWarp(ox::FrameLayout const& dst);

}  // namespace oxcv
