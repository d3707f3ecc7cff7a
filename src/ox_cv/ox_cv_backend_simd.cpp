// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend_simd.h"

#include <algorithm>
#include <limits>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_impl_colour_routes.h"
#include "ox_cv/ox_impl_planes.h"
#include "ox_cv/ox_impl_rules.h"
#include "ox_cv/ox_impl_state.h"
#include "simd/simd.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_cv_backend_simd"};

bool isFloat(FrameFormat format) {
    return format == FRAME_GRAY_32F || format == FRAME_BGR_32F || format == FRAME_BGR_32F_PLANAR;
}

/// Bytes from one row of floats to the next: the low two bits of a stride are dropped, on purpose.
/// If they aren't 0, rows begin a little before their real start, but inside the plane.
std::size_t floatStride(FramePlane const& plane) {
    return static_cast<std::size_t>(plane.stride) & ~std::size_t{3};
}

/// Calls visit(plane, row, count) for each run of floats: a whole plane, from row 0, or a row.
template <class Visitor>
void forEachRun(Frame const& frame, bool contiguous, Visitor visit) {
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        if (contiguous) {
            visit(i, std::size_t{0}, static_cast<std::size_t>(plane.planeBytes) / sizeof(float));
            continue;
        }
        auto const count = static_cast<std::size_t>(plane.width) * plane.channels;
        for (std::size_t y = 0; y < static_cast<std::size_t>(plane.height); ++y) {
            visit(i, y, count);
        }
    }
}

float* floatsAt(Frame const& frame, int plane, std::size_t row) {
    std::size_t const offset = row * floatStride(frame.layout().plane[plane]);
    return impl::floatsAt(frame.planeData(plane) + offset);
}

/// The resizers' tables hold offsets in a row as 32-bit numbers.
void refuseLongRows(Frame const& frame) {
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        if (frame.layout().plane[i].rowBytes > std::numeric_limits<std::int32_t>::max()) {
            here.fail({StatusCapacityExceeded, "resize"}, "resize: Rows are too long.");
        }
    }
}

bool rowsDrift(Frame const& frame) {
    FrameLayout const& layout = frame.layout();
    return std::any_of(layout.plane, layout.plane + layout.planeCount,
                       [](FramePlane const& plane) { return plane.stride % 4 != 0; });
}

}  // namespace

CvBackendSimd::~CvBackendSimd() = default;

void CvBackendSimd::colorCvt(Frame const& src, Frame& dst, Rect src_roi) {
    OX_ASSERT(src.initialized() && dst.initialized());
    impl::requireCpu(here, src, dst);
    Frame const src_region = impl::selectRegion(src, src_roi);
    OX_ASSERT(src_region.size() == dst.size());
    if (src.format() == dst.format()) {
        src_region.copyTo(dst);
        return;
    }
    if (impl::needsEvenSides(src.format())) {
        OX_ASSERT(src_region.width() % 2 == 0 && src_region.height() % 2 == 0);
    }
    if (src_roi.empty() && impl::goesDirectly(src, dst) && impl::hasDirectStrides(src.layout())) {
        impl::convertNv12Directly(src, dst);
        return;
    }
    if (!impl::convertColours(src_region, dst, _color_frame)) {
        here.fail(StatusNotSupported, "colorCvt: Unsupported conversion %s -> %s.",
                  toString(src.format()), toString(dst.format()));
    }
}

void CvBackendSimd::resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) {
    OX_ASSERT(src.initialized() && src.format() == dst.format());
    impl::requireCpu(here, src, dst);
    int const bits_per_channel = src.layout().plane[0].bits;
    here.require(impl::hasResizers(bits_per_channel),
                 "bits_per_channel == 8 || bits_per_channel == 32");
    Frame const from = impl::selectRegion(src, src_roi);
    Frame const to = impl::selectRegion(dst, dst_roi);
    // The frame's sides decide, not each plane's, on purpose.
    bool const has_side_of_one = from.width() == 1 || from.height() == 1;
    ResizeMethod const method = has_side_of_one ? ResizeNearestNeighbour : _resize_method;
    if (method == ResizeArea && !impl::hasAreaResizer(bits_per_channel)) {
        here.fail(StatusNotSupported, "resize: Unsupported method.");
    }
    refuseLongRows(from);
    refuseLongRows(to);
    impl::withMemory(
        here, [&] { impl::resizePlanes(from, to, method); }, "resize");
}

