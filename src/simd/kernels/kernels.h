// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The kernels of list.h: their routines, and for each a record, which callers call like a
/// function. There are scalar routines, which define the results, vector ones for every processor,
/// and plain loops with the results of the vector ones.

#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "simd/kernels/list.h"

// The shapes of kernels: their arguments, in order. Two shapes may have equal types of arguments
// with different meanings, so each shape is a type of its own.
//
// Sizes and strides are unsigned and 64 bits wide. Strides are in bytes, and so are the widths of
// planes of bytes; other widths are in pixels. A stride below zero, of rows from the last one up,
// comes as a number without a sign. Kernels check nothing, allocate nothing and report nothing. For
// a width or a height of 0 they write nothing. Sources and destinations must not overlap.

namespace Simd {

using Bytes = std::uint8_t*;
using ConstBytes = std::uint8_t const*;

/// What pointers move by: below zero for such a stride.
constexpr std::ptrdiff_t stepOf(std::size_t stride) {
    return static_cast<std::ptrdiff_t>(stride);
}

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

namespace Simd::Base {

// `FloatsToHalves` truncates. `MultiplyFloats` gives what `AccumulateScaledFloats` makes of a copy
// of `data` and zeros: products, with +0 for -0.
#define OX_DECLARE(name, shape, ...) shape::Function name;
OX_KERNELS(OX_DECLARE)
#undef OX_DECLARE

}  // namespace Simd::Base

/// The vector routines give the bytes of the scalar ones, with three exceptions. `FloatsToHalves`
/// rounds to nearest, ties to even. `HalvesToFloats` quiets signalling NaNs. `ScaleFloatsToBytes`
/// takes NaN for 0.
namespace Simd::Neon {

/// Whether the vector routines are eligible. Always true in the library; tests switch it off.
extern bool KernelsEnabled;

/// The routines of one instruction set, by their kernels' names.
struct Routines {
#define OX_MEMBER(name, shape, ...) shape::Function* name;
    OX_KERNELS(OX_MEMBER)
#undef OX_MEMBER
};

/// The routines of the instruction set in use; see vector/dispatch.h.
Routines const& routines();

// Each enters the vector routines of one source, for the instruction set in use, if it has any.
void takeBgrRoutines(Routines& routines);
void takeBgrToYuvRoutines(Routines& routines);
void takeFloatRoutines(Routines& routines);
void takeYuvToBgrRoutines(Routines& routines);

template <class Shape, class Function = typename Shape::Function>
struct Routine;

/// A vector routine, to be called as a function.
template <class Shape, class... Arguments>
struct Routine<Shape, void(Arguments...)> {
    void (*Routines::*member)(Arguments...);

    auto get() const { return routines().*member; }
    void operator()(Arguments... arguments) const { get()(arguments...); }
};

#define OX_ROUTINE(name, shape, ...) inline constexpr Routine<shape> name{&Routines::name};
OX_KERNELS(OX_ROUTINE)
#undef OX_ROUTINE

}  // namespace Simd::Neon

/// For processors and builds without vector code, and for rows shorter than a register.
namespace Simd::Plain {

// Kernels that aren't declared here: their scalar routine has the vector routine's results.
using namespace Base;

/// NaN gives 0, whatever the range.
FloatsToBytes::Function ScaleFloatsToBytes;
FloatsToHalfBits::Function FloatsToHalves;
HalfBitsToFloats::Function HalvesToFloats;

Neon::Routines routines();

}  // namespace Simd::Plain

namespace Simd {

template <class KernelShape, class Function = typename KernelShape::Function>
struct Kernel;

/// A scalar and a vector routine behind one call, which takes the vector routine for rows (or
/// arrays) of at least `threshold` elements.
template <class KernelShape, class... Arguments>
struct Kernel<KernelShape, void(Arguments...)> {
    using Shape = KernelShape;
    using Routine = void(Arguments...);

    char const* name;
    Routine* base;
    Neon::Routine<Shape> neon;
    std::size_t threshold;

    Routine* routine(std::size_t size) const {
        return size >= threshold && Neon::KernelsEnabled ? neon.get() : base;
    }

    void operator()(Arguments... arguments) const {
        routine(std::get<Shape::sizeArgument>(std::tie(arguments...)))(arguments...);
    }
};

/// A kernel that picks its routine on the first call and keeps it, whatever the size.
/// @tparam base_routine one per kernel, so that each kernel has a type and a choice of its own
template <class KernelShape, auto base_routine, auto neon_routine>
struct FirstUseKernel {
    using Shape = KernelShape;
    static constexpr auto* base = base_routine;
    static constexpr auto const& neon = *neon_routine;

    char const* name;

    static auto* routine() {
        static auto* const chosen = Neon::KernelsEnabled ? neon.get() : base;
        return chosen;
    }

    template <class... Arguments>
    void operator()(Arguments... arguments) const {
        routine()(arguments...);
    }
};

template <class Shape, auto base_routine, auto neon_routine, class Block>
constexpr auto makeKernel(char const* name, [[maybe_unused]] Block block) {
    if constexpr (std::is_same_v<Block, OnFirstUse>) {
        return FirstUseKernel<Shape, base_routine, neon_routine>{name};
    } else {
        return Kernel<Shape>{name, base_routine, *neon_routine, block};
    }
}

#define OX_KERNEL(name, shape, block) \
    inline constexpr auto name = makeKernel<shape, Base::name, &Neon::name>(#name, block);
OX_KERNELS(OX_KERNEL)
#undef OX_KERNEL

/// Every kernel, for tests.
#define OX_NAME(name, ...) name,
inline constexpr std::tuple kernels{OX_KERNELS(OX_NAME)};
#undef OX_NAME

/// Copies `height` rows of `width` pixels of `pixel_size` bytes.
void CopyPlaneRows(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                   std::size_t pixel_size, Bytes dst, std::size_t dst_stride);

}  // namespace Simd
