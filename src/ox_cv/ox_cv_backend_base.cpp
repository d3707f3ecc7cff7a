// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend_base.h"

#include "ox_core/ox_float_planes.h"
#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_planes.h"
#include "ox_cv/ox_impl_rules.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_cv_backend_base"};

/// Constant arithmetic on the floats of a frame.
struct FloatOperation {
    void (*one)(float value, unsigned char* data, int stride, Rect rect);
    void (*three)(float const* values, unsigned char* data, unsigned long stride, Rect rect);
    char const* unsupported;
};

/// Calls the operation row by row, because for single channels it takes a stride of 32 bits.
void applyToPlane(FloatOperation const& operation, float value, Frame& frame, int plane,
                  Size extent) {
    std::int64_t const stride = frame.layout().plane[plane].stride;
    for (std::int64_t y = 0; y < extent.height; ++y) {
        operation.one(value, frame.planeData(plane) + y * stride, 0, {0, 0, extent.width, 1});
    }
}

void apply(FloatOperation const& operation, Frame& frame, float value, Rect roi) {
    here.require(frame.initialized(), "src_dst.initialized()");
    here.require(frame.deviceContext() == DeviceContext::cpuContext(),
                 "src_dst.deviceContext() == DeviceContext::cpuContext()");
    Size extent = frame.size();
    if (!roi.empty()) {
        roi.crop(frame.size());
        here.require(!roi.empty(), "!src_roi.empty()");
        extent = {roi.width, roi.height};  // the origin is dropped, on purpose
    }
    switch (frame.format()) {
        case FRAME_BGR_32F: {
            float const values[3] = {value, value, value};
            operation.three(values, frame.planeData(0),
                            static_cast<unsigned long>(frame.layout().plane[0].stride),
                            {0, 0, extent.width, extent.height});
            break;
        }
        case FRAME_GRAY_32F:
        case FRAME_BGR_32F_PLANAR:
            for (int i = 0; i < frame.layout().planeCount; ++i) {
                applyToPlane(operation, value, frame, i, extent);
            }
            break;
        default:
            here.fail(StatusNotSupported, "%s", operation.unsupported);
    }
}

}  // namespace

CvBackendBase::~CvBackendBase() = default;

void CvBackendBase::colorCvt(Frame const& src, Frame& dst, Rect src_roi) {
    OX_ASSERT(src.initialized());
    impl::requireCpu(here, src, dst);
    Frame const temp = impl::selectRegion(src, src_roi);
    OX_ASSERT(temp.size() == dst.size());
    if (src_roi.empty() && impl::goesDirectly(src, dst) && impl::readsInsideChroma(src)) {
        impl::convertNv12Directly(src, dst);
        return;
    }
    _convertFormat(temp, dst);
}

void CvBackendBase::_convertFormat(Frame const& src, Frame& dst) {
    _format_converter.reuse(src, dst.format());
    if (!_format_converter.produceAtOnce(dst)) {
        produceFrame(_format_converter, dst);
    }
}

void CvBackendBase::resize(Frame const& src, Frame& dst, Rect src_roi, Rect dst_roi) {
    OX_ASSERT(src.initialized() && src.format() == dst.format());
    impl::requireCpu(here, src, dst);
    Frame const temp_src = impl::selectRegion(src, src_roi);
    Frame temp_dst = impl::selectRegion(dst, dst_roi);
    _scaler.reuse(temp_src, temp_dst.size(), static_cast<ScaleMethod>(_resize_method));
    produceFrame(_scaler, temp_dst);
}

void CvBackendBase::convert(Frame const& src, Frame& dst, Rect src_roi) {
    OX_ASSERT(src.initialized() && dst.initialized());
    impl::requireCpu(here, src, dst);
    Frame const temp = impl::selectRegion(src, src_roi);
    if (temp.size() == dst.size()) {
        colorCvt(src, dst, src_roi);
        return;
    }
    if (src.format() == dst.format()) {
        resize(src, dst, src_roi, Rect{});
        return;
    }
    _temp.reuse(src.format(), dst.size(), DeviceContext(), 0);
    if (impl::hasShortAreaRows(src.format()) && _resize_method == ResizeArea &&
        temp.height() != dst.height()) {
        _temp.setZero();  // the scaler leaves the second half of each row as it is
    }
    _scaler.reuse(temp, dst.size(), static_cast<ScaleMethod>(_resize_method));
    produceFrame(_scaler, _temp);
    _convertFormat(_temp, dst);
}

void CvBackendBase::add(Frame& src_dst, float value, Rect src_roi) {
    apply({addConstant_32f_C1, addConstant_32f_C3, "ADD error, unsupported data type."}, src_dst,
          value, src_roi);
}

void CvBackendBase::mul(Frame& src_dst, float value, Rect src_roi) {
    apply({mulConstant_32f_C1, mulConstant_32f_C3, "MUL error, unsupported data type."}, src_dst,
          value, src_roi);
}

void CvBackendBase::warpAffine(Frame const& /*src*/, Frame& /*dst*/, float const (* /*matrix*/)[3],
                               Rect /*roi*/, bool /*invert*/) {
    here.fail(StatusNotSupported, "Operation is not implemented");
}

int CvBackendBase::setIntProperty(int id, int value) {
    if (id != PropertyResizeMethod) {
        return 0;
    }
    _resize_method = value;
    return 1;
}

int CvBackendBase::getIntProperty(int id) const {
    return id == PropertyResizeMethod ? _resize_method : -1;
}

DeviceContext CvBackendBase::getDeviceContext() const {
    return {};
}

}  // namespace ox
