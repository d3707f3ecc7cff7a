// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Pixel formats.

#pragma once

#include <cstdint>

#include "ox_core/ox_api.h"

namespace ox {

/// In planar formats the planes stand in the order of the name, except where noted. Chroma of
/// 4:2:0 formats has half the columns and half the rows of luma, of 4:2:2 formats half the columns,
/// rounded up.
enum FrameFormat : std::uint32_t {
    FRAME_FORMAT_NONE = 0,     ///< no format; refused everywhere
    FRAME_GRAY8 = 1,           ///< 8-bit gray
    FRAME_RGB24 = 2,           ///< packed R,G,B bytes
    FRAME_RGB_PLANAR = 3,      ///< planes R, G, B
    FRAME_BGR24 = 4,           ///< packed B,G,R bytes
    FRAME_BGR_PLANAR = 5,      ///< planes B, G, R
    FRAME_I420 = 6,            ///< 4:2:0, planes Y, U, V
    FRAME_YV12 = 7,            ///< 4:2:0, planes Y, V, U
    FRAME_NV12 = 8,            ///< 4:2:0, plane Y, plane of interleaved U,V
    FRAME_NV21 = 9,            ///< 4:2:0, plane Y, plane of interleaved V,U
    FRAME_YV16 = 10,           ///< 4:2:2, planes Y, V, U
    FRAME_YUYV = 11,           ///< 4:2:2, packed Y U Y V
    FRAME_UYVY = 12,           ///< 4:2:2, packed U Y V Y
    FRAME_NV16 = 13,           ///< 4:2:2, plane Y, plane of interleaved U,V
    FRAME_YUV444 = 14,         ///< packed Y,U,V bytes
    FRAME_YUV444_PLANAR = 15,  ///< planes Y, U, V
    FRAME_C2_8U = 16,          ///< two interleaved 8-bit channels
    FRAME_C3_8U = 17,          ///< three interleaved 8-bit channels
    FRAME_C4_8U = 18,          ///< four interleaved 8-bit channels
    FRAME_C1_16U = 19,         ///< one 16-bit channel
    FRAME_C1_32U = 20,         ///< one 32-bit channel
    FRAME_GRAY_32F = 24,       ///< one float channel
    FRAME_BGR_32F = 25,        ///< packed B,G,R floats
    FRAME_BGR_32F_PLANAR = 26  ///< planes B, G, R of floats
};

/// The enumerator's name, such as "FRAME_NV12"; "unknown" for a value without one. Lives forever.
OX_API char const* toString(FrameFormat format);

}  // namespace ox
