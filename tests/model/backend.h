// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Whole-frame operations on the steps of the model.
#pragma once

#include "model/convert.h"
#include "model/scale.h"

namespace model {

// A rectangle of an image; the whole image if a side isn't positive.
struct Region {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool whole() const { return width <= 0 || height <= 0; }
};

// One backend over its whole life.
class Backend {
  public:
    int method = 1;

    Outcome colorCvt(Image const& src, Image& dst, Region region);
    Outcome resize(Image const& src, Image& dst, Region src_region, Region dst_region);
    Outcome convert(Image const& src, Image& dst, Region region);

  private:
    Converter _converter;
    Facade _scaler;
};

}  // namespace model
