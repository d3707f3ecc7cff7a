#include "vector_backend.h"

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_impl_color_routes.h"

namespace oxcv {

namespace {

/// Calls `first`, and `second` if that is refused, which is before anything is written.
template <class First, class Second>
void inTurn(First first, Second second) {
    try {
        first();
    } catch (ox::Exception const& refusal) {
        if (refusal.status != ox::StatusNotSupported) {
            throw;
        }
        second();
    }
}

}  // namespace

bool VectorBackend::converts(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size) {
    bool const even = size.width % 2 == 0 && size.height % 2 == 0;
    return ox::impl::colorRoute(src, dst).route != ox::impl::ColorRoute::Unsupported &&
           (even || !ox::impl::needsEvenSides(src));
}

void VectorBackend::colorCvt(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi) {
    if (converts(src.format(), dst.format(), dst.size())) {
        _vector.colorCvt(src, dst, src_roi);
    } else {
        _pipeline.colorCvt(src, dst, src_roi);
    }
}

void VectorBackend::resize(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi,
                           ox::Rect dst_roi) {
    inTurn([&] { _vector.resize(src, dst, src_roi, dst_roi); },
           [&] { _pipeline.resize(src, dst, src_roi, dst_roi); });
}

void VectorBackend::convert(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi) {
    inTurn([&] { _vector.convert(src, dst, src_roi); },
           [&] { _pipeline.convert(src, dst, src_roi); });
}

void VectorBackend::add(ox::Frame& src_dst, float value, ox::Rect src_roi) {
    _vector.add(src_dst, value, src_roi);
}

void VectorBackend::mul(ox::Frame& src_dst, float value, ox::Rect src_roi) {
    _vector.mul(src_dst, value, src_roi);
}

void VectorBackend::warpAffine(ox::Frame const& src, ox::Frame& dst, float const (*matrix)[3],
                               ox::Rect roi, bool flag) {
    _vector.warpAffine(src, dst, matrix, roi, flag);
}

int VectorBackend::setIntProperty(int id, int value) {
    _pipeline.setIntProperty(id, value);
    return _vector.setIntProperty(id, value);
}

int VectorBackend::getIntProperty(int id) const {
    return _vector.getIntProperty(id);
}

ox::DeviceContext VectorBackend::getDeviceContext() const {
    return _vector.getDeviceContext();
}

}  // namespace oxcv
