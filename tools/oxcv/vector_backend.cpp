// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector_backend.h"

#include <algorithm>

#include "ox_core/ox_buffer.h"

namespace oxcv {

namespace {

/// Bytes of tables, programs and row buffers. None of these depends on both sides of a plane. Each
/// number is an upper bound for all instruction sets.
struct Need {
    std::uint64_t row;            ///< for each row of the destination
    std::uint64_t column;         ///< for each of its columns and channels
    std::uint64_t source_column;  ///< for each of the source
};

/// Two indices, and a program of windows.
constexpr Need nearestNeed{4, 7, 3};
/// Indices and weights, one for each channel, two buffered rows, and a program.
constexpr Need bilinearNeed{8, 32, 7};
/// Shares and indices, a row of sums, and a program that may have a step for nearly each sample and
/// grows by doubling.
constexpr Need areaNeed{8, 1000, 280};
/// Ranges of columns for each row; offsets, weights and samples of a row.
constexpr Need warpNeed{24, 26, 0};

/// For the arrays' own slack, for pages that aren't filled, and for the stack.
constexpr std::uint64_t reserve = std::uint64_t{1} << 20U;

std::uint64_t columnsOf(ox::FramePlane const& plane) {
    return static_cast<std::uint64_t>(std::max(plane.width, 0)) * plane.channels;
}

std::uint64_t bytesFor(Need const& need, ox::FramePlane const& src, ox::FramePlane const& dst,
                       std::uint64_t element) {
    return need.row * static_cast<std::uint64_t>(std::max(dst.height, 0)) +
           element * (need.column * columnsOf(dst) + need.source_column * columnsOf(src));
}

Need const& needOf(ox::ResizeMethod method) {
    switch (method) {
        case ox::ResizeNearestNeighbour:
            return nearestNeed;
        case ox::ResizeArea:
            return areaNeed;
        default:
            return bilinearNeed;
    }
}

/// @throws ox::Exception
void requireMemory(std::uint64_t bytes) {
    ox::Buffer buffer{ox::DeviceContext()};
    buffer.resize(bytes, false);
}

}  // namespace

std::uint64_t bytesToScale(ox::FrameLayout const& src, ox::FrameLayout const& dst,
                           ox::ResizeMethod method) {
    std::uint64_t most = 0;
    for (int i = 0; i < std::min(src.planeCount, dst.planeCount); ++i) {
        ox::FramePlane const& from = src.plane[i];
        ox::FramePlane const& to = dst.plane[i];
        std::uint64_t const element = from.bits / 8;
        // A side of 1 goes to the nearest sample, whatever the method.
        most = std::max({most, bytesFor(needOf(method), from, to, element),
                         bytesFor(nearestNeed, from, to, element)});
    }
    return most + reserve;
}

std::uint64_t bytesToWarp(ox::FrameLayout const& dst) {
    std::uint64_t most = 0;
    for (int i = 0; i < dst.planeCount; ++i) {
        most = std::max(most, bytesFor(warpNeed, dst.plane[i], dst.plane[i], 1));
    }
    return most + reserve;
}

void VectorBackend::resize(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi,
                           ox::Rect dst_roi) {
    auto const method = static_cast<ox::ResizeMethod>(getIntProperty(ox::PropertyResizeMethod));
    requireMemory(bytesToScale(src.layout(), dst.layout(), method));
    CvBackendSimd::resize(src, dst, src_roi, dst_roi);
}

void VectorBackend::warpAffine(ox::Frame const& src, ox::Frame& dst, float const (*matrix)[3],
                               ox::Rect roi, bool invert) {
    requireMemory(bytesToWarp(dst.layout()));
    CvBackendSimd::warpAffine(src, dst, matrix, roi, invert);
}

}  // namespace oxcv
