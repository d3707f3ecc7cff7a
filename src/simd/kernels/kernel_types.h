/// @file
/// The shapes of kernels: what they take, in which order.
///
/// Sizes and strides are unsigned and 64 bits wide; strides, and the widths of planes of bytes, are
/// in bytes, other widths in pixels. Kernels check nothing, allocate nothing, report nothing, and
/// write nothing for a width or a height of 0. Sources and destinations must not overlap.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Simd {

using Bytes = std::uint8_t*;
using ConstBytes = std::uint8_t const*;

/// One plane to one plane.
using PlaneToPlane = void(ConstBytes src, std::size_t width, std::size_t height,
                          std::size_t src_stride, Bytes dst, std::size_t dst_stride);

/// Interleaved channels to planes of their own.
using SplitTwo = void(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                      Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride);
using SplitThree = void(ConstBytes src, std::size_t src_stride, std::size_t width,
                        std::size_t height, Bytes dst0, std::size_t dst0_stride, Bytes dst1,
                        std::size_t dst1_stride, Bytes dst2, std::size_t dst2_stride);

/// Planes to interleaved channels.
using MergeTwo = void(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                      std::size_t src1_stride, std::size_t width, std::size_t height, Bytes dst,
                      std::size_t dst_stride);
using MergeThree = void(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                        std::size_t src1_stride, ConstBytes src2, std::size_t src2_stride,
                        std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride);

/// Packed BGR to planes of Y, U and V, of which the last two may be of half size, and back.
using PackedToYuv = void(ConstBytes bgr, std::size_t width, std::size_t height,
                         std::size_t bgr_stride, Bytes y, std::size_t y_stride, Bytes u,
                         std::size_t u_stride, Bytes v, std::size_t v_stride);
using YuvToPacked = MergeThree;
using SemiPlanarToPacked = MergeTwo;
using PackedToSemiPlanar = void(ConstBytes bgr, std::size_t width, std::size_t height,
                                std::size_t bgr_stride, Bytes y, std::size_t y_stride, Bytes uv,
                                std::size_t uv_stride);

/// Arrays of `count` elements.
using BytesToFloats = void(ConstBytes src, std::size_t count, float const* lower,
                           float const* upper, float* dst);
using FloatsToBytes = void(float const* src, std::size_t count, float const* lower,
                           float const* upper, Bytes dst);
using FloatsToHalfBits = void(float const* src, std::size_t count, std::uint16_t* dst);
using HalfBitsToFloats = void(std::uint16_t const* src, std::size_t count, float* dst);
using ConstantIntoFloats = void(float const* value, float* data, std::size_t count);
using FloatsIntoFloats = void(float const* src, std::size_t count, float const* value, float* dst);

}  // namespace Simd
