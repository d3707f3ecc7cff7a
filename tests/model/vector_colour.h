// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Colour conversion of whole images by the vector backend's coefficients.
#pragma once

#include "model/image.h"

namespace model {

// The image in another format, all of its pixels. Which pairs are converted isn't asked here: the
// result of any other pair means nothing.
Image vectorColour(Image const& src, int format);

// NV12 to BGR24 by the direct path, in blocks of eight columns and two rows; what these leave stays
// as it is in `dst`.
void vectorColourDirectly(Image const& src, Image& dst);

}  // namespace model
