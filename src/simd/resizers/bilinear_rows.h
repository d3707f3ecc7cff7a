/// @file
/// The walk of the bilinear resizers over the rows of a plane.

#pragma once

#include <algorithm>
#include <limits>
#include <utility>

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"

namespace Simd {

/// The rows of a plane. They needn't be aligned to its elements.
template <class T>
struct StridedRows {
    T* first;
    std::size_t stride;  ///< elements

    T* operator[](std::uint64_t row) const { return first + row * stride; }
};
template <class T>
StridedRows(T*, std::size_t) -> StridedRows<T>;

/// Makes each destination row from two neighbouring source rows. Each source row goes through the
/// horizontal pass once, as long as `iy` moves on by at most a row at a time. A row outside the
/// source isn't read and counts as zeros. An empty source leaves the destination unwritten.
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
        std::int64_t const wanted = iy[row];
        if (wanted != held) {
            if (wanted == held + 1) {
                std::swap(top, bottom);
            } else {
                pass(wanted, top);
            }
            pass(wanted + 1, bottom);
            held = wanted;
        }
        vertical(top, bottom, ay[row], dst[row]);
    }
}

}  // namespace Simd
