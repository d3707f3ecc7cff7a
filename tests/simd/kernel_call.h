// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One way to call kernels of every shape.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "simd/kernels/kernels.h"

namespace ox::test {

struct Plane {
    unsigned char* data = nullptr;
    std::size_t stride = 0;
};

using Planes = std::array<Plane, 3>;

// What a kernel is called with. Arrays are planes of one row.
struct Operands {
    Planes src;
    Planes dst;
    std::size_t width = 0;
    std::size_t height = 0;
    float lower = 0.0F;
    float upper = 255.0F;
};

template <class Element>
Element* as(Plane const& plane) {
    return static_cast<Element*>(static_cast<void*>(plane.data));
}

// Calls a routine, a kernel or a model with the arguments in the order of the kernel's shape.

template <class Call>
void callKernel(Simd::PlaneToPlane /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::SplitTwo /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride);
}

template <class Call>
void callKernel(Simd::SplitThree /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride, on.dst[2].data, on.dst[2].stride);
}

template <class Call>
void callKernel(Simd::MergeTwo /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.src[1].data, on.src[1].stride, on.width, on.height,
         on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::MergeThree /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.src[1].data, on.src[1].stride, on.src[2].data,
         on.src[2].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::YuvToPacked /*shape*/, Call const& call, Operands const& on) {
    callKernel(Simd::MergeThree(), call, on);
}

template <class Call>
void callKernel(Simd::SemiPlanarToPacked /*shape*/, Call const& call, Operands const& on) {
    callKernel(Simd::MergeTwo(), call, on);
}

template <class Call>
void callKernel(Simd::PackedToYuv /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride, on.dst[2].data, on.dst[2].stride);
}

template <class Call>
void callKernel(Simd::PackedToSemiPlanar /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride);
}

template <class Call>
void callKernel(Simd::BytesToFloats /*shape*/, Call const& call, Operands const& on) {
    call(on.src[0].data, on.width, &on.lower, &on.upper, as<float>(on.dst[0]));
}

template <class Call>
void callKernel(Simd::FloatsToBytes /*shape*/, Call const& call, Operands const& on) {
    call(as<float>(on.src[0]), on.width, &on.lower, &on.upper, on.dst[0].data);
}

template <class Call>
void callKernel(Simd::FloatsToHalfBits /*shape*/, Call const& call, Operands const& on) {
    call(as<float>(on.src[0]), on.width, as<std::uint16_t>(on.dst[0]));
}

template <class Call>
void callKernel(Simd::HalfBitsToFloats /*shape*/, Call const& call, Operands const& on) {
    call(as<std::uint16_t>(on.src[0]), on.width, as<float>(on.dst[0]));
}

// In place: what the destination holds comes from the last source.

template <class Call>
void callKernel(Simd::ConstantIntoFloats /*shape*/, Call const& call, Operands const& on) {
    call(&on.lower, as<float>(on.dst[0]), on.width);
}

template <class Call>
void callKernel(Simd::FloatsIntoFloats /*shape*/, Call const& call, Operands const& on) {
    call(as<float>(on.src[0]), on.width, &on.lower, as<float>(on.dst[0]));
}

template <class Shape, class... Shapes>
constexpr bool isOneOf = (std::is_same_v<Shape, Shapes> || ...);

template <class Shape>
constexpr bool worksInPlace = isOneOf<Shape, Simd::ConstantIntoFloats, Simd::FloatsIntoFloats>;

// Whether a shape takes arrays, which have no rows.
template <class Shape>
constexpr bool takesArrays =
    worksInPlace<Shape> || isOneOf<Shape, Simd::BytesToFloats, Simd::FloatsToBytes,
                                   Simd::FloatsToHalfBits, Simd::HalfBitsToFloats>;

}  // namespace ox::test
