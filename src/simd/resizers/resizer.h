// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Resizers: objects that resample one plane of interleaved elements from one size to another.
///
/// They work on raw pointers and byte strides, validate nothing and touch nothing outside the rows
/// of the two planes.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "vector/aligned_array.h"

namespace Simd {

/// The element of a plane.
enum ResizerType : std::int32_t {
    ResizerTypeByte = 0,   ///< unsigned 8 bits
    ResizerTypeShort = 1,  ///< unsigned 16 bits
    ResizerTypeFloat = 2,  ///< 32-bit float
};

enum ResizerMethod : std::int32_t {
    ResizerMethodNearest = 0,          ///< (i + 0.5) src / dst in float, truncated
    ResizerMethodNearestInteger = 1,   ///< i src / dst in integers
    ResizerMethodBilinear = 2,         ///< pixel centres aligned: (i + 0.5) src / dst - 0.5
    ResizerMethodBilinearCorners = 3,  ///< outermost samples aligned: i (src - 1) / (dst - 1)
    ResizerMethodBilinearTopLeft = 4,  ///< i src / dst
    ResizerMethodBicubic = 5,          ///< four taps of a cubic; bytes
    ResizerMethodArea = 6,             ///< mean of the covered rectangle; bytes
    ResizerMethodAreaFast = 7,         ///< the same over means of 2x2 where both sides halve; bytes
};

struct ResizerParam {
    ResizerType type;
    ResizerMethod method;
    std::uint64_t srcW;  ///< pixels
    std::uint64_t srcH;
    std::uint64_t dstW;
    std::uint64_t dstH;
    std::uint64_t channels;  ///< interleaved elements of a pixel
    std::uint64_t align;  ///< alignment of row buffers, and the elements that they are rounded to
};

constexpr std::size_t tableAlign = 16;

/// @param align a power of two
constexpr std::uint64_t roundedUp(std::uint64_t elements, std::uint64_t align) {
    return (elements + align - 1) & (~align + 1);
}

/// Rounded up, without a wrap.
constexpr std::uint64_t halfOf(std::uint64_t side) {
    return side / 2 + side % 2;
}

constexpr std::size_t elementBytes(ResizerType type) {
    constexpr std::size_t bytes[] = {1, 2, 4};
    return bytes[type];
}

/// Calls call(channels) with a compile-time constant if there are one to four channels.
template <class Call>
void withChannels(std::uint64_t channels, Call call) {
    switch (channels) {
        case 1:
            return call(std::integral_constant<std::uint64_t, 1>());
        case 2:
            return call(std::integral_constant<std::uint64_t, 2>());
        case 3:
            return call(std::integral_constant<std::uint64_t, 3>());
        case 4:
            return call(std::integral_constant<std::uint64_t, 4>());
        default:
            return;
    }
}

/// The root of the layer's objects.
class Deletable {
  public:
    virtual ~Deletable() = default;
};

/// Resizes planes of one geometry, any number of them, one at a time.
class Resizer : Deletable {
  public:
    explicit Resizer(ResizerParam const& record) : param(record) {}
    Resizer(Resizer const&) = delete;
    Resizer& operator=(Resizer const&) = delete;

    /// @param src, dst the first elements of the planes
    /// @param srcStride, dstStride in bytes, whatever the element
    virtual void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                     std::size_t dstStride) = 0;

  protected:
    ResizerParam param;
};

/// The rows of a plane. They needn't be aligned to its elements.
template <class T>
struct StridedRows {
    T* first;
    std::size_t stride;  ///< elements

    T* operator[](std::uint64_t row) const { return first + row * stride; }
};
template <class T>
StridedRows(T*, std::size_t) -> StridedRows<T>;

/// The start of the cache line that an array begins in. The slack in front makes it part of the
/// block. From there on, registers of 64 bytes don't straddle cache lines, which would cost time.
template <class T>
T* startOfLine(T* data) {
    constexpr std::uintptr_t line = 64;
    return data - reinterpret_cast<std::uintptr_t>(data) % line / sizeof(T);
}

/// The walk of the bilinear classes. Makes each destination row from two neighbouring source rows.
/// Each source row goes through the horizontal pass once, as long as `iy` moves on by at most a row
/// at a time. A row outside the source isn't read and counts as zeros. An empty source leaves the
/// destination unwritten.
/// @param iy for each destination row, the first source row; never falling
/// @param ay for each destination row, the weight of the second source row, for `vertical`
/// @param buffers two rows of results of the horizontal pass
/// @param horizontal (Element const* source_row, Sum* row)
/// @param vertical (Sum const* top, Sum const* bottom, Weight weight, Element* destination_row)
template <class Element, class Sum, class Weight, class Horizontal, class Vertical>
void walkBilinearRows(ResizerParam const& param, AlignedArray<std::int32_t> const& iy,
                      AlignedArray<Weight> const& ay, StridedRows<Element const> src,
                      StridedRows<Element> dst, AlignedArray<Sum> const (&buffers)[2],
                      Horizontal horizontal, Vertical vertical) {
    if (param.srcW == 0 || param.srcH == 0) {
        return;
    }
    auto const pass = [&](std::int64_t row, Sum* sums) {
        if (row < 0 || static_cast<std::uint64_t>(row) >= param.srcH) {
            std::fill_n(sums, buffers[0].size, Sum{});
        } else {
            horizontal(src[static_cast<std::uint64_t>(row)], sums);
        }
    };
    Sum* top = startOfLine(buffers[0].data);
    Sum* bottom = startOfLine(buffers[1].data);
    std::int64_t held = std::numeric_limits<std::int64_t>::min();  // the source row in `top`
    for (std::uint64_t row = 0; row < param.dstH; ++row) {
        std::int64_t const wanted = iy.data[row];
        if (wanted != held) {
            if (wanted == held + 1) {
                std::swap(top, bottom);
            } else {
                pass(wanted, top);
            }
            pass(wanted + 1, bottom);
            held = wanted;
        }
        vertical(top, bottom, ay.data[row], dst[row]);
    }
}

/// The class that serves a request. Each value but `none` has the name of its class.
enum class ResizerClass {
    none,
    nearest,
    byteBilinear,
    shortBilinear,
    floatBilinear,
    byteBicubic,
    byteArea2x2,
    byteArea1x1,
    vectorByteBilinear,
    vectorShortBilinear,
    vectorFloatBilinear,
    vectorByteArea1x1,
};

// Both creation functions return an object that the caller deletes, or null where no class takes
// the pair of type and method.

namespace Base {

/// The scalar class. Any plane with a source side of 1 goes to the nearest sample.
ResizerClass chooseResizer(ResizerParam const& param);

Resizer* CreateResizer(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t dstW,
                       std::uint64_t dstH, std::uint64_t channels, ResizerType type,
                       ResizerMethod method);

}  // namespace Base

namespace Neon {

/// The vector class, or what `Base::chooseResizer` says where there is none.
ResizerClass chooseResizer(ResizerParam const& param);

Resizer* CreateResizer(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t dstW,
                       std::uint64_t dstH, std::uint64_t channels, ResizerType type,
                       ResizerMethod method);

}  // namespace Neon

}  // namespace Simd
