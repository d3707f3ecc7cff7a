#include "ox_cv/ox_cv_backend_simd.h"

#include <algorithm>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_planes.h"
#include "simd/simd.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_cv_backend_simd"};

bool isFloat(FrameFormat format) {
    return format == FRAME_GRAY_32F || format == FRAME_BGR_32F || format == FRAME_BGR_32F_PLANAR;
}

/// Bytes from one row of floats to the next: the low two bits of a stride don't count, on purpose.
/// Where they are set, each row is taken a little before its start, inside the plane.
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

bool rowsDrift(Frame const& frame) {
    FrameLayout const& layout = frame.layout();
    return std::any_of(layout.plane, layout.plane + layout.planeCount,
                       [](FramePlane const& plane) { return plane.stride % 4 != 0; });
}

}  // namespace

CvBackendSimd::~CvBackendSimd() = default;

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
        // What follows below, in one pass.
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
    (id == PropertyResizeMethod ? _resize_method : _warp_method) = value;
    return 1;
}

int CvBackendSimd::getIntProperty(int id) const {
    switch (id) {
        case PropertyResizeMethod:
            return _resize_method;
        case PropertyWarpMethod:
            return _warp_method;
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
    _color_frame.reuse(FRAME_YUV444_PLANAR, region.size(), DeviceContext(), 0);
    impl::PlaneView const bgr = impl::planeOf(region, 0);
    impl::PlaneView const y = impl::planeOf(_color_frame, 0);
    impl::PlaneView const u = impl::planeOf(_color_frame, 1);
    impl::PlaneView const v = impl::planeOf(_color_frame, 2);
    Simd::ConvertBgrToYuv444(bgr.data, y.width, y.height, bgr.stride, y.data, y.stride, u.data,
                             u.stride, v.data, v.stride);
}

}  // namespace ox
