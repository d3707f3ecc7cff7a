/// @file
/// The shapes of kernels: their arguments, in order. Two shapes may have equal types of arguments
/// with different meanings, so each shape is a type of its own.
///
/// Sizes and strides are unsigned and 64 bits wide. Strides are in bytes, and so are the widths of
/// planes of bytes; other widths are in pixels. A stride below zero, of rows from the last one up,
/// comes as a number without a sign; pointers of 4:2:0 are moved by signed ones. Kernels check
/// nothing, allocate nothing and report nothing. For a width or a height of 0 they write nothing.
/// Sources and destinations must not overlap.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Simd {

using Bytes = std::uint8_t*;
using ConstBytes = std::uint8_t const*;

/// @tparam size_argument which argument picks the routine: the width, or the count of an array
template <int size_argument, class F>
struct Shape {
    using Function = F;
    static constexpr int sizeArgument = size_argument;
};

/// One plane to one plane.
struct PlaneToPlane : Shape<1, void(ConstBytes src, std::size_t width, std::size_t height,
                                    std::size_t src_stride, Bytes dst, std::size_t dst_stride)> {};

/// Interleaved channels to planes of their own.
struct SplitTwo
    : Shape<2, void(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                    Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride)> {};
struct SplitThree
    : Shape<2, void(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                    Bytes dst0, std::size_t dst0_stride, Bytes dst1, std::size_t dst1_stride,
                    Bytes dst2, std::size_t dst2_stride)> {};

/// Planes to interleaved channels.
struct MergeTwo : Shape<4, void(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                                std::size_t src1_stride, std::size_t width, std::size_t height,
                                Bytes dst, std::size_t dst_stride)> {};
struct MergeThree
    : Shape<6, void(ConstBytes src0, std::size_t src0_stride, ConstBytes src1,
                    std::size_t src1_stride, ConstBytes src2, std::size_t src2_stride,
                    std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride)> {};

/// Packed BGR to planes of Y, U and V, of which the last two may be of half size, and back.
struct PackedToYuv : Shape<1, void(ConstBytes bgr, std::size_t width, std::size_t height,
                                   std::size_t bgr_stride, Bytes y, std::size_t y_stride, Bytes u,
                                   std::size_t u_stride, Bytes v, std::size_t v_stride)> {};
struct YuvToPacked : Shape<6, MergeThree::Function> {};
struct SemiPlanarToPacked : Shape<4, MergeTwo::Function> {};
struct PackedToSemiPlanar
    : Shape<1, void(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                    Bytes y, std::size_t y_stride, Bytes uv, std::size_t uv_stride)> {};

/// Arrays of `count` elements.
struct BytesToFloats : Shape<1, void(ConstBytes src, std::size_t count, float const* lower,
                                     float const* upper, float* dst)> {};
struct FloatsToBytes : Shape<1, void(float const* src, std::size_t count, float const* lower,
                                     float const* upper, Bytes dst)> {};
struct FloatsToHalfBits : Shape<1, void(float const* src, std::size_t count, std::uint16_t* dst)> {
};
struct HalfBitsToFloats : Shape<1, void(std::uint16_t const* src, std::size_t count, float* dst)> {
};
struct ConstantIntoFloats : Shape<2, void(float const* value, float* data, std::size_t count)> {};
struct FloatsIntoFloats
    : Shape<1, void(float const* src, std::size_t count, float const* value, float* dst)> {};

}  // namespace Simd
