// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/resized_image.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "model/vector_planes.h"

namespace ox::test {

namespace {

// Around 0 to 255, with some of the largest and smallest.
float drawSample(Random& random) {
    using Limits = std::numeric_limits<float>;
    constexpr float outliers[] = {0.0F,  -0.0F,  Limits::min(),           -Limits::denorm_min(),
                                  1e30F, -1e30F, 3 * Limits::denorm_min()};
    return oneIn(random, 12) ? outliers[random.next() % std::size(outliers)]
                             : random.real(-20.0F, 280.0F);
}

}  // namespace

std::vector<FrameFormat> resizedFormats() {
    std::vector<FrameFormat> formats = allFormats();
    formats.erase(std::remove(formats.begin(), formats.end(), FRAME_C1_16U), formats.end());
    return formats;
}

bool hasFloats(FrameFormat format) {
    return model::hasFloats(static_cast<int>(format));
}

model::Image resizedImage(model::Image const& src, Size size, int method, Kernels kernels) {
    return model::resizedImage(src, size.width, size.height, method, kernels == Kernels::Vector);
}

model::Image drawSamples(Random& random, model::Geometry geometry) {
    model::Image image = drawImage(random, geometry);
    if (!hasFloats(formatOf(geometry))) {
        return image;
    }
    for (model::Plane& plane : image.planes) {
        for (std::size_t i = 0; i < plane.bytes.size(); i += sizeof(float)) {
            float const sample = drawSample(random);
            std::memcpy(&plane.bytes[i], &sample, sizeof sample);
        }
    }
    return image;
}

Placements drawPlacesFor(FrameFormat format, Random& random) {
    Placements placements = drawPlacements(random);
    for (PlanePlacement& placement : placements) {
        placement.gap *= hasFloats(format) ? sizeof(float) : 1;
    }
    return placements;
}

Rect drawRegion(Random& random, Size whole) {
    Rect region{random.between(0, whole.width - 1), random.between(0, whole.height - 1), 0, 0};
    region.width = random.between(1, whole.width - region.x);
    region.height = random.between(1, whole.height - region.y);
    return region;
}

Rect drawEvenRegion(Random& random, Size whole) {
    Rect region{random.between(0, whole.width - 2), random.between(0, whole.height - 2), 0, 0};
    region.width = random.between(1, (whole.width - region.x) / 2) * 2;
    region.height = random.between(1, (whole.height - region.y) / 2) * 2;
    return region;
}

}  // namespace ox::test
