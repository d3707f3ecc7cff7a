#include <memory>

#include "ox_cv/ox_impl_planes.h"
#include "simd/simd.h"

namespace ox::impl {

namespace {

Simd::ResizerMethod resizerMethod(ResizeMethod method) {
    switch (method) {
        case ResizeNearestNeighbour:
            return Simd::ResizerMethodNearest;
        case ResizeArea:
            return Simd::ResizerMethodArea;
        default:
            return Simd::ResizerMethodBilinear;
    }
}

/// There is no warp by area: it counts as bilinear, on purpose.
std::uint32_t warpFlags(ResizeMethod method) {
    return method == ResizeNearestNeighbour ? 0U : Simd::WarpAffineFlagBilinear;
}

}  // namespace

void resizePlanes(Frame const& src, Frame const& dst, ResizeMethod method) {
    auto* const create =
        Simd::Neon::KernelsEnabled ? Simd::Neon::CreateResizer : Simd::Base::CreateResizer;
    for (int i = 0; i < src.layout().planeCount; ++i) {
        FramePlane const& plane = src.layout().plane[i];
        PlaneView const from = planeOf(src, i);
        PlaneView const to = planeOf(dst, i);
        std::unique_ptr<Simd::Resizer> const resizer(
            create(from.width, from.height, to.width, to.height, plane.channels,
                   plane.bits == 8 ? Simd::ResizerTypeByte : Simd::ResizerTypeFloat,
                   resizerMethod(method)));
        resizer->Run(from.data, from.stride, to.data, to.stride);
    }
}

bool warpPlanes(Frame const& src, Frame const& dst, float const* matrix, ResizeMethod method) {
    for (int i = 0; i < src.layout().planeCount; ++i) {
        PlaneView const from = planeOf(src, i);
        PlaneView const to = planeOf(dst, i);
        std::unique_ptr<Simd::WarpAffine> const warp(Simd::Base::CreateWarpAffine(
            from.width, from.height, from.stride, to.width, to.height, to.stride,
            dst.layout().plane[i].channels, matrix, warpFlags(method), nullptr));
        if (warp == nullptr) {
            return false;
        }
        warp->Run(from.data, to.data);
    }
    return true;
}

}  // namespace ox::impl
