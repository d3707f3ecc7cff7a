// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/vector_planes.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "model/resize.h"

namespace model {

namespace {

template <class Element>
void resizePlane(Plane const& src, int method, bool vectors, Plane& dst) {
    auto const width = static_cast<std::uint64_t>(src.width);
    Resize const request{std::is_same_v<Element, float> ? 2 : 0,
                         method,
                         width,
                         static_cast<std::uint64_t>(src.rows),
                         static_cast<std::uint64_t>(dst.width),
                         static_cast<std::uint64_t>(dst.rows),
                         src.row_bytes / sizeof(Element) / width};
    std::vector<Element> elements(src.bytes.size() / sizeof(Element));
    std::memcpy(elements.data(), src.bytes.data(), src.bytes.size());
    ResizeClass const resizer = vectors ? vectorChoice(request) : scalarChoice(request);
    std::vector<Element> const result = resized(resizer, request, elements);
    std::memcpy(dst.bytes.data(), result.data(), dst.bytes.size());
}

}  // namespace

bool hasFloats(int format) {
    return format == C1_32u || format >= Gray32f;
}

Image resizedImage(Image const& src, int width, int height, int method, bool vectors) {
    constexpr int methods[] = {0, 2, 6};
    bool const line = src.width == 1 || src.height == 1;
    Image dst = makeImage(src.format, width, height, 0);
    auto* const resize = hasFloats(src.format) ? &resizePlane<float> : &resizePlane<std::uint8_t>;
    for (std::size_t p = 0; p < dst.planes.size(); ++p) {
        resize(src.planes[p], line ? 0 : methods[method], vectors, dst.planes[p]);
    }
    return dst;
}

Pixels pixelsOf(Plane const& plane, int channels, int sample_bytes) {
    std::size_t const bytes = plane.row_bytes / static_cast<std::size_t>(sample_bytes);
    Pixels pixels = makePixels(static_cast<int>(bytes) / channels, plane.rows, channels, 0);
    for (std::size_t y = 0; y < static_cast<std::size_t>(plane.rows); ++y) {
        std::copy_n(&plane.bytes[y * plane.row_bytes], bytes, &pixels.bytes[y * bytes]);
    }
    return pixels;
}

void storePixels(Pixels const& pixels, Plane& plane) {
    for (std::size_t y = 0; y < static_cast<std::size_t>(plane.rows); ++y) {
        std::copy_n(&pixels.bytes[y * pixels.rowBytes()], pixels.rowBytes(),
                    &plane.bytes[y * plane.row_bytes]);
    }
}

}  // namespace model
