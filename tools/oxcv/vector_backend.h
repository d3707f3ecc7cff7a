/// @file
/// The vector backend, helped out by the pipeline.

#pragma once

#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"

namespace oxcv {

/// Does what `CvBackendSimd` does, and lets `CvBackendBase` do what that refuses.
class VectorBackend : public ox::ICvBackend {
  public:
    /// Whether the vector backend itself converts the pair at that size.
    static bool converts(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size);

    void colorCvt(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi) override;
    void resize(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi, ox::Rect dst_roi) override;
    void convert(ox::Frame const& src, ox::Frame& dst, ox::Rect src_roi) override;
    void add(ox::Frame& src_dst, float value, ox::Rect src_roi) override;
    void mul(ox::Frame& src_dst, float value, ox::Rect src_roi) override;
    void warpAffine(ox::Frame const& src, ox::Frame& dst, float const (*matrix)[3], ox::Rect roi,
                    bool flag) override;
    int setIntProperty(int id, int value) override;
    int getIntProperty(int id) const override;
    ox::DeviceContext getDeviceContext() const override;

  private:
    ox::CvBackendSimd _vector;
    ox::CvBackendBase _pipeline;
};

}  // namespace oxcv
