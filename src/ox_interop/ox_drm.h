// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// DRM: frames on mapped framebuffers and dma-bufs, as their fourcc, pitches and offsets describe
/// them. Nothing is linked; the header drm_fourcc.h of libdrm or of the kernel is enough.

#pragma once

#if __has_include(<drm_fourcc.h>)
#include <drm_fourcc.h>
#elif __has_include(<libdrm/drm_fourcc.h>)
#include <libdrm/drm_fourcc.h>
#else
#include <drm/drm_fourcc.h>
#endif

#include "ox_interop/ox_planes.h"

namespace ox {
namespace interop {

/// The formats of equal samples. DRM names packed colours from the highest byte of a little-endian
/// word on, so `DRM_FORMAT_RGB888` lies as B,G,R.
inline FormatPair<std::uint32_t> const (&drmFormats())[15] {
    static FormatPair<std::uint32_t> const pairs[] = {
        {FRAME_GRAY8, DRM_FORMAT_R8, {0, 0, 0}},
        {FRAME_RGB24, DRM_FORMAT_BGR888, {0, 0, 0}},
        {FRAME_BGR24, DRM_FORMAT_RGB888, {0, 0, 0}},
        {FRAME_I420, DRM_FORMAT_YUV420, {0, 1, 2}},
        {FRAME_YV12, DRM_FORMAT_YVU420, {0, 1, 2}},
        {FRAME_NV12, DRM_FORMAT_NV12, {0, 1, 0}},
        {FRAME_NV21, DRM_FORMAT_NV21, {0, 1, 0}},
        {FRAME_YV16, DRM_FORMAT_YVU422, {0, 1, 2}},
        {FRAME_YV16, DRM_FORMAT_YUV422, {0, 2, 1}},
        {FRAME_YUYV, DRM_FORMAT_YUYV, {0, 0, 0}},
        {FRAME_UYVY, DRM_FORMAT_UYVY, {0, 0, 0}},
        {FRAME_NV16, DRM_FORMAT_NV16, {0, 1, 0}},
        {FRAME_YUV444, DRM_FORMAT_VUY888, {0, 0, 0}},
        {FRAME_YUV444_PLANAR, DRM_FORMAT_YUV444, {0, 1, 2}},
        {FRAME_C1_16U, DRM_FORMAT_R16, {0, 0, 0}},
    };
    return pairs;
}

/// The fourcc of a format; 0 (`DRM_FORMAT_INVALID`) if there is none.
inline std::uint32_t drmFormatOf(FrameFormat format) {
    auto const* const pair = findFormat(drmFormats(), format);
    return pair == nullptr ? 0 : pair->foreign;
}

/// `FRAME_FORMAT_NONE` if there is none.
inline FrameFormat frameFormatOfDrm(std::uint32_t fourcc) {
    auto const* const pair = findForeign(drmFormats(), fourcc);
    return pair == nullptr ? FRAME_FORMAT_NONE : pair->format;
}

/// A frame on mapped memory. A dma-buf has to be mapped and, with `DMA_BUF_IOCTL_SYNC`, begun.
/// @param modifier of the planes; none but `DRM_FORMAT_MOD_LINEAR` has rows
/// @param maps, pitches, offsets of each plane: the start of the buffer that it lies in, bytes from
///        row to row, and where it begins in the buffer, as in `drm_mode_fb_cmd2`
/// @throws Exception `StatusNotSupported` for a fourcc without a counterpart, or another modifier;
///         what `Frame::wrap` throws
inline Frame frameOfDrm(std::uint32_t fourcc, std::uint64_t modifier, Size size, void* const* maps,
                        std::uint32_t const* pitches, std::uint32_t const* offsets) {
    auto const* const pair = findForeign(drmFormats(), fourcc);
    if (pair == nullptr) {
        refuse(StatusNotSupported, "frameOfDrm", "the fourcc has no counterpart");
    }
    if (modifier != DRM_FORMAT_MOD_LINEAR) {
        refuse(StatusNotSupported, "frameOfDrm", "the modifier isn't linear");
    }
    auto const start = [&](int i) -> unsigned char* {
        auto* const map = static_cast<unsigned char*>(maps[i]);
        return map == nullptr ? nullptr : map + offsets[i];
    };
    return wrapPlanes(*pair, size, start,
                      [&](int i) { return static_cast<std::int64_t>(pitches[i]); });
}

}  // namespace interop
}  // namespace ox
