// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_impl_c.h"
#include "ox_cv/ox_impl_rules.h"
#include "ox_cv/ox_scaler_convolutional.h"

namespace ox::impl::c {

namespace {

constexpr Place here{"src/ox_cv/ox_cv_c_filter"};

/// A filter of the caller's.
class CallbackKernel final : public IKernel {
  public:
    explicit CallbackKernel(ox_filter const& filter) : _filter(filter) {}

    void setScale(float scale) override { _scale = scale; }
    float value(float x) override { return _filter.value(_filter.context, _scale, x); }
    float aperture() override { return _filter.aperture(_filter.context, _scale); }

  private:
    ox_filter _filter;
    float _scale = 1.0F;
};

void reduce(Frame const& src, Frame& dst, ox_filter const& filter, std::int32_t precision) {
    if (src.format() != dst.format()) {
        here.fail({StatusInvalidParameter}, "The frames are %s and %s.", toString(src.format()),
                  toString(dst.format()));
    }
    std::unique_ptr<IKernel> const kernel = kernelOf(filter);
    ScalerConvolutional scaler;
    scaler.reuse(*kernel, src, dst.size(), static_cast<ScalerPrecision>(precision));
    produceFrame(scaler, dst);
}

}  // namespace

std::unique_ptr<IKernel> kernelOf(ox_filter const& filter) {
    switch (filter.kind) {
        case OX_FILTER_CALLBACK:
            requireParameter(reinterpret_cast<void const*>(filter.value), "filter->value");
            requireParameter(reinterpret_cast<void const*>(filter.aperture), "filter->aperture");
            return std::make_unique<CallbackKernel>(filter);
        case OX_FILTER_BOX:
            return std::make_unique<BoxKernel>();
        case OX_FILTER_TRIANGLE:
            return std::make_unique<TriangleKernel>();
        case OX_FILTER_MITCHELL_NETRAVALI:
            return std::make_unique<MitchellNetravaliKernel>();
        case OX_FILTER_CATMULL_ROM:
            return std::make_unique<CatmullRomKernel>();
        case OX_FILTER_LANCZOS3:
            return std::make_unique<Lanczos3Kernel>();
        default:
            refuseValue("filter->kind", filter.kind);
    }
}

}  // namespace ox::impl::c

using namespace ox::impl::c;

ox_status ox_reduce(ox_frame const* src, ox_rect const* region, ox_frame* dst,
                    ox_filter const* filter, int32_t precision) {
    return guarded([&] {
        ox::Frame const& source = frameOf(src, "src");
        ox::Frame& target = frameOf(dst, "dst");
        requireParameter(filter, "filter");
        reduce(ox::impl::selectRegion(source, rectOf(region)), target, *filter, precision);
    });
}
