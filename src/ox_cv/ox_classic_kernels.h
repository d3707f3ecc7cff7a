// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The filters that people ask for by name, for `ScalerConvolutional`.
///
/// Each is a function of t, the distance from the centre in destination pixels, and 0 from its
/// radius on. They implement `IKernel` as any caller may, and no other header needs this one.

#pragma once

#include "ox_cv/ox_scale_kernel.h"

namespace ox {

/// A filter that is stretched by the scale, so that its shape is given in destination pixels. Its
/// aperture is 2 x radius x scale. With precision 8 an aperture of up to 63 fits: a triangle
/// reduces a side by up to 31, a cubic by up to 15, Lanczos by up to 10.
class OX_API StretchedKernel : public IKernel {
  public:
    void setScale(float scale) override;
    float value(float x) override;
    float aperture() override;
    ~StretchedKernel() override;

  protected:
    /// @param radius of the shape
    explicit StretchedKernel(float radius) : _radius(radius) {}
    StretchedKernel(StretchedKernel const&) = default;
    StretchedKernel& operator=(StretchedKernel const&) = default;

    /// The filter's value at t, from 0 to the radius.
    virtual double shape(double t) const = 0;

  private:
    float _radius;
    float _scale = 1.0F;
};

/// 1 - t, of radius 1: linear interpolation, widened to what a reduction needs.
class OX_API TriangleKernel final : public StretchedKernel {
  public:
    TriangleKernel() : StretchedKernel(1.0F) {}
    TriangleKernel(TriangleKernel const&) = default;
    TriangleKernel& operator=(TriangleKernel const&) = default;
    ~TriangleKernel() override;

  private:
    double shape(double t) const override;
};

/// The family of cubics of radius 2 with the parameters B and C: D. Mitchell and A. Netravali,
/// "Reconstruction Filters in Computer Graphics", SIGGRAPH 1988, equation 8.
class OX_API CubicKernel : public StretchedKernel {
  public:
    CubicKernel(double b, double c) : StretchedKernel(2.0F), _b(b), _c(c) {}
    CubicKernel(CubicKernel const&) = default;
    CubicKernel& operator=(CubicKernel const&) = default;
    ~CubicKernel() override;

  private:
    double shape(double t) const override;

    double _b;
    double _c;
};

/// B = C = 1/3, what that paper recommends: a compromise between blur and ringing.
class OX_API MitchellNetravaliKernel final : public CubicKernel {
  public:
    MitchellNetravaliKernel();
    MitchellNetravaliKernel(MitchellNetravaliKernel const&) = default;
    MitchellNetravaliKernel& operator=(MitchellNetravaliKernel const&) = default;
    ~MitchellNetravaliKernel() override;
};

/// B = 0, C = 1/2, which passes through the samples: E. Catmull and R. Rom, "A Class of Local
/// Interpolating Splines", 1974; R. Keys, "Cubic Convolution Interpolation for Digital Image
/// Processing", 1981, with a = -1/2.
class OX_API CatmullRomKernel final : public CubicKernel {
  public:
    CatmullRomKernel();
    CatmullRomKernel(CatmullRomKernel const&) = default;
    CatmullRomKernel& operator=(CatmullRomKernel const&) = default;
    ~CatmullRomKernel() override;
};

/// sinc(t) sinc(t/3), of radius 3, where sinc(t) is sin(pi t) / (pi t): C. Duchon, "Lanczos
/// Filtering in One and Two Dimensions", 1979. The sharpest of these, with some ringing.
class OX_API Lanczos3Kernel final : public StretchedKernel {
  public:
    Lanczos3Kernel() : StretchedKernel(3.0F) {}
    Lanczos3Kernel(Lanczos3Kernel const&) = default;
    Lanczos3Kernel& operator=(Lanczos3Kernel const&) = default;
    ~Lanczos3Kernel() override;

  private:
    double shape(double t) const override;
};

}  // namespace ox
