// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_impl_c.h"

namespace ox::impl::c {

namespace {

Rect rectOf(ox_rect const& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

/// Maps each of an array.
/// @param map gives a mapped point or box
template <class Shape, class Map>
ox_status mapEach(ox_mapping const* mapping, Shape const* shapes, char const* name,
                  std::uint64_t count, Shape* mapped, Map const& map) noexcept {
    return guarded([&] {
        requireParameter(mapping, "mapping");
        requireParameter(shapes, name);
        requireParameter(mapped, "mapped");
        PictureMapping const picture{rectOf(mapping->source), rectOf(mapping->inner)};
        std::transform(shapes, shapes + count, mapped,
                       [&](Shape const& shape) { return map(picture, shape); });
    });
}

PictureBox boxOf(ox_box const& box) {
    return {box.left, box.top, box.right, box.bottom};
}

ox_box boxOf(PictureBox const& box) {
    return {box.left, box.top, box.right, box.bottom};
}

}  // namespace

}  // namespace ox::impl::c

using namespace ox::impl::c;
using ox::PictureMapping;

ox_status ox_mapping_points_to_input(ox_mapping const* mapping, ox_point const* points,
                                     uint64_t count, ox_point* mapped) {
    return mapEach(mapping, points, "points", count, mapped,
                   [](PictureMapping const& picture, ox_point const& point) {
                       return ox_point{picture.toInputX(point.x), picture.toInputY(point.y)};
                   });
}

ox_status ox_mapping_points_to_source(ox_mapping const* mapping, ox_point const* points,
                                      uint64_t count, ox_point* mapped) {
    return mapEach(mapping, points, "points", count, mapped,
                   [](PictureMapping const& picture, ox_point const& point) {
                       return ox_point{picture.toSourceX(point.x), picture.toSourceY(point.y)};
                   });
}

ox_status ox_mapping_boxes_to_input(ox_mapping const* mapping, ox_box const* boxes, uint64_t count,
                                    ox_box* mapped) {
    return mapEach(mapping, boxes, "boxes", count, mapped,
                   [](PictureMapping const& picture, ox_box const& box) {
                       return boxOf(picture.toInput(boxOf(box)));
                   });
}

ox_status ox_mapping_boxes_to_source(ox_mapping const* mapping, ox_box const* boxes, uint64_t count,
                                     ox_box* mapped) {
    return mapEach(mapping, boxes, "boxes", count, mapped,
                   [](PictureMapping const& picture, ox_box const& box) {
                       return boxOf(picture.toSource(boxOf(box)));
                   });
}

ox_status ox_fit_similarity(float const* from, float const* to, int32_t count, float* matrix) {
    return guarded([&] {
        float rows[2][3];
        requireParameter(matrix, "matrix");
        ox::fitSimilarity(reinterpret_cast<float const(*)[2]>(from),
                          reinterpret_cast<float const(*)[2]>(to), count, rows);
        std::copy_n(rows[0], 3, matrix);
        std::copy_n(rows[1], 3, matrix + 3);
    });
}
