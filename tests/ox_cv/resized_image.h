// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vector backend makes of an image at another size, by the model of its planes.
#pragma once

#include <vector>

#include "ox_cv/placed_image.h"

namespace ox::test {

enum class Kernels { Scalar, Vector };

// Those of 8 and of 32 bits a channel.
std::vector<FrameFormat> resizedFormats();
// Whether samples are taken for floats, which aren't averaged by area.
bool hasFloats(FrameFormat format);

// The image at that size, by the property's value `method`.
model::Image resizedImage(model::Image const& src, Size size, int method,
                          Kernels kernels = Kernels::Vector);

// Bytes of any value, and floats of which no blend makes a NaN.
model::Image drawSamples(Random& random, model::Geometry geometry);
// Placements of any kind, where rows of floats are whole floats apart.
Placements drawPlacesFor(FrameFormat format, Random& random);

// A rectangle inside a frame, with positive sides.
Rect drawRegion(Random& random, Size whole);
// The same with even sides and any origin; the frame's sides are at least 2.
Rect drawEvenRegion(Random& random, Size whole);

}  // namespace ox::test
