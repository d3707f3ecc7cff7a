// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_frame_to_tensor.h"

namespace ox {

namespace {

/// Carries a coordinate from one span to another.
double carry(double at, std::int32_t from, std::int32_t from_extent, std::int32_t to,
             std::int32_t to_extent) {
    return to + (at - from) * to_extent / from_extent;
}

}  // namespace

double PictureMapping::toInputX(double x) const {
    return carry(x, source.x, source.width, inner.x, inner.width);
}

double PictureMapping::toInputY(double y) const {
    return carry(y, source.y, source.height, inner.y, inner.height);
}

double PictureMapping::toSourceX(double x) const {
    return carry(x, inner.x, inner.width, source.x, source.width);
}

double PictureMapping::toSourceY(double y) const {
    return carry(y, inner.y, inner.height, source.y, source.height);
}

PictureBox PictureMapping::toInput(PictureBox const& box) const {
    return {toInputX(box.left), toInputY(box.top), toInputX(box.right), toInputY(box.bottom)};
}

PictureBox PictureMapping::toSource(PictureBox const& box) const {
    return {toSourceX(box.left), toSourceY(box.top), toSourceX(box.right), toSourceY(box.bottom)};
}

}  // namespace ox
