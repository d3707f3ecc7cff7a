// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_planes.h"

#include <memory>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_impl_rules.h"
#include "simd/simd.h"

namespace ox {

void NV12toBGR_neon(unsigned char const* y, unsigned char const* uv, unsigned char* bgr, int width,
                    int height, int src_stride, int dst_stride) {
    if (width < impl::directColumns || height < 2) {
        return;
    }
    int const columns = width / impl::directColumns * impl::directColumns;
    auto const stride = static_cast<std::size_t>(src_stride);
    // Chroma rows are luma's stride apart, on purpose.
    Simd::ConvertNv12ToBgrDirectly(y, stride, uv, stride, static_cast<std::size_t>(columns),
                                   static_cast<std::size_t>(height), bgr,
                                   static_cast<std::size_t>(dst_stride));
}

namespace impl {

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

void convertNv12Directly(Frame const& src, Frame& dst) {
    NV12toBGR_neon(src.planeData(0), src.planeData(1), dst.planeData(0), dst.width(), dst.height(),
                   static_cast<int>(src.layout().plane[0].stride),
                   static_cast<int>(dst.layout().plane[0].stride));
}

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

}  // namespace impl

}  // namespace ox
