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

// Calls a routine, a kernel or a model with the arguments in the order of the kernel's shape, of
// which some differ only in where their size stands.

template <class Call>
void callKernel(Simd::Kernel<Simd::PlaneToPlane, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::SplitTwo, 2> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::SplitThree, 2> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride, on.dst[2].data, on.dst[2].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::MergeTwo, 4> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.src[1].data, on.src[1].stride, on.width, on.height,
         on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::MergeThree, 6> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.src[0].stride, on.src[1].data, on.src[1].stride, on.src[2].data,
         on.src[2].stride, on.width, on.height, on.dst[0].data, on.dst[0].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::PackedToYuv, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride, on.dst[2].data, on.dst[2].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::PackedToSemiPlanar, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.width, on.height, on.src[0].stride, on.dst[0].data, on.dst[0].stride,
         on.dst[1].data, on.dst[1].stride);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::BytesToFloats, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(on.src[0].data, on.width, &on.lower, &on.upper, as<float>(on.dst[0]));
}

template <class Call>
void callKernel(Simd::Kernel<Simd::FloatsToBytes, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(as<float>(on.src[0]), on.width, &on.lower, &on.upper, on.dst[0].data);
}

template <class Call>
void callKernel(Simd::Kernel<Simd::FloatsToHalfBits, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(as<float>(on.src[0]), on.width, as<std::uint16_t>(on.dst[0]));
}

template <class Call>
void callKernel(Simd::Kernel<Simd::HalfBitsToFloats, 1> const& /*shape*/, Call const& call,
                Operands const& on) {
    call(as<std::uint16_t>(on.src[0]), on.width, as<float>(on.dst[0]));
}

// Whether a shape takes arrays, which have no rows.
template <class Shape>
constexpr bool takesArrays =
    std::is_same_v<Shape, Simd::BytesToFloats> || std::is_same_v<Shape, Simd::FloatsToBytes> ||
    std::is_same_v<Shape, Simd::FloatsToHalfBits> || std::is_same_v<Shape, Simd::HalfBitsToFloats>;

}  // namespace ox::test