void CvBackendSimd::convert(Frame const& src, Frame& dst, Rect src_roi) {
    OX_ASSERT(src.initialized() && dst.initialized());
    impl::requireCpu(here, src, dst);
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
    impl::requireCpu(here, src, dst);
    Frame const from = impl::selectRegion(src, roi);
    float const given[6] = {matrix[0][0], matrix[0][1], matrix[0][2],
                            matrix[1][0], matrix[1][1], matrix[1][2]};
    float inverse[6];
    // The return value isn't needed: without an inverse `inverse` is zeros, which are refused
    // below.
    invertAffineTransform(given, inverse);
    bool const warped = impl::withMemory(
        here, [&] { return impl::warpPlanes(from, dst, invert ? inverse : given, _warp_method); },
        "warpAffine");
    if (!warped) {
        here.fail(StatusNotSupported, "warpAffine: Can't create context.");
    }
}

void CvBackendSimd::add(Frame& src_dst, float value, Rect src_roi) {
    OX_ASSERT(src_dst.initialized());
    OX_ASSERT(src_dst.deviceContext() == DeviceContext::cpuContext());
    Frame const region = impl::selectRegion(src_dst, src_roi);
    if (!isFloat(region.format())) {
        here.fail(StatusNotSupported, "add: Unsupported src format %s.", toString(region.format()));
    }
    forEachRun(region, impl::isContiguous(region),
               [&](int plane, std::size_t row, std::size_t count) {
                   Simd::AddConstantFloats(&value, floatsAt(region, plane, row), count);
               });
}

void CvBackendSimd::mul(Frame& src_dst, float value, Rect src_roi) {
    OX_ASSERT(src_dst.initialized());
    OX_ASSERT(src_dst.deviceContext() == DeviceContext::cpuContext());
    Frame region = impl::selectRegion(src_dst, src_roi);
    _color_frame.reuse(region.format(), region.size(), DeviceContext::cpuContext(), 0);
    if (isFloat(region.format()) && !rowsDrift(region)) {
        // The same as the general way below, in one pass.
        forEachRun(region, impl::isContiguous(region),
                   [&](int plane, std::size_t row, std::size_t count) {
                       Simd::MultiplyFloats(&value, floatsAt(region, plane, row), count);
                   });
        return;
    }
    region.copyTo(_color_frame);
    region.setZero();
    if (!isFloat(region.format())) {
        here.fail(StatusNotSupported, "mul: Unsupported src format %s.", toString(region.format()));
    }
    bool const contiguous = impl::isContiguous(region) && impl::isContiguous(_color_frame);
    forEachRun(region, contiguous, [&](int plane, std::size_t row, std::size_t count) {
        Simd::AccumulateScaledFloats(floatsAt(_color_frame, plane, row), count, &value,
                                     floatsAt(region, plane, row));
    });
}

int CvBackendSimd::setIntProperty(int id, int value) {
    if (id != PropertyResizeMethod && id != PropertyWarpMethod) {
        return 0;
    }
    OX_ASSERT(value == ResizeBilinear || value == ResizeArea || value == ResizeNearestNeighbour);
    (id == PropertyResizeMethod ? _resize_method : _warp_method) = static_cast<ResizeMethod>(value);
    return 1;
}

int CvBackendSimd::getIntProperty(int id) const {
    switch (id) {
        case PropertyResizeMethod:
            return static_cast<int>(_resize_method);
        case PropertyWarpMethod:
            return static_cast<int>(_warp_method);
        default:
            return -1;
    }
}

DeviceContext CvBackendSimd::getDeviceContext() const {
    return {};
}

void CvBackendSimd::roiToYuv444(Frame& src, Rect const& roi) {
    OX_ASSERT(src.initialized());
    Frame const region = getRegion(src, roi);
    FramePlane const& plane = region.layout().plane[0];
    if (std::uint64_t{3} * static_cast<std::uint64_t>(region.width()) > plane.rowBytes) {
        here.fail(StatusNotSupported, "roiToYuv444: Unsupported src format %s.",
                  toString(src.format()));
    }
    impl::convertBgrToYuv444(region, _color_frame);
}

}  // namespace ox
