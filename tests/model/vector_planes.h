// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vector backend makes of whole images, plane by plane.
#pragma once

#include "model/image.h"
#include "model/warp.h"

namespace model {

// Whether samples of 32 bits are taken for floats, which aren't averaged by area.
bool hasFloats(int format);

// The image at that size.
// @param method 0 nearest, 1 bilinear, 2 area
// @param vectors whether vector classes are chosen, where there are any
Image resizedImage(Image const& src, int width, int height, int method, bool vectors);

// What a warp takes of a plane: the first bytes of each row, one for each channel of a pixel,
// whatever the samples' width.
// @param sample_bytes of the plane's format
Pixels pixelsOf(Plane const& plane, int channels, int sample_bytes);
// The way back; bytes behind these stay.
void storePixels(Pixels const& pixels, Plane& plane);

}  // namespace model
