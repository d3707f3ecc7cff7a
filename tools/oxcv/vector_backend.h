// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The vector backend, for processes that may run short of memory.

#pragma once

#include <cstdint>

#include "ox_core/ox_frame_layout.h"
#include "ox_cv/ox_cv_backend_simd.h"

namespace oxcv {

/// The vector backend's kernels end the process if there is no memory for their tables and row
/// buffers. This class asks for as much memory before it calls them.
///
/// `resize` and `warpAffine` also throw `ox::Exception` with `StatusCapacityExceeded`.
class VectorBackend : public ox::CvBackendSimd {
  public:
    void resize(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi, ox::Rect dst_roi) override;
    void warpAffine(ox::Frame const& src, ox::Frame& dst, float const (*matrix)[3], ox::Rect roi,
                    bool invert) override;
};

/// The most bytes that the kernels take for a frame.
std::uint64_t bytesToScale(ox::FrameLayout const& src, ox::FrameLayout const& dst,
                           ox::ResizeMethod method);
std::uint64_t bytesToWarp(ox::FrameLayout const& dst);

}  // namespace oxcv
