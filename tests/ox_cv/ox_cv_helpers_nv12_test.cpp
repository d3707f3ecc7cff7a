// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// NV12toBGR_neon against the plain model, at every width and at both ends of memory.
#include <gtest/gtest.h>

#include "model/vector_colour.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/placed_image.h"

namespace ox::test {

namespace {

// Both planes of a picture on one stride: an odd row of luma is a byte shorter than one of chroma.
PlacedImage onOneStride(model::Image const& picture, std::size_t gap, Guard guard) {
    std::size_t const shorter = picture.planes[1].row_bytes - picture.planes[0].row_bytes;
    return PlacedImage(picture, Placements{{{0, gap + shorter, guard}, {0, gap, guard}}});
}

int strideOf(Frame const& frame) {
    return static_cast<int>(frame.layout().plane[0].stride);
}

TEST(Nv12ToBgrSweep, EveryWidth) {
    Random random;
    for (int width = 1; width <= 140; width += emulated() ? 3 : 1) {
        for (int height = 1; height <= 5; ++height) {
            model::Image const picture = drawImage(random, {model::Nv12, width, height});
            Guard const guard = oneIn(random, 2) ? Guard::AtStart : Guard::AtEnd;
            std::size_t const gap = random.next() % 3 * 17;
            PlacedImage const src = onOneStride(picture, gap, guard);
            model::Image expected = model::makeImage(model::Bgr24, width, height, 77);
            PlacedImage dst(expected, everywhere({0, gap, guard}));
            NV12toBGR_neon(src.frame().planeData(0), src.frame().planeData(1),
                           dst.frame().planeData(0), width, height, strideOf(src.frame()),
                           strideOf(dst.frame()));
            model::vectorColourDirectly(picture, expected);
            EXPECT_TRUE(dst.holds(expected)) << describe(picture.geometry());
        }
    }
}

// Strides are signed: from the last row up to the first, the picture is the same.
TEST(Nv12ToBgrSweep, FromTheLastRowUp) {
    Random random;
    for (int const width : {8, 24, 40, 138}) {
        model::Image const picture = drawImage(random, {model::Nv12, width, 6});
        PlacedImage const src = onOneStride(picture, 5, Guard::AtEnd);
        model::Image expected = model::makeImage(model::Bgr24, width, 6, 77);
        PlacedImage dst(expected, everywhere({0, 7, Guard::AtStart}));
        NV12toBGR_neon(rowOf(src.frame(), 0, 5), rowOf(src.frame(), 1, 2), rowOf(dst.frame(), 0, 5),
                       width, 6, -strideOf(src.frame()), -strideOf(dst.frame()));
        model::vectorColourDirectly(picture, expected);
        EXPECT_TRUE(dst.holds(expected)) << describe(picture.geometry());
    }
}

}  // namespace

}  // namespace ox::test
