// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/resized_image.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>

#include "model/resize.h"

namespace ox::test {

namespace {

template <class Element>
void resizePlane(model::Plane const& src, int method, Kernels kernels, model::Plane& dst) {
    auto const width = static_cast<std::uint64_t>(src.width);
    model::Resize const request{std::is_same_v<Element, float> ? 2 : 0,
                                method,
                                width,
                                static_cast<std::uint64_t>(src.rows),
                                static_cast<std::uint64_t>(dst.width),
                                static_cast<std::uint64_t>(dst.rows),
                                src.row_bytes / sizeof(Element) / width};
    std::vector<Element> elements(src.bytes.size() / sizeof(Element));
    std::memcpy(elements.data(), src.bytes.data(), src.bytes.size());
    model::ResizeClass const resizer =
        kernels == Kernels::Vector ? model::vectorChoice(request) : model::scalarChoice(request);
    std::vector<Element> const result = model::resized(resizer, request, elements);
    std::memcpy(dst.bytes.data(), result.data(), dst.bytes.size());
}

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
    return format == FRAME_C1_32U || format >= FRAME_GRAY_32F;
}

model::Image resizedImage(model::Image const& src, Size size, int method, Kernels kernels) {
    constexpr int methods[] = {0, 2, 6};
    bool const line = src.width == 1 || src.height == 1;
    model::Image dst = model::makeImage(src.format, size.width, size.height, 0);
    auto* const resize =
        hasFloats(formatOf(src.geometry())) ? &resizePlane<float> : &resizePlane<std::uint8_t>;
    for (std::size_t p = 0; p < dst.planes.size(); ++p) {
        resize(src.planes[p], line ? 0 : methods[method], kernels, dst.planes[p]);
    }
    return dst;
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
