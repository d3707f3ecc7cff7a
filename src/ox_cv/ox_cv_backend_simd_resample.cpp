#include <limits>
#include <memory>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_impl_planes.h"
#include "simd/simd.h"

namespace ox {

namespace {

using impl::planeOf;
using impl::PlaneView;

constexpr impl::Place here{"src/ox_cv/ox_cv_backend_simd"};

Simd::ResizerMethod resizerMethod(std::int32_t property) {
    switch (property) {
        case ResizeNearestNeighbour:
            return Simd::ResizerMethodNearest;
        case ResizeArea:
            return Simd::ResizerMethodArea;
        default:
            return Simd::ResizerMethodBilinear;
    }
}

/// There is no warp by area: it counts as bilinear, on purpose.
std::uint32_t warpFlags(std::int32_t property) {
    return property == ResizeNearestNeighbour ? 0U : Simd::WarpAffineFlagBilinear;
}

/// Offsets inside a row are 32-bit numbers in the resizers' tables.
void refuseLongRows(Frame const& frame) {
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        if (frame.layout().plane[i].rowBytes > std::numeric_limits<std::int32_t>::max()) {
            here.fail({StatusCapacityExceeded, "resize"}, "resize: Rows are too long.");
        }
    }
}

void resizePlane(PlaneView src, PlaneView dst, std::size_t channels, Simd::ResizerType type,
                 Simd::ResizerMethod method) {
    auto* const create =
        Simd::Neon::KernelsEnabled ? Simd::Neon::CreateResizer : Simd::Base::CreateResizer;
    std::unique_ptr<Simd::Resizer> const resizer(
        create(src.width, src.height, dst.width, dst.height, channels, type, method));
    resizer->Run(src.data, src.stride, dst.data, dst.stride);
}

}  // namespace

void CvBackendSimd::resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) {
    OX_ASSERT(src.initialized() && src.format() == dst.format());
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
    int const bits_per_channel = src.layout().plane[0].bits;
    OX_ASSERT(bits_per_channel == 8 || bits_per_channel == 32);
    Simd::ResizerType const type =
        bits_per_channel == 8 ? Simd::ResizerTypeByte : Simd::ResizerTypeFloat;

    Frame const from = impl::selectRegion(src, src_roi);
    Frame const to = impl::selectRegion(dst, dst_roi);
    // The frame's sides decide, not each plane's, on purpose.
    bool const has_side_of_one = from.width() == 1 || from.height() == 1;
    Simd::ResizerMethod const method =
        has_side_of_one ? Simd::ResizerMethodNearest : resizerMethod(_resize_method);
    if (type == Simd::ResizerTypeFloat && method == Simd::ResizerMethodArea) {
        here.fail(StatusNotSupported, "resize: Unsupported method.");
    }
    refuseLongRows(from);
    refuseLongRows(to);
    for (int i = 0; i < from.layout().planeCount; ++i) {
        resizePlane(planeOf(from, i), planeOf(to, i), from.layout().plane[i].channels, type,
                    method);
    }
}

void CvBackendSimd::convert(Frame const& src, Frame& dst, Rect src_roi) {
    OX_ASSERT(src.initialized() && dst.initialized());
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
    Frame const from = impl::selectRegion(src, src_roi);
    if (from.size() == dst.size()) {
        colorCvt(from, dst, Rect{});
        return;
    }
    if (from.format() == dst.format()) {
        resize(from, dst, Rect{}, Rect{});
        return;
    }
    _resize_frame.reuse(from.format(), dst.size(), DeviceContext(), 0);
    if (from.size().empty()) {
        _resize_frame.setZero();  // there is nothing to resample
    }
    resize(from, _resize_frame, Rect{}, Rect{});
    colorCvt(_resize_frame, dst, Rect{});
}

void CvBackendSimd::warpAffine(Frame const& src, Frame& dst, float const (*matrix)[3], Rect roi,
                               bool invert) {
    OX_ASSERT(src.initialized() && src.format() == dst.format());
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
    Frame const from = impl::selectRegion(src, roi);
    float const given[6] = {matrix[0][0], matrix[0][1], matrix[0][2],
                            matrix[1][0], matrix[1][1], matrix[1][2]};
    float inverse[6];
    // Whether there is an inverse doesn't matter here: without one it is zeros, which are refused.
    invertAffineTransform(given, inverse);
    for (int i = 0; i < from.layout().planeCount; ++i) {
        PlaneView const source = planeOf(from, i);
        PlaneView const target = planeOf(dst, i);
        std::unique_ptr<Simd::WarpAffine> const warp(Simd::Base::CreateWarpAffine(
            source.width, source.height, source.stride, target.width, target.height, target.stride,
            dst.layout().plane[i].channels, invert ? inverse : given, warpFlags(_warp_method),
            nullptr));
        if (warp == nullptr) {
            here.fail(StatusNotSupported, "warpAffine: Can't create context.");
        }
        warp->Run(source.data, target.data);
    }
}

}  // namespace ox
