// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The continuous filters that `ScalerConvolutional` scales by.

#pragma once

#include "ox_core/ox_api.h"

namespace ox {

/// A filter as a function of the distance from its centre. A scaler asks the filter during `reuse`
/// only, but remembers its address: while the address and the sizes stay, a later `reuse` keeps the
/// weights. So the scaler doesn't notice changed parameters, nor another filter at the same
/// address, such as a local variable of a function that is called again. Let a filter live
/// unchanged as long as the scaler that it was given to, or give each filter a scaler of its own.
///
/// How wide a filter may be: a tap is a source sample that the filter touches. There may be 64 taps
/// with precision 8 and 16384 with precision 16 (`impl::maxAperture`). An aperture of one less
/// always fits; an aperture of that very number only fits if each window begins at the edge of a
/// sample. The source must also have at least as many rows as there are taps.
///
/// What it costs: in each plane and axis, `reuse` computes up to 16 rows of weights, and one more
/// for each position near a border (about aperture / scale of them). Each tap of a row takes 17
/// values. Then each sample written costs a multiplication per tap in each of the two axes.
///
/// Only distances of up to half the aperture are asked for. Weights are scaled to a fixed sum, so
/// the filter needn't have an integral of 1, but it must not be 0.
class OX_API IKernel {
  public:
    /// Adjusts the filter to a plane: called once per plane and axis, before the two below.
    /// @param scale source extent over destination extent along the axis, 1 to 32
    virtual void setScale(float scale) = 0;
    /// @param x distance from the centre, in source pixels
    virtual float value(float x) = 0;
    /// Full width in source pixels, at the last scale set; the same each time it is asked.
    virtual float aperture() = 0;
    virtual ~IKernel();

  protected:
    IKernel() = default;
    IKernel(IKernel const&) = default;
    IKernel& operator=(IKernel const&) = default;
};

/// The mean of the source pixels that a destination pixel covers.
class OX_API BoxKernel : public IKernel {
  public:
    BoxKernel() = default;
    BoxKernel(BoxKernel const&) = default;
    BoxKernel& operator=(BoxKernel const&) = default;
    ~BoxKernel() override;

    void setScale(float scale) override;
    /// 1 up to a thousandth of a pixel outside the box, so that both edges count; else 0.
    float value(float x) override;
    float aperture() override;

  private:
    float _width = 0.0F;
    float _aperture = 0.0F;
};

namespace impl {

/// What the weights of a filter add up to, and the most taps that it may have: 64 for `signed char`
/// and 16384 for `short`.
/// @tparam Weight one of these two
template <class Weight>
OX_API int maxAperture();

extern template OX_API int maxAperture<signed char>();
extern template OX_API int maxAperture<short>();

}  // namespace impl

}  // namespace ox
