// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// A filter of one's own: a parabola over two source pixels for each destination pixel.

#include <cstdio>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_cv.h"

namespace {

// [filter]
class Parabola : public ox::IKernel {
  public:
    void setScale(float scale) override { _scale = scale; }
    float value(float x) override { return 1.0F - x * x / (_scale * _scale); }
    float aperture() override { return 2.0F * _scale; }

  private:
    float _scale = 1.0F;
};
// [filter]

}  // namespace

int main() try {
    ox::Frame step;  // black on the left, white on the right
    step.reuse(ox::FRAME_GRAY8, {24, 9}, ox::DeviceContext(), 0);
    for (int i = 0; i < 9 * 24; ++i) {
        step.planeData(0)[i / 24 * step.layout().plane[0].stride + i % 24] = i % 24 < 13 ? 0 : 255;
    }
    // [use]
    Parabola kernel;
    ox::ScalerConvolutional scaler;
    scaler.reuse(kernel, step, {8, 3}, ox::OX_SCALER_FIXED_POINT_16S);
    ox::Frame small;
    ox::produceFrame(scaler, small);
    // [use]
    for (int x = 0; x < small.width(); ++x) {
        std::printf("%d ", small.planeData(0)[x]);
    }
    std::puts("");
} catch (std::exception const& error) {
    std::fprintf(stderr, "own_filter: %s\n", error.what());
    return 1;
}
