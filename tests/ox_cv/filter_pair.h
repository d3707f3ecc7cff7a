// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Filters to scale by, seen alike by the library and by the model.
#pragma once

#include <vector>

#include "model/convolution.h"
#include "ox_cv/ox_scale_kernel.h"

namespace ox::test {

// A filter as a function of the scale that it was told last.
struct FilterShape {
    char const* name;
    float (*aperture)(float scale);
    float (*value)(float x, float scale);
};

// Filters as a caller would write them, narrow and wide, with and without negative lobes.
std::vector<FilterShape> const& usualFilters();
// Values that no sane filter has: weights wrap, and sums aren't numbers.
std::vector<FilterShape> const& wildFilters();
// Apertures at the limits and beyond, and filters without weight.
std::vector<FilterShape> const& refusedFilters();

// One shape behind both interfaces, each with its own memory of what it was told.
class FilterPair {
  public:
    explicit FilterPair(FilterShape const& chosen) : shape(chosen) {}
    FilterPair(FilterPair const&) = delete;
    FilterPair& operator=(FilterPair const&) = delete;

    IKernel& library() { return _library; }
    model::Filter& model() { return _model; }

    // Whether both sides were told the same scales in the same order; forgets them.
    bool toldAlike();

    // May be changed: the library knows a filter by its address.
    FilterShape shape;

  private:
    template <class Interface>
    struct Side : Interface {
        explicit Side(FilterPair const& of) : pair(of) {}
        void setScale(float scale) override { scales.push_back(scale); }
        float value(float x) override { return pair.shape.value(x, scales.back()); }
        float aperture() override { return pair.shape.aperture(scales.back()); }

        FilterPair const& pair;
        std::vector<float> scales;
    };

    Side<IKernel> _library{*this};
    Side<model::Filter> _model{*this};
};

}  // namespace ox::test
