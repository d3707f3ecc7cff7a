// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Other libraries' views of frames.

#pragma once

#include "ox_core/ox_frame.h"

#ifdef OX_PEER_LIBYUV
#include <libyuv.h>
#endif
#ifdef OX_PEER_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef OX_PEER_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#endif
#ifdef OX_PEER_ZIMG
#include <zimg.h>
#endif

#include <memory>

#include "operation.h"
#include "peer_target.h"

namespace ox::benchmarks {

inline int strideOf(Frame const& frame, int plane) {
    return static_cast<int>(frame.layout().plane[plane].stride);
}

#ifdef OX_PEER_ZIMG
inline zimg_cpu_type_e zimgTarget() {
#ifdef __x86_64__
    return arePeersHeld() ? ZIMG_CPU_X86_AVX2 : ZIMG_CPU_AUTO_64B;
#else
    return ZIMG_CPU_AUTO;
#endif
}
#endif

#ifdef OX_PEER_OPENCV
/// All planes of a frame as one picture, which is how 4:2:0 is taken.
inline cv::Mat matOf(Frame const& frame, int type, int rows) {
    return {rows, frame.width(), type, frame.planeData(0)};
}

inline cv::Mat matOf(Frame const& frame, int type) {
    return matOf(frame, type, frame.height());
}
#endif

#ifdef OX_PEER_SWSCALE
/// A conversion or a scaling, by one of libswscale's methods.
Contestant swscale(std::shared_ptr<Frame> const& src, AVPixelFormat src_format,
                   std::shared_ptr<Frame> const& dst, AVPixelFormat dst_format, int flags);
#endif

}  // namespace ox::benchmarks
